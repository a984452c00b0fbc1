#include "platform/fonts/FontFace.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_SYNTHESIS_H

#include "platform/fonts/FontFiles.h"
#include "platform/fonts/Kerning.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <type_traits>

namespace ql::fonts {
namespace {

constexpr FT_UInt kDotsPerInch = 96;
constexpr float kPointsPerInch = 72;
/// Bitmaps larger than this many times the font's size come from damaged files only.
constexpr FT_Pos kMaxGlyphSizes = 8;

struct Destroy {
  void operator()(FT_Library library) const { FT_Done_FreeType(library); }
  void operator()(FT_Face face) const { FT_Done_Face(face); }
};
using Library = std::unique_ptr<std::remove_pointer_t<FT_Library>, Destroy>;
using Face = std::unique_ptr<std::remove_pointer_t<FT_Face>, Destroy>;

/// 26.6 fixed point to whole pixels.
std::int32_t rounded(FT_Pos v) { return static_cast<std::int32_t>((v + 32) >> 6); }
std::int32_t roundedUp(FT_Pos v) { return static_cast<std::int32_t>((v + 63) >> 6); }

float usablePoints(float points) { return std::isfinite(points) ? std::clamp(points, 1.0f, kMaxPoints) : 1.0f; }

std::uint8_t coverageAt(const FT_Bitmap& bitmap, std::int32_t x, std::int32_t y) {
  const unsigned char* row = bitmap.buffer + std::ptrdiff_t{y} * bitmap.pitch;
  if (bitmap.pixel_mode == FT_PIXEL_MODE_GRAY) return row[x];
  return (row[x / 8] >> (7 - x % 8) & 1) != 0 ? 255 : 0;
}

/// Collects an outline's contours, its curves cut into pieces.
class ContourBuilder {
 public:
  explicit ContourBuilder(float deviation) : deviation_(deviation > 0.01f ? deviation : 0.01f) {}

  void move(OutlinePoint to) {
    finish();
    contours_.push_back({to});
  }
  void line(OutlinePoint to) {
    if (to.x != last().x || to.y != last().y) contours_.back().push_back(to);
  }
  void quadratic(OutlinePoint b, OutlinePoint c) {
    const OutlinePoint a = last();
    const std::int32_t pieces = piecesFor(bend(a, b, c) / 4);
    for (std::int32_t i = 1; i < pieces; ++i) {
      const float t = static_cast<float>(i) / static_cast<float>(pieces), u = 1 - t;
      line(sum(a, u * u, b, 2 * u * t, c, t * t, {}, 0));
    }
    line(c);
  }
  void cubic(OutlinePoint b, OutlinePoint c, OutlinePoint d) {
    const OutlinePoint a = last();
    const std::int32_t pieces = piecesFor(0.75f * std::max(bend(a, b, c), bend(b, c, d)));
    for (std::int32_t i = 1; i < pieces; ++i) {
      const float t = static_cast<float>(i) / static_cast<float>(pieces), u = 1 - t;
      line(sum(a, u * u * u, b, 3 * u * u * t, c, 3 * u * t * t, d, t * t * t));
    }
    line(d);
  }
  std::vector<Contour> take() {
    finish();
    return std::move(contours_);
  }

 private:
  OutlinePoint last() const { return contours_.back().back(); }
  /// Drops what has no area and a last point that repeats the first.
  void finish() {
    if (contours_.empty()) return;
    Contour& contour = contours_.back();
    const OutlinePoint first = contour.front();
    if (contour.size() > 1 && first.x == last().x && first.y == last().y) contour.pop_back();
    if (contour.size() < 3) contours_.pop_back();
  }
  /// How far three control points are from standing evenly on a line.
  static float bend(OutlinePoint a, OutlinePoint b, OutlinePoint c) {
    return std::hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y);
  }
  /// A curve cut into n pieces leaves them by at most 1 / n² of what a single piece would.
  std::int32_t piecesFor(float error) const {
    return std::clamp(static_cast<std::int32_t>(std::ceil(std::sqrt(error / deviation_))), 1, 64);
  }
  static OutlinePoint sum(OutlinePoint a, float wa, OutlinePoint b, float wb, OutlinePoint c, float wc, OutlinePoint d,
                          float wd) {
    return {a.x * wa + b.x * wb + c.x * wc + d.x * wd, a.y * wa + b.y * wb + c.y * wc + d.y * wd};
  }

