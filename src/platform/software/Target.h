/// @file
/// What is drawn into: colours and depth, tile by tile.
#pragma once

#include "platform/software/Block.h"
#include "platform/software/Formats.h"
#include "platform/software/Texture.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace ql::software {

/// Depth is a whole number 0 (near) to kFarthest, 24 bits.
inline constexpr std::int32_t kFarthest = 0xFFFFFF;
/// Depth of a distance 0 to 1; one formula for vertices and clears.
inline float depthOf(float z) { return (z > 0 ? (z < 1 ? z : 1.0f) : 0.0f) * static_cast<float>(kFarthest); }

/// Half-open rectangle in pixels.
struct Box {
  std::int32_t left = 0, top = 0, right = 0, bottom = 0;
  bool empty() const { return left >= right || top >= bottom; }
  bool operator==(const Box&) const = default;
};
inline Box intersect(const Box& a, const Box& b) {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

/// Depth of a tile in storage by blocks. farthest holds, per 8 × 8 pixels, a bound that no depth inside exceeds.
struct TileDepth {
  static constexpr int kCoarseSide = 8;
  static constexpr int kCoarse = (kTileSide / kCoarseSide) * (kTileSide / kCoarseSide);
  alignas(64) std::array<std::int32_t, kTilePixels> depth;
  std::array<std::int32_t, kCoarse> farthest;
};

class Target {
 public:
  Target(std::uint32_t width, std::uint32_t height, device::Format format);
  /// Draws into a level of a texture, which it keeps alive.
  Target(std::shared_ptr<Texture> texture, std::uint32_t level);

  std::int32_t width() const { return width_; }
  std::int32_t height() const { return height_; }
  device::Format format() const { return format_; }
  TargetBits bits() const { return targetBits(format_); }
  std::int32_t tilesX() const { return tilesX_; }
  std::int32_t tilesY() const { return tilesY_; }
  const Texture* texture() const { return texture_.get(); }

  /// Colours as 0xAARRGGBB, exclusive-ored with flip, for the tiles that are about to be drawn.
  struct Rows {
    std::uint32_t* first = nullptr;
    std::size_t pitch = 0;  ///< pixels from row to row
    std::uint32_t flip = 0;
  };
  Rows beginWrite();
  void endWrite();
  /// Colours of a row from a pixel on.
  void readRow(std::int32_t x, std::int32_t y, std::span<std::uint32_t> argb) const;
  /// The whole picture; only of targets that are no texture.
  const std::uint32_t* picture() const { return color_.data(); }

  TileDepth& depth(std::int32_t tile) { return depth_[static_cast<std::size_t>(tile)]; }

 private:
  std::int32_t width_ = 0, height_ = 0, tilesX_ = 0, tilesY_ = 0;
  device::Format format_;
  std::shared_ptr<Texture> texture_;
  std::uint32_t level_ = 0;
  std::vector<std::uint32_t> color_;
  std::vector<TileDepth> depth_;
};

}  // namespace ql::software
