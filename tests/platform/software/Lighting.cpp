// Colours of lit vertices against the formulas of the fixed function, written out in double.
#include "Scene.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

#include <gtest/gtest.h>

namespace ql::test {
namespace {

using device::LightType;

struct LitPoint {
  math::Vec3 position, normal;
  std::uint32_t diffuse = 0xC0804020, specular = 0x90206090;
};
constexpr std::uint32_t kFormat = 0xD2;      // position, normal, diffuse, specular
constexpr std::uint32_t kPlainFormat = 0x2;  // position

struct Color {
  double c[4] = {};  // red, green, blue, alpha
};
Color colorOf(const math::Color4& v) { return {{v.r, v.g, v.b, v.a}}; }
Color colorOf(std::uint32_t argb) {
  const auto channel = [argb](int shift) { return (argb >> shift & 255) / 255.0; };
  return {{channel(16), channel(8), channel(0), channel(24)}};
}

struct Vector {
  double x, y, z;
};
Vector vectorOf(const math::Vec3& v) { return {v.x, v.y, v.z}; }
Vector operator-(const Vector& a, const Vector& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Vector operator+(const Vector& a, const Vector& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
double dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vector unit(const Vector& v) {
  const double length = std::sqrt(dot(v, v));
  return length > 0 ? Vector{v.x / length, v.y / length, v.z / length} : v;
}
// Row vector times the upper three rows; w adds the fourth.
Vector times(const Vector& v, const math::Mat4& m, double w) {
  return {v.x * m.m11 + v.y * m.m21 + v.z * m.m31 + w * m.m41, v.x * m.m12 + v.y * m.m22 + v.z * m.m32 + w * m.m42,
          v.x * m.m13 + v.y * m.m23 + v.z * m.m33 + w * m.m43};
}
// The normal's way to camera space for a world of one scale per axis and a view without any.
Vector normalInCamera(const Vector& n, const math::Mat4& world, const math::Mat4& view) {
  return times({n.x / world.m11, n.y / world.m22, n.z / world.m33}, view, 0);
}

double spot(const device::Light& light, double rho) {
  const double inner = std::cos(light.theta / 2.0), outer = std::cos(light.phi / 2.0);
  if (rho > inner) return 1;
  if (rho <= outer) return 0;
  return std::pow((rho - outer) / (inner - outer), light.falloff);
}

/// What the vertex's two colours should be; added up when the highlights are on, as the pixel does.
Color expected(const device::State& state, const LitPoint& v) {
  const device::RenderStates& r = state.render;
  const auto pick = [&](std::uint32_t source, const math::Color4& material) {
    if (r.colorVertex && source == 1) return colorOf(v.diffuse);
    if (r.colorVertex && source == 2) return colorOf(v.specular);
    return colorOf(material);
  };
  const Color diffuse = pick(r.diffuseMaterialSource, state.material.diffuse);
  const Color ambient = pick(r.ambientMaterialSource, state.material.ambient);
  const Color specular = pick(r.specularMaterialSource, state.material.specular);
  const Color emissive = pick(r.emissiveMaterialSource, state.material.emissive);
  const Vector seen = times(times(vectorOf(v.position), state.world, 1), state.view, 1);
  Vector n = normalInCamera(vectorOf(v.normal), state.world, state.view);
  if (r.normalizeNormals) n = unit(n);
  Color sumA = colorOf(r.ambient), sumD, sumS;
  for (std::size_t i = 0; i < device::kLights; ++i) {
    if (!state.lightEnabled[i]) continue;
    const device::Light& light = state.lights[i];
    const Vector way = unit(times(vectorOf(light.direction), state.view, 0));
    Vector toLight = {-way.x, -way.y, -way.z};
    double strength = 1;
    if (light.type != code(LightType::Directional)) {
      const Vector apart = times(vectorOf(light.position), state.view, 1) - seen;
      const double d = std::sqrt(dot(apart, apart));
      toLight = unit(apart);
      strength = d > light.range ? 0 : 1 / (light.attenuation0 + light.attenuation1 * d + light.attenuation2 * d * d);
      if (light.type == code(LightType::Spot)) strength *= spot(light, -dot(toLight, way));
    }
    const double facing = std::max(dot(n, toLight), 0.0);
    const Vector toEye = r.localViewer ? unit(Vector{-seen.x, -seen.y, -seen.z}) : Vector{0, 0, -1};
    const double shine = std::max(dot(n, unit(toLight + toEye)), 0.0);
    for (int c = 0; c < 3; ++c) {
      sumA.c[c] += strength * colorOf(light.ambient).c[c];
      sumD.c[c] += strength * facing * colorOf(light.diffuse).c[c];
      if (facing > 0 && shine > 0)
        sumS.c[c] += strength * std::pow(shine, state.material.power) * colorOf(light.specular).c[c];
    }
  }
  Color out;
  for (int c = 0; c < 3; ++c) {
    out.c[c] = std::clamp(emissive.c[c] + ambient.c[c] * sumA.c[c] + diffuse.c[c] * sumD.c[c], 0.0, 1.0);
    if (r.specularEnable) out.c[c] = std::min(out.c[c] + std::clamp(specular.c[c] * sumS.c[c], 0.0, 1.0), 1.0);
  }
  out.c[3] = std::clamp(diffuse.c[3], 0.0, 1.0);
  return out;
}

struct Case {
  const char* name;
  std::function<void(device::State&)> set;
};

device::Light sun(math::Vec3 direction) {
  device::Light light;
  light.direction = direction;
  light.diffuse = {0.9f, 0.6f, 0.3f, 1};
  light.specular = {0.3f, 0.5f, 0.7f, 1};
  light.ambient = {0.05f, 0.1f, 0.15f, 1};
  return light;
}
device::Light lamp(LightType type = LightType::Point) {
  device::Light light = sun({0.25f, -0.125f, 1});
  light.type = code(type);
  light.position = {0.5f, 1, -2};
  light.range = 100;
  light.attenuation0 = 1;
  light.theta = 0.5f;
  light.phi = 1.25f;
  light.falloff = 1;
  return light;
}
std::function<void(device::State&)> with(
    const device::Light& light, const std::function<void(device::State&)>& more = [](device::State&) {}) {
  return [=](device::State& s) {
    s.lights[3] = light;
    s.lightEnabled[3] = true;
    more(s);
  };
}
device::Light changed(device::Light light, const std::function<void(device::Light&)>& change) {
  change(light);
  return light;
}

/// A grid of points on a wall before the viewer, with normals that turn away from one to the next.
std::vector<LitPoint> wall() {
  std::vector<LitPoint> points;
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 16; ++x) {
      const float sx = (static_cast<float>(x) - 7.5f) / 8, sy = (7.5f - static_cast<float>(y)) / 8;
      const float tilt = sx * 0.9f, roll = sy * 0.7f;
      points.push_back(
          {{sx, sy, 0.5f}, {std::sin(tilt), std::sin(roll) * std::cos(tilt), -std::cos(roll) * std::cos(tilt)}});
    }
  return points;
}

const Case kCases[] = {
    {"no light", [](device::State&) {}},
    {"global ambient", [](device::State& s) { s.render.ambient = 0xFF336699; }},
    {"directional", with(sun({0.5f, -0.25f, 2}))},
    {"from behind", with(sun({0.5f, -0.25f, -2}))},
    {"point", with(lamp())},
    {"attenuated by distance", with(changed(lamp(), [](auto& l) { l.attenuation1 = 0.5f; }))},
    {"by its square", with(changed(lamp(),
                                   [](auto& l) {
                                     l.attenuation0 = 0;
                                     l.attenuation2 = 0.25f;
                                   }))},
    {"out of range at some", with(changed(lamp(), [](auto& l) { l.range = 2.8f; }))},
    {"spot", with(lamp(LightType::Spot))},
    {"spot with a falloff", with(changed(lamp(LightType::Spot), [](auto& l) { l.falloff = 3.5f; }))},
    {"spot with an even cone", with(changed(lamp(LightType::Spot), [](auto& l) { l.falloff = 0; }))},
    {"spot, attenuated", with(changed(lamp(LightType::Spot), [](auto& l) { l.attenuation2 = 0.1f; }))},
    {"three lights and the last of all", with(sun({0, 1, 1}),
                                              [](device::State& s) {
                                                s.lights[0] = lamp();
                                                s.lights[100] = lamp(LightType::Spot);
                                                s.lightEnabled[0] = s.lightEnabled[100] = true;
                                              })},
    {"vertex colours", with(sun({0.5f, 0, 1}), [](device::State& s) { s.render.colorVertex = 1; })},
    {"the other vertex colours", with(sun({0.5f, 0, 1}),
                                      [](device::State& s) {
                                        s.render.colorVertex = s.render.specularEnable = 1;
                                        s.render.ambient = 0xFFFFFFFF;
                                        s.render.diffuseMaterialSource = 2;
                                        s.render.specularMaterialSource = 1;
                                        s.render.ambientMaterialSource = 2;
                                        s.render.emissiveMaterialSource = 1;
                                      })},
    {"sources without colour vertices",
     with(sun({0.5f, 0, 1}),
          [](device::State& s) { s.render.ambientMaterialSource = s.render.emissiveMaterialSource = 1; })},
    {"highlights", with(lamp(), [](device::State& s) { s.render.specularEnable = 1; })},
    {"highlights of a far viewer", with(lamp(),
                                        [](device::State& s) {
                                          s.render.specularEnable = 1;
                                          s.render.localViewer = 0;
                                        })},
    {"narrow highlights", with(lamp(),
                               [](device::State& s) {
                                 s.render.specularEnable = 1;
                                 s.material.power = 90;
                               })},
    {"highlights everywhere", with(lamp(),
                                   [](device::State& s) {
                                     s.render.specularEnable = 1;
                                     s.material.power = 0;
                                   })},
    {"in a moved and turned camera", with(lamp(LightType::Spot),
                                          [](device::State& s) {
                                            s.render.specularEnable = 1;
                                            s.view = math::multiply(math::rotationZ(0.5f),
                                                                    math::translation(0.1f, 0, 0.25f));
                                            s.world = math::translation(0, 0.125f, -0.125f);
                                          })},
    {"long normals", with(sun({0.5f, 0, 1}), [](device::State& s) { s.world = math::scaling(0.5f, 0.75f, 0.8f); })},
    {"normalised normals", with(sun({0.5f, 0, 1}),
                                [](device::State& s) {
                                  s.world = math::scaling(0.5f, 0.75f, 0.8f);
                                  s.render.normalizeNormals = 1;
                                })},
};

TEST(Lighting, FollowsTheFormulas) {
  const std::vector<LitPoint> points = wall();
  for (const Case& row : kCases) {
    Scene scene(64, 64);
    device::State& s = scene.state;
    s.render.lighting = 1;
    s.render.colorVertex = 0;
    s.material = {{0.8f, 0.7f, 0.6f, 0.5f}, {0.4f, 0.5f, 0.6f, 1}, {0.9f, 0.8f, 0.7f, 1}, {0.02f, 0.04f, 0.06f, 1}, 12};
    row.set(s);
    // Every vertex goes to a pixel of its own, wherever the camera has put it.
    for (std::size_t i = 0; i < points.size(); ++i) {
      const Vector seen = times(times(vectorOf(points[i].position), s.world, 1), s.view, 1);
      s.projection = math::identity();
      s.projection.m41 = static_cast<float>((static_cast<double>(i % 16) * 4 - 32) / 32 - seen.x);
      s.projection.m42 = static_cast<float>((32 - static_cast<double>(i / 16) * 4) / 32 - seen.y);
      scene.draw(device::PrimitiveType::PointList, std::vector{points[i]}, kFormat);
    }
    const std::vector<std::uint32_t> pixels = scene.pixels();
    for (std::size_t i = 0; i < points.size(); ++i) {
      const std::uint32_t pixel = pixels[i / 16 * 4 * 64 + i % 16 * 4];
      const Color want = expected(s, points[i]), got = colorOf(pixel);
      for (int c = 0; c < 4; ++c)
        ASSERT_NEAR(got.c[c] * 255, want.c[c] * 255, 1.01) << row.name << ", vertex " << i << ", channel " << c;
    }
  }
}

TEST(Lighting, WithoutNormalsAndColoursOnlyAmbientAndEmissiveRemain) {
  Scene scene(8, 8);
  device::State& s = scene.state;
  s.render.lighting = s.render.specularEnable = 1;
  s.render.ambient = 0xFF808080;
  s.material = {{1, 1, 1, 0.5f}, {0.5f, 0.5f, 0.5f, 1}, {1, 1, 1, 1}, {0.25f, 0, 0, 1}, 0};
  s.lights[0] = sun({0, 0, 1});
  s.lights[0].ambient = {0, 0, 0.5f, 1};
  s.lightEnabled[0] = true;
  scene.draw(device::PrimitiveType::TriangleList, std::vector<math::Vec3>{{-1, 3, 0.5f}, {3, -1, 0.5f}, {-1, -1, 0.5f}},
             kPlainFormat);
  EXPECT_LE(difference(scene.pixel(3, 3), 0x80804080), 1) << std::hex << scene.pixel(3, 3);
}

TEST(Lighting, VerticesOnTheScreenAreNotLit) {
  Scene scene(8, 8);
  scene.state.render.lighting = 1;
  scene.fill(0xFF123456);
  EXPECT_EQ(scene.pixel(3, 3), 0xFF123456);
}

// A vertex gets the same bits wherever it stands among others and whoever transforms it.
TEST(Lighting, IsTheSameForEveryGroupingAndThread) {
  std::vector<LitPoint> points;
  for (int copy = 0; copy < 20; ++copy)
    for (LitPoint v : wall()) {
      v.position.z = 0.1f + static_cast<float>(copy) * 0.03f;
      v.diffuse = static_cast<std::uint32_t>(points.size()) * 2654435761u;
      points.push_back(v);
    }
  const auto picture = [&](unsigned threads, std::size_t group) {
    Scene scene(128, 128, device::Format::A8R8G8B8, threads);
    device::State& s = scene.state;
    s.render.lighting = s.render.specularEnable = s.render.pointScaleEnable = 1;
    s.render.zFunc = code(device::Compare::Always);
    s.render.pointSize = bitsOf(0.01f);
    s.render.pointScaleB = bitsOf(1);
    s.material.power = 7.5f;
    s.lights[0] = changed(lamp(LightType::Spot), [](auto& l) { l.falloff = 2.5f; });
    s.lights[1] = sun({1, 0, 1});
    s.lightEnabled[0] = s.lightEnabled[1] = true;
    for (std::size_t first = 0; first < points.size(); first += group) {
      const auto begin = points.begin() + static_cast<std::ptrdiff_t>(first);
      const auto count = static_cast<std::ptrdiff_t>(std::min(group, points.size() - first));
      scene.draw(device::PrimitiveType::PointList, std::vector(begin, begin + count), kFormat);
    }
    return scene.pixels();
  };
  const std::vector<std::uint32_t> one = picture(1, points.size());
  EXPECT_GT(std::count_if(one.begin(), one.end(), [](std::uint32_t p) { return p != 0; }), 200);
  for (const unsigned threads : {1u, 3u})
    for (const std::size_t group : {std::size_t{1}, std::size_t{7}, std::size_t{1000}, points.size()})
      EXPECT_TRUE(picture(threads, group) == one) << threads << " threads, groups of " << group;
}

// Values that no one should set: no pixel may depend on a trap, a hang or undefined conversions.
TEST(Lighting, SurvivesNumbersThatAreNone) {
  const float nan = std::nanf(""), infinite = INFINITY;
  for (const float bad : {nan, infinite, -infinite, 0.0f, -1.0f, 1e38f}) {
    Scene scene(16, 16);
    device::State& s = scene.state;
    s.render.lighting = s.render.specularEnable = s.render.normalizeNormals = 1;
    device::Light light = lamp(LightType::Spot);
    light.position = {bad, bad, bad};
    light.direction = {bad, 0, 1};
    light.range = light.falloff = light.theta = light.phi = light.attenuation0 = light.attenuation2 = bad;
    light.diffuse = light.specular = {bad, bad, 1, bad};
    s.lights[0] = light;
    s.lightEnabled[0] = true;
    s.material.power = bad;
    s.material.diffuse = {bad, 1, 1, bad};
    s.view.m11 = bad;
    s.projection = math::translation(0, 0, 0);
    scene.draw(device::PrimitiveType::PointList, wall(), kFormat);
    s.view = math::identity();
    scene.draw(device::PrimitiveType::PointList, wall(), kFormat);
    EXPECT_EQ(scene.pixels().size(), 256u);
  }
}

}  // namespace
}  // namespace ql::test
