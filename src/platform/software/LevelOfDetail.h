/// @file
/// Which level of a texture a block reads.
#pragma once

#include "platform/software/Numeric.h"
#include "platform/software/Sample.h"
#include "platform/software/Triangle.h"

#include <algorithm>

namespace ql::software {

/// Whether the level or the filter depends on the place.
inline bool choosesLevel(const Sampler& s) { return s.mip != Sampler::Mip::None || s.linearMag != s.linearMin; }

/// The only choice, where nothing depends on the place.
inline LevelChoice onlyLevel(const Sampler& s) { return {static_cast<std::uint8_t>(s.firstLevel), 0, s.linearMag, 0}; }

/// The choice for a change of texels per pixel, squared.
inline LevelChoice levelFor(const Sampler& s, float change) {
  // Half its logarithm is the level.
  const std::int32_t detail = (log2Times256(change) >> 1) + s.bias;
  LevelChoice choice = onlyLevel(s);
  choice.linear = detail > 0 ? s.linearMin : s.linearMag;
  if (s.mip == Sampler::Mip::Nearest) {
    choice.level = static_cast<std::uint8_t>(clampTo((detail + 128) >> 8, s.firstLevel, s.lastLevel));
  } else if (s.mip == Sampler::Mip::Linear) {
    const std::int32_t within = clampTo(detail, s.firstLevel << 8, s.lastLevel << 8);
    choice.level = static_cast<std::uint8_t>(within >> 8);
    choice.blend = static_cast<std::uint8_t>((within & 255) >> 1);
  }
  return choice;
}

/// The level of detail of a block, from the exact derivatives at its centre. @param x,y of the block's first pixel seen
/// from vertex 0 @param uv the attribute of the u coordinate @param divisor the attribute that divides u and v
inline LevelChoice chooseLevel(const Sampler& s, const Triangle& t, int uv, int divisor, float x, float y) {
  if (!choosesLevel(s)) return onlyLevel(s);
  const float cx = x + 1.5f, cy = y + 1.5f;
  const auto at = [&](int k) { return t.value[k] + (t.dx[k] * cx + t.dy[k] * cy); };
  const float w = 1.0f / at(divisor), u = at(uv) * w, v = at(uv + 1) * w;
  const float acrossU = w * s.width, acrossV = w * s.height;
  const float ux = (t.dx[uv] - u * t.dx[divisor]) * acrossU, vx = (t.dx[uv + 1] - v * t.dx[divisor]) * acrossV;
  const float uy = (t.dy[uv] - u * t.dy[divisor]) * acrossU, vy = (t.dy[uv + 1] - v * t.dy[divisor]) * acrossV;
  const float rx = ux * ux + vx * vx, ry = uy * uy + vy * vy;
  return levelFor(s, rx > ry ? rx : ry);
}

/// Sets the level of detail of a whole triangle where it has only one, to the bit: so it is when the divisor doesn't
/// change and no coordinate can overflow, as all that changes is then a product with 0. @return whether it does
inline bool chooseOnce(const Sampler& s, const Triangle& t, int uv, int divisor, LevelChoice& out) {
  if (!choosesLevel(s)) {
    out = onlyLevel(s);
    return true;
  }
  if (t.dx[divisor] != 0 || t.dy[divisor] != 0) return false;
  constexpr float kFarthestPixel = 65536, kSafe = 1e30f;
  const float w = 1.0f / t.value[divisor];
  const auto small = [&](int k) {
    const auto size = [](float v) { return v < 0 ? -v : v; };
    return (size(t.value[k]) + (size(t.dx[k]) + size(t.dy[k])) * kFarthestPixel) * size(w) < kSafe;
  };
  if (!small(uv) || !small(uv + 1)) return false;
  const float acrossU = w * s.width, acrossV = w * s.height;
  const float ux = t.dx[uv] * acrossU, vx = t.dx[uv + 1] * acrossV;
  const float uy = t.dy[uv] * acrossU, vy = t.dy[uv + 1] * acrossV;
  const float rx = ux * ux + vx * vx, ry = uy * uy + vy * vy;
  out = levelFor(s, rx > ry ? rx : ry);
  return true;
}

}  // namespace ql::software
