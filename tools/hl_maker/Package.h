/// @file
/// Textures of 256 colours, and packages of them.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ql::hl_maker {

using Bytes = std::vector<std::uint8_t>;

struct IndexedTexture {
  std::string name;
  int width = 0, height = 0;
  Bytes levels[4];  ///< indices; each half of the one above
  Bytes palette;    ///< 256 times red, green, blue
};

/// The texture of a name: made from a recipe of the level maker's, or one that only such levels have ("sky", "{grate",
/// "aaatrigger"). @throws std::runtime_error for a name without a recipe
IndexedTexture makeTexture(const std::string& name);
/// The file of a package.
Bytes encodePackage(const std::vector<IndexedTexture>& textures);

}  // namespace ql::hl_maker
