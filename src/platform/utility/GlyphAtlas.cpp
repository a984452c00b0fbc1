#include "platform/utility/GlyphAtlas.h"

#include "platform/utility/Pixels.h"

#include <algorithm>
#include <bit>

namespace ql::utility {
namespace {

constexpr std::uint32_t kGap = 1;        // texels between glyphs, so that filters never meet a neighbour
constexpr std::uint32_t kWhiteSide = 3;  // the white block of the first page
constexpr std::uint32_t kNothing = 0x00FFFFFF;
constexpr std::size_t kPages = 16;

}  // namespace

GlyphAtlas::GlyphAtlas(device::Device& device, const fonts::FontRequest& request) : face_(request) {
  const device::Capabilities& caps = device.capabilities();
  largestSide_ = std::bit_floor(std::min(caps.maxTextureWidth, caps.maxTextureHeight));
  // Room for some 128 characters of a usual width.
  constexpr std::uint32_t kPerSide = 10, kSmallest = 128, kUsualLargest = 1024;
  const auto line = static_cast<std::uint32_t>(std::max(face_.lineHeight(), 1));
  usualSide_ = std::min(std::clamp(std::bit_ceil(std::min(line, kUsualLargest) * kPerSide), kSmallest, kUsualLargest),
                        largestSide_);
  trim();
}

void GlyphAtlas::trim() {
  if (!pages_.empty() && pages_.size() <= kPages) return;
  pages_.clear();
  glyphs_.clear();
  addPage(usualSide_);
  Page& page = pages_.front();
  for (std::uint32_t y = 0; y < kWhiteSide; ++y)
    std::fill_n(page.pixels.begin() + std::ptrdiff_t{y} * page.side, kWhiteSide, 0xFFFFFFFF);
  page.x = kWhiteSide + kGap;
  page.rowHeight = kWhiteSide;
}

void GlyphAtlas::addPage(std::uint32_t least) {
  Page& page = pages_.emplace_back();
  page.side = std::max(usualSide_, std::bit_ceil(least));
  page.pixels.assign(std::size_t{page.side} * page.side, kNothing);
}

/// Finds room on the last page. @return false when it has none
bool GlyphAtlas::place(AtlasGlyph& at) {
  Page& page = pages_.back();
  if (page.x + at.width > page.side) {
    page.x = 0;
    page.y += page.rowHeight + kGap;
    page.rowHeight = 0;
  }
  if (at.width > page.side || page.y + at.height > page.side) return false;
  at.page = pages_.size() - 1;
  at.x = page.x;
  at.y = page.y;
  page.x += at.width + kGap;
  page.rowHeight = std::max(page.rowHeight, at.height);
  return true;
}

const AtlasGlyph& GlyphAtlas::glyph(char32_t character) {
  const auto known = glyphs_.find(character);
  if (known != glyphs_.end()) return known->second;
  const fonts::Glyph rendered = face_.render(character);
  AtlasGlyph at;
  at.left = rendered.left;
  at.top = rendered.top;
  at.advance = rendered.advance;
  at.width = static_cast<std::uint32_t>(std::max(rendered.width, 0));
  at.height = static_cast<std::uint32_t>(std::max(rendered.height, 0));
  const std::uint32_t longer = std::max(at.width, at.height);
  if (at.width == 0 || at.height == 0 || longer > largestSide_) {
    at.width = at.height = 0;
    return glyphs_.emplace(character, at).first->second;
  }
  if (!place(at)) {
    addPage(longer);
    place(at);
  }
  Page& page = pages_[at.page];
  for (std::uint32_t y = 0; y < at.height; ++y)
    for (std::uint32_t x = 0; x < at.width; ++x)
      page.pixels[std::size_t{at.y + y} * page.side + at.x + x] =
          kNothing | std::uint32_t{rendered.coverage[std::size_t{y} * at.width + x]} << 24;
  page.changed = true;
  return glyphs_.emplace(character, at).first->second;
}

const std::shared_ptr<device::Texture>& GlyphAtlas::texture(device::Device& device, std::size_t number) {
  Page& page = pages_[number];
  // A device that was made anew needs textures of its own.
  if (!page.texture || page.texture->backEnd() != device.backEnd()) {
    page.texture = device.createTexture(page.side, page.side, 1, 0, device::Format::A8R8G8B8, device::Pool::Managed);
    page.changed = true;
  }
  if (page.changed) page.texture->writeLevel(0, std::as_bytes(std::span(page.pixels)));
  page.changed = false;
  return page.texture;
}

}  // namespace ql::utility
