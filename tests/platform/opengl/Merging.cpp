#include "platform/opengl/Content.h"

namespace ql::test {
namespace {

/// Draws one small square of a grid by a packet of its own.
class Grid {
 public:
  explicit Grid(Scene& s) : s_(s) {}
  std::uint64_t version = 1;
  PrimitiveType type = PrimitiveType::TriangleFan;
  std::size_t padding = 0;  ///< bytes behind each vertex

  void square(std::uint32_t x, std::uint32_t y, std::uint32_t color) {
    const float left = static_cast<float>(x), top = static_cast<float>(y);
    const auto at = [&](float dx, float dy) { return ScreenVertex{left + dx, top + dy, 0.5f, 1, color}; };
    std::vector<ScreenVertex> corners{at(0, 0), at(1, 0), at(1, 1), at(0, 1)};
    if (type == PrimitiveType::TriangleStrip) std::swap(corners[2], corners[3]);
    if (type == PrimitiveType::TriangleList) corners = {at(0, 0), at(1, 0), at(1, 1), at(0, 0), at(1, 1), at(0, 1)};
    const std::size_t stride = sizeof(ScreenVertex) + padding;
    std::vector<std::byte> bytes(corners.size() * stride);
    for (std::size_t i = 0; i < corners.size(); ++i)
      std::memcpy(bytes.data() + i * stride, &corners[i], sizeof corners[i]);
    device::DrawPacket packet;
    packet.target = s_.target;
    packet.state = &s_.state;
    packet.stateVersion = version;
    packet.primitive = type;
    packet.primitiveCount = 2;
    packet.vertexCount = static_cast<std::uint32_t>(corners.size());
    packet.vertexFormat = kScreenFormat;
    packet.stride = static_cast<std::uint32_t>(stride);
    packet.vertices = bytes;
    s_.backEnd->draw(packet);
  }

 private:
  Scene& s_;
};

std::uint32_t colorAt(std::uint32_t x, std::uint32_t y) { return 0xFF000000 | x * 4 << 16 | y * 4 << 8 | (x ^ y); }

TEST_F(OpenGL, DrawsOfEqualStateBecomeOne) {
  const opengl::DriverCalls& calls = opengl::driverCalls(*hardware());
  for (const PrimitiveType type :
       {PrimitiveType::TriangleFan, PrimitiveType::TriangleStrip, PrimitiveType::TriangleList})
    for (const std::size_t padding : {0, 8, 3}) {
      Scene s(hardware(), 64, 64);
      Grid grid(s);
      grid.type = type;
      grid.padding = padding;
      const opengl::DriverCalls before = calls;
      for (std::uint32_t i = 0; i < 64 * 64; ++i) {
        grid.version = i & 1 ? 7 : 8;  // versions of one state: it was changed and changed back
        grid.square(i % 64, i / 64, colorAt(i % 64, i / 64));
      }
      const std::vector<std::uint32_t> pixels = s.pixels();
      EXPECT_LE(calls.draws - before.draws, 2u) << code(type);
      for (std::uint32_t i = 0; i < 64 * 64; ++i)
        ASSERT_EQ(pixels[i], colorAt(i % 64, i / 64)) << code(type) << ", padding " << padding << ", square " << i;
      hardware()->destroyTarget(s.target);
    }
}

TEST_F(OpenGL, TheRingOfVerticesWraps) {
  Scene s(hardware(), 64, 64);
  Grid grid(s);
  grid.padding = 1900;  // 1.9 KiB a vertex: 4,096 squares go around the ring several times
  for (std::uint32_t i = 0; i < 64 * 64; ++i) grid.square(i % 64, i / 64, colorAt(i % 64, i / 64));
  const std::vector<std::uint32_t> pixels = s.pixels();
  for (std::uint32_t i = 0; i < 64 * 64; ++i) ASSERT_EQ(pixels[i], colorAt(i % 64, i / 64)) << i;

  // One draw that is larger than the ring.
  std::vector<ScreenVertex> many(900'000, ScreenVertex{-9, -9, 0, 1, 0xFFFF0000});
  many[many.size() - 3] = {0, 0, 0, 1, 0xFFFF0000};
  many[many.size() - 2] = {64, 0, 0, 1, 0xFFFF0000};
  many[many.size() - 1] = {0, 64, 0, 1, 0xFFFF0000};
  s.draw(PrimitiveType::TriangleList, many);
  grid.padding = 0;
  grid.square(40, 40, 0xFF00FF00);
  EXPECT_EQ(s.pixel(5, 5), 0xFFFF0000u);
  EXPECT_EQ(s.pixel(40, 40), 0xFF00FF00u);
}

TEST_F(OpenGL, AnEqualStateCostsNoDriverCalls) {
  Scene s(hardware(), 16, 16);
  s.textures[0] = smoothTexture(s);
  Grid grid(s);
  const opengl::DriverCalls& calls = opengl::driverCalls(*hardware());
  grid.square(0, 0, ~0u);
  s.pixels();  // ends the batch
  grid.square(1, 0, ~0u);
  s.pixels();
  const std::uint64_t states = calls.states, programs = calls.programs, draws = calls.draws;
  grid.square(2, 0, ~0u);
  s.pixels();
  EXPECT_EQ(calls.states, states);
  EXPECT_EQ(calls.draws, draws + 1);

  // One state, one call.
  grid.version = 2;
  s.state.render.zWriteEnable = 0;
  grid.square(3, 0, ~0u);
  s.pixels();
  EXPECT_EQ(calls.states, states + 1);
  // A state that this draw does not read makes none.
  grid.version = 3;
  s.state.render.fogColor = 0xFF123456;
  s.state.world = math::scaling(2, 2, 2);
  s.state.render.alphaRef = 77;
  grid.square(4, 0, ~0u);
  s.pixels();
  EXPECT_EQ(calls.states, states + 1);
  EXPECT_EQ(calls.programs, programs);
}

TEST_F(OpenGL, CountsPacketsNotMergedDraws) {
  Scene s(hardware(), 16, 16);
  Grid grid(s);
  const device::Statistics before = s.backEnd->statistics();
  for (std::uint32_t i = 0; i < 10; ++i) grid.square(i, 0, ~0u);
  EXPECT_EQ(s.backEnd->statistics().drawCalls - before.drawCalls, 10u);
  EXPECT_EQ(s.backEnd->statistics().triangles - before.triangles, 20u);
}

}  // namespace
}  // namespace ql::test
