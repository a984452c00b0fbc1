// Which pixels primitives cover.
#include "Scene.h"

#include <array>
#include <cmath>
#include <limits>
#include <random>

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using device::PrimitiveType;

std::size_t drawn(const std::vector<std::uint32_t>& pixels) {
  return static_cast<std::size_t>(std::count_if(pixels.begin(), pixels.end(), [](auto p) { return p != 0; }));
}

TEST(Coverage, PixelsWhoseCentresLieInsideByTheTopLeftRule) {
  struct Case {
    const char* name;
    float left, top, right, bottom;
    int x0, y0, x1, y1;  // covered, the last excluded
  };
  constexpr Case kCases[] = {{"centres on all sides", 2, 3, 6, 7, 2, 3, 6, 7},
                             {"half a pixel before", 1.5f, 2.5f, 5.5f, 6.5f, 2, 3, 6, 7},
                             {"half a pixel after", 2.5f, 3.5f, 6.5f, 7.5f, 3, 4, 7, 8},
                             {"just past the centres", 2.01f, 3.01f, 6.01f, 7.01f, 3, 4, 7, 8},
                             {"between centres", 2.2f, 3.2f, 2.8f, 3.8f, 0, 0, 0, 0},
                             {"over every side", -100, -100, 100, 100, 0, 0, 70, 66}};
  for (const Case& c : kCases) {
    Scene scene(70, 66);
    scene.rectangle(c.left, c.top, c.right, c.bottom, 0xFFFFFFFF);
    const auto pixels = scene.pixels();
    for (int y = 0; y < 66; ++y)
      for (int x = 0; x < 70; ++x) {
        const bool inside = x >= c.x0 && x < c.x1 && y >= c.y0 && y < c.y1;
        ASSERT_EQ(pixels[static_cast<std::size_t>(y * 70 + x)] != 0, inside) << c.name << " at " << x << ", " << y;
      }
  }
}

// A grid with shaken inner vertices, added up: every pixel gets exactly one triangle.
TEST(Coverage, MeshesCoverEachPixelOnce) {
  for (unsigned seed = 0; seed < 12; ++seed) {
    std::mt19937 random(seed);
    const std::uint32_t width = 150, height = 130;
    const int n = 3 + static_cast<int>(seed) * 4;
    std::uniform_real_distribution<float> shake(-0.25f, 0.25f);
    std::vector<ScreenVertex> grid;
    for (int j = 0; j <= n; ++j)
      for (int i = 0; i <= n; ++i) {
        const bool edge = i == 0 || j == 0 || i == n || j == n;
        const float x = (static_cast<float>(i) + (edge ? 0 : shake(random))) / static_cast<float>(n);
        const float y = (static_cast<float>(j) + (edge ? 0 : shake(random))) / static_cast<float>(n);
        grid.push_back({x * 170 - 10, y * 150 - 10, 0.5f, 1, 0x01010101});
      }
    std::vector<ScreenVertex> triangles;
    const auto corner = [&](int i, int j) { return grid[static_cast<std::size_t>(j * (n + 1) + i)]; };
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        using Step = std::pair<int, int>;
        constexpr std::array<Step, 6> kFalling{Step{0, 0}, {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}};
        constexpr std::array<Step, 6> kRising{Step{0, 0}, {1, 0}, {0, 1}, {1, 0}, {1, 1}, {0, 1}};
        for (const auto& [di, dj] : (random() & 1) ? kFalling : kRising) triangles.push_back(corner(i + di, j + dj));
      }
    Scene scene(width, height);
    scene.state.render.zEnable = 0;
    scene.state.render.alphaBlendEnable = 1;
    scene.state.render.srcBlend = scene.state.render.destBlend = code(device::Blend::One);
    scene.draw(PrimitiveType::TriangleList, triangles);
    EXPECT_THAT(scene.pixels(), testing::Each(0x01010101)) << "seed " << seed;
  }
}

// The same through the eye, with the mesh reaching behind it and far outside the guard band.
TEST(Coverage, ClippedMeshesCoverEachPixelAtMostOnce) {
  for (unsigned seed = 0; seed < 8; ++seed) {
    std::mt19937 random(seed + 100);
    std::uniform_real_distribution<float> shake(-0.4f, 0.4f);
    Scene scene(200, 150);
    scene.state.projection = math::perspective(1.2f, 0.75f, 0.5f, 3000);
    scene.state.view = math::rotationX(-0.1f * static_cast<float>(seed));
    scene.state.render.zEnable = 0;
    scene.state.render.alphaBlendEnable = 1;
    scene.state.render.srcBlend = scene.state.render.destBlend = code(device::Blend::One);
    const int n = 7;
    std::vector<LitVertex> grid;
    for (int i = 0; i <= n * n + 2 * n; ++i)
      grid.push_back({(static_cast<float>(i % (n + 1)) - 3.5f + shake(random)) * 900, -3,
                      (static_cast<float>(i / (n + 1)) - 3.5f + shake(random)) * 900, 0x01010101});
    std::vector<LitVertex> triangles;
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        const auto a = static_cast<std::size_t>(j * (n + 1) + i), b = a + n + 1;
        for (const std::size_t v : {a, a + 1, b, a + 1, b + 1, b}) triangles.push_back(grid[v]);
      }
    scene.draw(PrimitiveType::TriangleList, triangles);
    const auto pixels = scene.pixels();
    // Below the horizon the plane is whole: from some row on every pixel is covered.
    EXPECT_THAT(pixels, testing::Each(testing::AnyOf(0u, 0x01010101u))) << "seed " << seed;
    EXPECT_GT(drawn(pixels), pixels.size() / 4) << "seed " << seed;
    EXPECT_THAT(std::vector(pixels.end() - 200, pixels.end()), testing::Each(0x01010101)) << "seed " << seed;
  }
}

