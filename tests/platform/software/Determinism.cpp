// The same bits for any number of threads, and from every kind of pixel code.
#include "Scene.h"

#include <random>

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using device::PrimitiveType;

struct Variation {
  unsigned threads = 1;
  bool general = false;    ///< states that change nothing but keep draws from pixel code of their own
  bool readOften = false;  ///< carries waiting draws out in many small parts
};

// Random meshes and states over a few textures. Only the variation differs between two calls with a seed.
std::vector<std::uint32_t> picture(unsigned seed, device::Format format, const Variation& variation) {
  std::mt19937 random(seed);
  const auto pick = [&](unsigned n) { return static_cast<std::uint32_t>(random() % n); };
  const auto real = [&](float low, float high) {
    return low + (high - low) * static_cast<float>(pick(1 << 20)) / static_cast<float>(1 << 20);
  };
  Scene scene(203, 170, format, variation.threads);
  std::vector<device::TextureId> textures{device::TextureId::None};
  for (const auto& [width, height] : {std::pair{64u, 64u}, {32u, 8u}, {7u, 9u}}) {
    const auto id = scene.backEnd->createTexture({width, height, 3, device::Format::A8R8G8B8, false});
    for (std::uint32_t level = 0; level < 3; ++level) {
      std::vector<std::uint32_t> texels(std::size_t{std::max(width >> level, 1u)} * std::max(height >> level, 1u));
      for (std::uint32_t& texel : texels) texel = static_cast<std::uint32_t>(random());
      scene.backEnd->uploadTexture(id, level, std::as_bytes(std::span(texels)));
    }
    textures.push_back(id);
  }
  scene.clear(0xFF305070);
  scene.state.projection = math::perspective(1, 0.8f, 0.5f, 60);
  for (int i = 0; i < 60; ++i) {
    auto& r = scene.state.render;
    const bool plain = pick(2) == 0;
    r.zFunc = plain ? 4 : 1 + pick(8);
    r.zWriteEnable = pick(4) != 0;
    r.alphaBlendEnable = pick(2);
    const std::pair<std::uint32_t, std::uint32_t> common[] = {{5, 6}, {1, 3}, {9, 1}, {2, 2}};
    std::tie(r.srcBlend, r.destBlend) = plain ? common[pick(4)] : std::pair{1 + pick(13), 1 + pick(11)};
    r.blendOp = plain ? 1 : 1 + pick(5);
    r.alphaTestEnable = pick(4) == 0;
    r.alphaFunc = 1 + pick(8);
    r.alphaRef = pick(256);
    r.fogEnable = plain ? 0 : pick(2);
    r.fogTableMode = pick(4);
    r.fogVertexMode = pick(4);
    r.fogEnd = bitsOf(real(5, 60));
    r.shadeMode = 1 + pick(2);
    r.cullMode = 1 + pick(3);
    r.fillMode = pick(6) == 0 ? 1 + pick(2) : 3;
    r.ditherEnable = pick(2);
    for (std::size_t k = 0; k < 2; ++k) {
      auto& s = scene.state.stages[k];
      s.colorOp = plain ? (k == 0 ? 2 + pick(3) : 1) : 1 + pick(26);
      s.alphaOp = plain ? s.colorOp : 1 + pick(26);
      s.colorArg2 = s.alphaArg2 = plain ? pick(2) : pick(5);
      s.addressU = 1 + pick(4);
      s.addressV = 1 + pick(4);
      s.minFilter = 1 + pick(2);
      s.magFilter = 1 + pick(2);
      s.mipFilter = pick(3);
      s.texCoordIndex = 0;
      scene.textures[k] = textures[pick(4)];
    }
    if (variation.general) {
      r.specularEnable = 1;    // the vertices' specular colours have no red, green and blue
      r.colorWriteEnable = 7;  // the target has no alpha
    }
    std::vector<LitVertex> v;
    const float x = real(-20, 20), y = real(-15, 15), z = real(-5, 50), size = real(1, 30);
    for (std::uint32_t k = 0, n = 3 + pick(40) * 3; k < n; ++k)
      v.push_back({x + real(-size, size), y + real(-size, size), z + real(-size, size),
                   static_cast<std::uint32_t>(random()), static_cast<std::uint32_t>(random()) & 0xFF000000, real(-3, 3),
                   real(-3, 3)});
    const std::uint32_t type = pick(5) == 0 ? 1 + pick(6) : 4;
    scene.draw(static_cast<PrimitiveType>(type), v);
    if (variation.readOften && i % 7 == 0) scene.pixels();
  }
  return scene.pixels();
}

