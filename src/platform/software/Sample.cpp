#include "platform/software/Sample.h"

#include "platform/software/Numeric.h"

#include <algorithm>

namespace ql::software {
namespace {

using device::Address;

// Four neighbours of each pixel, flipped, and the weights of the right and lower ones, in 1/128.
struct Neighbours {
  Lanes<std::uint32_t> t00, t10, t01, t11;
  Lanes<std::int32_t> weightX, weightY;
};

// A texel coordinate under an addressing mode; -1: the border.
std::int32_t address(Address mode, std::int32_t x, std::int32_t size) {
  switch (mode) {
    case Address::Mirror: {
      std::int32_t turn = x % (2 * size);
      if (turn < 0) turn += 2 * size;
      return turn < size ? turn : 2 * size - 1 - turn;
    }
    case Address::Clamp:
      return std::clamp(x, 0, size - 1);
    case Address::Border:
      return x < 0 || x >= size ? -1 : x;
    default: {
      const std::int32_t rest = x % size;
      return rest < 0 ? rest + size : rest;
    }
  }
}

// Texel coordinates in 24.8 fixed point, the low 8 bits counting from texel centres when filtering.
void fixedCoordinates(const Lanes<float>& u, float scale, bool linear, Lanes<std::int32_t>& out) {
  const float half = linear ? 128.0f : 0.0f;
  for (int i = 0; i < kLanes; ++i) out[i] = roundToInt(u[i] * scale - half);
}

void fetchFast(const Sampler::Level& level, Lanes<std::int32_t>& u, Lanes<std::int32_t>& v, bool linear,
               Neighbours& out) {
  const std::int32_t fraction = linear ? 127 : 0;
  Lanes<std::int32_t> index;
  for (int i = 0; i < kLanes; ++i) {
    const std::int32_t x = std::clamp(u[i], level.lowU, level.highU), y = std::clamp(v[i], level.lowV, level.highV);
    out.weightX[i] = (x >> 1) & fraction;
    out.weightY[i] = (y >> 1) & fraction;
    index[i] = ((y >> 8) & level.maskV) * level.stride + ((x >> 8) & level.maskU);
  }
  for (int i = 0; i < kLanes; ++i) {
    const std::uint32_t* texel = level.texels + index[i];
    out.t00[i] = texel[0];
    out.t10[i] = texel[1];
    out.t01[i] = texel[level.stride];
    out.t11[i] = texel[level.stride + 1];
  }
}

void fetchGeneral(const Sampler& s, const Sampler::Level& level, const Lanes<std::int32_t>& u,
                  const Lanes<std::int32_t>& v, bool linear, Neighbours& out) {
  const std::int32_t fraction = linear ? 127 : 0;
  const auto texel = [&](std::int32_t x, std::int32_t y) {
    return x < 0 || y < 0 ? s.border ^ kTexelFlip : level.texels[y * level.stride + x];
  };
  for (int i = 0; i < kLanes; ++i) {
    const std::int32_t x = u[i] >> 8, y = v[i] >> 8;
    const std::int32_t x0 = address(s.addressU, x, level.width), x1 = address(s.addressU, x + 1, level.width);
    const std::int32_t y0 = address(s.addressV, y, level.height), y1 = address(s.addressV, y + 1, level.height);
    out.weightX[i] = (u[i] >> 1) & fraction;
    out.weightY[i] = (v[i] >> 1) & fraction;
    out.t00[i] = texel(x0, y0);
    out.t10[i] = texel(x1, y0);
    out.t01[i] = texel(x0, y1);
    out.t11[i] = texel(x1, y1);
  }
}

// Weights of 7 bits, values around 0: across in 15 bits, then down with rounding, as 16-bit lanes can compute it.
void filter(const Neighbours& n, Colors& out) {
  for (int c = 0; c < 4; ++c) {
    const int shift = c * 8;
    const auto value = [shift](std::uint32_t texel) {
      return static_cast<std::int32_t>(static_cast<std::int8_t>(texel >> shift & 255));
    };
    for (int i = 0; i < kLanes; ++i) {
      const std::int32_t right = n.weightX[i], left = 128 - right;
      const std::int32_t upper = left * value(n.t00[i]) + right * value(n.t10[i]);
      const std::int32_t lower = left * value(n.t01[i]) + right * value(n.t11[i]);
      const std::int32_t mixed = upper + (((lower - upper) * n.weightY[i] + 64) >> 7);
      out.c[c][i] = static_cast<std::uint16_t>((mixed + 16384 + 64) >> 7);
    }
  }
}

void sampleLevel(const Sampler& s, const Sampler::Level& level, bool linear, const Lanes<float>& u,
                 const Lanes<float>& v, Colors& out) {
  Lanes<std::int32_t> fixedU, fixedV;
  fixedCoordinates(u, level.scaleU, linear, fixedU);
  fixedCoordinates(v, level.scaleV, linear, fixedV);
  Neighbours n;
  if (s.fast)
    fetchFast(level, fixedU, fixedV, linear, n);
  else
    fetchGeneral(s, level, fixedU, fixedV, linear, n);
  filter(n, out);
}

}  // namespace

LevelChoice chooseLevel(const Sampler& s, const Triangle& t, int uv, float x, float y) {
  LevelChoice choice;
  choice.level = s.firstLevel;
  choice.linear = s.linearMag;
  if (s.mip == Sampler::Mip::None && s.linearMag == s.linearMin) return choice;
  const float cx = x + 1.5f, cy = y + 1.5f;
  const auto at = [&](int k) { return t.value[k] + (t.dx[k] * cx + t.dy[k] * cy); };
  const float w = 1.0f / at(kAttributeQ), u = at(uv) * w, v = at(uv + 1) * w;
  const float acrossU = w * s.width, acrossV = w * s.height;
  const float ux = (t.dx[uv] - u * t.dx[kAttributeQ]) * acrossU, vx = (t.dx[uv + 1] - v * t.dx[kAttributeQ]) * acrossV;
  const float uy = (t.dy[uv] - u * t.dy[kAttributeQ]) * acrossU, vy = (t.dy[uv + 1] - v * t.dy[kAttributeQ]) * acrossV;
  const float rx = ux * ux + vx * vx, ry = uy * uy + vy * vy;
  // Texels per pixel squared: half its logarithm is the level.
  const std::int32_t detail = (log2Times256(rx > ry ? rx : ry) >> 1) + s.bias;
  choice.linear = detail > 0 ? s.linearMin : s.linearMag;
  if (s.mip == Sampler::Mip::Nearest) {
    choice.level = std::clamp((detail + 128) >> 8, s.firstLevel, s.lastLevel);
  } else if (s.mip == Sampler::Mip::Linear) {
    const std::int32_t within = std::clamp(detail, s.firstLevel << 8, s.lastLevel << 8);
    choice.level = within >> 8;
    choice.blend = (within & 255) >> 1;
  }
  return choice;
}

void sample(const Sampler& s, const LevelChoice& choice, const Lanes<float>& u, const Lanes<float>& v, Colors& out) {
  const auto level = static_cast<std::size_t>(choice.level);
  sampleLevel(s, s.levels[level], choice.linear, u, v, out);
  if (choice.blend == 0) return;
  Colors next;
  sampleLevel(s, s.levels[level + 1], choice.linear, u, v, next);
  for (int c = 0; c < 4; ++c)
    for (int i = 0; i < kLanes; ++i) {
      const std::int32_t a = out.c[c][i], b = next.c[c][i];
      out.c[c][i] = static_cast<std::uint16_t>(a + (((b - a) * choice.blend + 64) >> 7));
    }
}

}  // namespace ql::software
