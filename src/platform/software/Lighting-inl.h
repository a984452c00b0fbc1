/// @file
/// Lighting some vertices. @see Lighting.h
#if defined(QL_LIGHTING_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_LIGHTING_INL_H
#undef QL_LIGHTING_INL_H
#else
#define QL_LIGHTING_INL_H
#endif

#include "platform/software/Power.h"
#include "platform/software/VertexLoads-inl.h"

#include <cmath>

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

/// Colours of vertices in memory, 0 to 255; set where the lighting reads them.
struct VertexColors {
  Lanes<float> diffuse[4], specular[4];
};

inline bool black(const ColorValues& c) { return c[kBlue] == 0 && c[kGreen] == 0 && c[kRed] == 0; }

/// Light that arrives, before the material's colours.
struct Sums {
  Lanes<float> ambient[3], diffuse[3], specular[3];
};

inline void add(const ColorValues& color, const Lanes<float>& amount, Lanes<float>* sums) {
  for (std::size_t c = 0; c < 3; ++c)
    for (int i = 0; i < kLanes; ++i) sums[c][i] += color[c] * amount[i];
}

// The unit vectors to a light with a place, and how much of it arrives.
inline void reach(const LightSource& light, const Vectors& seen, Vectors& toLight, Lanes<float>& strength) {
  for (int i = 0; i < kLanes; ++i) {
    const float x = light.position.x - seen.x[i], y = light.position.y - seen.y[i], z = light.position.z - seen.z[i];
    const float distance = std::sqrt(x * x + y * y + z * z);
    const float scale = distance > 0 ? 1.0f / distance : 0.0f;
    toLight.x[i] = x * scale;
    toLight.y[i] = y * scale;
    toLight.z[i] = z * scale;
    const float divisor = light.attenuation0 + distance * (light.attenuation1 + distance * light.attenuation2);
    const float attenuation = divisor > 0 ? 1.0f / divisor : 1.0f;
    strength[i] = distance > light.range ? 0.0f : attenuation;
  }
}

// Full inside the inner cone, nothing outside the outer one.
inline void narrow(const LightSource& light, const Vectors& toLight, Lanes<float>& strength) {
  Lanes<float> rho, between;
  for (int i = 0; i < kLanes; ++i) {
    rho[i] = -(toLight.x[i] * light.direction.x + toLight.y[i] * light.direction.y + toLight.z[i] * light.direction.z);
    between[i] = (rho[i] - light.outer) * light.coneScale;
  }
  if (light.falloff != 1.0f)
    for (int i = 0; i < kLanes; ++i) between[i] = power(between[i], light.falloff);
  for (int i = 0; i < kLanes; ++i) {
    const float cone = rho[i] > light.outer ? between[i] : 0.0f;
    strength[i] *= rho[i] > light.inner ? 1.0f : cone;
  }
}

// How much of a light is mirrored to the viewer.
inline void highlight(float exponent, const VertexBatch& v, const Vectors& toLight, const Lanes<float>& facing,
                      const Lanes<float>& strength, Lanes<float>& out) {
  Lanes<float> shine;
  for (int i = 0; i < kLanes; ++i) {
    const float x = toLight.x[i] + v.toEye.x[i], y = toLight.y[i] + v.toEye.y[i], z = toLight.z[i] + v.toEye.z[i];
    const float size = std::sqrt(x * x + y * y + z * z);
    const float scale = size > 0 ? 1.0f / size : 0.0f;
    shine[i] = (v.normal.x[i] * x + v.normal.y[i] * y + v.normal.z[i] * z) * scale;
  }
  if (exponent > 0)
    for (int i = 0; i < kLanes; ++i) out[i] = power(shine[i], exponent);
  else
    fill(out, 1);
  for (int i = 0; i < kLanes; ++i) {
    const float arrives = facing[i] > 0 ? strength[i] : 0.0f;
    out[i] *= shine[i] > 0 ? arrives : 0.0f;
  }
}

