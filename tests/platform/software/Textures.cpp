// Textures: formats, addressing, filters, levels, perspective.
#include "Scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using device::Format;
using device::PrimitiveType;

TEST(Textures, EveryFormatGivesBackItsBytes) {
  struct Case {
    Format format;
    std::uint32_t bytes, unused;  // bits that the format doesn't store
  };
  constexpr Case kCases[] = {{Format::R8G8B8, 3, 0},   {Format::A8R8G8B8, 4, 0},      {Format::X8R8G8B8, 4, 0xFF000000},
                             {Format::R5G6B5, 2, 0},   {Format::X1R5G5B5, 2, 0x8000}, {Format::A1R5G5B5, 2, 0},
                             {Format::A4R4G4B4, 2, 0}, {Format::X4R4G4B4, 2, 0xF000}, {Format::A8, 1, 0},
                             {Format::L8, 1, 0},       {Format::A8L8, 2, 0}};
  std::mt19937 random(3);
  for (const Case& c : kCases)
    for (const auto& [width, height] : {std::pair{256u, 256u}, {1u, 1u}, {37u, 5u}}) {
      Scene scene(4, 4);
      const auto id = scene.backEnd->createTexture({width, height, 2, c.format, false});
      for (const std::uint32_t level : {0u, 1u}) {
        const std::size_t pixels = std::size_t{std::max(width >> level, 1u)} * std::max(height >> level, 1u);
        std::vector<std::byte> bytes(pixels * c.bytes);
        for (std::size_t i = 0; i < bytes.size(); ++i)  // every 16-bit value once, then anything
          bytes[i] = static_cast<std::byte>(c.bytes == 2 ? (i % 2 ? i / 512 : i / 2) & 255 : random() & 255);
        scene.backEnd->uploadTexture(id, level, bytes);
        const auto back = scene.backEnd->readTexture(id, level);
        ASSERT_EQ(back.size(), bytes.size());
        for (std::size_t i = 0; i < bytes.size(); ++i) {
          const auto mask = static_cast<std::byte>(~(c.unused >> (i % c.bytes * 8)) & 255);
          ASSERT_EQ(back[i] & mask, bytes[i] & mask) << "format " << static_cast<int>(c.format) << " byte " << i;
        }
      }
    }
}

TEST(Textures, FormatsMeanTheirColours) {
  struct Case {
    Format format;
    std::uint32_t value, argb;
  };
  constexpr Case kCases[] = {{Format::R5G6B5, 0xF800, 0xFFFF0000},   {Format::X1R5G5B5, 0x03E0, 0xFF00FF00},
                             {Format::A1R5G5B5, 0x001F, 0x000000FF}, {Format::A4R4G4B4, 0x8F0A, 0x88FF00AA},
                             {Format::X4R4G4B4, 0x0F0A, 0xFFFF00AA}, {Format::L8, 0x60, 0xFF606060},
                             {Format::A8L8, 0x4060, 0x40606060},     {Format::A8, 0x33, 0x33000000}};
  for (const Case& c : kCases) {
    Scene scene(4, 4);
    const auto id = scene.backEnd->createTexture({1, 1, 1, c.format, false});
    scene.backEnd->uploadTexture(id, 0, std::as_bytes(std::span(&c.value, 1)).first(device::bytesPerPixel(c.format)));
    scene.textures[0] = id;
    scene.replaceByTexture();
    scene.fill(0);
    EXPECT_EQ(scene.pixel(1, 1), c.argb) << static_cast<int>(c.format);
  }
}

std::vector<std::uint32_t> noise(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::uint32_t> out(count);
  for (std::uint32_t& p : out) p = static_cast<std::uint32_t>(random());
  return out;
}

// Texel of an addressing mode by its definition.
std::uint32_t texel(const std::vector<std::uint32_t>& t, int size, std::uint32_t mode, int x, std::uint32_t border) {
  const auto wrap = [](int v, int n) { return ((v % n) + n) % n; };
  switch (mode) {
    case 2:
      x = wrap(x, 2 * size) < size ? wrap(x, 2 * size) : 2 * size - 1 - wrap(x, 2 * size);
      break;
    case 3:
      x = std::clamp(x, 0, size - 1);
      break;
    case 4:
      if (x < 0 || x >= size) return border;
      break;
    default:
      x = wrap(x, size);
  }
  return t[static_cast<std::size_t>(x)];
}

