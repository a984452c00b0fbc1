/// @file
/// Where the characters of a text go.
#pragma once

#include "math/Vector.h"

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace ql::utility {

/// What the layout needs of a font, pixels.
struct TextMetrics {
  std::function<std::int32_t(char32_t)> advance;
  std::int32_t lineHeight = 0;
  std::function<std::int32_t(char32_t, char32_t)> kerning = {};  ///< between two characters; none: 0
};

/// One line: its characters and its place.
struct TextLine {
  std::u32string_view characters;  ///< of the text, without the characters that broke the line
  std::int64_t x = 0, y = 0;       ///< upper left
  std::int64_t width = 0;
};

/// Breaks a text into lines and places them. Lines end at CR, LF or CRLF (never with kTextSingleLine) and, with
/// kTextWordBreak, before a word that would pass the rectangle's right edge; a word that is wider than the rectangle
/// keeps its line. In an empty rectangle lines start at its upper left and have no right edge.
std::vector<TextLine> layOut(std::u32string_view text, const math::Rect& rect, std::uint32_t format,
                             const TextMetrics& metrics);

/// Whether a rectangle encloses nothing.
constexpr bool isEmpty(const math::Rect& rect) { return rect.right <= rect.left || rect.bottom <= rect.top; }

}  // namespace ql::utility
