#include "api/Collisions.h"
#include "api/Guard.h"
#include "api/Numbers.h"

#include <Quasarlens3D/BSPTree8.h>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using Detail::LevelObject;

BSPTree8::BSPTree8() : Handle(api::create<LevelObject>()) {
  call(*this, [&](LevelObject& self) { self.context->get<api::KeptAlive>().level = api::Access::pointer(*this); });
}
BSPTree8::BSPTree8(std::nullptr_t) noexcept : Handle(nullptr) {}

void BSPTree8::Load(ByRef<std::string> Filename, Boolean LoadLightMaps, Boolean LoadTexture, Boolean TextureNumber,
                    const std::string& TexturePath, Boolean CreateDynamicLights, Boolean CreateMipmaps) {
  call(*this, [&](LevelObject& self) {
    self.level.load(*Filename, {.loadLightMaps = LoadLightMaps,
                                .loadTextures = LoadTexture,
                                .textureNumber = TextureNumber,
                                .texturePath = TexturePath,
                                .createDynamicLights = CreateDynamicLights,
                                .createMipmaps = CreateMipmaps});
  });
}
void BSPTree8::OpenPackWAD(const std::string& WadFilename) {
  call(*this, [&](LevelObject& self) { self.level.openPackage(WadFilename); });
}
void BSPTree8::ClosePackWAD() {
  call(*this, [](LevelObject& self) { self.level.closePackages(); });
}
void BSPTree8::SetCopyTexturesFolder(Boolean OnOff, const std::string& pathname, Boolean TextureNumber) {
  call(*this, [&](LevelObject& self) { self.level.copyTexturesTo(OnOff ? pathname : "", TextureNumber); });
}
void BSPTree8::Render() {
  call(*this, [](LevelObject& self) { self.level.render(); });
}
void BSPTree8::LoadShaderDirectory(const std::string& DirectoryPath) {
  call(*this, [&](LevelObject& self) { self.level.loadShaderDirectory(DirectoryPath); });
}
void BSPTree8::SetParameters(Boolean UseLightMaps, Boolean UsePVSInfo, std::int32_t Culling, Boolean DisplaySky) {
  call(*this, [&](LevelObject& self) { self.level.setParameters(UseLightMaps, UsePVSInfo, Culling, DisplaySky); });
}
void BSPTree8::SetPosition(float x, float y, float z) {
  call(*this, [&](LevelObject& self) { self.level.setPosition(x, y, z); });
}
void BSPTree8::SetCurvePrecision(std::int32_t CurvePrecision) {
  call(*this, [&](LevelObject& self) { self.level.setCurvePrecision(api::toShort(CurvePrecision)); });
}
Vec3 BSPTree8::GetStartPlayerPosition() const {
  return call(*this, [](LevelObject& self) { return self.level.startPosition(); });
}

Boolean BSPTree8::DetectCollision(const Vec3& StartPos1, const Vec3& EndPos1) {
  return call(*this, [&](LevelObject& self) { return Boolean(self.level.detectCollision(StartPos1, EndPos1)); });
}
Boolean BSPTree8::DetectSphereCollision(const Vec3& Position, float SphereRadius, std::int16_t Reserved1) {
  return call(*this, [&](LevelObject& self) {
    return Boolean(self.level.detectSphereCollision(Position, SphereRadius, Reserved1));
  });
}
CollisionResult8 BSPTree8::AdvancedSphereCollision(const Vec3& SpherePos, const Vec3& NewSpherePosition,
                                                   float SphereRadius) {
  return call(*this, [&](LevelObject& self) {
    return api::wrap(self.level.moveSphere(SpherePos, NewSpherePosition, SphereRadius));
  });
}
Boolean BSPTree8::LineSight(const Vec3& Start, const Vec3& LEnd, std::int32_t NodeID) const {
  return call(*this, [&](LevelObject& self) { return Boolean(self.level.lineSight(Start, LEnd, NodeID)); });
}
float BSPTree8::GetAltitudeFromPos(float PosX, float PosY, float PosZ, Boolean UseCameraPosition) {
  return call(*this, [&](LevelObject& self) {
    return self.level.altitude(UseCameraPosition ? self.context->cameraPosition : Vec3{PosX, PosY, PosZ});
  });
}
void BSPTree8::Trace(const Vec3&, const Vec3&) const {
  call(*this, [](LevelObject&) {});
}

}  // namespace Quasarlens3D
