#include "api/Guard.h"
#include "render/Materials.h"

#include <Quasarlens3D/MaterialFactory8.h>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using Detail::MaterialFactoryObject;
using render::MaterialColor;

MaterialFactory8::MaterialFactory8() : Handle(api::create<MaterialFactoryObject>()) {}
MaterialFactory8::MaterialFactory8(std::nullptr_t) noexcept : Handle(nullptr) {}

std::int16_t MaterialFactory8::CreateMaterial(const std::string& Name) {
  return call(*this, [&](MaterialFactoryObject& self) { return render::createMaterial(*self.context, Name); });
}
std::int16_t MaterialFactory8::CreateMaterialQuick(float r, float g, float b, float a,
                                                   const std::string& MaterialName) {
  return call(*this, [&](MaterialFactoryObject& self) {
    return render::createMaterialQuick(*self.context, {r, g, b, a}, MaterialName);
  });
}
void MaterialFactory8::SetAmbient(std::int16_t MaterialIndex, float r, float g, float b, float a) {
  call(*this, [&](MaterialFactoryObject& self) {
    render::setMaterialColor(*self.context, MaterialIndex, MaterialColor::Ambient, {r, g, b, a});
  });
}
void MaterialFactory8::SetDiffuse(std::int16_t MaterialIndex, float r, float g, float b, float a) {
  call(*this, [&](MaterialFactoryObject& self) {
    render::setMaterialColor(*self.context, MaterialIndex, MaterialColor::Diffuse, {r, g, b, a});
  });
}
void MaterialFactory8::SetSpecular(std::int16_t MaterialIndex, float r, float g, float b, float a) {
  call(*this, [&](MaterialFactoryObject& self) {
    render::setMaterialColor(*self.context, MaterialIndex, MaterialColor::Specular, {r, g, b, a});
  });
}
void MaterialFactory8::SetEmissive(std::int16_t MaterialIndex, float r, float g, float b, float a) {
  call(*this, [&](MaterialFactoryObject& self) {
    render::setMaterialColor(*self.context, MaterialIndex, MaterialColor::Emissive, {r, g, b, a});
  });
}
void MaterialFactory8::SetPower(std::int16_t MaterialIndex, float power) {
  call(*this, [&](MaterialFactoryObject& self) { render::setMaterialPower(*self.context, MaterialIndex, power); });
}
void MaterialFactory8::DeleteMaterial(std::int16_t MaterialIndex) {
  call(*this, [&](MaterialFactoryObject& self) { render::deleteMaterial(*self.context, MaterialIndex); });
}
void MaterialFactory8::SetLocal() {
  call(*this, [](MaterialFactoryObject& self) { self.local = true; });
}

}  // namespace Quasarlens3D
