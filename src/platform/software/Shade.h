/// @file
/// The pixels of a block, step by step: coverage, depth, interpolation, texture stages, fog, alpha test, blending.
#pragma once

#include "platform/software/Blend.h"
#include "platform/software/Combine.h"
#include "platform/software/FogFactor.h"
#include "platform/software/LevelOfDetail.h"
#include "platform/software/Numeric.h"
#include "platform/software/Sample.h"
#include "platform/software/Tile.h"
#include "platform/software/Triangle.h"

#include <algorithm>

namespace ql::software {

/// Column and row of each pixel of a block.
inline constexpr std::int32_t kLaneX[kLanes] = {0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3};
inline constexpr std::int32_t kLaneY[kLanes] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};

/// Pixels inside the three edges and the triangle's box. @param x,y of the block in the tile
inline void cover(const Triangle& t, int x, int y, Mask& out) {
  std::int32_t e[3];
  for (int k = 0; k < 3; ++k) e[k] = t.c[k] + t.a[k] * x + t.b[k] * y;
  for (int i = 0; i < kLanes; ++i) {
    const std::int32_t outside = (e[0] + (t.a[0] * kLaneX[i] + t.b[0] * kLaneY[i])) |
                                 (e[1] + (t.a[1] * kLaneX[i] + t.b[1] * kLaneY[i])) |
                                 (e[2] + (t.a[2] * kLaneX[i] + t.b[2] * kLaneY[i]));
    const std::int32_t px = x + kLaneX[i], py = y + kLaneY[i];
    const std::int32_t beyond = (px - t.x0) | (t.x1 - px) | (py - t.y0) | (t.y1 - py);
    out[i] = ~((outside | beyond) >> 31);
  }
}

/// Clears the mask where "a compares to b" is false.
template <class T>
void compare(device::Compare function, const Lanes<T>& a, const Lanes<T>& b, Mask& mask) {
  const auto keep = [&](auto&& test) {
    for (int i = 0; i < kLanes; ++i) mask[i] &= test(a[i], b[i]) ? -1 : 0;
  };
  using device::Compare;
  switch (function) {
    case Compare::Never:
      keep([](T, T) { return false; });
      break;
    case Compare::Less:
      keep([](T x, T y) { return x < y; });
      break;
    case Compare::Equal:
      keep([](T x, T y) { return x == y; });
      break;
    case Compare::LessEqual:
      keep([](T x, T y) { return x <= y; });
      break;
    case Compare::Greater:
      keep([](T x, T y) { return x > y; });
      break;
    case Compare::NotEqual:
      keep([](T x, T y) { return x != y; });
      break;
    case Compare::GreaterEqual:
      keep([](T x, T y) { return x >= y; });
      break;
    case Compare::Always:
      break;
  }
}

/// An attribute at each pixel, as it is interpolated on the screen. @param x,y of the block seen from vertex 0
inline void interpolate(const Triangle& t, int attribute, float x, float y, Lanes<float>& out) {
  const float dx = t.dx[attribute], dy = t.dy[attribute];
  const float base = t.value[attribute] + (dx * x + dy * y);
  for (int i = 0; i < kLanes; ++i)
    out[i] = base + (dx * static_cast<float>(kLaneX[i]) + dy * static_cast<float>(kLaneY[i]));
}

inline void interpolateDepth(const Triangle& t, float x, float y, Lanes<std::int32_t>& out) {
  Lanes<float> z;
  interpolate(t, kAttributeZ, x, y, z);
  for (int i = 0; i < kLanes; ++i) out[i] = static_cast<std::int32_t>(clampTo(z[i], t.zMin, t.zMax));
}

/// A channel 0 to 255 that was divided by the distance.
inline void interpolateChannel(const Triangle& t, int attribute, float x, float y, const Lanes<float>& w,
                               Lanes<std::uint16_t>& out) {
  Lanes<float> value;
  interpolate(t, attribute, x, y, value);
  for (int i = 0; i < kLanes; ++i)
    out[i] = static_cast<std::uint16_t>(static_cast<std::int32_t>(clampTo(value[i] * w[i], 0.0f, 255.0f) + 0.5f));
}

