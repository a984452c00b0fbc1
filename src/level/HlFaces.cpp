#include "level/HlFaces.h"

#include "level/EntityText.h"
#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

namespace ql::level {
namespace {

constexpr float kLuxel = 16;  // texels
/// Good files use each byte of light once; see Q3Repair.cpp for the like.
constexpr std::size_t kLightRepeats = 4;

math::Vec3 vector(const std::array<float, 3>& v) { return {v[0], v[1], v[2]}; }

/// What an entity says of its brush model.
struct Placement {
  FaceLook look;
  math::Vec3 origin;  ///< file coordinates
};

/// Things that only the game's rules know of.
bool isInvisible(std::string_view className) {
  constexpr std::array<std::string_view, 6> kInvisible{"func_ladder",      "func_monsterclip",    "func_buyzone",
                                                       "func_bomb_target", "func_hostage_rescue", "func_escapezone"};
  return className.starts_with("trigger_") ||
         std::find(kInvisible.begin(), kInvisible.end(), className) != kInvisible.end();
}

std::uint8_t byteOf(double number) { return static_cast<std::uint8_t>(std::clamp(number, 0.0, 255.0)); }

Placement placementOf(std::string_view entity) {
  Placement out;
  const double mode = host::numberFromText(entityValue(entity, "rendermode"));
  if (mode >= 0 && mode <= 255) out.look.mode = static_cast<RenderMode>(static_cast<int>(mode));
  out.look.amount = byteOf(host::numberFromText(entityValue(entity, "renderamt")));
  const math::Vec3 color = parseVector(entityValue(entity, "rendercolor"));
  out.look.color = static_cast<std::uint32_t>(byteOf(double{color.x}) << 16 | byteOf(double{color.y}) << 8 |
                                              byteOf(double{color.z}));
  out.look.hidden = isInvisible(entityValue(entity, "classname"));
  out.origin = parseVector(entityValue(entity, "origin"));
  return out;
}

/// By brush model; the last entity that names a model places it.
std::vector<Placement> placements(const HlBsp& file) {
  std::vector<Placement> out(file.models.size());
  for (auto entity = firstEntity(file.entities); entity; entity = firstEntity(entity->rest)) {
    const std::string_view model = entityValue(entity->block, "model");
    if (model.size() < 2 || model[0] != '*') continue;
    const double number = host::numberFromText(model.substr(1));
    if (number >= 1 && number < static_cast<double>(out.size()))
      out[static_cast<std::size_t>(number)] = placementOf(entity->block);
  }
  return out;
}

class Builder {
 public:
  explicit Builder(const HlBsp& file) : file_(file), lightLeft_(file.lighting.size() * kLightRepeats) {}

  HlFaces run() {
    out_.looks.resize(file_.faces.size());
    origins_.resize(file_.faces.size());
    placeModels();
    std::size_t vertices = 0;
    for (const HlFace& face : file_.faces) vertices += face.edgeCount;
    out_.vertices.reserve(vertices);
    out_.records.reserve(file_.faces.size());
    for (std::size_t i = 0; i < file_.faces.size(); ++i) add(i);
    return std::move(out_);
  }

 private:
  void placeModels() {
    const std::vector<Placement> placed = placements(file_);
    for (std::size_t m = 1; m < placed.size(); ++m) {
      const HlModel& model = file_.models[m];
      const math::Vec3 low = math::add(vector(model.mins), placed[m].origin),
                       high = math::add(vector(model.maxs), placed[m].origin), middle = math::midpoint(low, high);
      BrushModel& brush = out_.brushModels.emplace_back();
      brush.firstFace = static_cast<std::size_t>(model.firstFace);
      brush.faceCount = static_cast<std::size_t>(model.faceCount);
      brush.sphere = {{-middle.x, middle.y, middle.z}, 0.5f * math::length(math::subtract(high, low))};
      for (std::size_t i = brush.firstFace; i < brush.firstFace + brush.faceCount; ++i) {
        out_.looks[i] = placed[m].look;
        origins_[i] = placed[m].origin;
      }
    }
  }

