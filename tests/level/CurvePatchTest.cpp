#include "level/CurvePatch.h"

#include <random>

#include <gtest/gtest.h>

namespace ql::level {
namespace {

using Values = std::array<double, 7>;

Values valuesOf(const PatchPoint& p) {
  return {p.position.x, p.position.y, p.position.z, p.texture[0], p.texture[1], p.lightmap[0], p.lightmap[1]};
}

/// The patch's own definition: the biquadratic Bézier surface of the 3 × 3 piece that a grid point lies in.
Values bezier(const std::vector<PatchPoint>& controls, std::size_t width, std::size_t pieceX, std::size_t pieceY,
              double u, double v) {
  const auto weights = [](double t) { return std::array{(1 - t) * (1 - t), 2 * t * (1 - t), t * t}; };
  Values sum{};
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column) {
      const Values p = valuesOf(controls[(2 * pieceY + row) * width + 2 * pieceX + column]);
      for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += weights(u)[column] * weights(v)[row] * p[i];
    }
  return sum;
}

TEST(CurvePatch, LiesOnTheBezierSurface) {
  std::mt19937 random(20030);
  std::uniform_real_distribution<float> number(-1000, 1000);
  for (const auto& [width, height] : {std::pair<std::size_t, std::size_t>{3, 3}, {5, 3}, {3, 7}, {9, 5}}) {
    std::vector<PatchPoint> controls(width * height);
    for (PatchPoint& p : controls)
      p = {{number(random), number(random), number(random)},
           {number(random), number(random)},
           {number(random), number(random)}};
    for (std::int32_t precision = kCurveLow; precision <= kCurveHigh; ++precision) {
      const CurvePatch patch = tessellatePatch(controls, width, height, precision);
      const std::size_t segments = std::size_t{2} << precision;
      ASSERT_EQ(patch.columns, segments * (width - 1) / 2 + 1);
      ASSERT_EQ(patch.rows, segments * (height - 1) / 2 + 1);
      for (std::size_t row = 0; row < patch.rows; ++row)
        for (std::size_t column = 0; column < patch.columns; ++column) {
          const std::size_t pieceX = std::min(column / segments, (width - 3) / 2);
          const std::size_t pieceY = std::min(row / segments, (height - 3) / 2);
          const double u = static_cast<double>(column - pieceX * segments) / static_cast<double>(segments);
          const double v = static_cast<double>(row - pieceY * segments) / static_cast<double>(segments);
          const Values expected = bezier(controls, width, pieceX, pieceY, u, v);
          const Values got = valuesOf(patch.points[row * patch.columns + column]);
          for (std::size_t i = 0; i < got.size(); ++i)
            ASSERT_NEAR(got[i], expected[i], 1e-3) << width << "x" << height << " precision " << precision << " row "
                                                   << row << " column " << column << " value " << i;
        }
    }
  }
}

TEST(CurvePatch, CutsCellsIntoTriangles) {
  EXPECT_EQ(gridIndices(3, 2), (std::vector<std::uint32_t>{0, 3, 1, 1, 3, 4, 1, 4, 2, 2, 4, 5}));
  EXPECT_EQ(patchIndexCount(3, 3, kCurveLow), 24U);
  EXPECT_EQ(patchIndexCount(3, 3, kCurveHigh), 384U);
  EXPECT_EQ(gridSide(5, kCurveNormal), 9U);
  EXPECT_EQ(usableCurvePrecision(-7), kCurveLow);
  EXPECT_EQ(usableCurvePrecision(32767), kCurveHigh);
}

TEST(CurvePatch, NoticesControlPointsThatSpanNoArea) {
  std::vector<PatchPoint> grid(9);
  for (std::size_t i = 0; i < 9; ++i) grid[i].position = {static_cast<float>(i % 3), static_cast<float>(i / 3), 0};
  EXPECT_TRUE(controlPointsSpanArea(grid, 3, 3));
  std::vector<PatchPoint> rowsRepeat = grid, columnsRepeat = grid;
  for (std::size_t i = 0; i < 3; ++i) {
    rowsRepeat[3 * i + 2] = rowsRepeat[3 * i];
    columnsRepeat[6 + i] = columnsRepeat[i];
  }
  EXPECT_FALSE(controlPointsSpanArea(rowsRepeat, 3, 3));
  EXPECT_FALSE(controlPointsSpanArea(columnsRepeat, 3, 3));
}

}  // namespace
}  // namespace ql::level
