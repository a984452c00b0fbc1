/// @file
/// A triangle set up for one tile.
#pragma once

#include "platform/software/Vertices.h"

#include <algorithm>
#include <cstdint>

namespace ql::software {

/// Attributes that are calculated at a time.
inline constexpr int kAttributeStep = 8;

/// Edge functions and attribute planes, relative to the tile's first pixel. Pixel (x, y) has its centre at (x, y).
struct Triangle {
  /// A pixel is inside where A x + B y + C >= 0 for all three edges. The fill rule (an edge's own pixels belong to the
  /// triangle when it is a top or a left edge) is folded into C, and C is divided by the 256 of its fixed point, which
  /// is exact at pixel centres.
  std::int32_t a[3], b[3], c[3];
  std::int32_t x0, y0, x1, y1;  ///< pixels of the tile that can be inside, the last included
  float originX, originY;       ///< the tile's first pixel seen from vertex 0
  float zMin, zMax;             ///< of the vertices: depth stays within
  std::int32_t attributes;
  /// Followed by zeros up to a multiple of kAttributeStep.
  alignas(32) float value[kMaxAttributes];  ///< at vertex 0
  alignas(32) float dx[kMaxAttributes];     ///< change per pixel to the right
  alignas(32) float dy[kMaxAttributes];     ///< change per pixel downwards
};

/// Twice the signed area in 1/65536 pixels; positive: clockwise on the screen.
inline std::int64_t signedArea(const float* v0, const float* v1, const float* v2) {
  const std::int64_t x10 = recordX(v1) - recordX(v0), y10 = recordY(v1) - recordY(v0);
  const std::int64_t x20 = recordX(v2) - recordX(v0), y20 = recordY(v2) - recordY(v0);
  return x10 * y20 - y10 * x20;
}

/// The pixels whose centres a triangle's bounding box holds, right and bottom exclusive.
inline Box pixelBox(const float* v0, const float* v1, const float* v2) {
  const auto first = [](std::int32_t fixed) { return (fixed + 255) >> 8; };
  const std::int32_t x0 = recordX(v0), x1 = recordX(v1), x2 = recordX(v2);
  const std::int32_t y0 = recordY(v0), y1 = recordY(v1), y2 = recordY(v2);
  return {first(std::min({x0, x1, x2})), first(std::min({y0, y1, y2})), first(std::max({x0, x1, x2})),
          first(std::max({y0, y1, y2}))};
}

/// Sets a triangle up for the tile whose first pixel is (tileX, tileY). The area must not be 0.
/// @param area the part of the tile that may be drawn, in pixels of the target
void setUp(const Pipeline& pipeline, const float* v0, const float* v1, const float* v2, std::int32_t tileX,
           std::int32_t tileY, const Box& area, Triangle& out);

}  // namespace ql::software
