#include "render/scene/Decals.h"

#include "mesh/Build.h"
#include "mesh/MeshPlacement.h"
#include "mesh/MeshSurface.h"

#include <array>
#include <utility>
#include <vector>

namespace ql::render::scene {
namespace {

constexpr std::int16_t kColorBlending = 3;

/// The decals that the engine keeps.
struct Decals {
  struct Kept {
    std::shared_ptr<mesh::MeshHandle> mesh;
    bool mortal;
  };
  std::vector<Kept> kept;
};

/// The two directions of a decal's sides.
std::pair<math::Vec3, math::Vec3> sidesOf(const math::Vec3& normal) {
  if (normal.x == 0 && normal.z == 0 && normal.y != 0) {
    const float side = normal.y > 0 ? 1.0f : -1.0f;
    return {{side, 0, 0}, {0, 0, side}};
  }
  const math::Vec3 across = math::cross({0, 1, 0}, normal);
  return {math::normalize(math::cross(normal, across)), math::normalize(across)};
}

}  // namespace

std::shared_ptr<mesh::MeshHandle> createBillboard(engine::EngineContext& context, const std::string& name,
                                                  std::int16_t texture, const BillboardPlace& place) {
  std::shared_ptr<mesh::MeshHandle> handle = mesh::allocateMesh(context, name);
  const float half = place.width / 2;
  mesh::setGroupPointer(context, *handle, 1);
  mesh::addWall(context, *handle, texture, {-half, 0, place.height, -place.height},
                {half, 0, place.height, -place.height}, {});
  mesh::MeshRecord& record = mesh::meshRecord(context, handle->slot);
  record.primitiveType = mesh::kTriangleStrip;
  mesh::setMaterial(record, 0);
  mesh::setTexture(record, texture);
  mesh::setPosition(record, {place.x, place.y, place.z});
  mesh::setScale(record, {1, 1, 1});
  record.vertexType = mesh::kNormalVertices;
  record.billboard = true;
  return handle;
}

std::shared_ptr<mesh::MeshHandle> createDecal(engine::EngineContext& context, const math::Vec3& position,
                                              const math::Vec3& normal, std::int16_t texture, float size,
                                              float deathTime) {
  std::shared_ptr<mesh::MeshHandle> handle = mesh::allocateMesh(context, "Decal");
  const auto [a, c] = sidesOf(normal);
  const float half = size / 2;
  const math::Vec3 sum = math::scale(math::add(a, c), half), difference = math::scale(math::subtract(a, c), half);
  const std::array<math::Vec3, 4> corners{math::negate(sum), difference, math::negate(difference), sum};
  mesh::MeshRecord& record = mesh::meshRecord(context, handle->slot);
  mesh::setPosition(record, math::add(position, normal));
  record.deathTime = deathTime;
  mesh::addQuad(context, *handle, texture, corners, {});
  record.primitiveType = mesh::kTriangleStrip;
  record.vertexType = mesh::kColorVertices;
  mesh::setBlending(record, kColorBlending);
  context.get<Decals>().kept.push_back({handle, deathTime > 0});
  return handle;
}

void dropDeadDecals(engine::EngineContext& context) {
  std::erase_if(context.get<Decals>().kept, [&](const Decals::Kept& decal) {
    const mesh::MeshRecord& record = mesh::meshRecord(context, decal.mesh->slot);
    return decal.mortal && !record.enabled && record.deathTime <= 0;
  });
}

void dropAllDecals(engine::EngineContext& context) { context.get<Decals>().kept.clear(); }

}  // namespace ql::render::scene
