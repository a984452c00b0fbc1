/// @file
/// Installed fonts as coverage bitmaps.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ql::fonts {

/// What a host asks for.
struct FontRequest {
  std::string face = "DejaVu Sans";  ///< an installed family; what is not installed becomes DejaVu Sans
  float points = 8.25f;              ///< size at 96 dots per inch
  bool bold = false, italic = false, underline = false;
};

/// One rendered character.
struct Glyph {
  std::int32_t width = 0, height = 0;  ///< of the bitmap, pixels
  std::int32_t left = 0, top = 0;      ///< from the pen to the bitmap's left edge; from the baseline up to its top row
  std::int32_t advance = 0;            ///< to the next pen position, pixels
  std::vector<std::uint8_t> coverage;  ///< width × height, row by row from the top, 0 to 255
};

/// A face at one size. Without any installed font every glyph is empty and has the advance of half the size.
class FontFace {
 public:
  explicit FontFace(const FontRequest& request);
  ~FontFace();
  FontFace(FontFace&&) noexcept;
  FontFace& operator=(FontFace&&) noexcept;

  Glyph render(char32_t character) const;
  std::int32_t ascent() const;      ///< baseline to top of line, pixels
  std::int32_t lineHeight() const;  ///< baseline to baseline, pixels
  const FontRequest& request() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// The characters of a UTF-8 text (invalid bytes read as Windows-1252).
std::u32string characters(std::string_view text);

}  // namespace ql::fonts