/// A colour of the vertices, or a constant where they have none.
inline void interpolateColor(const Triangle& t, int attribute, std::uint32_t otherwise, float x, float y,
                             const Lanes<float>& w, Colors& out) {
  if (attribute < 0) {
    out = uniform(otherwise);
    return;
  }
  for (int c = 0; c < 4; ++c) interpolateChannel(t, attribute + c, x, y, w, out.c[c]);
}

inline void sampleStage(const Pipeline& p, const Triangle& t, std::size_t stage, float x, float y,
                        const Lanes<float>& w, Colors& out) {
  const int uv = p.attributes.uv[stage], divisor = p.attributes.divisor[stage];
  Lanes<float> u, v, scale = w;
  interpolate(t, uv, x, y, u);
  interpolate(t, uv + 1, x, y, v);
  if (divisor != kAttributeQ) {
    interpolate(t, divisor, x, y, scale);
    for (int i = 0; i < kLanes; ++i) scale[i] = 1.0f / scale[i];
  }
  for (int i = 0; i < kLanes; ++i) {
    u[i] *= scale[i];
    v[i] *= scale[i];
  }
  const Sampler& sampler = p.samplers[stage];
  sample(sampler, chooseLevel(sampler, t, uv, divisor, x, y), u, v, out);
}

inline void multiply(const Colors& factor, Colors& colors) {
  for (int c = 0; c < 4; ++c)
    for (int i = 0; i < kLanes; ++i) colors.c[c][i] = div255(std::uint32_t{colors.c[c][i]} * factor.c[c][i]);
}

inline void addSpecular(const Colors& specular, Colors& colors) {
  for (int c = 0; c < 3; ++c)
    for (int i = 0; i < kLanes; ++i)
      colors.c[c][i] = std::min<std::uint16_t>(static_cast<std::uint16_t>(colors.c[c][i] + specular.c[c][i]), 255);
}

inline void applyFog(const Pipeline& p, const Triangle& t, float x, float y, const Lanes<float>& w, Colors& colors) {
  Lanes<std::uint16_t> factor;
  if (p.fog.source == FogSource::Vertex)
    interpolateChannel(t, p.attributes.fog, x, y, w, factor);
  else
    for (int i = 0; i < kLanes; ++i)
      factor[i] = static_cast<std::uint16_t>(static_cast<std::int32_t>(fogFactor(p.fog, w[i]) * 255.0f + 0.5f));
  for (int c = 0; c < 3; ++c) {
    const std::uint32_t fog = p.fog.color >> (c * 8) & 255;
    for (int i = 0; i < kLanes; ++i)
      colors.c[c][i] = div255(colors.c[c][i] * std::uint32_t{factor[i]} + fog * (255u - factor[i]));
  }
}

/// Interpolates, samples and combines: the colour that arrives at the alpha test.
template <Texturing kTexturing>
void colorOf(const Pipeline& p, const Triangle& t, float x, float y, Colors& out) {
  Lanes<float> w;
  interpolate(t, kAttributeQ, x, y, w);
  for (int i = 0; i < kLanes; ++i) w[i] = 1.0f / w[i];
  if constexpr (kTexturing == Texturing::None) {
    interpolateColor(t, p.attributes.diffuse, 0xFFFFFFFF, x, y, w, out);
  } else if constexpr (kTexturing == Texturing::Replace) {
    sampleStage(p, t, 0, x, y, w, out);
  } else if constexpr (kTexturing == Texturing::Modulate) {
    sampleStage(p, t, 0, x, y, w, out);
    Colors diffuse;
    interpolateColor(t, p.attributes.diffuse, 0xFFFFFFFF, x, y, w, diffuse);
    multiply(diffuse, out);
  } else {
    StageInputs in;
    interpolateColor(t, p.attributes.diffuse, 0xFFFFFFFF, x, y, w, in.diffuse);
    interpolateColor(t, p.attributes.specular, 0, x, y, w, in.specular);
    in.factor = uniform(p.textureFactor);
    out = in.diffuse;
    for (std::size_t i = 0; i < static_cast<std::size_t>(p.stageCount); ++i) {
      if (p.stages[i].samples)
        sampleStage(p, t, i, x, y, w, in.texture);
      else
        in.texture = uniform(0xFFFFFFFF);
      combine(p.stages[i], in, out);
    }
    if (p.specularAdd) addSpecular(in.specular, out);
    if (p.fog.source != FogSource::None) applyFog(p, t, x, y, w, out);
  }
}

