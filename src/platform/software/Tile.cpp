#include "platform/software/Tile.h"

#include <algorithm>

namespace ql::software {
namespace {

// Calls f(place in the tile, place in the row, pixels) for each run of up to 4 pixels that lie together in both.
template <class F>
void forEachRun(const Tile& tile, const Target::Rows& rows, F&& f) {
  for (std::int32_t y = tile.area.top; y < tile.area.bottom; ++y) {
    std::uint32_t* row = rows.first + static_cast<std::size_t>(y) * rows.pitch;
    for (std::int32_t x = tile.area.left; x < tile.area.right; x += kBlockSide)
      f(static_cast<std::size_t>(blockOffset(x - tile.x, y - tile.y)), row + x,
        std::min(kBlockSide, tile.area.right - x));
  }
}

}  // namespace

void loadColor(Tile& tile, const Target::Rows& rows) {
  forEachRun(tile, rows, [&](std::size_t at, const std::uint32_t* row, int count) {
    for (int i = 0; i < count; ++i) tile.color[at + static_cast<std::size_t>(i)] = row[i] ^ rows.flip;
  });
}

void storeColor(const Tile& tile, const Target::Rows& rows) {
  forEachRun(tile, rows, [&](std::size_t at, std::uint32_t* row, int count) {
    for (int i = 0; i < count; ++i) row[i] = tile.color[at + static_cast<std::size_t>(i)] ^ rows.flip;
  });
}

void clearTile(Tile& tile, const Clear& clear) {
  const Box box = intersect(clear.box, tile.area);
  if (box.empty()) return;
  const bool whole = box == tile.area;
  TileDepth& depth = *tile.depth;
  if (whole) {
    if (clear.color) tile.color.fill(clear.argb);
    if (clear.depth) {
      depth.depth.fill(clear.z);
      depth.farthest.fill(clear.z);
    }
    return;
  }
  for (std::int32_t y = box.top - tile.y; y < box.bottom - tile.y; ++y)
    for (std::int32_t x = box.left - tile.x; x < box.right - tile.x; ++x) {
      const auto at = static_cast<std::size_t>(blockOffset(x, y));
      if (clear.color) tile.color[at] = clear.argb;
      if (clear.depth) depth.depth[at] = clear.z;
    }
  if (clear.depth)
    for (std::int32_t& farthest : depth.farthest) farthest = std::max(farthest, clear.z);
}

}  // namespace ql::software