  float deviation_;
  std::vector<Contour> contours_;
};

OutlinePoint point(const FT_Vector* v) { return {static_cast<float>(v->x) / 64.0f, static_cast<float>(v->y) / 64.0f}; }
ContourBuilder& builder(void* user) { return *static_cast<ContourBuilder*>(user); }

constexpr FT_Outline_Funcs kOutlineFunctions = {
    [](const FT_Vector* to, void* user) { return builder(user).move(point(to)), 0; },
    [](const FT_Vector* to, void* user) { return builder(user).line(point(to)), 0; },
    [](const FT_Vector* b, const FT_Vector* to, void* user) { return builder(user).quadratic(point(b), point(to)), 0; },
    [](const FT_Vector* b, const FT_Vector* c, const FT_Vector* to, void* user) {
      return builder(user).cubic(point(b), point(c), point(to)), 0;
    },
    0,
    0};

}  // namespace

struct FontFace::Impl {
  FontRequest request;
  std::vector<std::byte> file;  ///< of a face from memory; outlives the face
  Library library;
  Face face;                     ///< null without a usable font
  std::optional<Kerning> pairs;  ///< of the face
  bool thicken = false, shear = false;

  explicit Impl(const FontRequest& wanted) : request(wanted) {
    FT_Library raw = nullptr;
    if (FT_Init_FreeType(&raw) == 0) library.reset(raw);
  }

  float pixels() const { return usablePoints(request.points) * kDotsPerInch / kPointsPerInch; }

  /// Takes a face that was just opened, when it has outlines and the size can be set.
  void adopt(FT_Face opened, bool bold, bool italic) {
    face.reset(opened);
    const auto size = static_cast<FT_F26Dot6>(std::lround(usablePoints(request.points) * 64));
    if (!FT_IS_SCALABLE(opened) || FT_Set_Char_Size(opened, 0, size, kDotsPerInch, kDotsPerInch) != 0)
      face.reset();
    else
      pairs.emplace(opened);
    thicken = request.bold && !bold;
    shear = request.italic && !italic;
  }

  /// The character's outline in the face's slot, in the asked weight and slant. Nothing when it has none.
  FT_GlyphSlot load(char32_t character, FT_Int32 flags) const {
    if (!face || FT_Load_Char(face.get(), character, flags) != 0) return nullptr;
    const FT_GlyphSlot slot = face->glyph;
    if (thicken) FT_GlyphSlot_Embolden(slot);
    if (shear) FT_GlyphSlot_Oblique(slot);
    return slot;
  }

  bool reasonable(FT_GlyphSlot slot) const {
    if (slot->format != FT_GLYPH_FORMAT_OUTLINE) return false;
    FT_BBox box;
    FT_Outline_Get_CBox(&slot->outline, &box);
    const FT_Pos limit = kMaxGlyphSizes * 64 * static_cast<FT_Pos>(std::ceil(pixels()) + 1);
    return box.xMin > -limit && box.yMin > -limit && box.xMax < limit && box.yMax < limit;
  }
};

FontFace::FontFace(const FontRequest& request) : impl_(std::make_unique<Impl>(request)) {
  const std::optional<FontFile> found = findFont(request);
  FT_Face opened = nullptr;
  if (!found || !impl_->library) return;
  if (FT_New_Face(impl_->library.get(), found->path.c_str(), found->index, &opened) != 0) return;
  impl_->adopt(opened, found->bold, found->italic);
}

FontFace::FontFace(const FontRequest& request, std::span<const std::byte> file)
    : impl_(std::make_unique<Impl>(request)) {
  impl_->file.assign(file.begin(), file.end());
  FT_Face opened = nullptr;
  if (!impl_->library) return;
  const auto* bytes = reinterpret_cast<const FT_Byte*>(impl_->file.data());
  if (FT_New_Memory_Face(impl_->library.get(), bytes, static_cast<FT_Long>(file.size()), 0, &opened) != 0) return;
  const bool bold = (opened->style_flags & FT_STYLE_FLAG_BOLD) != 0;
  const bool italic = (opened->style_flags & FT_STYLE_FLAG_ITALIC) != 0;
  impl_->adopt(opened, bold, italic);
}

