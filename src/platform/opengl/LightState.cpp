#include "platform/opengl/LightState.h"

#include "math/Matrix.h"

#include <cmath>

namespace ql::opengl {
namespace {

Float4 colorOf(const math::Color4& c) { return {c.r, c.g, c.b, c.a}; }

LightUniforms inCameraSpace(const device::Light& light, const math::Mat4& view) {
  LightUniforms out;
  out.diffuse = colorOf(light.diffuse);
  out.specular = colorOf(light.specular);
  out.ambient = colorOf(light.ambient);
  const math::Vec4 at = math::transform(light.position, view);
  out.position = {at.x, at.y, at.z, static_cast<float>(light.type)};
  const math::Vec3 way = math::transformNormal(light.direction, view);
  const float length = std::sqrt(way.x * way.x + way.y * way.y + way.z * way.z);
  const float scale = length > 0 ? 1.0f / length : 0.0f;
  out.direction = {way.x * scale, way.y * scale, way.z * scale, light.falloff};
  out.attenuation = {light.attenuation0, light.attenuation1, light.attenuation2, light.range};
  out.cone = {std::cos(light.theta * 0.5f), std::cos(light.phi * 0.5f), 0, 0};
  return out;
}

}  // namespace

void materialUniforms(const device::State& state, DrawUniforms& out) {
  const device::Material& m = state.material;
  out.diffuse = colorOf(m.diffuse);
  out.ambient = colorOf(m.ambient);
  out.specular = colorOf(m.specular);
  out.emissive = colorOf(m.emissive);
  const std::uint32_t ambient = state.render.ambient;
  const auto channel = [ambient](int shift) { return static_cast<float>(ambient >> shift & 255) / 255.0f; };
  out.globalAmbient = {channel(16), channel(8), channel(0), m.power};
}

std::vector<LightUniforms> lightUniforms(const device::State& state) {
  std::vector<LightUniforms> out;
  for (std::size_t i = 0; i < device::kLights; ++i)
    if (state.lightEnabled[i] && state.lights[i].type != 0) out.push_back(inCameraSpace(state.lights[i], state.view));
  return out;
}

}  // namespace ql::opengl
