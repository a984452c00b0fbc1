#include "api/Guard.h"
#include "render/Lights.h"

#include <Quasarlens3D/LightEngine8.h>
#include <Quasarlens3D/MaterialFactory8.h>

namespace Quasarlens3D {

namespace Detail {
struct LightEngineObject : ObjectBase {
  MaterialFactory8 materials;
};
}  // namespace Detail

using namespace ql;
using api::call;
using Detail::LightEngineObject;

namespace {

template <class Change>
void change(const LightEngine8& lights, std::int16_t index, Change&& change) {
  call(lights, [&](LightEngineObject& self) { render::changeLight(*self.context, index, change); });
}

}  // namespace

LightEngine8::LightEngine8() : Handle(api::create<LightEngineObject>()) {}
LightEngine8::LightEngine8(std::nullptr_t) noexcept : Handle(nullptr) {}

std::int16_t LightEngine8::CreatePointLight(const Vec3& Position, float Radius, float r, float g, float b, float a) {
  return call(*this, [&](LightEngineObject& self) {
    return render::createPointLight(*self.context, Position, Radius, {r, g, b, a});
  });
}
std::int16_t LightEngine8::CreateDirectionalLight(const Vec3& Orientation, float r, float g, float b, float a) {
  return call(*this, [&](LightEngineObject& self) {
    return render::createDirectionalLight(*self.context, Orientation, {r, g, b, a});
  });
}
void LightEngine8::DeleteLight(std::int16_t LightIndex) {
  call(*this, [&](LightEngineObject& self) { render::deleteLight(*self.context, LightIndex); });
}
void LightEngine8::EnableLight(std::int16_t LightIndex, Boolean Enabled) {
  call(*this, [&](LightEngineObject& self) { render::enableLight(*self.context, LightIndex, Enabled); });
}
void LightEngine8::SetLightColor(std::int16_t Index, float r, float g, float b, float a) {
  change(*this, Index, [&](device::Light& light) { light.ambient = light.diffuse = {r, g, b, a}; });
}
void LightEngine8::SetLightAmbientColor(std::int16_t Index, float r, float g, float b, float a) {
  change(*this, Index, [&](device::Light& light) { light.ambient = {r, g, b, a}; });
}
void LightEngine8::SetLightDiffuseColor(std::int16_t Index, float r, float g, float b, float a) {
  change(*this, Index, [&](device::Light& light) { light.diffuse = {r, g, b, a}; });
}
void LightEngine8::SetLightDirection(std::int16_t Index, float x, float y, float z) {
  change(*this, Index, [&](device::Light& light) { light.direction = {x, y, z}; });
}
void LightEngine8::SetLightPosition(std::int16_t LightIndex, const Vec3& Position) {
  change(*this, LightIndex, [&](device::Light& light) { light.position = Position; });
}
void LightEngine8::SetLightRadius(std::int16_t Index, float Radius) {
  change(*this, Index, [&](device::Light& light) { light.range = Radius; });
}
void LightEngine8::SetLightFalloff(std::int16_t Index, float Falloff) {
  change(*this, Index, [&](device::Light& light) { light.falloff = Falloff; });
}
void LightEngine8::SetLightAttenuation(std::int16_t Index, float a1, float a2, float a3) {
  change(*this, Index,
         [&](device::Light& light) { light.attenuation0 = a1, light.attenuation1 = a2, light.attenuation2 = a3; });
}

std::int16_t LightEngine8::CreateMaterial() {
  return call(*this, [](LightEngineObject& self) { return self.materials.CreateMaterial(); });
}
void LightEngine8::DeleteMaterial(std::int16_t MaterialIndex) {
  call(*this, [&](LightEngineObject& self) { self.materials.DeleteMaterial(MaterialIndex); });
}
void LightEngine8::SetMaterialAmbient(std::int16_t Index, float r, float g, float b, float a) {
  call(*this, [&](LightEngineObject& self) { self.materials.SetAmbient(Index, r, g, b, a); });
}
void LightEngine8::SetMaterialDiffuse(std::int16_t Index, float r, float g, float b, float a) {
  call(*this, [&](LightEngineObject& self) { self.materials.SetDiffuse(Index, r, g, b, a); });
}
void LightEngine8::SetMaterialSpecular(std::int16_t Index, float r, float g, float b, float a) {
  call(*this, [&](LightEngineObject& self) { self.materials.SetSpecular(Index, r, g, b, a); });
}
void LightEngine8::SetMaterialEmissive(std::int16_t Index, float r, float g, float b, float a) {
  call(*this, [&](LightEngineObject& self) { self.materials.SetEmissive(Index, r, g, b, a); });
}
void LightEngine8::SetMaterialPower(std::int16_t Index, float power) {
  call(*this, [&](LightEngineObject& self) { self.materials.SetPower(Index, power); });
}

}  // namespace Quasarlens3D
