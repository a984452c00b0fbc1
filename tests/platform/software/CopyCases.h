/// @file
/// Copies of targets to textures that every renderer must make to the bit.
#pragma once

#include "platform/device/BackEnd.h"
#include "platform/device/Resources.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace ql::test {

struct CopyCase {
  std::uint32_t width, height;  ///< of the target
  device::Format from, to;
  std::uint32_t level;  ///< of the texture that takes the picture
  std::string name() const {
    return std::to_string(width) + " x " + std::to_string(height) + " from " + std::to_string(static_cast<int>(from)) +
           " to " + std::to_string(static_cast<int>(to)) + " level " + std::to_string(level);
  }
};

/// Every kind of size (less than a tile, several, odd, one row or column) and of format.
inline std::vector<CopyCase> copyCases() {
  using device::Format;
  std::vector<CopyCase> cases;
  constexpr std::array<std::array<std::uint32_t, 2>, 10> kSizes{
      {{1, 1}, {5, 3}, {64, 64}, {65, 130}, {200, 1}, {3, 190}, {127, 63}, {256, 128}, {300, 200}, {512, 300}}};
  for (const auto& [width, height] : kSizes) {
    cases.push_back({width, height, Format::X8R8G8B8, Format::R5G6B5, 0});
    cases.push_back({width, height, Format::A8R8G8B8, Format::A8R8G8B8, 1});
  }
  for (const Format from : {Format::A8R8G8B8, Format::X8R8G8B8, Format::R5G6B5, Format::X1R5G5B5, Format::A1R5G5B5})
    for (const Format to : {Format::A8R8G8B8, Format::X8R8G8B8, Format::R5G6B5, Format::A1R5G5B5, Format::A4R4G4B4,
                            Format::X4R4G4B4, Format::A8, Format::L8, Format::A8L8})
      cases.push_back({70, 66, from, to, 0});
  return cases;
}

struct CopyResult {
  std::vector<std::byte> picture;              ///< the target's
  std::vector<std::vector<std::byte>> levels;  ///< all of the texture's
};

/// Fills a target with noise, copies it, and reads everything back.
inline CopyResult copied(device::BackEnd& backEnd, const CopyCase& c) {
  const std::uint32_t width = c.width << c.level, height = c.height << c.level;
  const device::TargetId target = backEnd.createTarget(c.width, c.height, c.from);
  const device::TextureId texture =
      backEnd.createTexture({width, height, device::fullLevelCount(width, height), c.to, false});
  std::mt19937 random(c.width);
  std::vector<std::byte> noise(std::size_t{c.width} * c.height * device::bytesPerPixel(c.from));
  std::ranges::generate(noise, [&random] { return static_cast<std::byte>(random()); });
  backEnd.writePixels(target, {0, 0, c.width, c.height}, noise);
  backEnd.copyToTexture(target, texture, c.level);
  CopyResult result{backEnd.readPixels(target, {0, 0, c.width, c.height}), {}};
  for (std::uint32_t i = 0; i < device::fullLevelCount(width, height); ++i)
    result.levels.push_back(backEnd.readTexture(texture, i));
  backEnd.destroyTexture(texture);
  backEnd.destroyTarget(target);
  return result;
}

}  // namespace ql::test
