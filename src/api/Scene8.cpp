#include "api/Collisions.h"
#include "api/Guard.h"
#include "api/Meshes.h"
#include "api/Textures.h"
#include "mesh/MeshDraw.h"
#include "mesh/MeshRays.h"
#include "render/scene/Cursor.h"
#include "render/scene/Decals.h"
#include "render/scene/Picking.h"

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
void Scene8::RenderAllMeshes() {
  call(*this, [](SceneObject& self) { mesh::renderAllMeshes(*self.context); });
}
Mesh8 Scene8::CreateBillboard(const Texture8& Texture, float x, float y, float z, float width, float height,
                              const std::string& Name, Boolean /*alpha*/, std::int32_t /*src*/, std::int32_t /*dest*/,
                              std::int32_t /*color*/) {
  return call(*this, [&](SceneObject& self) {
    return api::wrap(
        render::scene::createBillboard(*self.context, Name, api::textureIndexOf(Texture), {x, y, z, width, height}));
  });
}

void Scene8::SetSkyTexture(const Texture8& Front, const Texture8& Back, const Texture8& Left, const Texture8& Right,
                           const Texture8& Top, const Texture8& Bottom, float SkyDistance) {
  call(*this, [&](SceneObject& self) {
    self.scene->sky().build(SkyDistance);
    std::size_t face = 0;
    for (const Texture8* texture : {&Left, &Right, &Front, &Back, &Top, &Bottom})
      self.scene->sky().setTexture(face++, api::entryOf(*texture).texture);
  });
}
void Scene8::LoadSky(const std::string& TextureFileName, float SkyDistance) {
  call(*this, [&](SceneObject& self) { self.scene->loadSky(TextureFileName, SkyDistance); });
}
void Scene8::RenderSky() {
  call(*this, [](SceneObject& self) { self.scene->renderSky(); });
}

void Scene8::LoadCursor(ByRef<std::string> Filename, std::int32_t Colorkey, float width, float height) {
  call(*this, [&](SceneObject& self) { render::scene::loadCursor(*self.context, *Filename, Colorkey, width, height); });
}
void Scene8::SetCursorTexture(const Texture8& Cursor, float CursWidth, float CursHeight) {
  call(*this, [&](SceneObject& self) {
    const auto* texture = Cursor ? api::Access::live(Cursor).handle.get() : nullptr;
    render::scene::setCursor(*self.context, texture, CursWidth, CursHeight);
  });
}

Texture8 Scene8::LoadTexture(ByRef<std::string> Filename, ByRef<std::int32_t> width, ByRef<std::int32_t> height,
                             const std::string& TextureName) {
  return call(*this, [&](SceneObject& self) {
    return api::wrap(self.scene->loadTexture(*Filename, *width, *height, TextureName));
  });
}
void Scene8::LoadShaders(const std::string& Filename) {
  call(*this, [&](SceneObject& self) { self.scene->loadShaders(Filename); });
}
RenderSurface8 Scene8::CreateRenderSurface(ByRef<std::int32_t> width, ByRef<std::int32_t> height, Boolean /*Texture*/,
                                           std::int32_t /*PosX*/, std::int32_t /*PosY*/) {
  return call(*this, [&](SceneObject& self) {
    auto object = std::make_shared<Detail::RenderSurfaceObject>();
    object->surface = std::make_unique<render::RenderSurface>(*self.context, *width, *height);
    return api::Access::make<RenderSurface8>(std::move(object));
  });
}

Boolean Scene8::Collide(const Vec3& Start, const Vec3& EndLine, std::int32_t TestType) {
  return call(*this, [&](SceneObject& self) {
    return mesh::collide(*self.context, Start, EndLine, static_cast<mesh::RayTest>(TestType));
  });
}
CollisionResult8 Scene8::MousePicking(std::int32_t x, std::int32_t y, std::int32_t ObjectTypeToTest,
                                      std::int32_t TestType) {
  return call(*this, [&](SceneObject& self) {
    return api::wrap(render::scene::pick(*self.context, x, y, ObjectTypeToTest, static_cast<mesh::RayTest>(TestType)));
  });
}

void Scene8::SetPickingPrecision(float farPlane) {
  call(*this, [&](SceneObject& self) { self.scene->setPickingPrecision(farPlane); });
}
void Scene8::SetCollisionPrecision(float Collide) {
  call(*this, [&](SceneObject& self) { self.scene->setCollisionPrecision(Collide); });
}

}  // namespace Quasarlens3D
