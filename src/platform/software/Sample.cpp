#include "platform/software/Sample.h"

#include "platform/software/Numeric.h"

#include <algorithm>

namespace ql::software {
namespace {

using device::Address;

// Four neighbours of each pixel, flipped, and the weights of the right and lower ones, in 1/128.
struct Neighbours {
  Lanes<std::uint32_t> t00, t10, t01, t11;
  Lanes<std::int16_t> weightX, weightY;
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
  const std::int32_t fraction = linear ? 127 : 0, stride = level.stride;
  const std::int32_t lowU = level.lowU, highU = level.highU, maskU = level.maskU;
  const std::int32_t lowV = level.lowV, highV = level.highV, maskV = level.maskV;
  Lanes<std::int32_t> index;
  for (int i = 0; i < kLanes; ++i) {
    const std::int32_t x = clampTo(u[i], lowU, highU), y = clampTo(v[i], lowV, highV);
    out.weightX[i] = static_cast<std::int16_t>((x >> 1) & fraction);
    out.weightY[i] = static_cast<std::int16_t>((y >> 1) & fraction);
    index[i] = ((y >> 8) & maskV) * stride + ((x >> 8) & maskU);
  }
  for (int i = 0; i < kLanes; ++i) {
    const std::uint32_t* texel = level.texels + index[i];
    out.t00[i] = texel[0];
    out.t10[i] = texel[1];
    out.t01[i] = texel[stride];
    out.t11[i] = texel[stride + 1];
  }
}

void fetchGeneral(const Sampler& s, const Sampler::Level& level, const Lanes<std::int32_t>& u,
                  const Lanes<std::int32_t>& v, bool linear, Neighbours& out) {
  const std::int32_t fraction = linear ? 127 : 0;
  for (int i = 0; i < kLanes; ++i) {
    out.weightX[i] = static_cast<std::int16_t>((u[i] >> 1) & fraction);
    out.weightY[i] = static_cast<std::int16_t>((v[i] >> 1) & fraction);
    const std::array<std::uint32_t, 4> four = fourTexels(s, level, u[i] >> 8, v[i] >> 8);
    out.t00[i] = four[0];
    out.t10[i] = four[1];
    out.t01[i] = four[2];
    out.t11[i] = four[3];
  }
}

// The channel of flipped texels, a number around 0.
void channelOf(const Lanes<std::uint32_t>& texels, int shift, Lanes<std::int16_t>& out) {
  for (int i = 0; i < kLanes; ++i)
    out[i] = static_cast<std::int16_t>(static_cast<std::int16_t>((texels[i] >> shift & 255) ^ 0x80) - 128);
}

// Weights of 7 bits, values around 0: across in 15 bits, then down with rounding, as 16-bit lanes can compute it.
void filter(const Neighbours& n, Colors& out) {
  Lanes<std::int16_t> left;
  for (int i = 0; i < kLanes; ++i) left[i] = static_cast<std::int16_t>(128 - n.weightX[i]);
  for (int c = 0; c < 4; ++c) {
    Lanes<std::int16_t> t00, t10, t01, t11;
    channelOf(n.t00, c * 8, t00);
    channelOf(n.t10, c * 8, t10);
    channelOf(n.t01, c * 8, t01);
    channelOf(n.t11, c * 8, t11);
    for (int i = 0; i < kLanes; ++i) {
      const auto upper = static_cast<std::int16_t>(left[i] * t00[i] + n.weightX[i] * t10[i]);
      const auto lower = static_cast<std::int16_t>(left[i] * t01[i] + n.weightX[i] * t11[i]);
      const auto across = static_cast<std::int16_t>(lower - upper);
      const auto down = static_cast<std::int16_t>((across * n.weightY[i] + 64) >> 7);
      out.c[c][i] = static_cast<std::uint16_t>(static_cast<std::uint16_t>(upper + down + 16384 + 64) >> 7);
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

std::array<std::uint32_t, 4> fourTexels(const Sampler& s, const Sampler::Level& level, std::int32_t x, std::int32_t y) {
  const auto texel = [&](std::int32_t column, std::int32_t row) {
    return column < 0 || row < 0 ? s.border ^ kTexelFlip : level.texels[row * level.stride + column];
  };
  const std::int32_t x0 = address(s.addressU, x, level.width), x1 = address(s.addressU, x + 1, level.width);
  const std::int32_t y0 = address(s.addressV, y, level.height), y1 = address(s.addressV, y + 1, level.height);
  return {texel(x0, y0), texel(x1, y0), texel(x0, y1), texel(x1, y1)};
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
