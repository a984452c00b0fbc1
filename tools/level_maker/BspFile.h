#pragma once

#include "Lightmaps.h"
#include "Tree.h"
#include "Visibility.h"

#include <cstdint>

namespace ql::maker {

/// All that goes into a level file.
struct BspContents {
  const Level& level;
  const Tree& tree;
  std::span<const int> clusterOfLeaf;
  const Visibility& visibility;
  std::span<const Surface> surfaces;
  std::span<const Chart> surfaceCharts;
  std::span<const Chart> patchCharts;
  std::span<const std::uint8_t> lightmaps;
};

/// The bytes of a level file ("IBSP", version 46). Leaf 0 stands for everything solid.
std::vector<std::uint8_t> writeBsp(const BspContents& contents);

/// Folder that texture names in level files begin with.
inline constexpr const char* kTextureFolder = "textures/court/";

}  // namespace ql::maker
