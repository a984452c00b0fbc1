// What arrives in a pixel: depth, tests, blending, fog, shading, 16-bit targets, clears.
#include "Scene.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using device::Blend;
using device::PrimitiveType;
using Color = std::array<double, 4>;  // red, green, blue, alpha, 0 to 1

Color unpacked(std::uint32_t c) {
  return {(c >> 16 & 255) / 255.0, (c >> 8 & 255) / 255.0, (c & 255) / 255.0, (c >> 24) / 255.0};
}
std::uint32_t packed(const Color& c) {
  const auto byte = [&](std::size_t i) {
    return static_cast<std::uint32_t>(std::lround(std::clamp(c[i], 0.0, 1.0) * 255));
  };
  return byte(3) << 24 | byte(0) << 16 | byte(1) << 8 | byte(2);
}

bool holds(std::uint32_t function, double a, double b) {
  const bool table[] = {false, a<b, a == b, a <= b, a> b, a != b, a >= b, true};
  return table[function - 1];
}

double factor(std::uint32_t code, std::size_t channel, const Color& s, const Color& d) {
  switch (code) {
    case 1:
      return 0;
    case 3:
      return s[channel];
    case 4:
      return 1 - s[channel];
    case 5:
      return s[3];
    case 6:
      return 1 - s[3];
    case 7:
      return d[3];
    case 8:
      return 1 - d[3];
    case 9:
      return d[channel];
    case 10:
      return 1 - d[channel];
    case 11:
      return channel == 3 ? 1 : std::min(s[3], 1 - d[3]);
    default:
      return 1;
  }
}

TEST(Pixels, BlendFactorsAndOperations) {
  const std::pair<std::uint32_t, std::uint32_t> colors[] = {
      {0x80C04020, 0x60A0B0F0}, {0xFFFFFFFF, 0xFFFFFFFF}, {0x01020304, 0xF0E0D0C0}, {0x00FF8000, 0xFF0080FF}};
  for (std::uint32_t source = 1; source <= 13; ++source)
    for (std::uint32_t destination = 1; destination <= 11; ++destination)
      for (std::uint32_t op = 1; op <= 5; ++op)
        for (const auto& [s, d] : colors) {
          Scene scene(2, 2);
          scene.clear(d);
          scene.state.render.alphaBlendEnable = 1;
          scene.state.render.srcBlend = source;
          scene.state.render.destBlend = destination;
          scene.state.render.blendOp = op;
          scene.fill(s);
          // The two combined codes rule both sides.
          const std::uint32_t fs = source == 12 ? 5 : source == 13 ? 6 : source;
          const std::uint32_t fd = source == 12 ? 6 : source == 13 ? 5 : destination;
          const Color a = unpacked(s), b = unpacked(d);
          Color expected;
          for (std::size_t c = 0; c < 4; ++c) {
            const double x = a[c] * factor(fs, c, a, b), y = b[c] * factor(fd, c, a, b);
            const double results[] = {x + y, x - y, y - x, std::min(a[c], b[c]), std::max(a[c], b[c])};
            expected[c] = results[op - 1];
          }
          ASSERT_LE(difference(scene.pixel(1, 1), packed(expected)), 1)
              << "factors " << source << ", " << destination << " op " << op << std::hex << ": " << s << " on " << d
              << " gave " << scene.pixel(1, 1) << " for " << packed(expected);
        }
}

// A destination without alpha counts as opaque.
TEST(Pixels, DestinationAlphaOfTargetsWithoutIsOne) {
  for (const device::Format format : {device::Format::X8R8G8B8, device::Format::R5G6B5}) {
    Scene scene(2, 2, format);
    scene.state.render.alphaBlendEnable = 1;
    scene.state.render.srcBlend = code(Blend::DestAlpha);
    scene.fill(0x00FF0000);
    EXPECT_EQ(scene.pixel(0, 0), 0xFFFF0000);
  }
}

TEST(Pixels, DepthFunctions) {
  for (std::uint32_t function = 1; function <= 8; ++function)
    for (const float z : {0.25f, 0.5f, 0.75f}) {
      Scene scene(9, 9);
      scene.clear(0xFF000000, 0.5f);
      scene.state.render.zFunc = function;
      scene.fill(0xFFFFFFFF, z);
      EXPECT_EQ(scene.pixel(4, 4) == 0xFFFFFFFF, holds(function, z, 0.5)) << "function " << function << " z " << z;
    }
}

