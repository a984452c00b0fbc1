#include "platform/utility/TextLayout.h"

#include "platform/utility/Font.h"

#include <algorithm>
#include <limits>

namespace ql::utility {
namespace {

constexpr std::u32string_view kLineEnds = U"\r\n";

/// Of a part of a text. @param before the character before the part, 0 at the start of a line
std::int64_t widthOf(std::u32string_view characters, char32_t before, const TextMetrics& metrics) {
  std::int64_t width = 0;
  for (const char32_t c : characters) {
    if (before != 0 && metrics.kerning) width += metrics.kerning(before, c);
    width += metrics.advance(c);
    before = c;
  }
  return width;
}

/// The parts between line ends; CRLF ends one line.
std::vector<std::u32string_view> paragraphs(std::u32string_view text) {
  std::vector<std::u32string_view> parts;
  for (;;) {
    const std::size_t end = text.find_first_of(kLineEnds);
    parts.push_back(text.substr(0, end));
    if (end == std::u32string_view::npos) return parts;
    const bool both = text.substr(end, 2) == kLineEnds;
    text.remove_prefix(end + (both ? 2 : 1));
  }
}

/// Cuts a paragraph before words that do not fit; the blanks at a cut belong to neither line.
void wrap(std::u32string_view text, std::int64_t limit, const TextMetrics& metrics,
          std::vector<std::u32string_view>& lines) {
  std::size_t start = 0, end = 0;  // of the line
  std::int64_t width = 0;          // from start to end
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t word = std::min(text.find_first_not_of(U' ', at), text.size());
    const std::size_t wordEnd = std::min(text.find(U' ', word), text.size());
    const std::int64_t more = widthOf(text.substr(end, wordEnd - end), end > start ? text[end - 1] : U'\0', metrics);
    if (end > start && word < wordEnd && width + more > limit) {
      lines.push_back(text.substr(start, end - start));
      start = word;
      width = widthOf(text.substr(word, wordEnd - word), 0, metrics);
    } else {
      width += more;
    }
    at = end = wordEnd;
  }
  lines.push_back(text.substr(start, end - start));
}

}  // namespace

std::vector<TextLine> layOut(std::u32string_view text, const math::Rect& rect, std::uint32_t format,
                             const TextMetrics& metrics) {
  std::vector<std::u32string_view> lines;
  const bool open = isEmpty(rect);
  const std::int64_t left = rect.left, top = rect.top;
  const std::int64_t room = open ? 0 : rect.right - left, height = open ? 0 : rect.bottom - top;
  if (format & kTextSingleLine)
    lines.push_back(text);
  else if ((format & kTextWordBreak) && !open)
    for (const std::u32string_view paragraph : paragraphs(text)) wrap(paragraph, room, metrics, lines);
  else
    lines = paragraphs(text);

  std::vector<TextLine> placed;
  placed.reserve(lines.size());
  const std::int64_t total = static_cast<std::int64_t>(lines.size()) * metrics.lineHeight;
  std::int64_t y = top;
  if (!open && (format & kTextVerticalCenter))
    y += (height - total) / 2;
  else if (!open && (format & kTextBottom))
    y += height - total;
  for (const std::u32string_view line : lines) {
    TextLine& out = placed.emplace_back(TextLine{line, left, y, widthOf(line, 0, metrics)});
    if (!open && (format & kTextCenter))
      out.x += (room - out.width) / 2;
    else if (!open && (format & kTextRight))
      out.x += room - out.width;
    y += metrics.lineHeight;
  }
  return placed;
}

}  // namespace ql::utility
