/// @file
/// Copying a target's picture to a texture.
#pragma once

#include "platform/software/Target.h"
#include "platform/software/Texture.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ql::software {

/// A copy of a target's picture to a level of a texture and to the smaller levels below. The threads that draw the
/// target's tiles make it tile by tile, while the colours are at hand: the side of a tile is a power of two, so that
/// its pixels alone make their part of seven levels.
class TextureCopy {
 public:
  /// @param target as large as the level
  TextureCopy(const Target& target, std::shared_ptr<Texture> texture, std::uint32_t level);
  const Texture& texture() const { return *texture_; }

  /// Copies one tile that has been finished. Several threads may call this, each for other tiles.
  void copyTile(const Target::Rows& rows, const Box& area);
  /// Makes the levels in which a tile has no pixel of its own; after all tiles.
  void finish();

 private:
  void store(std::uint32_t level, std::uint32_t x, std::uint32_t y, std::span<const std::uint32_t> argb) const;

  std::shared_ptr<Texture> texture_;
  std::uint32_t level_, lastTileLevel_, lastLevel_;
  std::uint32_t forced_;  ///< bits that every pixel of the target reads as ones
  std::uint32_t* texels_;
  std::vector<std::uint32_t> smallest_;  ///< the last level that tiles make, before it is rounded
};

}  // namespace ql::software
