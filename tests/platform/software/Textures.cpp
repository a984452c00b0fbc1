// Textures: formats, addressing, filters, levels, perspective, stages, drawing into textures.
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
using device::TextureOp;

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

using Color = std::array<double, 4>;  // red, green, blue, alpha
Color unpacked(std::uint32_t c) {
  return {(c >> 16 & 255) / 255.0, (c >> 8 & 255) / 255.0, (c & 255) / 255.0, (c >> 24) / 255.0};
}

struct Arguments {
  Color diffuse, current, texture, factor, specular;
};

Color argument(std::uint32_t code, const Arguments& a) {
  const Color all[] = {a.diffuse, a.current, a.texture, a.factor, a.specular};
  Color c = all[code & 15];
  if (code & device::kArgAlphaReplicate) c = {c[3], c[3], c[3], c[3]};
  if (code & device::kArgComplement)
    for (double& x : c) x = 1 - x;
  return c;
}

double operation(TextureOp op, const Color& x0, const Color& x1, const Color& x2, const Arguments& a, std::size_t c) {
  const double p = x1[c], q = x2[c];
  const auto mix = [&](double f) { return p * f + q * (1 - f); };
  switch (op) {
    case TextureOp::SelectArg1:
      return p;
    case TextureOp::SelectArg2:
      return q;
    case TextureOp::Modulate:
      return p * q;
    case TextureOp::Modulate2x:
      return p * q * 2;
    case TextureOp::Modulate4x:
      return p * q * 4;
    case TextureOp::Add:
      return p + q;
    case TextureOp::AddSigned:
      return p + q - 0.5;
    case TextureOp::AddSigned2x:
      return (p + q - 0.5) * 2;
    case TextureOp::Subtract:
      return p - q;
    case TextureOp::AddSmooth:
      return p + q - p * q;
    case TextureOp::BlendDiffuseAlpha:
      return mix(a.diffuse[3]);
    case TextureOp::BlendTextureAlpha:
      return mix(a.texture[3]);
    case TextureOp::BlendFactorAlpha:
      return mix(a.factor[3]);
    case TextureOp::BlendTextureAlphaPremultiplied:
      return p + q * (1 - a.texture[3]);
    case TextureOp::BlendCurrentAlpha:
      return mix(a.current[3]);
    case TextureOp::ModulateAlphaAddColor:
      return p + x1[3] * q;
    case TextureOp::ModulateColorAddAlpha:
      return p * q + x1[3];
    case TextureOp::ModulateInvAlphaAddColor:
      return (1 - x1[3]) * q + p;
    case TextureOp::ModulateInvColorAddAlpha:
      return (1 - p) * q + x1[3];
    case TextureOp::DotProduct3: {
      double sum = 0;
      for (std::size_t i = 0; i < 3; ++i) sum += (x1[i] - 0.5) * (x2[i] - 0.5) * 4;
      return sum;
    }
    case TextureOp::MultiplyAdd:
      return x0[c] + p * q;
    case TextureOp::Lerp:
      return x0[c] * p + (1 - x0[c]) * q;
    case TextureOp::Disable:
      return a.current[c];
  }
  return 0;
}