/// Blends a block into the tile.
template <Blending kBlending>
void write(const Pipeline& p, Colors& colors, const Mask* mask, std::uint32_t* tile) {
  Colors stored;
  if constexpr (kBlending == Blending::Alpha) {
    unpack(tile, stored);
    const Lanes<std::uint16_t> alpha = colors.c[kAlpha];
    for (int c = 0; c < 4; ++c)
      for (int i = 0; i < kLanes; ++i)
        colors.c[c][i] =
            div255(std::uint32_t{colors.c[c][i]} * alpha[i] + std::uint32_t{stored.c[c][i]} * (255u - alpha[i]));
  } else if constexpr (kBlending == Blending::Multiply) {
    unpack(tile, stored);
    multiply(stored, colors);
  } else if constexpr (kBlending == Blending::General) {
    if (p.blend) {
      unpack(tile, stored);
      blend(p, stored, colors);
    }
    if (p.target.sixteen()) quantize(p, colors);
  }
  Lanes<std::uint32_t> packed;
  pack(colors, packed);
  const std::uint32_t ones = p.target.alpha == 0 ? 0xFF000000 : 0;
  for (int i = 0; i < kLanes; ++i) packed[i] |= ones;
  if (kBlending != Blending::General && !mask) {
    for (int i = 0; i < kLanes; ++i) tile[i] = packed[i];
    return;
  }
  const std::uint32_t channels = kBlending == Blending::General ? p.writeMask | ones : 0xFFFFFFFF;
  for (int i = 0; i < kLanes; ++i) {
    const std::uint32_t keep = ~((mask ? static_cast<std::uint32_t>((*mask)[i]) : 0xFFFFFFFF) & channels);
    tile[i] = (tile[i] & keep) | (packed[i] & ~keep);
  }
}

/// Draws a block. @param x,y in the tile @param mask the covered pixels, null for all; used up
template <Texturing kTexturing, Blending kBlending>
void shade(const Pipeline& p, const Triangle& t, Tile& tile, int x, int y, Mask* mask) {
  const float atX = static_cast<float>(x) + t.originX, atY = static_cast<float>(y) + t.originY;
  const auto place = static_cast<std::size_t>(blockOffset(x, y));
  Mask all;
  if ((p.depthTest || p.alphaTest) && !mask) {
    for (int i = 0; i < kLanes; ++i) all[i] = -1;
    mask = &all;
  }
  Lanes<std::int32_t> depth, stored;
  std::int32_t* const depths = tile.depth->depth.data() + place;
  const auto writeDepth = [&] {
    for (int i = 0; i < kLanes; ++i) depths[i] = (depth[i] & (*mask)[i]) | (stored[i] & ~(*mask)[i]);
  };
  if (p.depthTest) {
    interpolateDepth(t, atX, atY, depth);
    for (int i = 0; i < kLanes; ++i) stored[i] = depths[i];
    compare(p.depthFunction, depth, stored, *mask);
    if (none(*mask)) return;
    if (p.depthWrite && !p.alphaTest) writeDepth();
  }
  tile.shaded += mask ? pixelsOf(*mask) : std::uint64_t{kLanes};
  Colors colors;
  colorOf<kTexturing>(p, t, atX, atY, colors);
  if (p.alphaTest) {
    Lanes<std::uint16_t> reference;
    for (int i = 0; i < kLanes; ++i) reference[i] = p.alphaRef;
    compare(p.alphaFunction, colors.c[kAlpha], reference, *mask);
    if (none(*mask)) return;
    if (p.depthWrite) writeDepth();
  }
  write<kBlending>(p, colors, mask, tile.color.data() + place);
}

}  // namespace ql::software
