// Textures of the smallest, oddest and largest sizes against a model that works texel by texel.
#include "Scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include <gtest/gtest.h>

namespace ql::test {
namespace {

using device::Format;

constexpr std::uint32_t kBorder = 0x40F08020;

/// Noise that can be asked for texel by texel.
std::uint32_t texelOf(std::uint32_t x, std::uint32_t y, std::uint32_t level) {
  std::uint32_t hash = (x * 0x9E3779B1u) ^ (y * 0x85EBCA77u) ^ (level * 0xC2B2AE3Du);
  hash = (hash ^ hash >> 15) * 0x2C1B3C6Du;
  return (hash ^ hash >> 12) * 0x297A2D39u;
}

struct Picture {
  std::uint32_t width, height, levels;
  std::int32_t widthOf(std::uint32_t level) const { return static_cast<std::int32_t>(std::max(width >> level, 1u)); }
  std::int32_t heightOf(std::uint32_t level) const { return static_cast<std::int32_t>(std::max(height >> level, 1u)); }
};

device::TextureId load(Scene& scene, const Picture& picture) {
  const auto id =
      scene.backEnd->createTexture({picture.width, picture.height, picture.levels, Format::A8R8G8B8, false});
  for (std::uint32_t level = 0; level < picture.levels; ++level) {
    const auto width = static_cast<std::uint32_t>(picture.widthOf(level)),
               height = static_cast<std::uint32_t>(picture.heightOf(level));
    std::vector<std::uint32_t> texels;
    texels.reserve(std::size_t{width} * height);
    for (std::uint32_t y = 0; y < height; ++y)
      for (std::uint32_t x = 0; x < width; ++x) texels.push_back(texelOf(x, y, level));
    scene.backEnd->uploadTexture(id, level, std::as_bytes(std::span(texels)));
  }
  return id;
}

/// Where a coordinate falls in an addressing mode; nowhere: on the border.
std::optional<std::int32_t> addressed(std::int32_t at, std::int32_t size, std::uint32_t mode) {
  const auto wrapped = [at](std::int32_t n) { return (at % n + n) % n; };
  switch (mode) {
    case 2:
      return std::min(wrapped(2 * size), 2 * size - 1 - wrapped(2 * size));
    case 3:
      return std::clamp(at, 0, size - 1);
    case 4:
      return at >= 0 && at < size ? std::optional(at) : std::nullopt;
    default:
      return wrapped(size);
  }
}

struct Addressing {
  std::uint32_t u, v;
};

std::uint32_t texelAt(const Picture& picture, std::uint32_t level, const Addressing& mode, std::int32_t x,
                      std::int32_t y) {
  const auto column = addressed(x, picture.widthOf(level), mode.u), row = addressed(y, picture.heightOf(level), mode.v);
  if (!column || !row) return kBorder;
  return texelOf(static_cast<std::uint32_t>(*column), static_cast<std::uint32_t>(*row), level);
}

/// Between four texels; texel (0, 0) has its centre at (0.5, 0.5).
std::uint32_t filtered(const Picture& picture, std::uint32_t level, const Addressing& mode, double u, double v) {
  const auto left = static_cast<std::int32_t>(std::floor(u - 0.5)),
             top = static_cast<std::int32_t>(std::floor(v - 0.5));
  const double right = u - 0.5 - left, bottom = v - 0.5 - top;
  std::array<double, 4> sum{};
  for (const std::int32_t dy : {0, 1})
    for (const std::int32_t dx : {0, 1}) {
      const std::uint32_t texel = texelAt(picture, level, mode, left + dx, top + dy);
      const double weight = (dx ? right : 1 - right) * (dy ? bottom : 1 - bottom);
      for (std::size_t c = 0; c < 4; ++c) sum[c] += weight * (texel >> (8 * c) & 255);
    }
  std::uint32_t out = 0;
  for (std::size_t c = 0; c < 4; ++c) out |= static_cast<std::uint32_t>(std::lround(sum[c])) << (8 * c);
  return out;
}

constexpr std::int32_t kSide = 48;  // of the target, pixels

/// Shows a level from the texel (left, top) on, with so many texels a pixel.
void show(Scene& scene, const Picture& picture, std::uint32_t level, double left, double top, double step) {
  const auto along = [&](double first, std::int32_t size, bool end) {
    return static_cast<float>((first + (end ? kSide * step : 0)) / size);
  };
  const float u0 = along(left, picture.widthOf(level), false), u1 = along(left, picture.widthOf(level), true);
  const float v0 = along(top, picture.heightOf(level), false), v1 = along(top, picture.heightOf(level), true);
  scene.draw(device::PrimitiveType::TriangleFan, std::vector<ScreenVertex>{{0, 0, 0, 1, 0, 0, u0, v0},
                                                                           {kSide, 0, 0, 1, 0, 0, u1, v0},
                                                                           {kSide, kSide, 0, 1, 0, 0, u1, v1},
                                                                           {0, kSide, 0, 1, 0, 0, u0, v1}});
}

// All corners of every level, where texels of other rows and columns, or the border, come in.
TEST(TextureEdges, EverySizeInEveryAddressingModeAndFilter) {
  constexpr Picture kPictures[] = {{1, 1, 1},    {3, 5, 3},    {13, 7, 4},    {127, 63, 7},
                                   {4096, 1, 1}, {1, 4096, 1}, {4096, 3, 13}, {4096, 4096, 13}};
  for (const Picture& picture : kPictures) {
    Scene scene(kSide, kSide);
    scene.textures[0] = load(scene, picture);
    scene.replaceByTexture();
    device::StageStates& s = scene.state.stages[0];
    s.mipFilter = 1;
    s.borderColor = kBorder;
    for (std::uint32_t level = 0; level < picture.levels; ++level)
      for (std::uint32_t mode = 0; mode < 4; ++mode)
        for (const std::uint32_t filter : {1u, 2u})
          for (const bool right : {false, true})
            for (const bool low : {false, true}) {
              const Addressing addressing{mode + 1, (mode + 1) % 4 + 1};
              s.addressU = addressing.u;
              s.addressV = addressing.v;
              s.magFilter = s.minFilter = filter;
              s.maxMipLevel = level;
              // Half texels around the corner; point samples stay off the edges between texels.
              constexpr double kStep = 0.5, kBefore = -11.8;
              const double left = kBefore + (right ? picture.widthOf(level) : 0),
                           top = kBefore + (low ? picture.heightOf(level) : 0);
              show(scene, picture, level, left, top, kStep);
              const auto pixels = scene.pixels();
              for (std::int32_t i = 0; i < kSide * kSide; ++i) {
                const double u = left + i % kSide * kStep, v = top + i / kSide * kStep;
                const std::uint32_t expected =
                    filter == 1 ? texelAt(picture, level, addressing, static_cast<std::int32_t>(std::floor(u)),
                                          static_cast<std::int32_t>(std::floor(v)))
                                : filtered(picture, level, addressing, u, v);
                ASSERT_LE(difference(pixels[static_cast<std::size_t>(i)], expected), filter == 1 ? 0 : 4)
                    << picture.width << " x " << picture.height << " level " << level << " modes " << addressing.u
                    << " and " << addressing.v << " filter " << filter << " at texel " << u << ", " << v;
              }
            }
  }
}

// A pixel for each texel of a level chooses that level.
TEST(TextureEdges, TheLargestTextureShrinksThroughAllItsLevels) {
  constexpr Picture kLargest{4096, 4096, 13};
  Scene scene(kSide, kSide);
  scene.textures[0] = load(scene, kLargest);
  scene.replaceByTexture();
  device::StageStates& s = scene.state.stages[0];
  for (const std::uint32_t mipFilter : {1u, 2u})
    for (std::uint32_t level = 0; level < kLargest.levels; ++level) {
      s.mipFilter = mipFilter;
      const std::int32_t size = kLargest.widthOf(level);
      const std::int32_t left = std::max(size / 2 - kSide / 2, 0), top = std::max(size - kSide, 0);
      show(scene, kLargest, level, left + 0.5, top + 0.5, 1);
      const auto pixels = scene.pixels();
      for (std::int32_t i = 0; i < kSide * kSide; ++i)
        ASSERT_LE(difference(pixels[static_cast<std::size_t>(i)],
                             texelAt(kLargest, level, {1, 1}, left + i % kSide, top + i / kSide)),
                  mipFilter == 1 ? 0 : 4)
            << "level " << level << " pixel " << i << " mip filter " << mipFilter;
    }
}

}  // namespace
}  // namespace ql::test