FontFace::~FontFace() = default;
FontFace::FontFace(FontFace&&) noexcept = default;
FontFace& FontFace::operator=(FontFace&&) noexcept = default;

Glyph FontFace::render(char32_t character) const {
  Glyph glyph;
  glyph.advance = static_cast<std::int32_t>(std::lround(impl_->pixels() / 2));
  const FT_GlyphSlot slot = impl_->load(character, FT_LOAD_NO_BITMAP);
  if (slot == nullptr) return glyph;
  const FT_Pos limit = kMaxGlyphSizes * static_cast<FT_Pos>(std::ceil(impl_->pixels()) + 1);
  glyph.advance = static_cast<std::int32_t>(std::clamp<FT_Pos>(rounded(slot->advance.x), 0, limit));
  if (!impl_->reasonable(slot) || FT_Render_Glyph(slot, FT_RENDER_MODE_NORMAL) != 0) return glyph;
  const FT_Bitmap& bitmap = slot->bitmap;
  if (bitmap.pixel_mode != FT_PIXEL_MODE_GRAY && bitmap.pixel_mode != FT_PIXEL_MODE_MONO) return glyph;
  glyph.width = static_cast<std::int32_t>(bitmap.width);
  glyph.height = static_cast<std::int32_t>(bitmap.rows);
  glyph.left = slot->bitmap_left;
  glyph.top = slot->bitmap_top;
  glyph.coverage.reserve(std::size_t{bitmap.width} * bitmap.rows);
  for (std::int32_t y = 0; y < glyph.height; ++y)
    for (std::int32_t x = 0; x < glyph.width; ++x) glyph.coverage.push_back(coverageAt(bitmap, x, y));
  return glyph;
}

std::int32_t FontFace::kerning(char32_t left, char32_t right) const {
  if (!impl_->pairs) return 0;
  // Small letters stand on whole pixels: pairs that are all rounded to the closer one would look crowded.
  constexpr FT_Pos kFullSize = 25;  // pixels
  const auto size = static_cast<FT_Pos>(impl_->face->size->metrics.x_ppem);
  const FT_Pos limit = 64 * (size + 1), apart = std::clamp(impl_->pairs->between(left, right), -limit, limit);
  return rounded(size < kFullSize ? FT_MulDiv(apart, size, kFullSize) : apart);
}

std::vector<Contour> FontFace::outline(char32_t character, float deviation) const {
  const FT_GlyphSlot slot = impl_->load(character, FT_LOAD_NO_BITMAP | FT_LOAD_NO_HINTING);
  if (slot == nullptr || !impl_->reasonable(slot)) return {};
  ContourBuilder contours(deviation);
  if (FT_Outline_Decompose(&slot->outline, &kOutlineFunctions, &contours) != 0) return {};
  return contours.take();
}

std::int32_t FontFace::ascent() const {
  const auto size = static_cast<std::int32_t>(std::lround(impl_->pixels()));
  return impl_->face ? std::clamp(roundedUp(impl_->face->size->metrics.ascender), 1, 4 * size) : size;
}

std::int32_t FontFace::lineHeight() const {
  const auto size = static_cast<std::int32_t>(std::lround(impl_->pixels()));
  const std::int32_t normal = size + (size + 4) / 5;
  return impl_->face ? std::clamp(rounded(impl_->face->size->metrics.height), 1, 4 * size) : normal;
}

Underline FontFace::underline() const {
  const auto size = static_cast<std::int32_t>(std::lround(impl_->pixels()));
  if (!impl_->face) return {.below = 1, .thickness = std::max(1, size / 14)};
  const FT_Face face = impl_->face.get();
  const FT_Fixed scale = face->size->metrics.y_scale;
  const std::int32_t thickness = std::clamp(rounded(FT_MulFix(face->underline_thickness, scale)), 1, 1 + size / 4);
  // The font names the line's middle, below the baseline as a negative number.
  const std::int32_t middle = rounded(-FT_MulFix(face->underline_position, scale));
  return {.below = std::clamp(middle - thickness / 2, 1, size), .thickness = thickness};
}

const FontRequest& FontFace::request() const { return impl_->request; }

}  // namespace ql::fonts