// Depth that was written decides over what follows; unwritten, disabled or killed depth does not.
TEST(Pixels, DepthWrites) {
  struct Case {
    const char* name;
    std::uint32_t zEnable, zWrite, alphaTest;
    bool writes;
  };
  constexpr Case kCases[] = {{"on", 1, 1, 0, true},
                             {"write off", 1, 0, 0, false},
                             {"test off", 0, 1, 0, false},
                             {"killed by the alpha test", 1, 1, 1, false}};
  for (const Case& c : kCases) {
    Scene scene(80, 80);
    scene.state.render.zEnable = c.zEnable;
    scene.state.render.zWriteEnable = c.zWrite;
    scene.state.render.alphaTestEnable = c.alphaTest;
    scene.state.render.alphaFunc = 5;
    scene.state.render.alphaRef = 0x80;
    scene.fill(0x40FF0000, 0.25f);
    scene.state.render = device::RenderStates();
    scene.state.render.cullMode = 1;
    scene.fill(0xFF00FF00, 0.5f);
    EXPECT_THAT(scene.pixels(), testing::Each(c.writes ? 0x40FF0000 : 0xFF00FF00)) << c.name;
  }
}

// The bounds that reject whole blocks must follow every way of writing depth.
TEST(Pixels, DepthRejectionFollowsWritesOfAnyFunction) {
  Scene scene(64, 64);
  const auto layer = [&](std::uint32_t function, float z, std::uint32_t color) {
    scene.state.render.zFunc = function;
    scene.fill(color, z);
  };
  layer(4, 0.2f, 0xFF000001);  // near, everywhere
  layer(8, 0.9f, 0xFF000002);  // always: far again
  layer(4, 0.5f, 0xFF000003);  // must pass
  EXPECT_THAT(scene.pixels(), testing::Each(0xFF000003));
  layer(5, 0.7f, 0xFF000004);  // greater
  layer(2, 0.6f, 0xFF000005);
  EXPECT_THAT(scene.pixels(), testing::Each(0xFF000005));
  const device::PixelRect part{8, 8, 24, 24};
  scene.backEnd->clear(scene.target, {&part, 1}, device::kClearDepth, 0, 1);
  layer(4, 0.95f, 0xFF000006);
  const auto pixels = scene.pixels();
  for (std::uint32_t y = 0; y < 64; ++y)
    for (std::uint32_t x = 0; x < 64; ++x) {
      const bool cleared = x >= 8 && x < 32 && y >= 8 && y < 32;
      ASSERT_EQ(pixels[y * 64 + x], cleared ? 0xFF000006 : 0xFF000005) << x << ", " << y;
    }
}

TEST(Pixels, DepthBiasBringsNearer) {
  Scene scene(4, 4);
  scene.fill(0xFF0000FF, 0.5f);
  scene.state.render.zFunc = 2;
  scene.fill(0xFF00FF00, 0.5f);
  EXPECT_EQ(scene.pixel(1, 1), 0xFF0000FF);
  scene.state.render.zBias = 1;
  scene.fill(0xFFFF0000, 0.5f);
  EXPECT_EQ(scene.pixel(1, 1), 0xFFFF0000);
}

TEST(Pixels, ViewportDepthRange) {
  Scene scene(4, 4);
  scene.state.viewport.minZ = 0.5f;
  scene.state.viewport.maxZ = 0.75f;
  const std::vector<LitVertex> all{{-1, 1, 0.5f}, {3, 1, 0.5f}, {-1, -3, 0.5f}};  // arrives at 0.625
  for (const float clear : {0.62f, 0.63f}) {
    scene.clear(0, clear);
    scene.draw(PrimitiveType::TriangleList, all);
    EXPECT_EQ(scene.pixel(1, 1) != 0, clear > 0.625f) << clear;
  }
}

TEST(Pixels, AlphaFunctions) {
  for (std::uint32_t function = 1; function <= 8; ++function)
    for (const std::uint32_t alpha : {0x10u, 0x80u, 0xF0u}) {
      Scene scene(5, 5);
      scene.state.render.alphaTestEnable = 1;
      scene.state.render.alphaFunc = function;
      scene.state.render.alphaRef = 0x80;
      scene.fill(alpha << 24 | 0xFFFFFF);
      EXPECT_EQ(scene.pixel(2, 2) != 0, holds(function, alpha, 0x80)) << "function " << function << " alpha " << alpha;
    }
}

TEST(Pixels, WriteMaskKeepsChannels) {
  for (std::uint32_t mask = 0; mask < 16; ++mask) {
    Scene scene(3, 3);
    scene.clear(0x11223344);
    scene.state.render.colorWriteEnable = mask;
    scene.fill(0xAABBCCDD);
    const std::uint32_t keep =
        (mask & 1 ? 0xFF0000 : 0) | (mask & 2 ? 0xFF00 : 0) | (mask & 4 ? 0xFFu : 0) | (mask & 8 ? 0xFF000000 : 0);
    EXPECT_EQ(scene.pixel(1, 1), (0xAABBCCDD & keep) | (0x11223344 & ~keep)) << mask;
  }
}