std::uint32_t mixed(std::uint32_t a, std::uint32_t b, double f) {
  std::uint32_t out = 0;
  for (int s = 0; s < 32; s += 8)
    out |= static_cast<std::uint32_t>(std::lround((a >> s & 255) * (1 - f) + (b >> s & 255) * f)) << s;
  return out;
}

// A row of texels along u (or v), read from before its start to past its end.
TEST(Textures, AddressingAndFilters) {
  constexpr std::uint32_t kBorder = 0x40F08020;
  for (const std::uint32_t size : {1u, 2u, 8u, 13u, 64u})
    for (std::uint32_t mode = 1; mode <= 4; ++mode)
      for (const std::uint32_t filter : {1u, 2u, 3u})
        for (const bool down : {false, true}) {
          constexpr int kPixels = 128;
          Scene scene(down ? 1 : kPixels, down ? kPixels : 1);
          const auto texels = noise(size, size);
          scene.textures[0] = down ? scene.texture(1, size, texels) : scene.texture(size, 1, texels);
          scene.replaceByTexture();
          auto& s = scene.state.stages[0];
          (down ? s.addressV : s.addressU) = mode;
          s.borderColor = kBorder;
          s.magFilter = s.minFilter = filter;
          // u runs from -2 to 2; point samples stay off the edges between texels.
          const float from = -2.003f, to = 1.997f;
          const auto at = [&](float x, float y, float along) {
            return ScreenVertex{x, y, 0, 1, 0, 0, down ? 0.5f : along, down ? along : 0.5f};
          };
          const float end = kPixels;
          scene.draw(PrimitiveType::TriangleFan,
                     down ? std::vector<ScreenVertex>{at(0, 0, from), at(1, 0, from), at(1, end, to), at(0, end, to)}
                          : std::vector<ScreenVertex>{at(0, 0, from), at(end, 0, to), at(end, 1, to), at(0, 1, from)});
          const auto pixels = scene.pixels();
          for (int i = 0; i < kPixels; ++i) {
            const double u = (from + (static_cast<double>(to) - from) * i / kPixels) * size;
            const int n = static_cast<int>(size);
            std::uint32_t expected = 0;
            if (filter == 1) {
              if (std::fabs(u - std::round(u)) < 0.004) continue;
              expected = texel(texels, n, mode, static_cast<int>(std::floor(u)), kBorder);
            } else {
              const int left = static_cast<int>(std::floor(u - 0.5));
              expected = mixed(texel(texels, n, mode, left, kBorder), texel(texels, n, mode, left + 1, kBorder),
                               u - 0.5 - left);
            }
            ASSERT_LE(difference(pixels[static_cast<std::size_t>(i)], expected), filter == 1 ? 0 : 3)
                << "size " << size << " mode " << mode << " filter " << filter << (down ? " v" : " u") << " pixel "
                << i;
          }
        }
}

TEST(Textures, LongTextures) {
  for (const bool down : {false, true}) {
    Scene scene(64, 64);
    const auto texels = noise(4096, 9);
    scene.textures[0] = down ? scene.texture(1, 4096, texels) : scene.texture(4096, 1, texels);
    scene.replaceByTexture();
    for (const std::uint32_t first : {0u, 1000u, 4032u}) {
      const float a = (static_cast<float>(first) + 0.5f) / 4096, b = (static_cast<float>(first) + 64.5f) / 4096;
      const auto at = [&](float x, float y, bool end) {
        return ScreenVertex{x, y, 0, 1, 0, 0, down ? 0 : end ? b : a, down ? (end ? b : a) : 0};
      };
      scene.draw(PrimitiveType::TriangleFan,
                 std::vector<ScreenVertex>{at(0, 0, false), at(64, 0, !down), at(64, 64, true), at(0, 64, down)});
      const auto pixels = scene.pixels();
      for (std::size_t i = 0; i < 64; ++i)
        ASSERT_EQ(pixels[down ? i * 64 : i], texels[first + i]) << first << " + " << i;
    }
  }
}

