// What the renderer tells of its work.
#include "Scene.h"

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using device::PrimitiveType;

device::Statistics drawn(const std::vector<ScreenVertex>& vertices, std::uint32_t cull, std::uint32_t zFunc = 8) {
  Scene scene(200, 100);
  scene.pixels();
  scene.state.render.cullMode = cull;
  scene.state.render.zFunc = zFunc;
  const device::Statistics before = scene.backEnd->statistics();
  scene.draw(PrimitiveType::TriangleList, vertices);
  scene.pixels();
  return scene.backEnd->statistics() - before;
}

TEST(Counts, TellWhatBecomesOfTriangles) {
  const std::vector<ScreenVertex> right{{10, 10, 0.5f}, {20, 10, 0.5f}, {10, 20, 0.5f}};
  const std::vector<ScreenVertex> outside{{-20, 10, 0.5f}, {-10, 10, 0.5f}, {-20, 20, 0.5f}};
  const std::vector<ScreenVertex> empty{{10, 10, 0.5f}, {20, 10, 0.5f}, {30, 10, 0.5f}};
  const std::vector<ScreenVertex> wide{{-90000, 0, 0.5f}, {90000, 0, 0.5f}, {0, 90000, 0.5f}};
  const struct {
    const char* name;
    std::vector<ScreenVertex> vertices;
    std::uint32_t cull, zFunc;
    std::uint64_t culled, clipped, drawn, pixels, tiles;
  } rows[] = {{"shown", right, 1, 8, 0, 0, 1, 55, 1},
              {"behind what is there", right, 1, 1, 0, 0, 1, 0, 1},
              {"turned away", right, 3, 8, 0, 0, 1, 55, 1},
              {"turned to us", right, 2, 8, 1, 0, 0, 0, 0},
              {"outside", outside, 1, 8, 1, 0, 0, 0, 0},
              {"without area", empty, 1, 8, 1, 0, 0, 0, 0},
              {"far beyond the picture", wide, 1, 8, 0, 1, 1, 20000, 8}};
  for (const auto& row : rows) {
    const device::Statistics s = drawn(row.vertices, row.cull, row.zFunc);
    EXPECT_EQ(s.triangles, 1u) << row.name;
    EXPECT_EQ(s.culled, row.culled) << row.name;
    EXPECT_EQ(s.clipped, row.clipped) << row.name;
    EXPECT_EQ(s.drawn, row.drawn) << row.name;
    EXPECT_EQ(s.pixels, row.pixels) << row.name;
    EXPECT_EQ(s.tiles, row.tiles) << row.name;
  }
}

TEST(Counts, SpansAreKeptOfEveryThreadWhileWanted) {
  Scene scene(640, 640, device::Format::A8R8G8B8, 2);
  scene.backEnd->keepSpans(true);
  for (int i = 0; i < 20; ++i) scene.fill(0x40FFFFFF);
  scene.pixels();
  std::uint64_t sums[device::kWorkSteps] = {};
  for (const device::WorkSpan& span : scene.backEnd->takeSpans()) {
    EXPECT_LT(span.thread, 2u);
    EXPECT_LE(span.begin, span.end);
    sums[static_cast<std::size_t>(span.step)] += static_cast<std::uint64_t>(span.end - span.begin);
  }
  // Spans join over small gaps.
  for (std::size_t i = 0; i < device::kWorkSteps; ++i) {
    EXPECT_GT(scene.backEnd->statistics().nanoseconds[i], 0u);
    EXPECT_GE(sums[i], scene.backEnd->statistics().nanoseconds[i]);
  }
  EXPECT_THAT(scene.backEnd->takeSpans(), testing::IsEmpty());
  scene.backEnd->keepSpans(false);
  scene.fill(0);
  scene.pixels();
  EXPECT_THAT(scene.backEnd->takeSpans(), testing::IsEmpty());
}

}  // namespace
}  // namespace ql::test
