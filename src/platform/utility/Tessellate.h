/// @file
/// Areas with holes, cut into triangles.
#pragma once

#include "platform/fonts/FontFace.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ql::utility {

/// The inside of closed lines.
struct Area {
  std::vector<fonts::Contour> borders;  ///< outer ones counter-clockwise (y up), those of holes clockwise; none cross
  std::vector<fonts::OutlinePoint> points;
  std::vector<std::uint32_t> triangles;  ///< three points each, counter-clockwise
};

/// The points that lines wind around, whatever their direction: a line inside another one that runs the other way makes
/// a hole, one that runs the same way does not, and lines that cross are joined. Nothing when they cannot be cut.
Area areaInside(std::span<const fonts::Contour> lines);

}  // namespace ql::utility