TEST(Coverage, PrimitivesDrawTheirPixels) {
  const auto at = [](float x, float y) { return ScreenVertex{x, y, 0.5f}; };
  struct Case {
    const char* name;
    PrimitiveType type;
    std::vector<ScreenVertex> vertices;
    std::uint32_t fill, lastPixel;
    std::vector<std::pair<int, int>> pixels;
  };
  const std::vector<Case> cases{
      {"points", PrimitiveType::PointList, {at(1, 1), at(3, 2)}, 3, 1, {{1, 1}, {3, 2}}},
      {"line to the right", PrimitiveType::LineList, {at(1, 1), at(4, 1)}, 3, 1, {{1, 1}, {2, 1}, {3, 1}, {4, 1}}},
      {"line without its last pixel", PrimitiveType::LineList, {at(1, 1), at(4, 1)}, 3, 0, {{1, 1}, {2, 1}, {3, 1}}},
      {"line to the left without", PrimitiveType::LineList, {at(4, 1), at(1, 1)}, 3, 0, {{4, 1}, {3, 1}, {2, 1}}},
      {"line upwards", PrimitiveType::LineList, {at(2, 4), at(2, 2)}, 3, 1, {{2, 4}, {2, 3}, {2, 2}}},
      {"diagonal", PrimitiveType::LineList, {at(1, 1), at(4, 4)}, 3, 1, {{1, 1}, {2, 2}, {3, 3}, {4, 4}}},
      {"line strip",
       PrimitiveType::LineStrip,
       {at(1, 1), at(3, 1), at(3, 3)},
       3,
       1,
       {{1, 1}, {2, 1}, {3, 1}, {3, 2}, {3, 3}}},
      {"triangle strip",
       PrimitiveType::TriangleStrip,
       {at(1, 1), at(3, 1), at(1, 3), at(3, 3)},
       3,
       1,
       {{1, 1}, {2, 1}, {1, 2}, {2, 2}}},
      {"triangle as lines",
       PrimitiveType::TriangleList,
       {at(1, 1), at(4, 1), at(1, 4)},
       2,
       1,
       {{1, 1}, {2, 1}, {3, 1}, {4, 1}, {1, 2}, {3, 2}, {1, 3}, {2, 3}, {1, 4}}},
      {"triangle as points",
       PrimitiveType::TriangleList,
       {at(1, 1), at(4, 1), at(1, 4)},
       1,
       1,
       {{1, 1}, {4, 1}, {1, 4}}},
  };
  for (const Case& c : cases) {
    Scene scene(6, 6);
    scene.state.render.fillMode = c.fill;
    scene.state.render.lastPixel = c.lastPixel;
    scene.draw(c.type, c.vertices);
    std::vector<std::uint32_t> expected(36, 0);
    for (const auto& [x, y] : c.pixels) expected[static_cast<std::size_t>(y * 6 + x)] = 0xFFFFFFFF;
    EXPECT_EQ(scene.pixels(), expected) << c.name;
  }
}

TEST(Coverage, CullModesLookAtTheScreenWinding) {
  const std::vector<ScreenVertex> clockwise{{1, 1, 0}, {9, 1, 0}, {1, 9, 0}}, counter{{1, 1, 0}, {1, 9, 0}, {9, 1, 0}};
  for (const std::uint32_t mode : {1u, 2u, 3u})
    for (const bool turned : {false, true}) {
      Scene scene(10, 10);
      scene.state.render.cullMode = mode;
      scene.draw(PrimitiveType::TriangleList, turned ? counter : clockwise);
      const bool visible = mode == 1 || (mode == 2) == turned;
      EXPECT_EQ(drawn(scene.pixels()) != 0, visible) << "mode " << mode << " turned " << turned;
    }
  // Strips and fans keep their winding along the way.
  for (const PrimitiveType type : {PrimitiveType::TriangleStrip, PrimitiveType::TriangleFan}) {
    Scene scene(10, 10);
    scene.state.render.cullMode = 3;
    std::vector<ScreenVertex> v{{1, 1, 0}, {9, 1, 0}, {1, 9, 0}, {9, 9, 0}};
    if (type == PrimitiveType::TriangleFan) std::swap(v[2], v[3]);
    scene.draw(type, v);
    EXPECT_EQ(drawn(scene.pixels()), 64u);
  }
}

