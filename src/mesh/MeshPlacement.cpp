#include "mesh/MeshPlacement.h"

#include "mesh/MeshRays.h"
#include "render/Camera.h"

#include <array>
#include <bit>

namespace ql::mesh {
namespace {

constexpr double kHalfTurn = 3.141592653;

float radians(float degrees) { return static_cast<float>(degrees * kHalfTurn / 180); }

math::Mat4 placement(const engine::EngineContext& context, const MeshRecord& mesh) {
  const math::Vec3 turn = mesh.billboard ? math::Vec3{0, render::cameraHeading(context), 0} : mesh.rotation;
  const math::Mat4 rotation = math::rotationYawPitchRoll(radians(turn.y), radians(turn.x), radians(turn.z));
  const math::Mat4 scaling = math::scaling(mesh.scale.x, mesh.scale.y, mesh.scale.z);
  return math::multiply(math::multiply(scaling, rotation),
                        math::translation(mesh.position.x, mesh.position.y, mesh.position.z));
}

void place(engine::EngineContext& context, std::int16_t slot, const math::Mat4& matrix) {
  MeshRecord& mesh = meshRecord(context, slot);
  using Bits = std::array<std::uint32_t, 16>;
  if (std::bit_cast<Bits>(mesh.worldMatrix) == std::bit_cast<Bits>(matrix)) return;
  mesh.worldMatrix = matrix;
  noteMoved(context, slot);
}

/// Exchanges one coordinate of the four corners in a vertex list.
template <class Vertex>
void flip(std::vector<Vertex>& v, bool leftRight, bool topBottom) {
  if (leftRight) {
    const float kept = v[1].tu;
    v[0].tu = v[2].tu;
    v[1].tu = v[3].tu;
    v[2].tu = v[3].tu = kept;
  }
  if (topBottom) {
    const float kept = v[2].tv;
    v[0].tv = v[1].tv;
    v[2].tv = v[3].tv;
    v[1].tv = v[3].tv = kept;
  }
}

}  // namespace

void setPosition(MeshRecord& mesh, const math::Vec3& position) {
  mesh.position = position;
  mesh.matrixDirty = true;
}

void setRotation(MeshRecord& mesh, const math::Vec3& degrees) {
  mesh.rotation = degrees;
  mesh.matrixDirty = true;
}

void setScale(MeshRecord& mesh, const math::Vec3& scale) {
  mesh.scale = scale;
  mesh.matrixDirty = true;
}

void setMatrix(engine::EngineContext& context, std::int16_t slot, const math::Mat4& matrix) {
  place(context, slot, matrix);
  meshRecord(context, slot).matrixDirty = false;
}

void rebuildMatrix(engine::EngineContext& context, std::int16_t slot) {
  MeshRecord& mesh = meshRecord(context, slot);
  math::Mat4 matrix = placement(context, mesh);
  if (mesh.parent >= 1 && mesh.parent <= meshCount(context))
    matrix = math::multiply(meshRecord(context, mesh.parent).worldMatrix, matrix);
  place(context, slot, matrix);
  mesh.matrixDirty = false;
}

void setVelocity(MeshRecord& mesh, const math::Vec3& velocity, float gravity) {
  mesh.velocity = velocity;
  mesh.gravity = gravity;
}

void moveMesh(engine::EngineContext& context, std::int16_t slot, float speed, bool checkCollision) {
  MeshRecord& mesh = meshRecord(context, slot);
  const auto elapsed = static_cast<float>(context.elapsedMs);
  const math::Vec3 target = math::add(mesh.position, math::scale(mesh.velocity, speed * elapsed / 1000));
  mesh.velocity.y -= mesh.gravity * elapsed / 1000;
  if (checkCollision && collide(context, mesh.position, target, RayTest::Accurate)) {
    mesh.velocity = {};
    return;
  }
  setPosition(mesh, target);
}

void flipBillboard(MeshRecord& mesh, bool leftRight, bool topBottom) {
  if (mesh.normalVertices.size() < 4) throw engine::EngineError(engine::kSubscript, "Subscript out of range");
  flip(mesh.normalVertices, leftRight, topBottom);
  flip(mesh.colorVertices, leftRight, topBottom);
}

}  // namespace ql::mesh
