#include "platform/software/Tile.h"

#include <algorithm>

namespace ql::software {
namespace {

// Calls f(places in the tile, places in a row, pixels) for each run of up to 4 pixels that lie together in both; for
// whole runs the count is a constant.
template <class F>
void forEachRun(const Tile& tile, const Target::Rows& rows, F&& f) {
  const std::int32_t whole = (tile.area.right - tile.area.left) / kBlockSide;
  const std::int32_t rest = (tile.area.right - tile.area.left) % kBlockSide;
  for (std::int32_t y = tile.area.top; y < tile.area.bottom; ++y) {
    std::uint32_t* row = rows.first + static_cast<std::size_t>(y) * rows.pitch + tile.area.left;
    auto at = static_cast<std::size_t>(blockOffset(0, y - tile.y));
    for (std::int32_t i = 0; i < whole; ++i, row += kBlockSide, at += kLanes) f(at, row, kBlockSide);
    if (rest != 0) f(at, row, rest);
  }
}

}  // namespace

void loadColor(Tile& tile, const Target::Rows& rows) {
  const std::uint32_t flip = rows.flip;
  forEachRun(tile, rows, [&tile, flip](std::size_t at, const std::uint32_t* row, int count) {
    std::uint32_t* const to = tile.color.data() + at;
    for (int i = 0; i < count; ++i) to[i] = row[i] ^ flip;
  });
}

void storeColor(const Tile& tile, const Target::Rows& rows) {
  const std::uint32_t flip = rows.flip;
  forEachRun(tile, rows, [&tile, flip](std::size_t at, std::uint32_t* row, int count) {
    const std::uint32_t* const from = tile.color.data() + at;
    for (int i = 0; i < count; ++i) row[i] = from[i] ^ flip;
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
