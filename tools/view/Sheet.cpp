#include "Sheet.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <optional>
#include <utility>

#include <fmt/format.h>

namespace view {
namespace {

// Pixels.
constexpr std::uint32_t kBox = 128, kMargin = 8, kLine = 15, kTitle = 24;
constexpr std::uint32_t kCellWidth = kBox + 2 * kMargin, kCellHeight = kBox + 2 * kLine + 2 * kMargin;
constexpr std::uint32_t kSquare = 8;

constexpr std::uint32_t kBackground = 0x202428, kText = 0xE8E8E8, kQuietText = 0xA0A8B0, kCross = 0x605050;
constexpr std::uint32_t kLightSquare = 0xA8A8A8, kDarkSquare = 0x707070;

std::size_t fitting(std::uint32_t space, std::uint32_t each) { return std::max<std::size_t>(space / each, 1); }

/// What stands at a place of the sheet behind what has holes.
std::uint32_t squareAt(std::uint32_t x, std::uint32_t y) {
  return (x / kSquare + y / kSquare) % 2 == 0 ? kLightSquare : kDarkSquare;
}

std::uint32_t channel(std::uint32_t color, unsigned shift) { return color >> shift & 255; }

/// Lays a colour over another. @param coverage 0 to 255
std::uint32_t over(std::uint32_t above, std::uint32_t below, std::uint32_t coverage) {
  std::uint32_t out = 0;
  for (const unsigned shift : {0U, 8U, 16U})
    out |= (channel(above, shift) * coverage + channel(below, shift) * (255 - coverage) + 127) / 255 << shift;
  return out;
}

/// The average of the pixels of a rectangle, which count as much as they are opaque.
std::uint32_t average(const ql::images::Image& image, std::uint32_t left, std::uint32_t top, std::uint32_t right,
                      std::uint32_t bottom) {
  std::uint64_t sums[3] = {}, alpha = 0;
  for (std::uint32_t y = top; y < bottom; ++y)
    for (std::uint32_t x = left; x < right; ++x) {
      const std::uint32_t pixel = image.at(x, y), opaque = image.hasAlpha ? pixel >> 24 : 255;
      for (unsigned c = 0; c < 3; ++c) sums[c] += std::uint64_t{channel(pixel, 8 * c)} * opaque;
      alpha += opaque;
    }
  if (alpha == 0) return 0;
  std::uint64_t out = alpha / (std::uint64_t{right - left} * (bottom - top)) << 24;
  for (unsigned c = 0; c < 3; ++c) out |= sums[c] / alpha << 8 * c;
  return static_cast<std::uint32_t>(out);
}

}  // namespace

Sheet::Sheet(const TextureList& textures, std::string title, std::uint32_t width, std::uint32_t height)
    : textures_(textures),
      title_(std::move(title)),
      columns_(fitting(width, kCellWidth)),
      rows_(fitting(height - std::min(height, kTitle), kCellHeight)),
      font_(ql::fonts::FontRequest{}),
      picture_{width, height, {}} {}

std::size_t Sheet::pages() const {
  const std::size_t each = columns_ * rows_;
  return (textures_.count() + each - 1) / each;
}

walk::Picture Sheet::page(std::size_t number) {
  picture_.pixels.assign(std::size_t{picture_.width} * picture_.height, kBackground);
  shown_.clear();
  const std::string place = pages() > 1 ? fmt::format(", page {} of {}", number + 1, pages()) : "";
  drawText(fmt::format("{}: {} textures{}", title_, textures_.count(), place), kMargin, 5, picture_.width, kText);
  const std::size_t first = number * columns_ * rows_;
  for (std::size_t i = 0; i < columns_ * rows_ && first + i < textures_.count(); ++i)
    drawTexture(first + i, kMargin + static_cast<std::uint32_t>(i % columns_) * kCellWidth,
                kTitle + kMargin + static_cast<std::uint32_t>(i / columns_) * kCellHeight);
  return picture_;
}

void Sheet::drawTexture(std::size_t index, std::uint32_t left, std::uint32_t top) {
  Shown& shown = shown_.emplace_back(Shown{textures_.name(index)});
  std::string size;
  try {
    const ql::images::Image image = textures_.decode(index);
    shown.width = image.width;
    shown.height = image.height;
    size = fmt::format("{} \u00D7 {}", image.width, image.height);
    drawPicture(image, left, top);
  } catch (const std::exception& fault) {
    size = fault.what();
    drawCross(left, top);
  }
  drawText(shown.name, left, top + kBox + 2, kBox, kText);
  drawText(size, left, top + kBox + 2 + kLine, kBox, kQuietText);
}

/// Small ones are shown larger by a whole factor, large ones smaller.
void Sheet::drawPicture(const ql::images::Image& image, std::uint32_t left, std::uint32_t top) {
  const std::uint32_t longer = std::max(image.width, image.height), factor = std::max(kBox / longer, 1U);
  const auto shownSize = [&](std::uint32_t side) {
    if (longer <= kBox) return side * factor;
    return std::max(static_cast<std::uint32_t>(std::uint64_t{side} * kBox / longer), 1U);
  };
  const std::uint32_t width = shownSize(image.width), height = shownSize(image.height);
  left += (kBox - width) / 2;
  top += (kBox - height) / 2;
  const auto edge = [](std::uint32_t i, std::uint32_t count, std::uint32_t size) {
    return static_cast<std::uint32_t>(std::uint64_t{i} * size / count);
  };
  for (std::uint32_t y = 0; y < height; ++y)
    for (std::uint32_t x = 0; x < width; ++x) {
      const std::uint32_t u = edge(x, width, image.width), v = edge(y, height, image.height);
      const std::uint32_t color = average(image, u, v, std::max(edge(x + 1, width, image.width), u + 1),
                                          std::max(edge(y + 1, height, image.height), v + 1));
      put(std::int64_t{left} + x, std::int64_t{top} + y, over(color, squareAt(x, y), color >> 24));
    }
}

void Sheet::drawCross(std::uint32_t left, std::uint32_t top) {
  for (std::uint32_t i = 0; i < kBox; ++i)
    for (const auto& [x, y] : {std::pair{i, i}, {kBox - 1 - i, i}, {i, 0U}, {i, kBox - 1}, {0U, i}, {kBox - 1, i}})
      put(std::int64_t{left} + x, std::int64_t{top} + y, kCross);
}

void Sheet::drawText(std::string_view text, std::uint32_t left, std::uint32_t top, std::uint32_t most,
                     std::uint32_t color) {
  std::u32string line = ql::fonts::characters(text);
  std::int64_t length = 0;
  for (const char32_t c : line) length += glyph(c).advance;
  if (length > most) {
    constexpr char32_t kDots = U'\u2026';
    length += glyph(kDots).advance;
    std::size_t cut = 0;
    while (cut < line.size() && length > most) length -= glyph(line[cut++]).advance;
    line.replace(0, cut, 1, kDots);
  }
  std::int64_t pen = left;
  for (const char32_t c : line) {
    const ql::fonts::Glyph& g = glyph(c);
    for (std::int32_t y = 0; y < g.height; ++y)
      for (std::int32_t x = 0; x < g.width; ++x) {
        const std::uint32_t coverage =
            g.coverage[static_cast<std::size_t>(y) * static_cast<std::size_t>(g.width) + static_cast<std::size_t>(x)];
        if (coverage != 0)
          put(pen + g.left + x, std::int64_t{top} + font_.ascent() - g.top + y, over(color, kBackground, coverage));
      }
    pen += g.advance;
  }
}

const ql::fonts::Glyph& Sheet::glyph(char32_t character) {
  const auto [place, added] = glyphs_.try_emplace(character);
  if (added) place->second = font_.render(character);
  return place->second;
}

void Sheet::put(std::int64_t x, std::int64_t y, std::uint32_t color) {
  if (x < 0 || y < 0 || x >= picture_.width || y >= picture_.height) return;
  picture_.pixels[static_cast<std::size_t>(y) * picture_.width + static_cast<std::size_t>(x)] = color;
}

}  // namespace view
