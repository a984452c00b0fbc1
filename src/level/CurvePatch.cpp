#include "level/CurvePatch.h"

#include <algorithm>

namespace ql::level {
namespace {

constexpr std::array<float, 2> midpoint(const std::array<float, 2>& a, const std::array<float, 2>& b) {
  return {(a[0] + b[0]) * 0.5f, (a[1] + b[1]) * 0.5f};
}
constexpr PatchPoint midpoint(const PatchPoint& a, const PatchPoint& b) {
  return {math::midpoint(a.position, b.position), midpoint(a.texture, b.texture), midpoint(a.lightmap, b.lightmap)};
}

/// A row or a column of the grid.
struct Line {
  PatchPoint* first;
  std::size_t step;  ///< from point to point in the grid
  std::size_t count;
  PatchPoint& operator[](std::size_t i) const { return first[i * step]; }
};

/// Fills a line whose control points stand at every spacing-th place: each three of them are cut in the middle of their
/// curve into two times three, until the places are next to each other.
void subdivide(const Line& line, std::size_t spacing) {
  for (std::size_t s = spacing; s >= 1; s /= 2) {
    for (std::size_t j = 0; j + 2 * s < line.count; j += 2 * s) {
      const PatchPoint a = midpoint(line[j], line[j + s]), b = midpoint(line[j + s], line[j + 2 * s]);
      line[j + s] = midpoint(a, b);
      if (s / 2 >= 1) {
        line[j + s / 2] = a;
        line[j + s + s / 2] = b;
      }
    }
  }
}

}  // namespace

std::int32_t usableCurvePrecision(std::int32_t precision) { return std::clamp(precision, kCurveLow, kCurveHigh); }

bool controlPointsSpanArea(std::span<const PatchPoint> controls, std::size_t width, std::size_t height) {
  const auto differs = [&](std::size_t i, std::size_t j) { return controls[i].position != controls[j].position; };
  bool across = false, down = false;
  for (std::size_t row = 0; row < height; ++row) {
    for (std::size_t column = 0; column < width; ++column) {
      const std::size_t i = row * width + column;
      across = across || (column + 2 < width && differs(i, i + 2));
      down = down || (row + 2 < height && differs(i, i + 2 * width));
    }
  }
  return across && down;
}

CurvePatch tessellatePatch(std::span<const PatchPoint> controls, std::size_t width, std::size_t height,
                           std::int32_t precision) {
  CurvePatch patch;
  patch.columns = static_cast<std::size_t>(gridSide(static_cast<std::int32_t>(width), precision));
  patch.rows = static_cast<std::size_t>(gridSide(static_cast<std::int32_t>(height), precision));
  patch.points.resize(patch.columns * patch.rows);
  const std::size_t spacing = std::size_t{1} << precision;
  for (std::size_t row = 0; row < height; ++row)
    for (std::size_t column = 0; column < width; ++column)
      patch.points[row * spacing * patch.columns + column * spacing] = controls[row * width + column];
  for (std::size_t row = 0; row < patch.rows; row += spacing)
    subdivide({&patch.points[row * patch.columns], 1, patch.columns}, spacing);
  for (std::size_t column = 0; column < patch.columns; ++column)
    subdivide({&patch.points[column], patch.columns, patch.rows}, spacing);
  return patch;
}

std::vector<std::uint32_t> gridIndices(std::size_t columns, std::size_t rows) {
  std::vector<std::uint32_t> indices;
  indices.reserve((columns - 1) * (rows - 1) * 6);
  for (std::size_t row = 0; row + 1 < rows; ++row) {
    for (std::size_t column = 0; column + 1 < columns; ++column) {
      const auto here = static_cast<std::uint32_t>(row * columns + column);
      const auto below = static_cast<std::uint32_t>((row + 1) * columns + column);
      indices.insert(indices.end(), {here, below, here + 1, here + 1, below, below + 1});
    }
  }
  return indices;
}

}  // namespace ql::level
