// Every instruction set draws what the portable code draws, to the bit.
#include "Scene.h"

#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <tuple>

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using device::PrimitiveType;
using software::Kernels;

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  std::uint32_t pick(unsigned n) { return static_cast<std::uint32_t>(engine_() % n); }
  std::uint32_t bits() { return static_cast<std::uint32_t>(engine_()); }
  float real(float low, float high) {
    return low + (high - low) * static_cast<float>(pick(1 << 20)) / static_cast<float>(1 << 20);
  }
  template <class T>
  T of(std::initializer_list<T> values) {
    return values.begin()[pick(static_cast<unsigned>(values.size()))];
  }

 private:
  std::mt19937 engine_;
};

void randomStages(Random& random, device::State& state, bool plain) {
  for (std::size_t k = 0; k < 2; ++k) {
    auto& s = state.stages[k];
    s.colorOp = plain ? (k == 0 ? 2 + random.pick(3) : random.of({1u, 1u, 4u, 5u, 6u})) : 1 + random.pick(26);
    s.alphaOp = plain ? random.of({s.colorOp, s.colorOp, 1u, 2u, 3u}) : 1 + random.pick(26);
    const auto arg = [&] { return plain ? random.pick(3) : random.pick(5) | random.of({0u, 0u, 16u, 32u, 48u}); };
    s.colorArg0 = arg();
    s.alphaArg0 = arg();
    s.colorArg1 = plain ? 2 : arg();
    s.alphaArg1 = plain ? 2 : arg();
    s.colorArg2 = s.alphaArg2 = arg();
    s.addressU = plain ? random.of({1u, 3u}) : 1 + random.pick(4);
    s.addressV = plain ? random.of({1u, 3u}) : 1 + random.pick(4);
    s.borderColor = random.bits();
    s.minFilter = 1 + random.pick(2);
    s.magFilter = 1 + random.pick(2);
    s.mipFilter = random.pick(3);
    s.maxMipLevel = random.of({0u, 0u, 1u});
    s.mipMapLodBias = bitsOf(random.real(-2, 2));
    s.texCoordIndex = 0;
  }
}

void randomState(Random& random, device::State& state) {
  auto& r = state.render;
  const bool plain = random.pick(2) == 0;
  r.zEnable = random.pick(3) != 0;
  r.zFunc = plain ? random.of({4u, 4u, 2u, 3u}) : 1 + random.pick(8);
  r.zWriteEnable = random.pick(4) != 0;
  r.alphaBlendEnable = random.pick(2);
  using Factors = std::pair<std::uint32_t, std::uint32_t>;
  std::tie(r.srcBlend, r.destBlend) = plain ? random.of({Factors{5, 6}, {1, 3}, {9, 1}, {2, 2}, {5, 2}})
                                            : Factors{1 + random.pick(13), 1 + random.pick(11)};
  r.blendOp = plain ? 1 : 1 + random.pick(5);
  r.alphaTestEnable = random.pick(4) == 0;
  r.alphaFunc = 1 + random.pick(8);
  r.alphaRef = random.pick(256);
  r.fogEnable = random.pick(3) == 0;
  r.fogTableMode = random.pick(4);
  r.fogVertexMode = random.pick(4);
  r.fogColor = random.bits();
  r.fogStart = bitsOf(random.real(-5, 5));
  r.fogEnd = bitsOf(random.real(5, 60));
  r.fogDensity = bitsOf(random.real(0, 0.2f));
  r.specularEnable = random.pick(4) == 0;
  r.textureFactor = random.bits();
  r.colorWriteEnable = random.of({15u, 15u, 15u, 7u, 5u, 8u});
  r.shadeMode = 1 + random.pick(2);
  r.cullMode = 1 + random.pick(3);
  r.fillMode = random.pick(8) == 0 ? 1 + random.pick(2) : 3;
  r.ditherEnable = random.pick(2);
  randomStages(random, state, plain);
}

