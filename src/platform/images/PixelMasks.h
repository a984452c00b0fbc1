/// @file
/// Pixels whose channels are given by bit masks, as in BMP and DDS files.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace ql::images {

/// A value of 1 to 8 bits spread over 0 to 255 by repeating its bits, as display hardware does.
constexpr std::uint32_t expandBits(std::uint32_t value, std::uint32_t bits) {
  std::uint32_t out = 0;
  for (std::int32_t shift = 8 - static_cast<std::int32_t>(bits); bits != 0 && shift > -8;
       shift -= static_cast<std::int32_t>(bits))
    out |= shift >= 0 ? value << shift : value >> -shift;
  return out & 0xFF;
}

/// One A1R5G5B5 pixel; the alpha bit is returned as stored.
constexpr std::uint32_t fromA1R5G5B5(std::uint32_t v) {
  return ((v & 0x8000) != 0 ? 0xFF000000u : 0u) | expandBits((v >> 10) & 31, 5) << 16 |
         expandBits((v >> 5) & 31, 5) << 8 | expandBits(v & 31, 5);
}

/// The masks of a pixel of up to 32 bits. A mask of 0 leaves its channel 0 (alpha: 255).
struct PixelMasks {
  std::uint32_t red = 0, green = 0, blue = 0, alpha = 0;
  friend bool operator==(const PixelMasks&, const PixelMasks&) = default;
};

/// Turns masked pixels into 0xAARRGGBB through one table per channel.
class MaskDecoder {
 public:
  explicit MaskDecoder(const PixelMasks& masks)
      : channels_{Channel(masks.red, 16), Channel(masks.green, 8), Channel(masks.blue, 0), Channel(masks.alpha, 24)} {
    if (masks.alpha == 0) channels_[3].table[0] = 0xFF000000u;
  }
  std::uint32_t operator()(std::uint32_t v) const {
    return channels_[0](v) | channels_[1](v) | channels_[2](v) | channels_[3](v);
  }
  /// Whether every mask is one run of bits and none shares a bit with another.
  static bool valid(const PixelMasks& m) {
    std::uint32_t seen = 0;
    for (const std::uint32_t mask : {m.red, m.green, m.blue, m.alpha}) {
      if (mask == 0) continue;
      const std::uint32_t run = mask >> std::countr_zero(mask);
      if ((run & (run + 1)) != 0 || (seen & mask) != 0) return false;
      seen |= mask;
    }
    return seen != 0;
  }

 private:
  struct Channel {
    Channel(std::uint32_t mask_, std::uint32_t place) : mask(mask_) {
      if (mask == 0) return;
      std::uint32_t bits = static_cast<std::uint32_t>(std::popcount(mask));
      shift = static_cast<std::uint32_t>(std::countr_zero(mask));
      if (bits > 8) {  // only the upper eight count
        shift += bits - 8;
        bits = 8;
      }
      for (std::uint32_t i = 0; i < 1u << bits; ++i) table[i] = expandBits(i, bits) << place;
    }
    std::uint32_t operator()(std::uint32_t v) const { return table[(v & mask) >> shift]; }
    std::uint32_t mask, shift = 0;
    std::array<std::uint32_t, 256> table{};
  };
  std::array<Channel, 4> channels_;
};

/// A little-endian value of 1 to 4 bytes.
inline std::uint32_t readPixel(const std::byte* at, std::size_t bytes) {
  std::uint32_t v = 0;
  for (std::size_t i = 0; i < bytes; ++i) v |= std::to_integer<std::uint32_t>(at[i]) << (8 * i);
  return v;
}

}  // namespace ql::images
