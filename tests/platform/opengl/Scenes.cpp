#include "platform/opengl/TwoDevices.h"

namespace ql::test {
namespace {

TEST_F(OpenGL, Triangle) {
  const Comparison c = onBoth(
      [](Scene& s) {
        s.clear(0xFF204060);
        s.draw(device::PrimitiveType::TriangleList,
               std::vector<ScreenVertex>{{5, 5, 0.5f, 1, 0xFFFF0000}, {60, 10, 0.5f, 1, 0xFF00FF00}, {20, 44, 0.5f, 1, 0xFF0000FF}});
      },
      2);
  EXPECT_LE(c.worstInside, 2) << c;
  EXPECT_EQ(c.edges, 0u) << c;
}

}  // namespace
}  // namespace ql::test