// Lights, materials, generated and transformed coordinates, and sizes of points.
void randomVertexWork(Random& random, device::State& state) {
  auto& r = state.render;
  const auto color = [&] {
    return math::Color4{random.real(0, 1), random.real(0, 1), random.real(0, 1), random.real(0, 1)};
  };
  const auto place = [&] { return math::Vec3{random.real(-20, 20), random.real(-20, 20), random.real(-5, 40)}; };
  r.lighting = random.pick(3) == 0;
  r.ambient = random.bits();
  r.normalizeNormals = random.pick(2);
  r.localViewer = random.pick(2);
  r.diffuseMaterialSource = random.pick(3);
  state.material = {color(), color(), color(), color(), random.real(0, 30)};
  for (std::size_t i = 0; i < 4; ++i) {
    state.lightEnabled[i] = random.pick(2) == 0;
    state.lights[i] = {1 + random.pick(3),      color(), color(), color(), place(), place(), random.real(5, 100),
                       random.of({1.0f, 2.5f}), 1,       0.1f,    0.01f,   0.5f,    1.2f};
  }
  for (std::size_t k = 0; k < 2; ++k) {
    state.stages[k].texCoordIndex = random.of({0u, 0u, 0u, 1u, 0x10000u, 0x20000u, 0x30000u});
    state.stages[k].textureTransformFlags = random.of({0u, 0u, 0u, 1u, 2u, 3u, 0x103u, 0x104u});
    state.textureTransforms[k] = math::rotationZ(random.real(-3, 3));
    state.textureTransforms[k].m31 = random.real(-1, 1);
    state.textureTransforms[k].m34 = random.real(0, 0.1f);
  }
  r.pointSize = bitsOf(random.real(0, 20));
  r.pointScaleEnable = random.pick(2);
  r.pointScaleC = bitsOf(0.1f);
  r.pointSpriteEnable = random.pick(2);
}

// Triangles in front of the eye, through it, behind it, far beyond the screen, degenerate, or small.
std::vector<LitVertex> worldMesh(Random& random) {
  std::vector<LitVertex> out;
  const float x = random.real(-20, 20), y = random.real(-15, 15), z = random.real(-5, 50);
  const float size = random.of({0.3f, 3.0f, 30.0f, 3000.0f});
  const float repeats = random.of({0.5f, 3.0f, 3.0f, 300.0f, 1e20f});
  for (std::uint32_t k = 0, n = 3 + random.pick(20) * 3; k < n; ++k) {
    const auto near = [&](float at) { return at + random.real(-size, size); };
    out.push_back({near(x), near(y), near(z), random.bits(), random.bits(), random.real(-repeats, repeats),
                   random.real(-repeats, repeats)});
    if (k > 0 && random.pick(16) == 0) out[k] = out[k - 1];
    if (random.pick(64) == 0) out[k].x = random.of({std::numeric_limits<float>::infinity(), std::nanf(""), 1e30f});
  }
  return out;
}

struct NormalVertex {
  float x, y, z, nx, ny, nz, u, v;
};
constexpr std::uint32_t kNormalFormat = 0x112;
std::vector<NormalVertex> normalMesh(Random& random) {
  std::vector<NormalVertex> out;
  for (const LitVertex& v : worldMesh(random))
    out.push_back({v.x, v.y, v.z, random.real(-1, 1), random.real(-1, 1), random.real(-1, 1), v.u, v.v});
  return out;
}

// Screen vertices, many of them on pixel centres, between pixels, and on borders of tiles and blocks.
std::vector<ScreenVertex> screenMesh(Random& random) {
  std::vector<ScreenVertex> out;
  const bool level = random.pick(2) == 0;
  const float left = random.real(-40, 140), top = random.real(-40, 120), size = random.of({3.0f, 10.0f, 60.0f, 400.0f});
  for (std::uint32_t k = 0, n = 3 + random.pick(30) * 3; k < n; ++k) {
    const auto place = [&](float at) {
      const float near = at + random.real(-size, size);
      switch (random.pick(4)) {
        case 0:
          return std::floor(near);
        case 1:
          return std::floor(near / 64) * 64 + random.of({0.0f, 0.5f, -0.5f});
        default:
          return near;
      }
    };
    const float rhw = level ? 1.0f : random.real(0.01f, 2);
    out.push_back({place(left), place(top), random.real(-0.1f, 1.1f), rhw, random.bits(), random.bits(),
                   random.real(-2, 2), random.real(-2, 2)});
  }
  return out;
}