TEST(Determinism, AnyNumberOfThreadsDrawsTheSameBits) {
  for (unsigned seed = 0; seed < 4; ++seed)
    for (const device::Format format : {device::Format::A8R8G8B8, device::Format::R5G6B5}) {
      const auto reference = picture(seed, format, {});
      for (const unsigned threads : {2u, 3u, 8u})
        ASSERT_EQ(picture(seed, format, {threads}), reference) << "seed " << seed << ", " << threads << " threads";
      ASSERT_EQ(picture(seed, format, {2, false, true}), reference) << "seed " << seed << " in parts";
    }
}

TEST(Determinism, SpecialPixelCodeDrawsWhatTheGeneralDraws) {
  for (unsigned seed = 20; seed < 27; ++seed)
    ASSERT_EQ(picture(seed, device::Format::X8R8G8B8, {2}), picture(seed, device::Format::X8R8G8B8, {2, true}))
        << "seed " << seed;
}

// Short draws of one state from memory, or of neighbours in a buffer, some with a clear between them. Flat colours and
// culling tell triangles with other corners.
std::vector<std::uint32_t> shortDraws(unsigned seed, bool apart) {
  std::mt19937 random(seed);
  const auto pick = [&](unsigned n) { return static_cast<std::uint32_t>(random() % n); };
  constexpr std::uint32_t kSide = 150, kMost = 900;
  Scene scene(kSide, kSide);
  scene.state.render.shadeMode = code(device::ShadeMode::Flat);
  scene.state.render.cullMode = code(device::CullMode::CounterClockwise);
  scene.state.render.alphaBlendEnable = 1;
  scene.state.render.srcBlend = code(device::Blend::SrcAlpha);
  scene.state.render.destBlend = code(device::Blend::InvSrcAlpha);
  std::vector<ScreenVertex> vertices;
  for (std::uint32_t i = 0; i < kMost; ++i)
    vertices.push_back({static_cast<float>(pick(kSide)), static_cast<float>(pick(kSide)), 0.5f, 1,
                        static_cast<std::uint32_t>(random())});
  const auto bytes = std::as_bytes(std::span(vertices));
  const device::BufferId buffer = scene.backEnd->createBuffer(bytes.size());
  scene.backEnd->uploadBuffer(buffer, 0, bytes);
  PrimitiveType type = PrimitiveType::TriangleList;
  std::uint32_t triangles = 1;
  for (std::uint32_t first = 0; first + 20 < kMost;) {
    if (pick(6) == 0) type = static_cast<PrimitiveType>(4 + pick(3));
    if (pick(6) == 0) triangles = 1 + pick(4);
    if (pick(12) == 0) scene.clear(0xFF204060);
    const std::uint32_t count = type == PrimitiveType::TriangleList ? triangles * 3 : triangles + 2;
    scene.draw(type, bytes.subspan(first * sizeof(ScreenVertex), count * sizeof(ScreenVertex)), sizeof(ScreenVertex),
               kScreenFormat, pick(5) < 2 ? buffer : device::BufferId::None, first);
    if (apart) scene.pixels();
    first += count + (pick(9) == 0);
  }
  return scene.pixels();
}

TEST(Determinism, ShortDrawsInARowDrawWhatTheyDrawApart) {
  for (unsigned seed = 0; seed < 10; ++seed)
    ASSERT_EQ(shortDraws(seed, false), shortDraws(seed, true)) << "seed " << seed;
}

}  // namespace
}  // namespace ql::test