  void add(std::size_t index) {
    const HlFace& face = file_.faces[index];
    FaceRecord& record = out_.records.emplace_back();
    record.firstVertex = static_cast<std::uint32_t>(out_.vertices.size());
    if (face.edgeCount < 3) return;
    record.triangleCount = face.edgeCount - 2U;
    const HlTextureInfo& info = file_.textureInfos[face.textureInfo];
    record.texture = static_cast<std::int16_t>(info.texture);
    record.key = info.texture;
    std::array<float, 2> size{1, 1};
    if (info.texture >= 0) {
      const MipTexture& texture = file_.textures[static_cast<std::size_t>(info.texture)].header;
      size = {static_cast<float>(std::max(texture.width, 1U)), static_cast<float>(std::max(texture.height, 1U))};
      const std::string_view name = host::fieldText(texture.name);
      out_.looks[index].sky = host::equalIgnoringCase(name, "SKY");
      out_.looks[index].cutOut = name.starts_with(kCutOutMark);
    }
    addVertices(face, info, size, origins_[index]);
    addLight(face, record);
  }

  void addVertices(const HlFace& face, const HlTextureInfo& info, const std::array<float, 2>& size,
                   const math::Vec3& origin) {
    const HlPlane& plane = file_.planes[face.plane];
    const float side = face.side != 0 ? -1.0f : 1.0f;
    const math::Vec3 normal = math::scale(vector(plane.normal), side);
    for (std::int32_t k = 0; k < face.edgeCount; ++k) {
      const std::int32_t edge = file_.surfaceEdges[static_cast<std::size_t>(face.firstEdge + k)];
      const std::array<float, 3>& at =
          file_.vertices[file_.edges[static_cast<std::size_t>(std::abs(edge))].vertices[edge < 0]];
      const auto texel = [&](const std::array<float, 4>& axis) {
        return at[0] * axis[0] + at[1] * axis[1] + at[2] * axis[2] + axis[3];
      };
      const float u = texel(info.s), v = texel(info.t);
      // Lightmap coordinates are still texels here.
      out_.vertices.push_back({-(at[0] + origin.x), at[1] + origin.y, at[2] + origin.z, -normal.x, normal.y, normal.z,
                               u / size[0], v / size[1], u, v});
    }
  }

  /// Places the vertices in their luxels, when there is light for all of them.
  void addLight(const HlFace& face, FaceRecord& record) {
    const auto first = out_.vertices.end() - face.edgeCount;
    const auto [lowU, highU] = std::minmax_element(first, out_.vertices.end(),
                                                   [](const HlVertex& a, const HlVertex& b) { return a.tu1 < b.tu1; });
    const auto [lowV, highV] = std::minmax_element(first, out_.vertices.end(),
                                                   [](const HlVertex& a, const HlVertex& b) { return a.tv1 < b.tv1; });
    const LightmapExtent extent = lightmapExtent(lowU->tu1, highU->tu1, lowV->tv1, highV->tv1);
    const std::uint64_t bytes = std::uint64_t{extent.width} * extent.height * 3;
    const bool lit = face.styles[0] != kNoLightStyle && face.lightOffset >= 0 && bytes <= lightLeft_ &&
                     static_cast<std::uint64_t>(face.lightOffset) + bytes <= file_.lighting.size();
    if (lit) {
      lightLeft_ -= bytes;
      record.lightmap = static_cast<std::int32_t>(out_.lightmaps.size());
      out_.lightmaps.push_back({static_cast<std::size_t>(face.lightOffset), extent.width, extent.height});
    }
    for (auto vertex = first; vertex != out_.vertices.end(); ++vertex) {
      const auto place = [](float texel, std::int32_t low, std::uint32_t size) {
        return (texel / kLuxel - static_cast<float>(low) + 0.5f) / static_cast<float>(size);
      };
      vertex->tu1 = place(vertex->tu1, extent.low[0], extent.width);
      vertex->tv1 = place(vertex->tv1, extent.low[1], extent.height);
    }
  }

  const HlBsp& file_;
  std::uint64_t lightLeft_;
  std::vector<math::Vec3> origins_;
  HlFaces out_;
};

}  // namespace

LightmapExtent lightmapExtent(float lowU, float highU, float lowV, float highV) {
  const auto low = [](float texel) { return static_cast<std::int32_t>(std::floor(texel / kLuxel)); };
  const auto high = [](float texel) { return static_cast<std::int32_t>(std::ceil(texel / kLuxel)); };
  return {{low(lowU), low(lowV)},
          static_cast<std::uint32_t>(high(highU) - low(lowU) + 1),
          static_cast<std::uint32_t>(high(highV) - low(lowV) + 1)};
}

HlFaces buildHlFaces(const HlBsp& file) { return Builder(file).run(); }

}  // namespace ql::level
