#include "api/Guard.h"
#include "api/Meshes.h"
#include "api/Textures.h"

#include <Quasarlens3D/Scene8.h>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using Detail::SceneObject;

Scene8::Scene8() : Handle(api::create<SceneObject>()) {}
Scene8::Scene8(std::nullptr_t) noexcept : Handle(nullptr) {}

void Scene8::SetSceneBackGround(float r, float g, float b) {
  call(*this, [&](SceneObject& self) { self.scene->setBackground(r, g, b); });
}
void Scene8::SetViewFrustum(float sAngleFOV, float sFarPlane) {
  call(*this, [&](SceneObject& self) { self.scene->setViewFrustum(sAngleFOV, sFarPlane); });
}
void Scene8::SetCamera(float xpos, float ypos, float zpos, float xlookat, float ylookat, float zlookat) {
  call(*this, [&](SceneObject& self) { self.scene->setCamera({xpos, ypos, zpos}, {xlookat, ylookat, zlookat}); });
}
void Scene8::SetRenderMode(std::int32_t RM) {
  call(*this, [&](SceneObject& self) { self.scene->setRenderMode(RM); });
}
void Scene8::EnableMipMapping() {
  call(*this, [](SceneObject& self) { self.scene->enableMipMapping(); });
}
void Scene8::SetDithering(Boolean OnOff) {
  call(*this, [&](SceneObject& self) { self.scene->setDithering(OnOff); });
}

void Scene8::DrawText(const std::string& Text, std::int32_t x, std::int32_t y, std::int32_t color) {
  call(*this, [&](SceneObject& self) { self.scene->drawText(Text, x, y, color); });
}
void Scene8::SelectFont(const std::string& FontName, const std::string& FontSize, const std::string& /*color*/,
                        Boolean Bold, Boolean Italic, Boolean Underlined) {
  call(*this, [&](SceneObject& self) { self.scene->selectFont(FontName, FontSize, Bold, Italic, Underlined); });
}

Mesh8 Scene8::CreateMeshBuilder(const std::string& Name) {
  return call(*this, [&](SceneObject& self) { return api::wrap(mesh::allocateMesh(*self.context, Name)); });
}

Texture8 Scene8::LoadTexture(ByRef<std::string> Filename, ByRef<std::int32_t> width, ByRef<std::int32_t> height,
                             const std::string& TextureName) {
  return call(*this, [&](SceneObject& self) {
    return api::wrap(self.scene->loadTexture(*Filename, *width, *height, TextureName));
  });
}
RenderSurface8 Scene8::CreateRenderSurface(ByRef<std::int32_t> width, ByRef<std::int32_t> height, Boolean /*Texture*/,
                                           std::int32_t /*PosX*/, std::int32_t /*PosY*/) {
  return call(*this, [&](SceneObject& self) {
    auto object = std::make_shared<Detail::RenderSurfaceObject>();
    object->surface = std::make_unique<render::RenderSurface>(*self.context, *width, *height);
    return api::Access::make<RenderSurface8>(std::move(object));
  });
}

void Scene8::SetPickingPrecision(float farPlane) {
  call(*this, [&](SceneObject& self) { self.scene->setPickingPrecision(farPlane); });
}
void Scene8::SetCollisionPrecision(float Collide) {
  call(*this, [&](SceneObject& self) { self.scene->setCollisionPrecision(Collide); });
}

}  // namespace Quasarlens3D