double fogOf(std::uint32_t mode, double distance, double start, double end, double density) {
  if (mode == 1) return std::exp(-distance * density);
  if (mode == 2) return std::exp(-std::pow(distance * density, 2));
  return std::clamp((end - distance) / (end - start), 0.0, 1.0);
}

TEST(Pixels, FogModes) {
  for (const bool table : {false, true})
    for (std::uint32_t mode = 1; mode <= 3; ++mode)
      for (const double distance : {1.0, 2.0, 5.0, 9.0, 20.0}) {
        Scene scene(8, 8);
        auto& r = scene.state.render;
        r.fogEnable = 1;
        (table ? r.fogTableMode : r.fogVertexMode) = mode;
        r.fogColor = 0x00204060;
        r.fogStart = bitsOf(2);
        r.fogEnd = bitsOf(10);
        r.fogDensity = bitsOf(0.15f);
        scene.state.projection = math::perspective(1.5f, 1, 0.5f, 100);
        const auto d = static_cast<float>(distance);
        scene.draw(PrimitiveType::TriangleList,
                   std::vector<LitVertex>{
                       {-9 * d, 9 * d, d, 0x80FFC080}, {9 * d, 9 * d, d, 0x80FFC080}, {0, -9 * d, d, 0x80FFC080}});
        const double f = fogOf(mode, distance, 2, 10, 0.15);
        const Color own = unpacked(0x80FFC080), fog = unpacked(0x00204060);
        Color expected = own;
        for (std::size_t c = 0; c < 3; ++c) expected[c] = own[c] * f + fog[c] * (1 - f);
        EXPECT_LE(difference(scene.pixel(4, 4), packed(expected)), 1)
            << (table ? "table" : "vertex") << " mode " << mode << " at " << distance;
      }
}

TEST(Pixels, FogFromRangeAndFromSpecularAlpha) {
  // The same depth further aside is further away, but only in range.
  for (const std::uint32_t range : {0u, 1u}) {
    Scene scene(8, 8);
    auto& r = scene.state.render;
    r.fogEnable = 1;
    r.fogVertexMode = 3;
    r.rangeFogEnable = range;
    r.fogStart = bitsOf(0);
    r.fogEnd = bitsOf(10);
    scene.state.view = math::translation(3, 0, 0);
    scene.state.projection = math::translation(-3, 0, 0);
    scene.state.projection.m33 = 0.1f;
    scene.draw(PrimitiveType::TriangleList,
               std::vector<LitVertex>(3, LitVertex{0, 0, 4}));  // no area: only the fog below
    std::vector<LitVertex> v{{-1, 1, 4}, {3, 1, 4}, {-1, -3, 4}};
    scene.draw(PrimitiveType::TriangleList, v);
    double f[3];
    for (std::size_t i = 0; i < 3; ++i)
      f[i] = range ? std::sqrt((v[i].x + 3) * (v[i].x + 3) + v[i].y * v[i].y + 16.0) : 4;
    // At the centre of pixel (0, 0): 1/8 of a side from vertex 0.
    const double mixed = 1 - (f[0] + (f[1] - f[0]) * 0 + (f[2] - f[0]) * 0) / 10;
    EXPECT_NEAR(static_cast<double>(scene.pixel(0, 0) & 255), std::clamp(mixed, 0.0, 1.0) * 255, 1.5) << range;
  }
  // Vertices on the screen bring their factor, whatever the vertex mode.
  for (const std::uint32_t mode : {0u, 3u})
    for (const std::uint32_t alpha : {0u, 100u, 255u}) {
      Scene scene(4, 4);
      scene.state.render.fogEnable = 1;
      scene.state.render.fogVertexMode = mode;
      scene.state.render.fogColor = 0xFF0000;
      scene.fill(0xFF0000FF, 0.5f, alpha << 24);
      EXPECT_EQ(scene.pixel(1, 1), 0xFF000000 | (255 - alpha) << 16 | alpha);
    }
}

TEST(Pixels, SpecularIsAddedOnDemand) {
  for (const std::uint32_t on : {0u, 1u}) {
    Scene scene(4, 4);
    scene.state.render.specularEnable = on;
    scene.fill(0x80402010, 0.5f, 0xFF10F0F8);
    EXPECT_EQ(scene.pixel(1, 1), on ? 0x8050FFFF : 0x80402010);
  }
}

