#include "platform/images/DxtBlocks.h"

#include "platform/images/PixelMasks.h"

namespace ql::images {
namespace {

using Palette4 = std::array<std::uint32_t, 4>;

std::uint32_t fromR5G6B5(std::uint32_t v) {
  return 0xFF000000u | expandBits(v >> 11, 5) << 16 | expandBits((v >> 5) & 63, 6) << 8 | expandBits(v & 31, 5);
}

/// (a × wa + b × wb) / (wa + wb) for each colour channel, rounded down.
std::uint32_t blend(std::uint32_t a, std::uint32_t b, std::uint32_t wa, std::uint32_t wb) {
  std::uint32_t out = 0xFF000000u;
  for (std::uint32_t shift = 0; shift < 24; shift += 8)
    out |= ((a >> shift & 255) * wa + (b >> shift & 255) * wb) / (wa + wb) << shift;
  return out;
}

/// @param mayBeTransparent whether the order of the two colours selects three colours and transparent black
Block decodeColors(const std::byte* bytes, bool mayBeTransparent) {
  const std::uint32_t first = readPixel(bytes, 2), second = readPixel(bytes + 2, 2);
  Palette4 palette = {fromR5G6B5(first), fromR5G6B5(second), 0, 0};
  if (mayBeTransparent && first <= second) {
    palette[2] = blend(palette[0], palette[1], 1, 1);
  } else {
    palette[2] = blend(palette[0], palette[1], 2, 1);
    palette[3] = blend(palette[0], palette[1], 1, 2);
  }
  std::uint32_t indices = readPixel(bytes + 4, 4);
  Block block;
  for (std::uint32_t& pixel : block) {
    pixel = palette[indices & 3];
    indices >>= 2;
  }
  return block;
}

void setAlpha(std::uint32_t& pixel, std::uint32_t alpha) { pixel = (pixel & 0x00FFFFFFu) | alpha << 24; }

void applyExplicitAlpha(const std::byte* bytes, Block& block) {
  for (std::uint32_t i = 0; i < 16; ++i) {
    const std::uint32_t nibble = std::to_integer<std::uint32_t>(bytes[i / 2]) >> (i % 2 * 4) & 15;
    setAlpha(block[i], nibble * 17);
  }
}

void applyInterpolatedAlpha(const std::byte* bytes, Block& block) {
  const auto first = std::to_integer<std::uint32_t>(bytes[0]), second = std::to_integer<std::uint32_t>(bytes[1]);
  std::array<std::uint32_t, 8> palette = {first, second, 0, 0, 0, 0, 0, 255};
  const std::uint32_t steps = first > second ? 7 : 5;  // five steps leave room for 0 and 255
  for (std::uint32_t i = 1; i < steps; ++i) palette[i + 1] = ((steps - i) * first + i * second) / steps;
  std::uint64_t indices = readPixel(bytes + 2, 4) | std::uint64_t{readPixel(bytes + 6, 2)} << 32;
  for (std::uint32_t& pixel : block) {
    setAlpha(pixel, palette[indices & 7]);
    indices >>= 3;
  }
}

}  // namespace

Block decodeBlock(BlockKind kind, std::span<const std::byte> bytes) {
  if (kind == BlockKind::Dxt1) return decodeColors(bytes.data(), true);
  Block block = decodeColors(bytes.data() + 8, false);
  if (kind == BlockKind::Dxt3)
    applyExplicitAlpha(bytes.data(), block);
  else
    applyInterpolatedAlpha(bytes.data(), block);
  return block;
}

}  // namespace ql::images
