#include "TestLevels.h"

#include <random>

#include <gtest/gtest.h>

namespace ql::maker::test {
namespace {

TEST(Packing, BlocksDoNotOverlap) {
  std::mt19937 random(9);
  std::vector<Block> blocks(600);
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    blocks[i].width = 2 + static_cast<int>(random() % (i % 10 == 0 ? 127 : 24));
    blocks[i].height = 2 + static_cast<int>(random() % 24);
    blocks[i].group = i % 3 == 0 ? static_cast<int>(i % 40) : 0;
  }
  blocks[17].width = blocks[17].height = kPageSize;
  blocks[18].width = 0;  // wants none
  const int pages = packBlocks(blocks);
  std::vector<int> owner(static_cast<std::size_t>(pages * kPageSize * kPageSize), -1);
  long wanted = 0;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    const Block& b = blocks[i];
    if (b.width == 0) {
      EXPECT_EQ(b.page, -1);
      continue;
    }
    ASSERT_TRUE(b.page >= 0 && b.page < pages && b.x >= 0 && b.y >= 0 && b.x + b.width <= kPageSize &&
                b.y + b.height <= kPageSize)
        << i;
    wanted += b.width * b.height;
    for (int y = b.y; y < b.y + b.height; ++y)
      for (int x = b.x; x < b.x + b.width; ++x) {
        int& cell = owner[static_cast<std::size_t>((b.page * kPageSize + y) * kPageSize + x)];
        ASSERT_EQ(cell, -1) << "blocks " << cell << " and " << i;
        cell = static_cast<int>(i);
      }
  }
  EXPECT_LT(pages * kPageSize * kPageSize, wanted * 3 / 2) << "half a page in three is wasted";
}

TEST(Charts, PutBordersOnSampleCentres) {
  const MadeLevel made = structureOf(oneRoom());
  for (const Surface& s : made.surfaces) {
    Chart chart = chartOf(s, 10.0);
    chart.block.x = 40;
    chart.block.y = 7;
    Bounds reach;
    for (const Winding& w : s.pieces)
      for (const Vec3& p : w) {
        const auto [x, y] = samplePosition(chart, p);
        reach.add(Vec3{x, y, 0});
      }
    EXPECT_NEAR(reach.mins.x, 40, 1e-6);
    EXPECT_NEAR(reach.mins.y, 7, 1e-6);
    EXPECT_NEAR(reach.maxs.x, 40 + chart.block.width - 1, 1e-6);
    EXPECT_NEAR(reach.maxs.y, 7 + chart.block.height - 1, 1e-6);
  }
}

TEST(Patches, TurnedShapesAreRoundAndFaceOutwards) {
  const Level level = parseDescription(oneRoom(
      "revolve 180 60 0 stone 0,20 30,20 60,20 pieces=5\nrevolve 180 60 60 stone 0,20 30,20 60,20 inside pieces=8\n"));
  ASSERT_EQ(level.patches.size(), 3U);
  for (int k = 0; k <= 40; ++k)
    for (const double t : {0.1, 0.5, 0.9}) {
      const SurfacePoint out = evaluatePatch(level.patches[1], k / 40.0, t);
      const SurfacePoint in = evaluatePatch(level.patches[2], k / 40.0, t);
      const Vec3 fromAxis{out.position.x - 180, out.position.y - 60, 0};
      EXPECT_NEAR(length(fromAxis), 20.0, 0.5);
      EXPECT_GT(dot(normalized(fromAxis), out.normal), 0.95);
      EXPECT_LT(dot(normalized({in.position.x - 180, in.position.y - 60, 0}), in.normal), -0.95);
    }
}

/// Light of the lightmap sample nearest to a point of an upright surface.
Vec3 lightAt(const MadeLevel& made, Vec3 normal, Vec3 p) {
  for (std::size_t i = 0; i < made.surfaces.size(); ++i) {
    const Surface& s = made.surfaces[i];
    if (dot(s.plane.normal, normal) < 0.99 || std::fabs(s.plane.side(p)) > 0.1 ||
        !boundsOf(s.whole).touches({p, p}, 0.1))
      continue;
    const auto [x, y] = samplePosition(made.surfaceCharts[i], p);
    return made.light.at(made.surfaceCharts[i].block.page, static_cast<int>(x + 0.5), static_cast<int>(y + 0.5));
  }
  ADD_FAILURE() << "no surface at " << p.x << " " << p.y << " " << p.z;
  return {};
}

TEST(Light, FallsThroughTheRoofAndStopsAtTheBox) {
  MadeLevel made = structureOf(oneRoom());
  const std::vector<Vec3> albedo(made.level.materials.size(), Vec3{0.5, 0.5, 0.5});
  makeLight(made, albedo, MakeOptions{});
  const Vec3 up{0, 0, 1};
  // The roof is open above x 96..256, y 0..96; going down the light moves by (-1/3, -2/9) per unit.
  const Vec3 sunny = lightAt(made, up, {180, 30, 0});
  const Vec3 shaded = lightAt(made, up, {30, 200, 0});
  EXPECT_GT(sunny.x, 1.5);
  EXPECT_LT(shaded.x, 0.8);
  EXPECT_GT(shaded.x, 0.01) << "bounced light and the sky reach the shade";
  // The lamp at (200, 200, 90) is warm; the box at 100..140 stands between it and the corner.
  const Vec3 warm = lightAt(made, up, {200, 200, 0});
  EXPECT_GT(warm.x, 1.6 * warm.z);
  const Vec3 behindBox = lightAt(made, {-1, 0, 0}, {100, 120, 10});
  EXPECT_LT(behindBox.x, lightAt(made, {1, 0, 0}, {140, 120, 30}).x);
  for (const Vec3& sample : made.light.samples)
    for (int c = 0; c < 3; ++c) ASSERT_TRUE(sample[c] >= 0.0 && sample[c] < 100.0);
}

TEST(Light, BytesUndoWhatLoadingAdds) {
  LightPages pages{1, std::vector<Vec3>(kPageSize * kPageSize)};
  for (std::size_t i = 0; i < pages.samples.size(); ++i)
    pages.samples[i] = Vec3{1, 1, 1} * (static_cast<double>(i) / 1000.0);
  const std::vector<std::uint8_t> bytes = toBytes(pages, 1.0);
  ASSERT_EQ(bytes.size(), 49152U);
  EXPECT_EQ(bytes.front(), 0);
  EXPECT_EQ(bytes.back(), 223);
  EXPECT_TRUE(std::is_sorted(bytes.begin(), bytes.end()));
}

}  // namespace
}  // namespace ql::maker::test