TEST(Coverage, NothingOutsideTheViewport) {
  struct Case {
    const char* name;
    math::Viewport viewport;
  };
  const Case cases[] = {{"inside", {10, 5, 70, 40, 0, 1}},
                        {"partly left and above", {-20, -30, 60, 60, 0, 1}},
                        {"partly right and below", {80, 60, 100, 100, 0, 1}},
                        {"one pixel", {33, 44, 1, 1, 0, 1}},
                        {"outside", {300, 10, 50, 50, 0, 1}},
                        {"empty", {10, 10, 0, 0, 0, 1}},
                        {"absurd", {-2000000000, 10, 2147483647, 2147483647, 0, 1}}};
  for (const Case& c : cases) {
    for (const bool screen : {true, false}) {
      Scene scene(100, 80);
      scene.state.viewport = c.viewport;
      if (screen) {
        scene.rectangle(-1000, -1000, 1000, 1000, 0xFFFFFFFF);
      } else {
        const std::vector<LitVertex> big{{-5, -5, 0.5f}, {-5, 15, 0.5f}, {15, -5, 0.5f}};
        scene.draw(PrimitiveType::TriangleList, big);
        scene.draw(PrimitiveType::LineStrip, big);
        scene.draw(PrimitiveType::PointList, std::vector<LitVertex>{{1, 1, 0.5f}, {-1, -1, 0.5f}});
      }
      const auto pixels = scene.pixels();
      const auto& v = c.viewport;
      for (std::int64_t y = 0; y < 80; ++y)
        for (std::int64_t x = 0; x < 100; ++x) {
          const bool inside =
              x >= v.x && y >= v.y && x < std::int64_t{v.x} + v.width && y < std::int64_t{v.y} + v.height;
          const bool white = pixels[static_cast<std::size_t>(y * 100 + x)] != 0;
          ASSERT_TRUE(inside || !white) << c.name << " at " << x << ", " << y;
          if (screen || std::abs(v.x) < 1000) {
            ASSERT_EQ(white, inside) << c.name << " at " << x << ", " << y;
          }
        }
    }
  }
}

// Whatever numbers arrive, drawing ends, and a sane triangle after them is drawn.
TEST(Coverage, WildCoordinatesDoNoHarm) {
  const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  const float values[] = {0, -0.0f, 1, -1, 0.5f, 1e-30f, -1e-30f, 1e5f, -1e5f, 1e10f, 3e38f, -3e38f, inf, -inf, nan};
  std::mt19937 random(7);
  const auto pick = [&](unsigned n) { return static_cast<std::uint32_t>(random() % n); };
  const auto any = [&] { return values[pick(std::size(values))]; };
  for (const bool perspective : {false, true}) {
    Scene scene(64, 64);
    if (perspective) scene.state.projection = math::perspective(1, 1, 0.1f, 100);
    for (int i = 0; i < 400; ++i) {
      scene.state.render.fillMode = 1 + pick(3);
      scene.state.render.fogEnable = pick(2);
      scene.state.render.fogVertexMode = pick(4);
      scene.state.render.fogTableMode = pick(4);
      scene.state.stages[0].mipFilter = pick(3);
      std::vector<LitVertex> lit;
      std::vector<ScreenVertex> onScreen;
      for (int k = 0; k < 9; ++k) {
        lit.push_back({any(), any(), any(), 0xFFFFFFFF, 0, any(), any()});
        onScreen.push_back({any() * 32, any() * 32, any(), any(), 0xFFFFFFFF, 0, any(), any()});
      }
      scene.textures[0] = i == 200 ? scene.texture(2, 2, {1, 2, 3, 4}) : scene.textures[0];
      scene.draw(static_cast<PrimitiveType>(1 + pick(6)), lit);
      scene.draw(static_cast<PrimitiveType>(1 + pick(6)), onScreen);
    }
    scene.state = device::State();
    scene.state.viewport = {0, 0, 64, 64, 0, 1};
    scene.state.render.zEnable = 0;
    scene.state.render.cullMode = 1;
    scene.textures = {};
    scene.fill(0xFF123456);
    EXPECT_THAT(scene.pixels(), testing::Each(0xFF123456));
  }
}

TEST(Coverage, HugeTrianglesReachEveryPixel) {
  for (const float reach : {1e3f, 1e5f, 1e7f, 1e12f}) {
    Scene scene(100, 100);
    scene.draw(PrimitiveType::TriangleList,
               std::vector<ScreenVertex>{{-reach, -reach, 0}, {reach * 3, -reach, 0}, {-reach, reach * 3, 0}});
    EXPECT_THAT(scene.pixels(), testing::Each(0xFFFFFFFF)) << reach;
  }
  Scene sliver(100, 100);  // no area at all
  sliver.draw(PrimitiveType::TriangleList, std::vector<ScreenVertex>{{0, 0, 0}, {50, 50, 0}, {100, 100, 0}});
  EXPECT_EQ(drawn(sliver.pixels()), 0u);
}

}  // namespace
}  // namespace ql::test
