/// @file
/// Many small lightmaps on few textures: a Half-Life level has one for each face.
#pragma once

#include "level/HlFaces.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ql::level {

/// The largest side of a page that holds several lightmaps, texels. A lightmap that doesn't fit has a page of its own.
inline constexpr std::uint32_t kLightmapPageSide = 512;

/// A picture of R5G6B5 pixels.
struct LightmapPage {
  std::uint32_t width = 0, height = 0;
  bool single = false;  ///< holds one lightmap and has its size; sides of other pages are powers of two
  std::vector<std::uint16_t> pixels;
};

/// Where a lightmap lies, texels of its page. Sides are those that are drawn: lightmaps grow to at least 8 a side.
struct LightmapPlace {
  std::size_t page = 0;
  std::uint32_t x = 0, y = 0, width = 0, height = 0;
};

struct LightmapPages {
  std::vector<LightmapPage> pages;
  std::vector<LightmapPlace> places;  ///< by lightmap
};

/// Brightens the lightmaps and puts them on pages, each with its outermost texels repeated around it, so that smoothing
/// doesn't mix it with its neighbours.
/// @param lighting the lump that they are parts of @param largestSide what textures can have
LightmapPages makeLightmapPages(std::span<const std::byte> lighting, std::span<const HlLightmap> lightmaps,
                                std::uint32_t largestSide);

/// Makes faces' lightmaps indices of pages, and their lightmap coordinates those of the pages.
void usePages(HlFaces& faces, const LightmapPages& pages);

}  // namespace ql::level
