#include "api/Meshes.h"
#include "api/Numbers.h"
#include "api/Shaders.h"
#include "mesh/MeshDraw.h"
#include "mesh/MeshPlacement.h"
#include "mesh/MeshRays.h"
#include "mesh/MeshSurface.h"

#include <Quasarlens3D/Mesh8.h>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using Detail::MeshHandleObject;

namespace {

mesh::MeshRecord& recordOf(MeshHandleObject& self) { return mesh::meshRecord(*self.context, self.handle->slot); }

}  // namespace

void Mesh8::SetPosition(float x, float y, float z) {
  call(*this, [&](MeshHandleObject& self) { mesh::setPosition(recordOf(self), {x, y, z}); });
}
void Mesh8::SetRotation(float x, float y, float z) {
  call(*this, [&](MeshHandleObject& self) { mesh::setRotation(recordOf(self), {x, y, z}); });
}
void Mesh8::ScaleMesh(float x, float y, float z) {
  call(*this, [&](MeshHandleObject& self) { mesh::setScale(recordOf(self), {x, y, z}); });
}
Vec3 Mesh8::GetPosition() const {
  return call(*this, [](MeshHandleObject& self) { return recordOf(self).position; });
}
Vec3 Mesh8::GetRotation() const {
  return call(*this, [](MeshHandleObject& self) { return recordOf(self).rotation; });
}
void Mesh8::SetMatrix(const Mat4& Matrix) {
  call(*this, [&](MeshHandleObject& self) { mesh::setMatrix(*self.context, self.handle->slot, Matrix); });
}
Mat4 Mesh8::GetMatrix() const {
  return call(*this, [](MeshHandleObject& self) { return recordOf(self).worldMatrix; });
}

void Mesh8::SetVelocity(float x, float y, float z, float Gravity) {
  call(*this, [&](MeshHandleObject& self) { mesh::setVelocity(recordOf(self), {x, y, z}, Gravity); });
}
void Mesh8::MoveMesh(float Speed, Boolean CheckCollision) {
  call(*this, [&](MeshHandleObject& self) { mesh::moveMesh(*self.context, self.handle->slot, Speed, CheckCollision); });
}
void Mesh8::FlipBillboard(Boolean LeftRight, Boolean TopBottom) {
  call(*this, [&](MeshHandleObject& self) { mesh::flipBillboard(recordOf(self), LeftRight, TopBottom); });
}

void Mesh8::SetTexture(const Texture8& Texture, float Group) {
  call(*this, [&](MeshHandleObject& self) { mesh::setTexture(recordOf(self), api::textureIndexOf(Texture), Group); });
}
void Mesh8::SetMaterial(std::int16_t MaterialIndex, float Group) {
  call(*this, [&](MeshHandleObject& self) { mesh::setMaterial(recordOf(self), MaterialIndex, Group); });
}
void Mesh8::SetShader(const Shader8& Shader, std::int16_t Group) {
  call(*this, [&](MeshHandleObject& self) { mesh::setShader(recordOf(self), api::shaderIndexOf(Shader), Group); });
}
void Mesh8::SetBlendingMode(std::int32_t Blending, std::int32_t Groups) {
  call(*this, [&](MeshHandleObject& self) {
    mesh::setBlending(recordOf(self), api::toShort(Blending), static_cast<float>(Groups));
  });
}
void Mesh8::EnableSphereMapping(Boolean OnOff, std::int32_t Mode) {
  call(*this, [&](MeshHandleObject& self) { mesh::setSphereMapping(recordOf(self), OnOff, Mode != 0); });
}

void Mesh8::Render() {
  call(*this, [](MeshHandleObject& self) { mesh::renderMesh(*self.context, self.handle->slot); });
}
void Mesh8::RenderGroupRange(std::int32_t StartGroup, std::int32_t EndGroup) {
  call(*this,
       [&](MeshHandleObject& self) { mesh::renderGroupRange(*self.context, self.handle->slot, StartGroup, EndGroup); });
}
std::int16_t Mesh8::IsVisible() const {
  return call(*this, [](MeshHandleObject& self) { return static_cast<std::int16_t>(recordOf(self).visible); });
}

Boolean Mesh8::Collision(const Vec3& Origin, const Vec3& EndPos, std::int32_t CheckType) const {
  return call(*this, [&](MeshHandleObject& self) {
    return mesh::collision(*self.context, self.handle->slot, Origin, EndPos, static_cast<mesh::RayTest>(CheckType));
  });
}

}  // namespace Quasarlens3D