TEST(Pixels, ShadingInterpolatesOrTakesTheFirstColour) {
  const auto at = [](float x, float y, std::uint32_t color, float w) { return ScreenVertex{x, y, 0.5f, 1 / w, color}; };
  for (const bool flat : {false, true}) {
    Scene scene(64, 64);
    scene.state.render.shadeMode = flat ? 1 : 2;
    scene.draw(PrimitiveType::TriangleList,
               std::vector<ScreenVertex>{at(0, 0, 0xC0804020, 4), at(64, 0, 0x8000FF00, 1), at(0, 64, 0x00FF00FF, 2)});
    const auto pixels = scene.pixels();
    const Color colors[] = {unpacked(0xC0804020), unpacked(0x8000FF00), unpacked(0x00FF00FF)};
    for (int y = 0; y < 64; ++y)
      for (int x = 0; x + y < 64; ++x) {
        // Barycentric coordinates on the screen, weighted by 1 / w.
        const double b = x / 64.0, c = y / 64.0 / 2, a = (1 - x / 64.0 - y / 64.0) / 4, sum = a + b + c;
        Color expected;
        for (std::size_t i = 0; i < 4; ++i)
          expected[i] = (a * colors[0][i] + b * colors[1][i] + c * colors[2][i]) / sum;
        const std::uint32_t wanted = flat ? 0xC0804020 : packed(expected);
        ASSERT_LE(difference(pixels[static_cast<std::size_t>(y * 64 + x)], wanted), flat ? 0 : 1) << x << ", " << y;
      }
  }
}

// The first vertex's colour also where that vertex was cut off, and on lines; the second's in fans.
TEST(Pixels, FlatColourSurvivesClipping) {
  struct Case {
    const char* name;
    PrimitiveType type;
    std::vector<LitVertex> vertices;
    std::uint32_t expected;
  };
  const LitVertex behind{0, 1, -5, 0xFF112233}, left{-60, -9, 20, 0xFF445566}, right{60, -9, 20, 0xFF778899};
  const Case cases[] = {
      {"triangle", PrimitiveType::TriangleList, {behind, left, right}, 0xFF112233},
      {"turned", PrimitiveType::TriangleList, {left, right, behind}, 0xFF445566},
      {"fan", PrimitiveType::TriangleFan, {left, behind, right}, 0xFF112233},
      {"line", PrimitiveType::LineList, {{0, 0, -5, 0xFF112233}, {0, -9, 20, 0xFF445566}}, 0xFF112233}};
  for (const Case& c : cases) {
    Scene scene(32, 32);
    scene.state.projection = math::perspective(1, 1, 0.5f, 100);
    scene.state.render.shadeMode = 1;
    scene.draw(c.type, c.vertices);
    const auto pixels = scene.pixels();
    EXPECT_THAT(pixels, testing::Contains(c.expected)) << c.name;
    EXPECT_THAT(pixels, testing::Each(testing::AnyOf(0u, c.expected))) << c.name;
  }
}

TEST(Pixels, VerticesWithoutColoursAreWhite) {
  struct Bare {
    float x, y, z, rhw;
  };
  Scene scene(8, 8);
  scene.state.render.specularEnable = 1;
  scene.draw(PrimitiveType::TriangleList, std::vector<Bare>{{-1, -1, 0, 1}, {20, -1, 0, 1}, {-1, 20, 0, 1}},
             device::fvf::kXyzRhw);
  EXPECT_THAT(scene.pixels(), testing::Each(0xFFFFFFFF));
}

// Passes over the same triangles meet the same depth everywhere, clipped or not, whatever else is interpolated.
TEST(Pixels, SecondPassMeetsEqualDepth) {
  for (const std::uint32_t function : {3u, 4u}) {
    Scene scene(190, 130);
    scene.state.projection = math::perspective(1, 0.7f, 0.3f, 50);
    std::vector<LitVertex> v;
    std::uint32_t random = 1;
    const auto next = [&](float reach) {
      random = random * 1664525 + 1013904223;
      return (static_cast<float>(random >> 8) / 8388608.0f - 1) * reach;
    };
    for (int i = 0; i < 90; ++i)
      v.push_back({next(20), next(20), 20 + next(25), 0xFF000000 | (random >> 8), 0, next(9), next(9)});
    scene.draw(PrimitiveType::TriangleList, v);
    const auto first = scene.pixels();
    scene.state.render.zFunc = function;
    scene.state.render.zWriteEnable = 0;
    scene.state.render.shadeMode = 1;
    scene.textures[0] = scene.texture(1, 1, {0xFFFFFFFF});
    scene.replaceByTexture();
    scene.draw(PrimitiveType::TriangleList, v);
    const auto second = scene.pixels();
    for (std::size_t i = 0; i < first.size(); ++i)
      ASSERT_EQ(second[i], first[i] ? 0xFFFFFFFF : 0) << i % 190 << ", " << i / 190;
  }
}

