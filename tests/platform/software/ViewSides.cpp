// Draws that lie outside the picture as a whole are left out, and nobody can tell.
#include "Scene.h"

#include <array>
#include <cmath>
#include <limits>
#include <random>

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using device::PrimitiveType;

struct Drawn {
  std::vector<std::uint32_t> pixels;
  std::array<std::uint64_t, 4> counts{};
  bool operator==(const Drawn&) const = default;
};

math::Mat4 parallel(float width, float height, float near, float far) {
  const float depth = far - near;
  return math::multiply(math::scaling(2 / width, 2 / height, 1 / depth), math::translation(0, 0, -near / depth));
}

// Small meshes around the sides of a view, each drawn from its place in a buffer, or from memory, where nothing is
// known of it. What is drawn again is known better, so all is drawn three times.
Drawn draw(unsigned seed, bool fromBuffer) {
  std::mt19937 random(seed);
  const auto pick = [&](unsigned n) { return static_cast<std::uint32_t>(random() % n); };
  const auto real = [&](float low, float high) {
    return low + (high - low) * static_cast<float>(pick(1 << 20)) / static_cast<float>(1 << 20);
  };
  Scene scene(160, 120);
  const auto whole = [&](int low, int high) { return low + static_cast<std::int32_t>(pick(high - low)); };
  if (pick(2) == 0) scene.state.viewport = {whole(-20, 60), whole(-20, 60), whole(30, 150), whole(30, 150), 0.1f, 0.9f};
  scene.state.projection = pick(3) == 0 ? parallel(40, 30, 1, 50) : math::perspective(1, 1.3f, 1, 50);
  scene.state.world = math::multiply(math::rotationY(real(-3, 3)), math::translation(real(-9, 9), real(-9, 9), 20));
  if (pick(4) == 0) scene.state.world.m11 = -scene.state.world.m11;
  scene.state.render.fillMode = pick(4) == 0 ? 1 + pick(2) : 3;
  scene.state.render.cullMode = 1 + pick(3);
  constexpr std::uint32_t kMeshes = 200, kVertices = 12;
  std::vector<LitVertex> vertices;
  for (std::uint32_t mesh = 0; mesh < kMeshes; ++mesh) {
    const float far = pick(20) == 0 ? 1e6f : 40, x = real(-far, far), y = real(-far, far), z = real(-far, far);
    const float size = pick(3) == 0 ? 0 : std::exp(real(-3, 3));
    for (std::uint32_t i = 0; i < kVertices; ++i)
      vertices.push_back({x + real(-size, size), y + real(-size, size), z + real(-size, size),
                          pick(3) == 0 ? 0xFFFFFFFF : static_cast<std::uint32_t>(random())});
    constexpr std::array<float, 3> kNoPlace{std::numeric_limits<float>::quiet_NaN(), 1e38f,
                                            -std::numeric_limits<float>::infinity()};
    if (pick(10) == 0) vertices[vertices.size() - 1 - pick(kVertices)].y = kNoPlace[pick(3)];
  }
  const auto bytes = std::as_bytes(std::span(vertices));
  const device::BufferId buffer = scene.backEnd->createBuffer(bytes.size());
  scene.backEnd->uploadBuffer(buffer, 0, bytes);
  Drawn out;
  for (int turn = 0; turn < 3; ++turn) {
    scene.clear(0xFF204060);
    for (std::uint32_t first = 0; first < vertices.size(); first += kVertices)
      scene.draw(static_cast<PrimitiveType>(4 + first / kVertices % 3),
                 bytes.subspan(first * sizeof(LitVertex), kVertices * sizeof(LitVertex)), sizeof(LitVertex), kLitFormat,
                 fromBuffer ? buffer : device::BufferId::None, first);
    out.pixels = scene.pixels();
  }
  const device::Statistics& s = scene.backEnd->statistics();
  out.counts = {s.culled, s.clipped, s.drawn, s.pixels};
  return out;
}

TEST(ViewSides, WhatIsLeftOutWasNotToBeSeen) {
  for (unsigned seed = 0; seed < 40; ++seed) {
    const Drawn expected = draw(seed, false), got = draw(seed, true);
    EXPECT_EQ(got.counts, expected.counts) << "seed " << seed;
    ASSERT_EQ(got.pixels, expected.pixels) << "seed " << seed;
  }
}

TEST(ViewSides, ChangedVerticesAreLookedAtAnew) {
  Scene scene(40, 40);
  scene.state.projection = parallel(40, 40, 0, 1);
  std::vector<LitVertex> vertices{{-90, -90, 0.5f}, {-90, 90, 0.5f}, {-80, 90, 0.5f}};
  const auto bytes = std::as_bytes(std::span(vertices));
  const device::BufferId buffer = scene.backEnd->createBuffer(bytes.size());
  for (const float x : {-80.0f, 90.0f, -80.0f}) {
    vertices[2].x = x;
    scene.backEnd->uploadBuffer(buffer, 0, bytes);
    for (int turn = 0; turn < 3; ++turn) {
      scene.clear(0);
      scene.draw(PrimitiveType::TriangleList, bytes, sizeof(LitVertex), kLitFormat, buffer, 0);
      EXPECT_EQ(scene.pixel(10, 20) != 0, x > 0) << x << ", turn " << turn;
    }
  }
}

}  // namespace
}  // namespace ql::test
