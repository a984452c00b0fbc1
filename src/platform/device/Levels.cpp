#include "platform/device/Levels.h"

#include "platform/device/Resources.h"

#include <algorithm>
#include <cstddef>

namespace ql::device {

namespace {

// Values of 8 bits in both halves of a word, rounded to fewer bits that are then repeated: what encoding and decoding
// give, without a multiplication that vectors lack.
template <unsigned kBits>
constexpr std::uint32_t rounded(std::uint32_t pair) {
  constexpr std::uint32_t kBoth = 0x00010001;
  if constexpr (kBits == 6) {
    const std::uint32_t narrow = (pair * 253 + 505 * kBoth) >> 10 & 63 * kBoth;
    return narrow << 2 | (narrow >> 4 & 3 * kBoth);
  } else if constexpr (kBits == 5) {
    const std::uint32_t narrow = (pair * 249 + 1014 * kBoth) >> 11 & 31 * kBoth;
    return narrow << 3 | (narrow >> 2 & 7 * kBoth);
  } else if constexpr (kBits == 4) {
    return ((pair * 15 + 135 * kBoth) >> 8 & 15 * kBoth) * 17;
  } else if constexpr (kBits == 1) {
    return (pair >> 7 & kBoth) * 255;
  } else {
    return 255 * kBoth;  // missing alpha
  }
}

template <unsigned kAlpha, unsigned kRedAndBlue, unsigned kGreen>
void roundAll(std::span<std::uint32_t> argb) {
  for (std::uint32_t& pixel : argb)
    pixel = rounded<kRedAndBlue>(pixel & 0x00FF00FF) | (rounded<kGreen>(pixel >> 8 & 255) & 255) << 8 |
            rounded<kAlpha>(pixel >> 24) << 24;
}

}  // namespace

void roundTo(Format format, std::span<std::uint32_t> argb) {
  switch (format) {
    case Format::A8R8G8B8:
      return;
    case Format::X8R8G8B8:
      for (std::uint32_t& pixel : argb) pixel |= 0xFF000000;
      return;
    case Format::R5G6B5:
      return roundAll<0, 5, 6>(argb);
    case Format::X1R5G5B5:
      return roundAll<0, 5, 5>(argb);
    case Format::A1R5G5B5:
      return roundAll<1, 5, 5>(argb);
    case Format::A4R4G4B4:
      return roundAll<4, 4, 4>(argb);
    case Format::X4R4G4B4:
      return roundAll<0, 4, 4>(argb);
    default:
      for (std::uint32_t& pixel : argb) pixel = toArgb(format, fromArgb(format, pixel));
  }
}

void halveRows(std::span<const std::uint32_t> upper, std::span<const std::uint32_t> lower,
               std::span<std::uint32_t> smaller) {
  // Two channels at a time, each in the lower half of 16 bits, so that four of them add up without touching.
  constexpr std::uint32_t kEven = 0x00FF00FF, kHalf = 0x00020002;
  const std::size_t next = upper.size() > 1 ? 1 : 0;
  const std::uint32_t* const above = upper.data();
  const std::uint32_t* const below = lower.data();
  for (std::size_t i = 0; i < smaller.size(); ++i) {
    std::uint32_t even = kHalf, odd = kHalf;
    for (const std::uint32_t p : {above[2 * i], above[2 * i + next], below[2 * i], below[2 * i + next]}) {
      even += p & kEven;
      odd += p >> 8 & kEven;
    }
    smaller[i] = (even >> 2 & kEven) | (odd >> 2 & kEven) << 8;
  }
}

std::vector<std::uint32_t> halved(std::span<const std::uint32_t> picture, std::uint32_t width, std::uint32_t height) {
  const std::uint32_t halfWidth = std::max(width / 2, 1u), halfHeight = std::max(height / 2, 1u);
  std::vector<std::uint32_t> smaller(std::size_t{halfWidth} * halfHeight);
  const auto row = [&](std::uint32_t y) {
    return picture.subspan(std::size_t{std::min(y, height - 1)} * width, width);
  };
  for (std::uint32_t y = 0; y < halfHeight; ++y)
    halveRows(row(2 * y), row(2 * y + 1), std::span(smaller).subspan(std::size_t{y} * halfWidth, halfWidth));
  return smaller;
}

}  // namespace ql::device