constexpr std::uint32_t kSceneWidth = 141, kSceneHeight = 101;
constexpr int kDraws = 40;

// Pictures that are drawn. Each has kDraws states: ten thousand are 250 pictures.
unsigned pictures() {
  const char* wanted = std::getenv("QL_TEST_PICTURES");
  return wanted ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : 60;
}

std::vector<std::uint32_t> picture(unsigned seed, device::Format format, Kernels kernels, unsigned threads) {
  Random random(seed);
  Scene scene(kSceneWidth, kSceneHeight, format, threads, kernels);
  std::vector<device::TextureId> textures{device::TextureId::None};
  for (const auto& [width, height] : {std::pair{64u, 64u}, {32u, 8u}, {4096u, 2u}, {1u, 1u}, {7u, 9u}}) {
    const std::uint32_t levels = width > 1 ? 3 : 1;
    const auto id = scene.backEnd->createTexture({width, height, levels, device::Format::A8R8G8B8, false});
    for (std::uint32_t level = 0; level < levels; ++level) {
      std::vector<std::uint32_t> texels(std::size_t{std::max(width >> level, 1u)} * std::max(height >> level, 1u));
      for (std::uint32_t& texel : texels) texel = random.bits();
      scene.backEnd->uploadTexture(id, level, std::as_bytes(std::span(texels)));
    }
    textures.push_back(id);
  }
  scene.clear(random.bits());
  scene.state.projection = math::perspective(1, 0.8f, 0.5f, 60);
  for (int i = 0; i < kDraws; ++i) {
    randomState(random, scene.state);
    randomVertexWork(random, scene.state);
    for (device::TextureId& texture : scene.textures) texture = textures[random.pick(6)];
    if (random.pick(6) == 0)
      scene.state.viewport = {static_cast<int>(random.pick(80)), static_cast<int>(random.pick(60)), 61, 41, 0.2f, 0.9f};
    else
      scene.state.viewport = {0, 0, kSceneWidth, kSceneHeight, 0, 1};
    const auto type = static_cast<PrimitiveType>(random.pick(5) == 0 ? 1 + random.pick(6) : 4);
    switch (random.pick(5)) {
      case 0:
        scene.draw(type, normalMesh(random), kNormalFormat);
        break;
      case 1:
      case 2:
        scene.draw(type, worldMesh(random));
        break;
      default:
        scene.draw(type, screenMesh(random));
    }
    if (random.pick(10) == 0) scene.clear(random.bits(), random.real(0.5f, 1), random.of({2u, 2u, 2u, 2u, 2u, 3u}));
  }
  return scene.pixels();
}

const std::vector<std::uint32_t>& portable(unsigned seed, device::Format format) {
  static std::map<unsigned, std::vector<std::uint32_t>> kept;
  auto& out = kept[seed];
  if (out.empty()) out = picture(seed, format, Kernels::Portable, 1);
  return out;
}

struct Code {
  const char* name;
  Kernels kernels;
};
class KernelsTest : public testing::TestWithParam<Code> {};

TEST_P(KernelsTest, DrawTheBitsOfThePortableCode) {
  if (!software::hasKernels(GetParam().kernels)) GTEST_SKIP() << "this machine has no " << GetParam().name;
  constexpr device::Format kFormats[] = {device::Format::X8R8G8B8, device::Format::A8R8G8B8, device::Format::R5G6B5,
                                         device::Format::X8R8G8B8, device::Format::A1R5G5B5};
  constexpr unsigned kThreads[] = {1, 2, 1, 3, 1, 8, 1};
  for (unsigned seed = 0; seed < pictures(); ++seed) {
    const device::Format format = kFormats[seed % std::size(kFormats)];
    const unsigned threads = kThreads[seed % std::size(kThreads)];
    ASSERT_EQ(picture(seed, format, GetParam().kernels, threads), portable(seed, format)) << "seed " << seed;
  }
}

INSTANTIATE_TEST_SUITE_P(Sets, KernelsTest,
                         testing::Values(Code{"Sse4", Kernels::Sse4}, Code{"Avx2", Kernels::Avx2},
                                         Code{"Avx512", Kernels::Avx512}),
                         [](const testing::TestParamInfo<Code>& code) { return code.param.name; });

}  // namespace
}  // namespace ql::test