// Levels of one colour each: the level of detail shows.
TEST(Textures, LevelsOfDetail) {
  constexpr std::uint32_t kLevels = 7;  // 64 x 64
  struct Case {
    const char* name;
    double texelsPerPixel;
    std::uint32_t mipFilter, maxLevel;
    float bias;
    double level;
  };
  constexpr Case kCases[] = {{"none", 8, 0, 0, 0, 0},
                             {"none from a smaller one", 8, 0, 2, 0, 2},
                             {"magnified", 0.5, 1, 0, 0, 0},
                             {"one to one", 1, 1, 0, 0, 0},
                             {"nearest of 2.2", 4.6, 1, 0, 0, 2},
                             {"nearest of 2.8", 7, 1, 0, 0, 3},
                             {"the last", 500, 1, 0, 0, 6},
                             {"not above the first", 1, 1, 3, 0, 3},
                             {"biased up", 4, 1, 0, 2, 4},
                             {"biased down", 8, 1, 0, -2, 1},
                             {"between", 4 * 1.41421, 2, 0, 0, 2.5},
                             {"exactly", 4, 2, 0, 0, 2},
                             {"past the last", 1000, 2, 0, 0, 6}};
  for (const Case& c : kCases) {
    Scene scene(32, 32);
    const auto id = scene.backEnd->createTexture({64, 64, kLevels, Format::A8R8G8B8, false});
    for (std::uint32_t i = 0; i < kLevels; ++i) {
      const std::vector<std::uint32_t> level(std::size_t{64u >> i} * (64u >> i), i * 40);
      scene.backEnd->uploadTexture(id, i, std::as_bytes(std::span(level)));
    }
    scene.textures[0] = id;
    scene.replaceByTexture();
    auto& s = scene.state.stages[0];
    s.mipFilter = c.mipFilter;
    s.maxMipLevel = c.maxLevel;
    s.mipMapLodBias = bitsOf(c.bias);
    const auto across = static_cast<float>(32 * c.texelsPerPixel / 64);
    scene.draw(PrimitiveType::TriangleFan, std::vector<ScreenVertex>{{0, 0, 0, 1, 0, 0, 0, 0},
                                                                     {32, 0, 0, 1, 0, 0, across, 0},
                                                                     {32, 32, 0, 1, 0, 0, across, across},
                                                                     {0, 32, 0, 1, 0, 0, 0, across}});
    // The logarithm is straight between powers of two: up to 0.09 of a level off.
    EXPECT_NEAR(scene.pixel(16, 16), c.level * 40, c.mipFilter == 2 ? 4 : 0) << c.name;
  }
}

// The level across a floor against the footprint of each pixel's ray.
TEST(Textures, LevelsFollowPerspective) {
  constexpr int kWidth = 160, kHeight = 120;
  Scene scene(kWidth, kHeight);
  const auto id = scene.backEnd->createTexture({256, 128, 9, Format::A8R8G8B8, false});
  for (std::uint32_t i = 0; i < 9; ++i) {
    const std::vector<std::uint32_t> level(std::size_t{256u >> i} * std::max(128u >> i, 1u), i * 28);
    scene.backEnd->uploadTexture(id, i, std::as_bytes(std::span(level)));
  }
  scene.textures[0] = id;
  scene.replaceByTexture();
  scene.state.stages[0].mipFilter = 2;
  scene.state.projection = math::perspective(1, 0.75f, 0.1f, 500);
  scene.state.view =
      math::multiply(math::multiply(math::translation(0, -2, 0), math::rotationX(-0.5f)), math::rotationZ(0.4f));
  const float side = 200;
  scene.draw(PrimitiveType::TriangleFan, std::vector<LitVertex>{{-side, 0, -side, 0, 0, 0, 0},
                                                                {-side, 0, side, 0, 0, 0, 100},
                                                                {side, 0, side, 0, 0, 100, 100},
                                                                {side, 0, -side, 0, 0, 100, 0}});
  const auto pixels = scene.pixels();
  const math::Mat4 back = math::inverse(scene.state.view);
  // Texel coordinates of level 0 where the ray through a point of the screen meets the floor.
  const auto texelAt = [&](double x, double y) {
    const double sx = (2 * x / kWidth - 1) / scene.state.projection.m11,
                 sy = (1 - 2 * y / kHeight) / scene.state.projection.m22;
    const double dx = sx * back.m11 + sy * back.m21 + back.m31, dy = sx * back.m12 + sy * back.m22 + back.m32;
    const double dz = sx * back.m13 + sy * back.m23 + back.m33, t = -back.m42 / dy;
    return std::pair{(back.m41 + dx * t) / 4 * 256, (back.m43 + dz * t) / 4 * 128};
  };
  int checked = 0;
  for (int y = 2; y < kHeight; y += 4)
    for (int x = 2; x < kWidth; x += 4) {
      if (pixels[static_cast<std::size_t>(y * kWidth + x)] == 0 || y < 40) continue;
      const double cx = x - 0.5, cy = y - 0.5, h = 0.01;  // the centre of the 4 x 4 pixels
      const auto [u0, v0] = texelAt(cx, cy);
      const auto [ux, vx] = texelAt(cx + h, cy);
      const auto [uy, vy] = texelAt(cx, cy + h);
      const double rho = std::max(std::hypot(ux - u0, vx - v0), std::hypot(uy - u0, vy - v0)) / h;
      const double level = std::clamp(std::log2(rho), 0.0, 8.0);
      ASSERT_NEAR(pixels[static_cast<std::size_t>(y * kWidth + x)] / 28.0, level, 0.15) << x << ", " << y;
      ++checked;
    }
  EXPECT_GT(checked, 200);
}

