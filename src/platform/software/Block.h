/// @file
/// 4 × 4 pixels: the unit of all pixel work. Level of detail, attribute origins and depth are defined per block, never
/// per vector, so that the width of a vector does not show in the picture.
#pragma once

#include <array>
#include <cstdint>

namespace ql::software {

inline constexpr int kBlockSide = 4, kLanes = 16;
inline constexpr int kTileSide = 64, kTilePixels = kTileSide * kTileSide;

/// One value per pixel of a block, rows from the top.
template <class T>
struct alignas(64) Lanes {
  T v[kLanes];
  T& operator[](int i) { return v[i]; }
  const T& operator[](int i) const { return v[i]; }
};

/// All ones where a pixel is drawn, else 0.
using Mask = Lanes<std::int32_t>;

inline bool none(const Mask& mask) {
  std::int32_t any = 0;
  for (int i = 0; i < kLanes; ++i) any |= mask[i];
  return any == 0;
}

inline std::uint32_t pixelsOf(const Mask& mask) {
  std::int32_t count = 0;
  for (int i = 0; i < kLanes; ++i) count -= mask[i];
  return static_cast<std::uint32_t>(count);
}

enum Channel : int { kBlue = 0, kGreen = 1, kRed = 2, kAlpha = 3 };

/// The colours of a block, a plane per channel, values 0 to 255.
struct Colors {
  Lanes<std::uint16_t> c[4];
};

inline Colors uniform(std::uint32_t argb) {
  Colors out;
  for (int c = 0; c < 4; ++c)
    for (int i = 0; i < kLanes; ++i) out.c[c][i] = static_cast<std::uint16_t>(argb >> (c * 8) & 255);
  return out;
}

inline void unpack(const std::uint32_t* argb, Colors& out) {
  for (int c = 0; c < 4; ++c)
    for (int i = 0; i < kLanes; ++i) out.c[c][i] = static_cast<std::uint16_t>(argb[i] >> (c * 8) & 255);
}

inline void pack(const Colors& colors, Lanes<std::uint32_t>& out) {
  for (int i = 0; i < kLanes; ++i)
    out[i] = colors.c[0][i] | std::uint32_t{colors.c[1][i]} << 8 | std::uint32_t{colors.c[2][i]} << 16 |
             std::uint32_t{colors.c[3][i]} << 24;
}

/// Place of a pixel of a tile in storage by blocks. @param x,y 0 to kTileSide - 1
constexpr int blockOffset(int x, int y) {
  return ((y >> 2) * (kTileSide / kBlockSide) + (x >> 2)) * kLanes + (y & 3) * kBlockSide + (x & 3);
}

}  // namespace ql::software
