#include "api/Meshes.h"
#include "api/Numbers.h"
#include "mesh/Build.h"
#include "mesh/DxeText.h"
#include "mesh/Shapes.h"

#include <Quasarlens3D/Mesh8.h>

#include <array>
#include <utility>

namespace Quasarlens3D {

using namespace ql;
using api::Access;
using api::call;
using api::textureIndexOf;
using Detail::MeshHandleObject;

namespace {

mesh::MeshRecord& recordOf(MeshHandleObject& self) { return mesh::meshRecord(*self.context, self.handle->slot); }

}  // namespace

Mesh8::Mesh8() noexcept = default;
Mesh8::Mesh8(std::nullptr_t) noexcept : Handle(nullptr) {}

bool operator==(const Mesh8& a, const Mesh8& b) noexcept {
  const auto handleOf = [](const Mesh8& mesh) {
    const auto& object = Access::pointer(mesh);
    return object ? object->handle.get() : nullptr;
  };
  return handleOf(a) == handleOf(b);
}
bool operator!=(const Mesh8& a, const Mesh8& b) noexcept { return !(a == b); }

std::int16_t Mesh8::AddVertex(double x, double y, double z, double color, float tu, float tv, float nx, float ny,
                              float nz, Boolean /*UseTLVertex*/) {
  return call(*this, [&](MeshHandleObject& self) {
    return mesh::addVertex(*self.context, *self.handle,
                           {api::toSingle(x), api::toSingle(y), api::toSingle(z), nx, ny, nz, tu, tv, tu, tv},
                           api::toPackedColor(color));
  });
}
void Mesh8::AddFace(const Texture8& Texture, Boolean lightmap) {
  call(*this,
       [&](MeshHandleObject& self) { mesh::addFace(*self.context, *self.handle, textureIndexOf(Texture), lightmap); });
}
void Mesh8::SetGroupPointer(std::int16_t Group) {
  call(*this, [&](MeshHandleObject& self) { mesh::setGroupPointer(*self.context, *self.handle, Group); });
}

void Mesh8::AddWall(const Texture8& Texture, float x1, float z1, float X2, float z2, float height, float Altitude,
                    float TileW, float TileH) {
  call(*this, [&](MeshHandleObject& self) {
    mesh::addWall(*self.context, *self.handle, textureIndexOf(Texture), {x1, z1, Altitude, height},
                  {X2, z2, Altitude, height}, {TileW, TileH});
  });
}
void Mesh8::AddWall2(const Texture8& Texture, float x1, float z1, float X2, float z2, float height1, float height2,
                     float Altitude1, float Altitude2, float TileW, float TileH) {
  call(*this, [&](MeshHandleObject& self) {
    mesh::addSlopedWall(*self.context, *self.handle, textureIndexOf(Texture), {x1, z1, Altitude1, height1},
                        {X2, z2, Altitude2, height2}, {TileW, TileH});
  });
}
void Mesh8::AddFloor(const Texture8& Texture, float x1, float z1, float X2, float z2, float Altitude, float TileW,
                     float TileH) {
  call(*this, [&](MeshHandleObject& self) {
    mesh::addFloor(*self.context, *self.handle, textureIndexOf(Texture), x1, z1, X2, z2, Altitude, {TileW, TileH});
  });
}
void Mesh8::AddTriangle(const Texture8& Texture, float x1, float y1, float z1, float X2, float y2, float z2, float X3,
                        float Y3, float Z3, float TileW, float TileH) {
  call(*this, [&](MeshHandleObject& self) {
    const std::array<math::Vec3, 3> points{{{x1, y1, z1}, {X2, y2, z2}, {X3, Y3, Z3}}};
    mesh::addTriangle(*self.context, *self.handle, textureIndexOf(Texture), points, {TileW, TileH});
  });
}
void Mesh8::AddFaceFromPoint(const Texture8& Texture, float x1, float y1, float z1, float X2, float y2, float z2,
                             float X3, float Y3, float Z3, float X4, float Y4, float Z4, float TileW, float TileH) {
  call(*this, [&](MeshHandleObject& self) {
    const std::array<math::Vec3, 4> points{{{x1, y1, z1}, {X2, y2, z2}, {X3, Y3, Z3}, {X4, Y4, Z4}}};
    mesh::addQuad(*self.context, *self.handle, textureIndexOf(Texture), points, {TileW, TileH});
  });
}

void Mesh8::CreateSphere(const Texture8& Texture, float Radius, std::int32_t Slice, std::int32_t Stack,
                         std::int32_t /*color*/) {
  call(*this, [&](MeshHandleObject& self) {
    mesh::createSphere(*self.context, *self.handle, textureIndexOf(Texture), Radius, Slice, Stack);
  });
}
void Mesh8::CreateTeapot() {
  call(*this, [](MeshHandleObject& self) { mesh::createTeapot(*self.context, *self.handle); });
}
void Mesh8::Create3DText(const std::string& Text, const std::string& UserFont) {
  call(*this, [&](MeshHandleObject& self) { mesh::create3DText(*self.context, *self.handle, Text, UserFont); });
}
void Mesh8::LoadDXE(const std::string& Filename) {
  call(*this, [&](MeshHandleObject& self) { mesh::loadDxe(*self.context, *self.handle, Filename); });
}

void Mesh8::MoveVertex(std::int16_t Vertex, float x, float y, float z, Boolean relative) {
  MoveVertexInFace(Vertex, 0, x, y, z, relative);
}
void Mesh8::MoveVertexInFace(std::int16_t Vertex, std::int16_t facegroup, float x, float y, float z, Boolean relative) {
  call(*this, [&](MeshHandleObject& self) {
    mesh::moveVertex(*self.context, *self.handle, Vertex, facegroup, {x, y, z}, relative);
  });
}
void Mesh8::SetColor(std::int32_t color, std::int32_t Vertex) {
  call(*this, [&](MeshHandleObject& self) { mesh::setColor(*self.context, *self.handle, color, Vertex); });
}

void Mesh8::ComputeNormals() {
  call(*this, [](MeshHandleObject& self) { mesh::computeNormals(*self.context, *self.handle); });
}
void Mesh8::ComputeSphere() {
  call(*this, [](MeshHandleObject& self) { mesh::computeBounds(*self.context, *self.handle); });
}
void Mesh8::Optimize() {
  call(*this, [](MeshHandleObject& self) { mesh::optimize(*self.context, *self.handle); });
}

void Mesh8::SetVertexType(std::int32_t TypeV) {
  call(*this, [&](MeshHandleObject& self) { recordOf(self).vertexType = api::toShort(TypeV); });
}
void Mesh8::SetPrimitiveType(std::int32_t Primitive) {
  call(*this, [&](MeshHandleObject& self) { recordOf(self).primitiveType = api::toShort(Primitive); });
}
void Mesh8::SetCullMode(std::int32_t Cull) {
  call(*this, [&](MeshHandleObject& self) { recordOf(self).cullMode = api::toShort(Cull); });
}
void Mesh8::SetMeshName(const std::string& MeshName) {
  call(*this, [&](MeshHandleObject& self) { recordOf(self).name = MeshName; });
}
void Mesh8::Enable(Boolean OnOff) {
  call(*this, [&](MeshHandleObject& self) { recordOf(self).enabled = OnOff; });
}
void Mesh8::SetDeathTime(float milliseconds) {
  call(*this, [&](MeshHandleObject& self) { recordOf(self).deathTime = milliseconds; });
}

Mesh8 Mesh8::CreateChild(const std::string& Name) {
  return call(*this, [&](MeshHandleObject& self) {
    std::shared_ptr<mesh::MeshHandle> child = mesh::allocateMesh(*self.context, Name);
    mesh::addChild(*self.context, *self.handle, *child);
    return api::wrap(std::move(child));
  });
}
void Mesh8::AddChild(const Mesh8& ChildMesh) {
  call(*this, [&](MeshHandleObject& self) { mesh::addChild(*self.context, *self.handle, api::handleOf(ChildMesh)); });
}
void Mesh8::DeleteChilds() {
  call(*this, [](MeshHandleObject& self) { mesh::deleteChildren(*self.context, *self.handle); });
}

}  // namespace Quasarlens3D

namespace ql::api {

Quasarlens3D::Mesh8 wrap(std::shared_ptr<mesh::MeshHandle> handle) {
  if (!handle) return nullptr;
  auto object = std::make_shared<Quasarlens3D::Detail::MeshHandleObject>();
  object->handle = std::move(handle);
  return Access::make<Quasarlens3D::Mesh8>(std::move(object));
}

mesh::MeshHandle& handleOf(const Quasarlens3D::Mesh8& mesh) { return *Access::live(mesh).handle; }

std::int16_t textureIndexOf(const Quasarlens3D::Texture8& texture) {
  return texture ? Access::live(texture).handle->index : std::int16_t{0};
}

}  // namespace ql::api
