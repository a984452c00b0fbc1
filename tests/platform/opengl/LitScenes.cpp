#include "platform/opengl/Table.h"

#include <random>

namespace ql::test {
namespace {

using device::LightType;

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

}  // namespace
}  // namespace ql::test