// Each operation with each pair of arguments, in the second stage, where current is the first stage's result.
TEST(Textures, StageOperations) {
  constexpr std::uint32_t kDiffuse = 0xC080E040, kTexture = 0x50F03090, kFactor = 0x9020B0D0, kSpecular = 0x30507090,
                          kFirst = 0xA06010F0;
  constexpr std::uint32_t kArguments[] = {0, 1, 2, 3, 4, 0x10, 0x22, 0x31};
  for (std::uint32_t op = 2; op <= 26; ++op) {
    if (op == 17 || op == 22 || op == 23) continue;  // not offered
    for (const std::uint32_t arg1 : kArguments)
      for (const std::uint32_t arg2 : kArguments) {
        Scene scene(1, 1);
        scene.textures = {scene.texture(1, 1, {kFirst}), scene.texture(1, 1, {kTexture})};
        scene.replaceByTexture();
        scene.state.render.textureFactor = kFactor;
        auto& s = scene.state.stages[1];
        s.colorOp = s.alphaOp = op;
        s.colorArg0 = s.alphaArg0 = 3;
        s.colorArg1 = s.alphaArg1 = arg1;
        s.colorArg2 = s.alphaArg2 = arg2;
        scene.fill(kDiffuse, 0.5f, kSpecular);
        const Arguments a{unpacked(kDiffuse), unpacked(kFirst), unpacked(kTexture), unpacked(kFactor),
                          unpacked(kSpecular)};
        const auto kind = static_cast<TextureOp>(op);
        const Color x1 = argument(arg1, a), x2 = argument(arg2, a);
        const std::uint32_t got = scene.pixel(0, 0);
        const Color result = unpacked(got);
        for (std::size_t c = 0; c < 4; ++c)
          ASSERT_NEAR(result[c] * 255, std::clamp(operation(kind, a.factor, x1, x2, a, c), 0.0, 1.0) * 255,
                      kind == TextureOp::DotProduct3 ? 4 : 1.6)
              << "op " << op << std::hex << " arguments " << arg1 << ", " << arg2 << " channel " << c;
      }
  }
}

TEST(Textures, DefaultStateMultipliesByTheVertexColour) {
  struct Case {
    const char* name;
    bool textured;
    std::uint32_t alphaOp, expected;
  };
  constexpr Case kCases[] = {{"colour modulated, alpha of the texture", true, 2, 0x80408020},
                             {"both modulated", true, 4, 0x40408020},
                             {"untextured: the vertex colour", false, 2, 0x8080FF40},
                             {"untextured, modulated", false, 4, 0x8080FF40}};
  for (const Case& c : kCases) {
    Scene scene(2, 2);
    if (c.textured) scene.textures[0] = scene.texture(1, 1, {0x80808080});
    scene.state.stages[0].alphaOp = c.alphaOp;
    scene.fill(0x8080FF40);
    EXPECT_LE(difference(scene.pixel(0, 0), c.expected), 1) << c.name << std::hex << " " << scene.pixel(0, 0);
  }
}

TEST(Textures, CoordinateSetsAreChosenPerStage) {
  struct Two {
    float x, y, z, rhw, u0, v0, u1, v1;
  };
  for (const std::uint32_t set : {0u, 1u, 2u}) {
    Scene scene(4, 4);
    scene.textures[0] = scene.texture(2, 1, {0xFF0000FF, 0xFFFF0000});
    scene.replaceByTexture();
    scene.state.stages[0].texCoordIndex = set;
    scene.draw(
        PrimitiveType::TriangleList,
        std::vector<Two>{
            {-1, -1, 0, 1, 0.25f, 0, 0.75f, 0}, {20, -1, 0, 1, 0.25f, 0, 0.75f, 0}, {-1, 20, 0, 1, 0.25f, 0, 0.75f, 0}},
        device::fvf::kXyzRhw | 2 << device::fvf::kTextureCountShift);
    EXPECT_EQ(scene.pixel(1, 1), set == 1 ? 0xFFFF0000 : 0xFF0000FF) << set;  // a set that vertices lack reads 0, 0
  }
}

