#include "api/Guard.h"
#include "api/Meshes.h"
#include "api/Numbers.h"
#include "api/Shaders.h"
#include "api/Textures.h"
#include "platform/utility/TextureFiles.h"
#include "render/Materials.h"
#include "render/Sprites.h"
#include "render/scene/Decals.h"
#include "render/scene/Picking.h"
#include "render/shaders/Shaders.h"

#include <Quasarlens3D/Globals8.h>

#include <cmath>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using api::checked;
using api::guard;
using api::toSingle;
using Detail::GlobalsObject;

Globals8::Globals8() : Handle(api::create<GlobalsObject>()) {
  call(*this, [](GlobalsObject& self) { self.context->log.write("MATH HELPER : Create the Cos/Sin Table"); });
}
Globals8::Globals8(std::nullptr_t) noexcept : Handle(nullptr) {}

float Globals8::CosT(float DegreesAngle) const {
  return call(*this, [&](GlobalsObject& self) { return self.table.cosine(DegreesAngle); });
}
float Globals8::SinT(float DegreesAngle) const {
  return call(*this, [&](GlobalsObject& self) { return self.table.sine(DegreesAngle); });
}
float Globals8::Deg2Rad(float Degrees) const {
  return guard([&] { return checked(math::degreesToRadians(Degrees)); });
}
float Globals8::Rad2Deg(float Radian) const {
  return guard([&] { return checked(math::radiansToDegrees(Radian)); });
}
float Globals8::Direction2Ang(float vx, float vz) const {
  return guard([&] { return checked(math::directionToAngle(vx, vz)); });
}
float Globals8::GetDistance2D(double x1, double y1, double X2, double y2) const {
  return guard([&] { return checked(toSingle(std::hypot(X2 - x1, y2 - y1))); });
}
float Globals8::GetDistance3D(double x1, double y1, double z1, double X2, double y2, double z2) const {
  return guard([&] { return checked(toSingle(std::hypot(X2 - x1, y2 - y1, z2 - z1))); });
}

Vec3 Globals8::Vector(float x, float y, float z) const { return {x, y, z}; }
Vec3 Globals8::Vector3(float x, float y, float z) const { return {x, y, z}; }
Vec3 Globals8::VAdd(const Vec3& dV1, const Vec3& dV2) const {
  return guard([&] { return checked(math::add(dV1, dV2)); });
}
Vec3 Globals8::VSubtract(const Vec3& dV1, const Vec3& dV2) const {
  return guard([&] { return checked(math::subtract(dV1, dV2)); });
}
Vec3 Globals8::VScale(const Vec3& dV1, float TScale) const {
  return guard([&] { return checked(math::scale(dV1, TScale)); });
}
float Globals8::VModulus(const Vec3& v) const {
  return guard([&] { return checked(math::length(v)); });
}
Vec3 Globals8::VNormalize(const Vec3& dVector) const {
  return guard([&] { return checked(math::normalize(dVector)); });
}
Vec3 Globals8::VCrossProduct(const Vec3& V1, const Vec3& v2) const {
  return guard([&] { return checked(math::cross(V1, v2)); });
}
float Globals8::VDotProduct(const Vec3& V1, const Vec3& v2) const {
  return guard([&] { return checked(math::dot(V1, v2)); });
}

