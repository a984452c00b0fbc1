#include "platform/opengl/Content.h"

#include <functional>
#include <random>
#include <string>

namespace ql::test {
namespace {

using device::LightType;

struct BumpVertex {
  math::Vec3 position, normal;
  std::uint32_t diffuse, specular;
  float u, v;
};
constexpr std::uint32_t kFormat = 0x1D2;

/// A cushion before the camera, of triangles about as large as a few pixels.
void cushion(Scene& s) {
  s.state.view = math::lookAt({0, 0.5f, -3}, {0, 0, 0}, {0, 1, 0});
  s.state.projection = math::perspective(1.0f, 48.0f / 64.0f, 0.5f, 60);
  constexpr int kSide = 12;
  const auto at = [](int x, int y) {
    const float a = (static_cast<float>(x) / kSide - 0.5f) * 2.4f, b = (static_cast<float>(y) / kSide - 0.5f) * 2.4f;
    const math::Vec3 normal{std::sin(a) * std::cos(b), std::sin(b), -std::cos(a) * std::cos(b)};
    const auto shade = static_cast<std::uint32_t>(x * 20);
    return BumpVertex{normal,
                      normal,
                      0xC0000000 | shade << 16 | 0x8040,
                      0x80203040 + shade,
                      static_cast<float>(x) / kSide,
                      static_cast<float>(y) / kSide};
  };
  std::vector<BumpVertex> triangles;
  for (int y = 0; y < kSide; ++y)
    for (int x = 0; x < kSide; ++x)
      triangles.insert(triangles.end(),
                       {at(x, y), at(x, y + 1), at(x + 1, y), at(x + 1, y), at(x, y + 1), at(x + 1, y + 1)});
  s.draw(PrimitiveType::TriangleList, triangles, kFormat);
}

void randomLights(unsigned seed, Scene& s) {
  std::mt19937 random(seed);
  const auto below = [&](unsigned n) { return static_cast<std::uint32_t>(random() % n); };
  const auto unit = [&] { return static_cast<float>(below(1001)) / 1000; };
  const auto color = [&] { return math::Color4{unit(), unit(), unit(), unit()}; };
  const auto place = [&] { return math::Vec3{unit() * 6 - 3, unit() * 6 - 3, unit() * 4 - 5}; };
  device::RenderStates& r = s.state.render;
  r.lighting = 1;
  r.ambient = static_cast<std::uint32_t>(random());
  r.specularEnable = below(2);
  r.localViewer = below(2);
  r.normalizeNormals = below(2);
  r.colorVertex = below(2);
  r.diffuseMaterialSource = below(3);
  r.specularMaterialSource = below(3);
  r.ambientMaterialSource = below(3);
  r.emissiveMaterialSource = below(4) == 0 ? below(3) : 0;
  r.shadeMode = 1 + below(2);
  r.fogEnable = below(4) == 0;
  r.fogVertexMode = 3;
  r.fogEnd = bitsOf(6);
  r.fogColor = static_cast<std::uint32_t>(random());
  s.state.material = {color(), color(), color(), {}, unit() * 30};
  s.state.world = math::multiply(math::scaling(1, 0.7f + unit() * 0.6f, 1), math::rotationY(unit()));
  for (std::uint32_t i = below(4); i < device::kLights; i += 1 + below(60)) {
    device::Light& light = s.state.lights[i];
    light = {1 + below(3), color(), color(), below(2) ? color() : math::Color4{}, place(), place(), 1 + unit() * 8};
    light.direction.z = 3;
    light.attenuation0 = 0.5f + unit();
    light.attenuation1 = unit() * 0.3f;
    light.attenuation2 = unit() * 0.1f;
    light.theta = unit();
    light.phi = light.theta + 0.3f + unit();
    light.falloff = 0.5f + unit() * 2;
    s.state.lightEnabled[i] = below(4) != 0;
  }
}

TEST_F(OpenGL, RandomLightsGiveTheReferencePicture) {
  for (unsigned seed = 1; seed <= 100; ++seed) {
    const Comparison c = onBoth(
        [seed](Scene& s) {
          s.clear(0xFF203040);
          randomLights(seed, s);
          cushion(s);
        },
        4);
    EXPECT_LE(c.faults, 3u) << "seed " << seed << ": " << c;
    EXPECT_LE(c.edges, 120u) << "seed " << seed << ": " << c;
  }
}

TEST_F(OpenGL, CoordinatesAreGeneratedAsOnTheReference) {
  std::mt19937 random(7);
  const auto number = [&] { return static_cast<float>(random() % 201) / 100 - 1; };
  for (std::uint32_t generated = 0; generated <= 3; ++generated)
    for (const std::uint32_t flags : {0u, 1u, 2u, 3u, 4u, 0x102u, 0x103u, 0x104u}) {
      math::Mat4 matrix = math::identity();
      for (float* m :
           {&matrix.m11, &matrix.m12, &matrix.m21, &matrix.m22, &matrix.m31, &matrix.m32, &matrix.m41, &matrix.m42})
        *m += number() * 0.4f;
      matrix.m13 = matrix.m14 = matrix.m23 = matrix.m24 = 0.1f;
      matrix.m33 = matrix.m34 = 2;
      matrix.m43 = matrix.m44 = 4;
      // Coordinates whose second divides run away where it is 0.
      if (flags == 0x102) matrix.m12 = matrix.m22 = 0.05f, matrix.m32 = matrix.m42 = 2;
      const Comparison c = onBoth(
          [&](Scene& s) {
            s.clear(0xFF203040);
            s.state.stages[0].texCoordIndex = generated << 16;
            s.state.stages[0].textureTransformFlags = flags;
            s.state.stages[0].minFilter = s.state.stages[0].magFilter = 2;
            s.state.textureTransforms[0] = matrix;
            s.textures[0] = smoothTexture(s);
            s.replaceByTexture();
            cushion(s);
          },
          8);
      EXPECT_LE(c.faults, 3u) << generated << ", flags " << flags << ": " << c;
      EXPECT_LE(c.edges, 120u) << generated << ", flags " << flags << ": " << c;
    }
}

TEST_F(OpenGL, PointSpritesAreThoseOfTheReference) {
  for (const std::uint32_t scale : {0u, 1u})
    for (const std::uint32_t sprite : {0u, 1u}) {
      const Comparison c = onBoth(
          [=](Scene& s) {
            s.textures[0] = smoothTexture(s, 16);
            s.state.stages[0].minFilter = s.state.stages[0].magFilter = 2;
            device::RenderStates& r = s.state.render;
            r.pointSpriteEnable = sprite;
            r.pointScaleEnable = scale;
            r.pointSize = bitsOf(scale ? 1.0f : 15.0f);
            r.pointScaleA = bitsOf(0.0f);
            r.pointScaleC = bitsOf(1.0f);
            s.state.view = math::lookAt({0, 1, -4}, {0, 0, 0}, {0, 1, 0});
            s.state.projection = math::perspective(1.2f, 48.0f / 64.0f, 0.5f, 60);
            s.draw(PrimitiveType::PointList, std::vector<LitVertex>{{-1.5f, 0, 0, 0xFFFF8080, 0, 0.3f, 0.6f},
                                                                    {1, 0.5f, 1, 0xFF80FF80, 0, 0.1f, 0.2f},
                                                                    {0, -1, 4, 0xFF8080FF, 0, 0.9f, 0.5f},
                                                                    {3.2f, 0, 0, 0xFFFFFFFF, 0, 0.5f, 0.5f}});
          },
          4);
      EXPECT_LE(c.faults, 2u) << "scale " << scale << ", sprite " << sprite << ": " << c;
      EXPECT_LE(c.edges, 60u) << "scale " << scale << ", sprite " << sprite << ": " << c;
    }
}

}  // namespace
}  // namespace ql::test
