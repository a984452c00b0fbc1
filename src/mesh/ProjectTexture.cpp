#include "mesh/ProjectTexture.h"

#include "render/TextureTable.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace ql::mesh {
namespace {

constexpr std::int16_t kMostVertices = 8;  // of a group
constexpr float kPi = 3.1415f;

[[noreturn]] void subscript() { throw engine::EngineError(engine::kSubscript, "Subscript out of range"); }

void projectGroup(MeshRecord& record, const MeshGroup& group, float height, float width, const Projection& projection) {
  const auto start = static_cast<std::size_t>(group.start), count = static_cast<std::size_t>(group.count);
  if (group.count > kMostVertices || start + count > record.normalVertices.size()) subscript();
  std::array<math::Vec3, kMostVertices> places{};
  for (std::size_t i = 0; i < count; ++i) {
    const math::NormalVertex& vertex = record.normalVertices[start + i];
    places[i] = {vertex.x, vertex.y, vertex.z};
  }
  const math::Vec3 axisU = math::scale(math::normalize(math::subtract(places[1], places[0])), projection.scaleU);
  const math::Vec3 axisV = math::scale(math::normalize(math::subtract(places[2], places[0])), projection.scaleV);
  const float angle = projection.rotation * (kPi / 180);
  const float cosine = std::cos(angle), sine = std::sin(angle);
  for (std::size_t i = 0; i < count; ++i) {
    const float u = math::dot(axisU, places[i]) + projection.shiftU;
    const float v = math::dot(axisV, places[i]) + projection.shiftV;
    const float tu = (u * cosine - v * sine) / height, tv = (u * sine + v * cosine) / width;
    record.normalVertices[start + i].tu = record.colorVertices[start + i].tu = tu;
    record.normalVertices[start + i].tv = record.colorVertices[start + i].tv = tv;
  }
}

}  // namespace

void projectTexture(engine::EngineContext& context, const MeshHandle& mesh, std::int16_t texture, std::int16_t group,
                    const Projection& projection) {
  MeshRecord& record = meshRecord(context, mesh.slot);
  const render::TextureEntry& entry = context.get<render::TextureTable>().entries.at(texture);
  for (std::size_t g = 1; g < record.groups.size(); ++g) {
    if (group != -1 && static_cast<std::size_t>(group) != g) continue;
    if (entry.height == 0 || entry.width == 0) throw engine::EngineError(engine::kDivisionByZero, "Division by zero");
    projectGroup(record, record.groups[g], static_cast<float>(entry.height), static_cast<float>(entry.width),
                 projection);
  }
}

}  // namespace ql::mesh
