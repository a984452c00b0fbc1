#include "platform/software/Lighting.h"

#include "math/Matrix.h"
#include "platform/software/Block.h"

#include <cmath>

namespace ql::software {
namespace {

using Source = MaterialColor::Source;

ColorValues valuesOf(const math::Color4& c) { return {c.b, c.g, c.r, c.a}; }

// By its series, after whole turns are taken off: the same bits everywhere.
float cosine(float radians) {
  constexpr double kTurn = 6.283185307179586476925;
  const double x = std::isfinite(radians) ? static_cast<double>(radians) : 0.0;
  const double rest = x - std::floor(x / kTurn + 0.5) * kTurn;  // -pi to pi
  const double square = rest * rest;
  double series = 1;
  for (int n = 28; n > 0; n -= 2) series = 1 - series * square / (n * (n - 1));
  return static_cast<float>(series);
}

LightSource sourceOf(const device::Light& light, const math::Mat4& view) {
  LightSource out;
  out.kind = light.type == 3   ? LightSource::Kind::Directional
             : light.type == 2 ? LightSource::Kind::Spot
                               : LightSource::Kind::Point;
  out.diffuse = valuesOf(light.diffuse);
  out.specular = valuesOf(light.specular);
  out.ambient = valuesOf(light.ambient);
  const math::Vec4 position = math::transform(light.position, view);
  out.position = {position.x, position.y, position.z};
  const math::Vec3 way = math::transformNormal(light.direction, view);
  const float length = std::sqrt(way.x * way.x + way.y * way.y + way.z * way.z);
  const float scale = length > 0 ? 1.0f / length : 0.0f;
  out.direction = {way.x * scale, way.y * scale, way.z * scale};
  out.range = light.range;
  out.attenuation0 = light.attenuation0;
  out.attenuation1 = light.attenuation1;
  out.attenuation2 = light.attenuation2;
  out.inner = cosine(light.theta * 0.5f);
  out.outer = cosine(light.phi * 0.5f);
  out.coneScale = out.inner > out.outer ? 1.0f / (out.inner - out.outer) : 0.0f;
  out.falloff = light.falloff;
  return out;
}

}  // namespace

void decodeLighting(const device::State& state, bool vertexDiffuse, bool vertexSpecular, Lighting& out) {
  const device::RenderStates& r = state.render;
  out.enabled = true;
  out.specular = r.specularEnable != 0;
  const auto color = [&](std::uint32_t source, const math::Color4& value) {
    MaterialColor made{Source::Material, valuesOf(value)};
    if (r.colorVertex && source == 1 && vertexDiffuse) made.source = Source::Diffuse;
    if (r.colorVertex && source == 2 && vertexSpecular) made.source = Source::Specular;
    return made;
  };
  out.diffuse = color(r.diffuseMaterialSource, state.material.diffuse);
  out.specularColor = color(r.specularMaterialSource, state.material.specular);
  out.ambient = color(r.ambientMaterialSource, state.material.ambient);
  out.emissive = color(r.emissiveMaterialSource, state.material.emissive);
  out.power = state.material.power;
  for (std::size_t c = 0; c < 4; ++c)
    out.globalAmbient[c] = static_cast<float>(r.ambient >> (8 * c) & 255) * (1.0f / 255);
  for (std::size_t i = 0; i < device::kLights; ++i)
    if (state.lightEnabled[i] && state.lights[i].type != 0) out.lights.push_back(sourceOf(state.lights[i], state.view));
}

}  // namespace ql::software
