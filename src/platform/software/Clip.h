/// @file
/// Cutting polygons and lines at the near and far plane and at the guard band.
#pragma once

#include "platform/software/Vertices.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ql::software {

/// A convex polygon; a triangle cut at 7 planes has at most 10 corners.
struct ClipPolygon {
  std::array<ClipVertex, 12> corners;
  std::size_t count = 0;
};

/// Cuts a polygon at the planes that some corner lies outside of. A cut runs from the inner to the outer end of an
/// edge, so that neighbours cut their common edge at the same point.
/// @param codes all corners' outcodes, ored; empties the polygon when nothing is left
void clip(const Pipeline& pipeline, ClipPolygon& polygon, std::uint32_t codes);

/// The same for a line. @return false when nothing is left
bool clip(const Pipeline& pipeline, ClipVertex& a, ClipVertex& b, std::uint32_t codes);

}  // namespace ql::software
