/// @file
/// What drawing triangles into a tile works with.
#pragma once

#include "platform/software/Sample.h"
#include "platform/software/Triangle.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ql::software {

/// A triangle as the records of its vertices.
struct TriangleRef {
  const float* v[3];
};

/// Draws triangles, in order, into a tile. @param area the part of the tile that may be drawn, in pixels of the target
using PaintFunction = void (*)(const Pipeline&, std::span<const TriangleRef>, const Box& area, Tile&);

/// Triangles that are set up at a time.
inline constexpr std::size_t kSetUpAtOnce = 16;

/// What vector code keeps of a tile's triangles while it draws them; nothing is initialised.
struct Workspace {
  /// What a triangle's pixels need beside the triangle.
  struct Slot {
    alignas(64) float lane[kMaxAttributes][kLanes];  ///< what a pixel adds to the value at its block's first one
    bool flatDistance;                               ///< the same w everywhere
  };
  /// Blocks of triangles that wait. What is read and written by vectors reaches a vector's width farther.
  static constexpr std::size_t kMostItems = 256, kItemSpace = kMostItems + kLanes;
  struct Item {
    std::uint8_t slot;
    bool covered;  ///< all pixels are inside
    std::uint16_t mask;
  };

  Triangle triangles[kSetUpAtOnce];
  Slot slots[kSetUpAtOnce];
  Item items[kMostItems];
  std::uint8_t x[kItemSpace], y[kItemSpace];  ///< of the blocks in the tile
  LevelChoice levels[device::kStages][kItemSpace];
};

}  // namespace ql::software
