/// @file
/// Textures in a grid, each with its name and size beneath.
#pragma once

#include "TextureList.h"
#include "platform/fonts/FontFace.h"
#include "walk/Picture.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace view {

class Sheet {
 public:
  /// What a page shows of a texture.
  struct Shown {
    std::string name;
    std::uint32_t width = 0, height = 0;  ///< pixels; 0: it cannot be read
  };

  /// @param title stands on every page @param width, height of a page, pixels
  Sheet(const TextureList& textures, std::string title, std::uint32_t width, std::uint32_t height);

  std::size_t pages() const;
  /// Draws a page, the first is 0.
  walk::Picture page(std::size_t number);
  /// On the last page that was drawn.
  const std::vector<Shown>& shown() const { return shown_; }

 private:
  void drawTexture(std::size_t index, std::uint32_t left, std::uint32_t top);
  void drawPicture(const ql::images::Image& image, std::uint32_t left, std::uint32_t top);
  void drawCross(std::uint32_t left, std::uint32_t top);
  /// One line, cut in front when it is longer than it may be.
  void drawText(std::string_view text, std::uint32_t left, std::uint32_t top, std::uint32_t most, std::uint32_t color);
  const ql::fonts::Glyph& glyph(char32_t character);
  void put(std::int64_t x, std::int64_t y, std::uint32_t color);

  const TextureList& textures_;
  std::string title_;
  std::size_t columns_, rows_;
  ql::fonts::FontFace font_;
  std::map<char32_t, ql::fonts::Glyph> glyphs_;
  walk::Picture picture_;
  std::vector<Shown> shown_;
};

}  // namespace view
