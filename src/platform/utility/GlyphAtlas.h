/// @file
/// Rendered characters in textures.
#pragma once

#include "platform/device/Device.h"
#include "platform/fonts/FontFace.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace ql::utility {

/// A character's place in a page of the atlas.
struct AtlasGlyph {
  std::size_t page = 0;
  std::uint32_t x = 0, y = 0, width = 0, height = 0;  ///< texels; no width: nothing to draw
  std::int32_t left = 0, top = 0, advance = 0;        ///< as fonts::Glyph
};

/// Renders characters on first use into pages: white textures whose alpha is the coverage. Rows of glyphs fill a page
/// from its top; a glyph that fits no row opens a new page.
class GlyphAtlas {
 public:
  GlyphAtlas(device::Device& device, const fonts::FontRequest& request);
  const AtlasGlyph& glyph(char32_t character);
  const fonts::FontFace& face() const { return face_; }
  std::uint32_t side(std::size_t page) const { return pages_[page].side; }  ///< texels
  /// The page's texture, with every glyph that was asked for so far.
  const std::shared_ptr<device::Texture>& texture(device::Device& device, std::size_t page);
  /// A texel of the first page that is white and opaque, with white neighbours.
  static constexpr float kWhiteX = 1, kWhiteY = 1;
  /// Starts anew when so many pages are in use that the atlas should not grow on. Places from before are void.
  void trim();

 private:
  struct Page {
    std::uint32_t side = 0;
    std::vector<std::uint32_t> pixels;
    std::uint32_t x = 0, y = 0, rowHeight = 0;
    bool changed = true;
    std::shared_ptr<device::Texture> texture;
  };
  void addPage(std::uint32_t least);
  bool place(AtlasGlyph& at);

  fonts::FontFace face_;
  std::uint32_t largestSide_, usualSide_;
  std::vector<Page> pages_;
  std::map<char32_t, AtlasGlyph> glyphs_;
};

}  // namespace ql::utility
