/// @file
/// Curved faces: grids of control points turned into grids of triangles.
#pragma once

#include "math/Vector.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ql::level {

/// A point of a patch with both of its texture coordinate pairs.
struct PatchPoint {
  math::Vec3 position;
  std::array<float, 2> texture{}, lightmap{};
};

/// How finely curves are cut: every 3 × 3 piece of a patch becomes 2, 4 or 8 segments in each direction.
inline constexpr std::int32_t kCurveLow = 0, kCurveNormal = 1, kCurveHigh = 2;
/// Settings are numbers of the host's; outside 0 to 2 the nearest of these is used.
std::int32_t usableCurvePrecision(std::int32_t precision);

/// Points of the finished grid across (or down) a patch of an odd number of control points.
constexpr std::uint64_t gridSide(std::int32_t controlPoints, std::int32_t precision) {
  return (std::uint64_t{2} << precision) * ((static_cast<std::uint64_t>(controlPoints) - 1) / 2) + 1;
}
/// Vertices of the triangle list over the finished grid.
constexpr std::uint64_t patchIndexCount(std::int32_t width, std::int32_t height, std::int32_t precision) {
  return (gridSide(width, precision) - 1) * (gridSide(height, precision) - 1) * 6;
}

/// The finished grid, row by row.
struct CurvePatch {
  std::size_t columns = 0, rows = 0;
  std::vector<PatchPoint> points;
};

/// Whether the points change in both directions: somewhere along a row, and somewhere along a column, a control point
/// differs from the one two places further.
bool controlPointsSpanArea(std::span<const PatchPoint> controls, std::size_t width, std::size_t height);

/// Evaluates the biquadratic patch on a regular grid of parameters, by repeated halving along the rows and then along
/// the columns. @param controls width × height points row by row; both sides odd and at least 3
CurvePatch tessellatePatch(std::span<const PatchPoint> controls, std::size_t width, std::size_t height,
                           std::int32_t precision);

/// Two triangles for every cell of a grid, as indices of its points.
std::vector<std::uint32_t> gridIndices(std::size_t columns, std::size_t rows);

}  // namespace ql::level
