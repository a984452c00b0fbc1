/// @file
/// Rejecting 8 × 8 pixels by the farthest depth they hold. The bounds decide only what is skipped, never a pixel.
#pragma once

#include "platform/software/Tile.h"
#include "platform/software/Triangle.h"

#include <algorithm>

namespace ql::software {

/// Whether a block's nearest possible depth may show that it is behind all that is stored: only functions that need a
/// depth at most the stored one.
inline bool rejectsFar(const Pipeline& p) {
  using device::Compare;
  return p.depthTest && (p.depthFunction == Compare::Less || p.depthFunction == Compare::LessEqual ||
                         p.depthFunction == Compare::Equal);
}

/// Whether drawing may store a depth farther than the one before, so that bounds must follow.
inline bool raisesBound(const Pipeline& p) {
  using device::Compare;
  return p.depthWrite && p.depthFunction != Compare::Less && p.depthFunction != Compare::LessEqual &&
         p.depthFunction != Compare::Equal && p.depthFunction != Compare::Never;
}

/// No depth of a triangle inside 8 × 8 pixels lies outside these.
struct Coarse {
  float nearest, farthest;
};

inline Coarse coarseDepth(const Triangle& t, int x, int y) {
  constexpr int kReach = TileDepth::kCoarseSide - 1;
  const float dx = t.dx[kAttributeZ], dy = t.dy[kAttributeZ];
  const float atX = static_cast<float>(x) + t.originX, atY = static_cast<float>(y) + t.originY;
  const float stepX = dx * atX, stepY = dy * atY, base = t.value[kAttributeZ] + stepX + stepY;
  const float acrossX = dx * kReach, acrossY = dy * kReach;
  // A dozen roundings, each at most 2^-24 of the largest term: far below this slack.
  const auto size = [](float v) { return v < 0 ? -v : v; };
  const float slack =
      1.0f + (size(t.value[kAttributeZ]) + size(stepX) + size(stepY) + size(acrossX) + size(acrossY)) * (1.0f / 262144);
  const float low = base + (std::min(acrossX, 0.0f) + std::min(acrossY, 0.0f)) - slack;
  const float high = base + (std::max(acrossX, 0.0f) + std::max(acrossY, 0.0f)) + slack;
  // Not a number falls back to the range of the vertices.
  return {low > t.zMin ? low : t.zMin, high < t.zMax ? high : t.zMax};
}

/// Keeps the bounds of the stored depths true before a block is drawn.
inline void updateBound(const Pipeline& p, const Coarse& coarse, bool covered, std::int32_t& bound) {
  using device::Compare;
  if (!p.depthWrite) return;
  const bool onlyNearer = p.depthFunction == Compare::Less || p.depthFunction == Compare::LessEqual;
  if (onlyNearer && covered && !p.alphaTest)
    bound = std::min(bound, static_cast<std::int32_t>(coarse.farthest) + 1);
  else if (raisesBound(p))
    bound = std::max(bound, static_cast<std::int32_t>(coarse.farthest) + 1);
}

}  // namespace ql::software