inline void addLight(const LightSource& source, const Lighting& lighting, const VertexBatch& v, bool wantsSpecular,
                     Sums& sums) {
  Vectors toLight;
  Lanes<float> strength, facing;
  if (source.kind == LightSource::Kind::Directional) {
    fill(toLight.x, -source.direction.x);
    fill(toLight.y, -source.direction.y);
    fill(toLight.z, -source.direction.z);
    fill(strength, 1);
  } else {
    reach(source, v.seen, toLight, strength);
    if (source.kind == LightSource::Kind::Spot) narrow(source, toLight, strength);
  }
  if (!black(source.ambient)) add(source.ambient, strength, sums.ambient);
  dot(v.normal, toLight, facing);
  if (!black(source.diffuse)) {
    Lanes<float> amount;
    for (int i = 0; i < kLanes; ++i) amount[i] = facing[i] > 0 ? facing[i] * strength[i] : 0.0f;
    add(source.diffuse, amount, sums.diffuse);
  }
  if (wantsSpecular && !black(source.specular)) {
    Lanes<float> amount;
    highlight(lighting.power, v, toLight, facing, strength, amount);
    add(source.specular, amount, sums.specular);
  }
}

// A channel of a material's colour, 0 to 1.
inline void channelOf(const MaterialColor& color, const VertexColors& colors, int channel, Lanes<float>& out) {
  if (color.source == MaterialColor::Source::Material) {
    fill(out, color.value[static_cast<std::size_t>(channel)]);
    return;
  }
  const Lanes<float>& from =
      (color.source == MaterialColor::Source::Diffuse ? colors.diffuse : colors.specular)[channel];
  for (int i = 0; i < kLanes; ++i) out[i] = from[i] * (1.0f / 255);
}

inline void store(const Lanes<float>& value, Lanes<float>& out) {
  for (int i = 0; i < kLanes; ++i) out[i] = clampTo(value[i], 0.0f, 1.0f) * 255.0f;
}

/// Computes both colours of a batch, 0 to 255, channels as in records; a null one is not wanted.
///
///   diffuse  = emissive + ambient (global ambient + sum of lights' ambient · a) + diffuse sum of lights' diffuse · N·L
///   · a specular = specular sum of lights' specular · (N·H) ^ power · a     where N·L > 0
///
/// a is a light's attenuation times its spot factor, 0 beyond its range; H lies half way between the directions to the
/// light and to the viewer. Alpha is that of the diffuse and of the specular source.
inline void light(const Lighting& lighting, const VertexBatch& batch, const VertexColors& colors, Lanes<float>* diffuse,
                  Lanes<float>* specular) {
  Sums sums;
  for (std::size_t c = 0; c < 3; ++c) {
    fill(sums.ambient[c], lighting.globalAmbient[c]);
    fill(sums.diffuse[c], 0);
    fill(sums.specular[c], 0);
  }
  const bool wantsSpecular = specular && lighting.specular;
  for (const LightSource& source : lighting.lights) addLight(source, lighting, batch, wantsSpecular, sums);
  Lanes<float> base, ambient, value;
  for (int c = 0; diffuse && c < 3; ++c) {
    channelOf(lighting.emissive, colors, c, base);
    channelOf(lighting.ambient, colors, c, ambient);
    channelOf(lighting.diffuse, colors, c, value);
    for (int i = 0; i < kLanes; ++i)
      value[i] = base[i] + ambient[i] * sums.ambient[c][i] + value[i] * sums.diffuse[c][i];
    store(value, diffuse[c]);
  }
  for (int c = 0; specular && c < 3; ++c) {
    channelOf(lighting.specularColor, colors, c, value);
    for (int i = 0; i < kLanes; ++i) value[i] *= sums.specular[c][i];
    store(value, specular[c]);
  }
  const auto alpha = [&](const MaterialColor& color, Lanes<float>* out) HWY_ATTR {
    if (!out) return;
    channelOf(color, colors, kAlpha, value);
    store(value, out[kAlpha]);
  };
  alpha(lighting.diffuse, diffuse);
  alpha(lighting.specularColor, specular);
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
