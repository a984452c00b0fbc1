#include "platform/device/DeviceError.h"
#include "platform/device/Resources.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string>
#include <utility>

namespace ql::device {
namespace {

// Where a channel lies in a pixel; 0 bits: the format has no such channel.
struct Channel {
  std::uint8_t shift = 0, bits = 0;
};
struct Layout {
  Format format{};
  std::uint8_t bytes = 0;
  Channel alpha, red, green, blue;
  bool texture = false, target = false;
};

// Luminance formats name the same bits for red, green and blue.
constexpr std::array kLayouts{
    Layout{Format::R8G8B8, 3, {}, {16, 8}, {8, 8}, {0, 8}, false, false},
    Layout{Format::A8R8G8B8, 4, {24, 8}, {16, 8}, {8, 8}, {0, 8}, true, true},
    Layout{Format::X8R8G8B8, 4, {}, {16, 8}, {8, 8}, {0, 8}, true, true},
    Layout{Format::R5G6B5, 2, {}, {11, 5}, {5, 6}, {0, 5}, true, true},
    Layout{Format::X1R5G5B5, 2, {}, {10, 5}, {5, 5}, {0, 5}, true, true},
    Layout{Format::A1R5G5B5, 2, {15, 1}, {10, 5}, {5, 5}, {0, 5}, true, true},
    Layout{Format::A4R4G4B4, 2, {12, 4}, {8, 4}, {4, 4}, {0, 4}, true, false},
    Layout{Format::X4R4G4B4, 2, {}, {8, 4}, {4, 4}, {0, 4}, true, false},
    Layout{Format::A8, 1, {0, 8}, {}, {}, {}, true, false},
    Layout{Format::L8, 1, {}, {0, 8}, {0, 8}, {0, 8}, true, false},
    Layout{Format::A8L8, 2, {8, 8}, {0, 8}, {0, 8}, {0, 8}, true, false},
};

const Layout* find(Format format) {
  const auto at = std::ranges::find(kLayouts, format, &Layout::format);
  return at == kLayouts.end() ? nullptr : &*at;
}

const Layout& layoutOf(Format format) {
  if (const Layout* layout = find(format)) return *layout;
  throw DeviceError(kErrorInvalidCall,
                    "no surface has the format " + std::to_string(static_cast<std::uint32_t>(format)));
}

// Repeats the bits of a value until they fill 8, so that all ones become 255 and all zeros 0.
constexpr std::uint32_t expand(std::uint32_t pixel, Channel channel, std::uint32_t missing) {
  if (channel.bits == 0) return missing;
  const std::uint32_t limit = (1u << channel.bits) - 1;
  std::uint32_t value = ((pixel >> channel.shift) & limit) << (8 - channel.bits);
  for (std::uint32_t bits = channel.bits; bits < 8; bits *= 2) value |= value >> bits;
  return value;
}

// The nearest value of the narrower channel.
constexpr std::uint32_t narrow(std::uint32_t value, Channel channel) {
  const std::uint32_t limit = (1u << channel.bits) - 1, scaled = value * limit + 127;
  return (scaled + 1 + (scaled >> 8)) >> 8 << channel.shift;  // scaled / 255, exactly, below 2^16
}

constexpr std::uint32_t decoded(const Layout& layout, std::uint32_t value) {
  return expand(value, layout.alpha, 255) << 24 | expand(value, layout.red, 0) << 16 |
         expand(value, layout.green, 0) << 8 | expand(value, layout.blue, 0);
}

constexpr std::uint32_t encoded(const Layout& layout, std::uint32_t argb) {
  const std::uint32_t red = argb >> 16 & 255, green = argb >> 8 & 255, blue = argb & 255;
  const std::uint32_t alpha = narrow(argb >> 24, layout.alpha);
  if (layout.red.bits != 0 && layout.red.shift == layout.blue.shift) {
    // Luminance: the weights of the ITU's recommendation 601, in 1/256; grey stays exactly as it is.
    return alpha | narrow((red * 77 + green * 150 + blue * 29) >> 8, layout.red);
  }
  return alpha | narrow(red, layout.red) | narrow(green, layout.green) | narrow(blue, layout.blue);
}

void requireSameCount(const Layout& layout, std::size_t bytes, std::size_t colours) {
  if (bytes / layout.bytes != colours || bytes % layout.bytes != 0)
    throw DeviceError(kErrorInvalidCall, std::to_string(bytes) + " bytes for " + std::to_string(colours) +
                                             " pixels of " + std::to_string(layout.bytes) + " bytes");
}

// Rows of pixels, with a layout that the compiler knows and in blocks of numbers that it can turn into vectors: seven
// times as fast as pixel by pixel.
static_assert(std::endian::native == std::endian::little);
constexpr std::size_t kBlock = 64;
template <std::size_t kBytes>
using Block = std::array<std::conditional_t<kBytes == 1, std::uint8_t, std::uint16_t>, kBlock>;

template <std::size_t kIndex>
void decodePixels(const std::byte* pixels, std::uint32_t* argb, std::size_t count) {
  constexpr Layout kLayout = kLayouts[kIndex];
  if constexpr (kLayout.bytes <= 2) {
    Block<kLayout.bytes> block;
    std::memcpy(block.data(), pixels, count * kLayout.bytes);
    for (std::size_t i = 0; i < count; ++i) argb[i] = decoded(kLayout, block[i]);
  } else {
    for (std::size_t i = 0; i < count; ++i) {
      std::uint32_t value = 0;
      std::memcpy(&value, pixels + i * kLayout.bytes, kLayout.bytes);
      argb[i] = decoded(kLayout, value);
    }
  }
}
template <std::size_t kIndex>
void encodePixels(const std::uint32_t* argb, std::byte* pixels, std::size_t count) {
  constexpr Layout kLayout = kLayouts[kIndex];
  if constexpr (kLayout.bytes <= 2) {
    Block<kLayout.bytes> block;
    for (std::size_t i = 0; i < count; ++i)
      block[i] = static_cast<typename Block<kLayout.bytes>::value_type>(encoded(kLayout, argb[i]));
    std::memcpy(pixels, block.data(), count * kLayout.bytes);
  } else {
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t value = encoded(kLayout, argb[i]);
      std::memcpy(pixels + i * kLayout.bytes, &value, kLayout.bytes);
    }
  }
}

template <std::size_t kIndex>
void decodeRow(std::span<const std::byte> pixels, std::span<std::uint32_t> argb) {
  const std::size_t whole = argb.size() - argb.size() % kBlock;
  for (std::size_t at = 0; at < whole; at += kBlock)
    decodePixels<kIndex>(pixels.data() + at * kLayouts[kIndex].bytes, argb.data() + at, kBlock);
  decodePixels<kIndex>(pixels.data() + whole * kLayouts[kIndex].bytes, argb.data() + whole, argb.size() - whole);
}
template <std::size_t kIndex>
void encodeRow(std::span<const std::uint32_t> argb, std::span<std::byte> pixels) {
  const std::size_t whole = argb.size() - argb.size() % kBlock;
  for (std::size_t at = 0; at < whole; at += kBlock)
    encodePixels<kIndex>(argb.data() + at, pixels.data() + at * kLayouts[kIndex].bytes, kBlock);
  encodePixels<kIndex>(argb.data() + whole, pixels.data() + whole * kLayouts[kIndex].bytes, argb.size() - whole);
}

struct RowCodec {
  void (*decode)(std::span<const std::byte>, std::span<std::uint32_t>);
  void (*encode)(std::span<const std::uint32_t>, std::span<std::byte>);
};
template <std::size_t... kIndices>
constexpr std::array<RowCodec, sizeof...(kIndices)> rowCodecs(std::index_sequence<kIndices...> /*all*/) {
  return {RowCodec{decodeRow<kIndices>, encodeRow<kIndices>}...};
}
constexpr std::array kRowCodecs = rowCodecs(std::make_index_sequence<kLayouts.size()>());

const RowCodec& codecOf(const Layout& layout) {
  return kRowCodecs[static_cast<std::size_t>(&layout - kLayouts.data())];
}

}  // namespace

