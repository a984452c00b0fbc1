/// @file
/// Installed fonts as coverage bitmaps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ql::fonts {

inline constexpr float kMaxPoints = 512;

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

/// Where an underline goes: the rows from the baseline down to its upper edge, and its height, pixels.
struct Underline {
  std::int32_t below = 1, thickness = 1;
};

/// A point of a character's outline; y goes up from the baseline, pixels.
struct OutlinePoint {
  float x = 0, y = 0;
};
/// A closed line; the last point joins the first.
using Contour = std::vector<OutlinePoint>;

/// A face at one size. Without any installed font every glyph is empty and has the advance of half the size.
/// Weights and slants that the family lacks are made by thickening and shearing.
class FontFace {
 public:
  /// @param request points are taken between 1 and kMaxPoints
  explicit FontFace(const FontRequest& request);
  /// A face from the bytes of a font file; a file that is no usable font is as no font at all.
  FontFace(const FontRequest& request, std::span<const std::byte> file);
  ~FontFace();
  FontFace(FontFace&&) noexcept;
  FontFace& operator=(FontFace&&) noexcept;

  Glyph render(char32_t character) const;
  /// How much further apart than their advances tell two characters stand, pixels; mostly 0 or negative.
  std::int32_t kerning(char32_t left, char32_t right) const;
  /// The character's contours with their curves cut into straight pieces. @param deviation the most that a piece may
  /// leave its curve, pixels
  std::vector<Contour> outline(char32_t character, float deviation) const;
  std::int32_t ascent() const;      ///< baseline to top of line, pixels
  std::int32_t lineHeight() const;  ///< baseline to baseline, pixels
  Underline underline() const;
  const FontRequest& request() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// The characters of a text: UTF-8 when the whole of it is valid, else Windows-1252.
std::u32string characters(std::string_view text);

}  // namespace ql::fonts
