#include "platform/utility/Font.h"

#include "platform/utility/GlyphAtlas.h"
#include "platform/utility/StateGuard.h"
#include "platform/utility/TextLayout.h"

#include <Quasarlens3D/Types.h>

#include <algorithm>
#include <bit>
#include <unordered_map>

namespace ql::utility {
namespace {

using Vertex = Quasarlens3D::TransformedLitVertex;

/// A rectangle on the screen with the part of a texture that fills it.
struct Quad {
  float left = 0, top = 0, right = 0, bottom = 0;
  float u0 = 0, v0 = 0, u1 = 0, v1 = 0;
};

/// Cuts a quad at a rectangle. @return false when nothing is left
bool clip(Quad& quad, const math::Rect& rect) {
  const auto cut = [](float& low, float& high, float& t0, float& t1, float first, float last) {
    if (low >= last || high <= first) return false;
    const float slope = (t1 - t0) / (high - low);
    if (low < first) t0 += slope * (first - low), low = first;
    if (high > last) t1 -= slope * (high - last), high = last;
    return true;
  };
  return cut(quad.left, quad.right, quad.u0, quad.u1, static_cast<float>(rect.left), static_cast<float>(rect.right)) &&
         cut(quad.top, quad.bottom, quad.v0, quad.v1, static_cast<float>(rect.top), static_cast<float>(rect.bottom));
}

void append(std::vector<Vertex>& vertices, const Quad& quad, std::uint32_t color) {
  const auto corner = [&](float x, float y, float u, float v) {
    // Screen coordinates name the middles of pixels: half a pixel back puts texels onto pixels.
    Vertex vertex;
    vertex.x = x - 0.5f;
    vertex.y = y - 0.5f;
    vertex.rhw = 1;
    vertex.diffuse = std::bit_cast<std::int32_t>(color);
    vertex.tu = u;
    vertex.tv = v;
    return vertex;
  };
  const Vertex a = corner(quad.left, quad.top, quad.u0, quad.v0), b = corner(quad.right, quad.top, quad.u1, quad.v0);
  const Vertex c = corner(quad.left, quad.bottom, quad.u0, quad.v1);
  const Vertex d = corner(quad.right, quad.bottom, quad.u1, quad.v1);
  vertices.insert(vertices.end(), {a, b, c, c, b, d});
}

}  // namespace

struct Font::Impl {
  GlyphAtlas atlas;
  std::unordered_map<std::uint64_t, std::int32_t> kernings;  ///< of the pairs that were asked for

  Impl(device::Device& device, const fonts::FontRequest& request) : atlas(device, request) {}

  /// Control characters (tabs, line ends in a single line) are blanks.
  const AtlasGlyph& glyph(char32_t c) { return atlas.glyph(c < U' ' ? U' ' : c); }

  std::int32_t kerning(char32_t left, char32_t right) {
    const auto [place, isNew] = kernings.try_emplace(std::uint64_t{left} << 32 | right);
    if (isNew) place->second = atlas.face().kerning(left, right);
    return place->second;
  }

  TextMetrics metrics() {
    return {[this](char32_t c) { return glyph(c).advance; }, atlas.face().lineHeight(),
            [this](char32_t left, char32_t right) { return kerning(left, right); }};
  }

  /// The quads of a line, each on its page.
  template <class F>
  void forEachQuad(const TextLine& line, F&& f) {
    std::int64_t pen = line.x;
    char32_t before = 0;
    const std::int64_t baseline = line.y + atlas.face().ascent();
    for (const char32_t c : line.characters) {
      const AtlasGlyph& at = glyph(c);
      if (before != 0) pen += kerning(before, c);
      before = c;
      if (at.width > 0) {
        const auto side = static_cast<float>(atlas.side(at.page));
        Quad quad;
        quad.left = static_cast<float>(pen + at.left);
        quad.top = static_cast<float>(baseline - at.top);
        quad.right = quad.left + static_cast<float>(at.width);
        quad.bottom = quad.top + static_cast<float>(at.height);
        quad.u0 = static_cast<float>(at.x) / side;
        quad.v0 = static_cast<float>(at.y) / side;
        quad.u1 = static_cast<float>(at.x + at.width) / side;
        quad.v1 = static_cast<float>(at.y + at.height) / side;
        f(at.page, quad);
      }
      pen += at.advance;
    }
    if (!atlas.face().request().underline || line.width == 0) return;
    const fonts::Underline under = atlas.face().underline();
    const auto side = static_cast<float>(atlas.side(0));
    Quad bar;
    bar.left = static_cast<float>(line.x);
    bar.right = static_cast<float>(line.x + line.width);
    bar.top = static_cast<float>(baseline + under.below);
    bar.bottom = bar.top + static_cast<float>(under.thickness);
    bar.u0 = bar.u1 = (GlyphAtlas::kWhiteX + 0.5f) / side;
    bar.v0 = bar.v1 = (GlyphAtlas::kWhiteY + 0.5f) / side;
    f(std::size_t{0}, bar);
  }
};

Font::Font(device::Device& device, const fonts::FontRequest& request)
    : impl_(std::make_unique<Impl>(device, request)) {}
Font::~Font() = default;

void Font::drawText(device::Device& device, std::string_view text, const math::Rect& rect, std::uint32_t format,
                    std::uint32_t color) {
  GlyphAtlas& atlas = impl_->atlas;
  atlas.trim();
  const std::u32string characters = fonts::characters(text);
  const bool clipped = !isEmpty(rect) && !(format & kTextNoClip);
  std::vector<std::vector<Vertex>> pages;
  for (const TextLine& line : layOut(characters, rect, format, impl_->metrics()))
    impl_->forEachQuad(line, [&](std::size_t page, Quad quad) {
      if (clipped && !clip(quad, rect)) return;
      if (pages.size() <= page) pages.resize(page + 1);
      append(pages[page], quad, color);
    });

  StateGuard guard(device);
  for (std::size_t page = 0; page < pages.size(); ++page) {
    const std::vector<Vertex>& vertices = pages[page];
    if (vertices.empty()) continue;
    guard.overlay(atlas.texture(device, page), device::Filter::Point);
    device.drawPrimitiveUP(device::PrimitiveType::TriangleList, static_cast<std::uint32_t>(vertices.size() / 3),
                           std::as_bytes(std::span(vertices)), sizeof(Vertex));
  }
}

math::Rect Font::measure(std::string_view text) {
  const std::u32string characters = fonts::characters(text);
  const std::vector<TextLine> lines = layOut(characters, {}, 0, impl_->metrics());
  std::int64_t width = 0;
  for (const TextLine& line : lines) width = std::max(width, line.width);
  constexpr std::int64_t kMost = INT32_MAX;
  const std::int64_t height = static_cast<std::int64_t>(lines.size()) * impl_->atlas.face().lineHeight();
  return {0, 0, static_cast<std::int32_t>(std::min(width, kMost)), static_cast<std::int32_t>(std::min(height, kMost))};
}

const fonts::FontRequest& Font::request() const { return impl_->atlas.face().request(); }

}  // namespace ql::utility