TEST(Pixels, SixteenBitTargets) {
  struct Case {
    device::Format format;
    std::uint32_t drawn, stored;
  };
  constexpr Case kCases[] = {{device::Format::R5G6B5, 0x80FF8041, 0xFFFF8242},
                             {device::Format::X1R5G5B5, 0x80FF8041, 0xFFFF8442},
                             {device::Format::A1R5G5B5, 0x40FF8041, 0x00FF8442},
                             {device::Format::A1R5G5B5, 0xC0FF8041, 0xFFFF8442}};
  for (const Case& c : kCases) {
    Scene scene(40, 40, c.format);
    scene.fill(c.drawn);
    EXPECT_THAT(scene.pixels(), testing::Each(c.stored)) << static_cast<int>(c.format);
    scene.state.render.ditherEnable = 1;
    scene.fill(0xFF000000 | (c.drawn & 0xFFFFFF));
    double sum = 0;
    std::size_t different = 0;
    const auto dithered = scene.pixels();
    for (const std::uint32_t p : dithered) {
      sum += p >> 8 & 255;
      different += p != dithered[0];
    }
    EXPECT_NEAR(sum / 1600, 0x80, 1) << "the dithered mean";
    EXPECT_GT(different, 0u);
    // What is stored exactly stays without noise.
    scene.fill(c.stored | 0xFF000000);
    EXPECT_THAT(scene.pixels(), testing::Each(c.stored | 0xFF000000));
  }
}

TEST(Pixels, ClearsInsideRectanglesInOrderWithDraws) {
  Scene scene(100, 70);
  scene.clear(0xFF000011);
  scene.rectangle(10, 10, 90, 60, 0xFF00FF00);
  const device::PixelRect rects[] = {{0, 0, 30, 30}, {80, 50, 500, 500}, {50, 20, 10, 0}};
  scene.backEnd->clear(scene.target, rects, device::kClearTarget, 0xFFFF0000, 0);
  scene.rectangle(20, 20, 40, 40, 0xFF0000FF, 0.25f);
  const auto pixels = scene.pixels();
  for (std::uint32_t y = 0; y < 70; ++y)
    for (std::uint32_t x = 0; x < 100; ++x) {
      const auto in = [&](std::uint32_t l, std::uint32_t t, std::uint32_t r, std::uint32_t b) {
        return x >= l && x < r && y >= t && y < b;
      };
      const std::uint32_t expected = in(20, 20, 40, 40)                        ? 0xFF0000FF
                                     : in(0, 0, 30, 30) || in(80, 50, 100, 70) ? 0xFFFF0000
                                     : in(10, 10, 90, 60)                      ? 0xFF00FF00
                                                                               : 0xFF000011;
      ASSERT_EQ(pixels[y * 100 + x], expected) << x << ", " << y;
    }
}

TEST(Pixels, WrittenPixelsReadBackAndLieUnderDraws) {
  Scene scene(70, 10, device::Format::R5G6B5);
  std::vector<std::uint16_t> pixels(12);
  for (std::size_t i = 0; i < 12; ++i) pixels[i] = static_cast<std::uint16_t>(i * 5461);
  const device::PixelRect rect{60, 3, 6, 2};
  scene.backEnd->writePixels(scene.target, rect, std::as_bytes(std::span(pixels)));
  const auto bytes = scene.backEnd->readPixels(scene.target, rect);
  ASSERT_EQ(bytes.size(), 24u);
  EXPECT_EQ(std::memcmp(bytes.data(), pixels.data(), 24), 0);
  scene.rectangle(60, 3, 61, 4, 0xFFFFFFFF);
  EXPECT_EQ(scene.pixel(60, 3), 0xFFFFFFFF);
  EXPECT_EQ(scene.pixel(61, 3), device::toArgb(device::Format::R5G6B5, 5461));
}

TEST(Pixels, CountsDrawsAndTriangles) {
  Scene scene(4, 4);
  scene.fill(0);
  scene.draw(PrimitiveType::PointList, std::vector<ScreenVertex>(5));
  EXPECT_EQ(scene.backEnd->statistics().drawCalls, 2u);
  EXPECT_EQ(scene.backEnd->statistics().triangles, 2u);
}

}  // namespace
}  // namespace ql::test