std::uint32_t bytesPerPixel(Format format) { return layoutOf(format).bytes; }

bool isTextureFormat(Format format) {
  const Layout* layout = find(format);
  return layout && layout->texture;
}

bool isTargetFormat(Format format) {
  const Layout* layout = find(format);
  return layout && layout->target;
}

bool isDepthFormat(Format format) {
  return format == Format::D16 || format == Format::D32 || format == Format::D24S8 || format == Format::D24X8;
}

bool hasAlpha(Format format) {
  const Layout* layout = find(format);
  return layout && layout->alpha.bits != 0;
}

std::uint32_t toArgb(Format format, std::uint32_t value) { return decoded(layoutOf(format), value); }
std::uint32_t fromArgb(Format format, std::uint32_t argb) { return encoded(layoutOf(format), argb); }

void toArgb(Format format, std::span<const std::byte> pixels, std::span<std::uint32_t> argb) {
  const Layout& layout = layoutOf(format);
  requireSameCount(layout, pixels.size(), argb.size());
  codecOf(layout).decode(pixels, argb);
}

void fromArgb(Format format, std::span<const std::uint32_t> argb, std::span<std::byte> pixels) {
  const Layout& layout = layoutOf(format);
  requireSameCount(layout, pixels.size(), argb.size());
  codecOf(layout).encode(argb, pixels);
}

std::uint32_t fullLevelCount(std::uint32_t width, std::uint32_t height) {
  return static_cast<std::uint32_t>(std::bit_width(std::max({width, height, 1u})));
}

}  // namespace ql::device
