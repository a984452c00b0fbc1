/// @file
/// The 4 × 4 pixel blocks of compressed textures.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ql::images {

/// Sixteen pixels, row by row, each 0xAARRGGBB.
using Block = std::array<std::uint32_t, 16>;
enum class BlockKind : std::uint8_t {
  Dxt1,  ///< 8 bytes: two colours and 2-bit indices; one index may mean transparent
  Dxt3,  ///< 16 bytes: 4 bits of alpha for each pixel, then colours
  Dxt5   ///< 16 bytes: two alphas with 3-bit indices, then colours
};
constexpr std::size_t blockBytes(BlockKind kind) { return kind == BlockKind::Dxt1 ? 8 : 16; }

/// @param bytes exactly blockBytes(kind)
Block decodeBlock(BlockKind kind, std::span<const std::byte> bytes);

}  // namespace ql::images
