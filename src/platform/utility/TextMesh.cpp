#include "platform/utility/TextMesh.h"

#include "platform/fonts/FontFace.h"
#include "platform/utility/Tessellate.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace ql::utility {
namespace {

using fonts::OutlinePoint;

constexpr float kPointsPerPixel = 0.75f;           // at 96 dots per inch
constexpr float kRoundCornerCosine = 0.70710678f;  // corners that turn by less than 45 degrees look round

/// Gathers the solid's faces.
class Solid {
 public:
  explicit Solid(float depth) : depth_(depth) {}

  void add(const Area& area, OutlinePoint at) {
    addFace(area, at, true);
    addFace(area, at, false);
    if (depth_ == 0) return;
    for (const fonts::Contour& border : area.borders) addSides(border, at);
  }

  bool empty() const { return indices_.empty(); }
  std::shared_ptr<SubsetMesh> finish() && {
    spreadTexture();
    return std::make_shared<SubsetMesh>(std::move(vertices_), std::move(indices_));
  }

 private:
  std::uint32_t addVertex(OutlinePoint place, float z, const math::Vec3& normal) {
    vertices_.push_back({{place.x, place.y, z}, normal, 0, 0});
    return static_cast<std::uint32_t>(vertices_.size() - 1);
  }

  void addFace(const Area& area, OutlinePoint at, bool front) {
    const auto first = static_cast<std::uint32_t>(vertices_.size());
    for (const OutlinePoint& point : area.points)
      addVertex({at.x + point.x, at.y + point.y}, front ? -depth_ : 0, {0, 0, front ? -1.0f : 1.0f});
    // The area's triangles run counter-clockwise as the front is seen: those of the front are turned.
    for (std::size_t i = 0; i + 2 < area.triangles.size(); i += 3) {
      const std::uint32_t a = first + area.triangles[i], b = first + area.triangles[i + 1],
                          c = first + area.triangles[i + 2];
      indices_.insert(indices_.end(), {a, front ? c : b, front ? b : c});
    }
  }

  void addSides(const fonts::Contour& border, OutlinePoint at) {
    const std::size_t count = border.size();
    // The inside lies to the left of a border, so its right-hand normals point outwards.
    std::vector<math::Vec3> normals(count);
    for (std::size_t i = 0; i < count; ++i) {
      const OutlinePoint a = border[i], b = border[(i + 1) % count];
      normals[i] = math::normalize(math::Vec3{b.y - a.y, a.x - b.x, 0});
    }
    for (std::size_t i = 0; i < count; ++i) {
      const math::Vec3 own = normals[i], before = normals[(i + count - 1) % count], after = normals[(i + 1) % count];
      const OutlinePoint a = border[i], b = border[(i + 1) % count];
      addSide({at.x + a.x, at.y + a.y}, {at.x + b.x, at.y + b.y}, between(before, own), between(own, after), own);
    }
  }
  /// The normal at a corner for the side whose normal is the second (or the first): their middle where it is round.
  struct Corner {
    bool round;
    math::Vec3 middle;
  };
  static Corner between(const math::Vec3& a, const math::Vec3& b) {
    return {math::dot(a, b) > kRoundCornerCosine, math::normalize(math::add(a, b))};
  }
  void addSide(OutlinePoint a, OutlinePoint b, const Corner& atA, const Corner& atB, const math::Vec3& own) {
    const math::Vec3 normalA = atA.round ? atA.middle : own, normalB = atB.round ? atB.middle : own;
    const std::uint32_t backA = addVertex(a, 0, normalA), backB = addVertex(b, 0, normalB),
                        frontA = addVertex(a, -depth_, normalA), frontB = addVertex(b, -depth_, normalB);
    indices_.insert(indices_.end(), {backA, frontA, frontB, backA, frontB, backB});
  }

  /// Lays the texture over the text's rectangle.
  void spreadTexture() {
    const Box box = boundingBox(std::as_bytes(std::span(vertices_)), sizeof(SubsetVertex));
    const float width = box.maximum.x - box.minimum.x, height = box.maximum.y - box.minimum.y;
    for (SubsetVertex& vertex : vertices_) {
      vertex.tu = width > 0 ? (vertex.position.x - box.minimum.x) / width : 0;
      vertex.tv = height > 0 ? (box.maximum.y - vertex.position.y) / height : 0;
    }
  }

  float depth_;
  std::vector<SubsetVertex> vertices_;
  std::vector<std::uint32_t> indices_;
};

[[noreturn]] void invalidCall(const char* description) {
  throw device::DeviceError(device::kErrorInvalidCall, description);
}

}  // namespace

std::shared_ptr<SubsetMesh> createText(const fonts::FontRequest& font, std::string_view text, float deviation,
                                       float extrusion) {
  if (!(deviation >= 0 && extrusion >= 0 && std::isfinite(extrusion)))
    invalidCall("text: a deviation or depth below 0");
  fonts::FontRequest request = font;
  request.points = kTextEm * kPointsPerPixel;  // one pixel is one unit
  const fonts::FontFace face(request);
  Solid solid(extrusion);
  OutlinePoint pen;
  char32_t previous = 0;
  for (const char32_t character : fonts::characters(text)) {
    const bool endsLine = character == U'\r' || (character == U'\n' && previous != U'\r');
    const bool breaks = character == U'\r' || character == U'\n';
    if (endsLine) pen = {0, pen.y - static_cast<float>(face.lineHeight())};
    if (!breaks && pen.x != 0) pen.x += static_cast<float>(face.kerning(previous, character));
    previous = character;
    if (breaks) continue;
    solid.add(areaInside(face.outline(character, deviation * kTextEm / 1000)), pen);
    pen.x += static_cast<float>(face.render(character).advance);
  }
  if (solid.empty()) invalidCall("text: nothing to show");
  return std::move(solid).finish();
}

}  // namespace ql::utility