Color4 Globals8::ColorValue(double r, double g, double b, double a) const {
  return guard([&] { return Color4{toSingle(r), toSingle(g), toSingle(b), toSingle(a)}; });
}
std::int32_t Globals8::RGBA(double r, double g, double b, double a) const {
  return guard([&] { return math::packColor({toSingle(r), toSingle(g), toSingle(b), toSingle(a)}); });
}
std::int32_t Globals8::Colorkey(std::int32_t CKey) const { return CKey; }
Rect Globals8::REC(double x, double y, double x1, double y1) const {
  return guard([&] { return Rect{api::toInteger(x), api::toInteger(y), api::toInteger(x1), api::toInteger(y1)}; });
}
LitVertex Globals8::LVertex(double x, double y, double z, double C, double tu, double tv) const {
  return guard([&] {
    const std::int32_t color = api::toPackedColor(C);
    return LitVertex{toSingle(x), toSingle(y), toSingle(z), color, color, toSingle(tu), toSingle(tv)};
  });
}
TransformedLitVertex Globals8::TLVertex(float x, float y, float z, std::int32_t color, float tu, float tv) const {
  constexpr float kReciprocalW = 0.5f;
  return {x, y, z, kReciprocalW, color, color, tu, tv};
}
NormalVertex Globals8::Vertex2(double x, double y, double z, double nx, double ny, double nz, double tu, double tv,
                               double tu1, double tv1) const {
  return guard([&] {
    return NormalVertex{toSingle(x),  toSingle(y),  toSingle(z),  toSingle(nx),  toSingle(ny),
                        toSingle(nz), toSingle(tu), toSingle(tv), toSingle(tu1), toSingle(tv1)};
  });
}

Texture8 Globals8::GetTex(const std::string& Name) const {
  return call(*this, [&](GlobalsObject& self) { return api::wrap(render::findTextureByName(*self.context, Name)); });
}
std::int16_t Globals8::GetTexIndex(const std::string& Name) const {
  return call(*this, [&](GlobalsObject& self) { return render::findTextureIndex(*self.context, Name); });
}
std::string Globals8::GetTexNameFromId(std::int16_t TexIndex) const {
  return call(*this,
              [&](GlobalsObject& self) { return self.context->get<render::TextureTable>().entries.at(TexIndex).name; });
}
std::string Globals8::GetTexNameFromObject(const Texture8& Texture) const {
  return call(*this, [&](GlobalsObject&) { return api::entryOf(Texture).name; });
}
void Globals8::SaveTexture(const TextureObject& Texture, const std::string& Filename) const {
  call(*this, [&](GlobalsObject&) { utility::saveTextureToFile(Filename, *api::Access::live(Texture).texture); });
}
std::int16_t Globals8::GetSprite(const std::string& Name) const {
  return call(*this, [&](GlobalsObject& self) { return render::findSpriteIndex(*self.context, Name); });
}
std::int16_t Globals8::GetMat(const std::string& MaterialName) const {
  return call(*this, [&](GlobalsObject& self) { return render::findMaterialIndex(*self.context, MaterialName); });
}
std::int16_t Globals8::GetSound(const std::string& /*SoundName*/) const { return 0; }
std::int16_t Globals8::GetTerrain(const std::string& /*Name*/) const { return 0; }
Mesh8 Globals8::GetMesh(const std::string& MeshName) const {
  return call(*this, [&](GlobalsObject& self) { return api::wrap(mesh::findMesh(*self.context, MeshName)); });
}
Shader8 Globals8::GetShader(const std::string& ShaderName) const {
  return call(*this,
              [&](GlobalsObject& self) { return api::wrap(render::shaders::findShader(*self.context, ShaderName)); });
}
Mesh8 Globals8::CreateDecal(const Vec3& Position, const Vec3& normal, const Texture8& Texture, float size,
                            float DeathTime) const {
  return call(*this, [&](GlobalsObject& self) {
    render::scene::activeScene(*self.context);
    return api::wrap(
        render::scene::createDecal(*self.context, Position, normal, api::textureIndexOf(Texture), size, DeathTime));
  });
}
void Globals8::MousePickVector(std::int32_t x, std::int32_t y, ByRef<Vec3> VOrigin, ByRef<Vec3> VDest) const {
  call(*this, [&](GlobalsObject& self) {
    const render::scene::PickRay ray = render::scene::pickRay(*self.context, x, y);
    *VOrigin = ray.near;
    *VDest = ray.far;
  });
}

}  // namespace Quasarlens3D