TEST(Textures, DrawnTexturesAreSampledWithWrappedEdges) {
  Scene scene(130, 130);
  const auto id = scene.backEnd->createTexture({128, 64, 2, Format::R5G6B5, true});
  const auto drawnOn = scene.backEnd->createTextureTarget(id, 0), screen = scene.target;
  scene.target = drawnOn;
  scene.state.viewport = {0, 0, 128, 64, 0, 1};
  scene.clear(0xFF0000FF);
  scene.rectangle(0, 0, 1, 64, 0xFFFF0000);
  scene.target = screen;
  scene.state.viewport = {0, 0, 130, 130, 0, 1};
  scene.textures[0] = id;
  scene.replaceByTexture();
  scene.state.stages[0].magFilter = 2;
  scene.rectangle(0, 0, 128, 64,
                  0);  // half a texel off: each pixel mixes its own and the left neighbour, over the seam
  scene.textures[0] = {};
  // Drawing on it again must not reach what was drawn from it.
  scene.target = drawnOn;
  scene.clear(0xFFFFFFFF);
  scene.target = screen;
  EXPECT_LE(difference(scene.pixel(0, 5), 0xFF80007F), 2) << std::hex << scene.pixel(0, 5);
  EXPECT_LE(difference(scene.pixel(1, 5), 0xFF80007F), 2);
  EXPECT_EQ(scene.pixel(2, 5), 0xFF0000FF);
  const auto bytes = scene.backEnd->readTexture(id, 0);
  EXPECT_THAT(bytes, testing::Each(std::byte{0xFF}));
}

TEST(Textures, WaitingDrawsKeepWhatTheyWereGiven) {
  Scene scene(6, 2);
  const auto id = scene.texture(1, 1, {0xFF00FF00});
  scene.textures[0] = id;
  scene.replaceByTexture();
  scene.rectangle(0, 0, 2, 2, 0);
  const std::uint32_t red = 0xFFFF0000, blue = 0xFF0000FF;
  scene.backEnd->uploadTexture(id, 0, std::as_bytes(std::span(&red, 1)));
  scene.rectangle(2, 0, 4, 2, 0);
  scene.backEnd->uploadTexture(id, 0, std::as_bytes(std::span(&blue, 1)));
  scene.rectangle(4, 0, 6, 2, 0);
  scene.backEnd->destroyTexture(id);
  EXPECT_EQ(scene.pixels(), (std::vector<std::uint32_t>{0xFF00FF00, 0xFF00FF00, red, red, blue, blue, 0xFF00FF00,
                                                        0xFF00FF00, red, red, blue, blue}));

  // Vertex buffers likewise.
  const std::vector<ScreenVertex> left{{0, 0, 0}, {20, 0, 0}, {0, 20, 0}};
  auto& backEnd = *scene.backEnd;
  const auto buffer = backEnd.createBuffer(sizeof(ScreenVertex) * 3);
  device::DrawPacket packet;
  packet.target = scene.target;
  packet.state = &scene.state;
  packet.stateVersion = 1000;
  packet.primitiveCount = 1;
  packet.vertexCount = 3;
  packet.vertexFormat = kScreenFormat;
  packet.stride = sizeof(ScreenVertex);
  packet.buffer = buffer;
  backEnd.uploadBuffer(buffer, 0, std::as_bytes(std::span(left)));
  scene.state.stages[0] = device::State().stages[0];
  backEnd.draw(packet);
  backEnd.uploadBuffer(buffer, 0, std::vector<std::byte>(sizeof(ScreenVertex) * 3));
  backEnd.destroyBuffer(buffer);
  EXPECT_THAT(scene.pixels(), testing::Each(0xFFFFFFFF));
}

TEST(Textures, ReadingTheTargetItselfSeesItAsBefore) {
  Scene scene(8, 8);
  const auto id = scene.backEnd->createTexture({8, 8, 1, Format::A8R8G8B8, true});
  scene.target = scene.backEnd->createTextureTarget(id, 0);
  scene.clear(0xFF000000);
  scene.rectangle(0, 0, 4, 8, 0xFFFFFFFF);
  scene.textures[0] = id;
  scene.replaceByTexture();
  scene.draw(
      PrimitiveType::TriangleFan,
      std::vector<ScreenVertex>{
          {0, 0, 0, 1, 0, 0, 1, 0}, {8, 0, 0, 1, 0, 0, 0, 0}, {8, 8, 0, 1, 0, 0, 0, 1}, {0, 8, 0, 1, 0, 0, 1, 1}});
  EXPECT_EQ(scene.pixel(2, 2), 0xFF000000);  // mirrored
  EXPECT_EQ(scene.pixel(6, 2), 0xFFFFFFFF);
}

}  // namespace
}  // namespace ql::test