TEST(Textures, MinAndMagFilterApplyOnTheirSide) {
  for (const double texelsPerPixel : {0.75, 1.5}) {
    Scene scene(16, 16);
    scene.textures[0] = scene.texture(2, 1, {0x00000000, 0xFFFFFFFF});
    scene.replaceByTexture();
    scene.state.stages[0].magFilter = 2;
    const auto across = static_cast<float>(16 * texelsPerPixel / 2);
    scene.draw(PrimitiveType::TriangleFan, std::vector<ScreenVertex>{{0, 0, 0, 1, 0, 0, 0.3f, 0},
                                                                     {16, 0, 0, 1, 0, 0, 0.3f + across, 0},
                                                                     {16, 16, 0, 1, 0, 0, 0.3f + across, 1},
                                                                     {0, 16, 0, 1, 0, 0, 0.3f, 1}});
    const auto pixels = scene.pixels();
    const bool mixes = std::any_of(pixels.begin(), pixels.end(), [](auto p) { return p != 0 && p != 0xFFFFFFFF; });
    EXPECT_EQ(mixes, texelsPerPixel < 1);
  }
}

// A textured floor against the ray through each pixel.
TEST(Textures, PerspectiveMatchesRays) {
  constexpr int kWidth = 160, kHeight = 120;
  Scene scene(kWidth, kHeight);
  // 256 x 256 texels that name their place.
  std::vector<std::uint32_t> texels(65536);
  for (std::uint32_t i = 0; i < 65536; ++i) texels[i] = 0xFF000000 | i;
  scene.textures[0] = scene.texture(256, 256, texels);
  scene.replaceByTexture();
  scene.state.stages[0].addressU = scene.state.stages[0].addressV = 3;
  const float fov = 1.1f, aspect = 0.75f;
  scene.state.projection = math::perspective(fov, aspect, 0.1f, 500);
  const math::Vec3 eye{3, 6, -4}, target{5, 0, 30};
  scene.state.view = math::lookAt(eye, target, {0, 1, 0});
  const float side = 100;
  const std::vector<LitVertex> floor{{-side, 0, -side, 0, 0, 0, 0},
                                     {-side, 0, side, 0, 0, 0, 1},
                                     {side, 0, side, 0, 0, 1, 1},
                                     {side, 0, -side, 0, 0, 1, 0}};
  scene.draw(PrimitiveType::TriangleFan, floor);
  const auto pixels = scene.pixels();
  const math::Mat4 back = math::inverse(scene.state.view);
  int checked = 0;
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const double sx = (2.0 * x / kWidth - 1) / scene.state.projection.m11,
                   sy = (1 - 2.0 * y / kHeight) / scene.state.projection.m22;
      const double dx = sx * back.m11 + sy * back.m21 + back.m31, dy = sx * back.m12 + sy * back.m22 + back.m32,
                   dz = sx * back.m13 + sy * back.m23 + back.m33;
      if (dy >= -0.02) continue;
      const double t = eye.y / -dy, u = (eye.x + dx * t + side) / (2 * side) * 256,
                   v = (eye.z + dz * t + side) / (2 * side) * 256;
      if (u < 1 || v < 1 || u > 255 || v > 255) continue;
      const std::uint32_t got = pixels[static_cast<std::size_t>(y * kWidth + x)];
      ASSERT_NEAR((got & 255) + 0.5, u, 0.52) << x << ", " << y;
      ASSERT_NEAR((got >> 8 & 255) + 0.5, v, 0.52) << x << ", " << y;
      ++checked;
    }
  EXPECT_GT(checked, 5000);
}

}  // namespace
}  // namespace ql::test
