/// @file
/// The tile that a thread is drawing.
#pragma once

#include "platform/software/Painting.h"
#include "platform/software/Target.h"

#include <array>
#include <cstdint>

namespace ql::software {

struct Tile {
  alignas(64) std::array<std::uint32_t, kTilePixels> color;  ///< 0xAARRGGBB by blocks
  TileDepth* depth = nullptr;                                ///< the target's own
  std::int32_t x = 0, y = 0;                                 ///< of the first pixel in the target
  Box area;                                                  ///< the tile's pixels inside the target
  Workspace work;                                            ///< of vector code
  std::uint64_t shaded = 0;                                  ///< pixels whose colour was computed, of all tiles so far
  std::uint64_t touched = 0;                                 ///< tiles so far that were drawn or cleared
};

/// Reads the tile's colours from the target's rows, or writes them there.
void loadColor(Tile& tile, const Target::Rows& rows);
void storeColor(const Tile& tile, const Target::Rows& rows);

/// A clear that waits. @see device::BackEnd::clear
struct Clear {
  std::uint32_t first = 0;  ///< primitives that come before it
  Box box;
  bool color = false, depth = false;
  std::uint32_t argb = 0;  ///< as the target stores it
  std::int32_t z = kFarthest;
};
void clearTile(Tile& tile, const Clear& clear);

}  // namespace ql::software
