#include "mesh/Build.h"

#include <array>
#include <cstddef>

namespace ql::mesh {
namespace {

constexpr std::int32_t kWhite = -1;
constexpr float kLow = 0.02f, kHigh = 0.98f;  // of a tile: off the edges, where the neighbouring tile would bleed in

/// Lays points out from one corner: up along v, then along u. The tile's height goes with u, its width with v.
template <std::size_t kCount>
void addPiece(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture,
              std::span<const math::Vec3, kCount> points, const math::Vec3& normal, const Tiling& tiling) {
  if (meshRecord(context, mesh.slot).vertexCount + static_cast<std::int32_t>(kCount) > kMaxVertices)
    throw engine::EngineError(engine::kOverflow, "Overflow");
  addFace(context, mesh, texture, true);
  for (std::size_t i = 0; i < kCount; ++i) {
    const float u = (i < 2 ? kLow : kHigh) * tiling.height, v = (i % 2 == 0 ? kLow : kHigh) * tiling.width;
    addVertex(context, mesh, {points[i].x, points[i].y, points[i].z, normal.x, normal.y, normal.z, u, v, u, v}, kWhite);
  }
}

void becomeStrip(engine::EngineContext& context, const MeshHandle& mesh) {
  meshRecord(context, mesh.slot).primitiveType = kTriangleStrip;
}

std::array<math::Vec3, 4> wallPoints(const WallEnd& from, const WallEnd& to) {
  return {{{from.x, from.altitude, from.z},
           {from.x, from.altitude + from.height, from.z},
           {to.x, to.altitude, to.z},
           {to.x, to.altitude + to.height, to.z}}};
}

}  // namespace

void addWall(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture, const WallEnd& from,
             const WallEnd& to, const Tiling& tiling) {
  addPiece<4>(context, mesh, texture, wallPoints(from, to), {1, 0, 0}, tiling);
  // The third vertex is left without a normal.
  MeshRecord& record = meshRecord(context, mesh.slot);
  record.normalVertices[static_cast<std::size_t>(record.vertexCount) - 2].nx = 0;
  becomeStrip(context, mesh);
}

void addSlopedWall(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture, const WallEnd& from,
                   const WallEnd& to, const Tiling& tiling) {
  addPiece<4>(context, mesh, texture, wallPoints(from, to), {0, 0, 0}, tiling);
}

void addFloor(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture, float x1, float z1, float x2,
              float z2, float altitude, const Tiling& tiling) {
  const std::array<math::Vec3, 4> points{
      {{x1, altitude, z1}, {x1, altitude, z2}, {x2, altitude, z1}, {x2, altitude, z2}}};
  addPiece<4>(context, mesh, texture, points, {0, -1, 0}, tiling);
  becomeStrip(context, mesh);
}

void addQuad(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture,
             std::span<const math::Vec3, 4> points, const Tiling& tiling) {
  addPiece<4>(context, mesh, texture, points, {1, 0, 0}, tiling);
  becomeStrip(context, mesh);
}

void addTriangle(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture,
                 std::span<const math::Vec3, 3> points, const Tiling& tiling) {
  addPiece<3>(context, mesh, texture, points, {1, 0, 0}, tiling);
}

}  // namespace ql::mesh
