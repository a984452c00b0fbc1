// Copies of targets to textures with their smaller levels.
#include "CopyCases.h"
#include "Scene.h"

#include <gtest/gtest.h>

namespace ql::test {
namespace {

using device::Format;

/// What a copy must give, channel by channel.
std::vector<std::vector<std::byte>> expectedLevels(const CopyCase& c, std::span<const std::byte> picture) {
  std::vector<std::uint32_t> argb(std::size_t{c.width} * c.height);
  device::toArgb(c.from, picture, argb);
  std::uint32_t width = c.width, height = c.height;
  std::vector<std::vector<std::byte>> levels;
  for (;;) {
    std::vector<std::byte>& level = levels.emplace_back(argb.size() * device::bytesPerPixel(c.to));
    device::fromArgb(c.to, argb, level);
    for (std::size_t i = 3; c.to == Format::X8R8G8B8 && i < level.size(); i += 4) level[i] = std::byte{0xFF};
    if (width == 1 && height == 1) return levels;
    const std::uint32_t halfWidth = std::max(width / 2, 1u), halfHeight = std::max(height / 2, 1u);
    std::vector<std::uint32_t> smaller;
    for (std::uint32_t y = 0; y < halfHeight; ++y)
      for (std::uint32_t x = 0; x < halfWidth; ++x) {
        const auto channel = [&](std::uint32_t dx, std::uint32_t dy, int shift) {
          const std::size_t column = std::min(2 * x + dx, width - 1), row = std::min(2 * y + dy, height - 1);
          return argb[row * width + column] >> shift & 255;
        };
        std::uint32_t mean = 0;
        for (int s = 0; s < 32; s += 8)
          mean |= (channel(0, 0, s) + channel(1, 0, s) + channel(0, 1, s) + channel(1, 1, s) + 2) / 4 << s;
        smaller.push_back(mean);
      }
    argb = std::move(smaller);
    width = halfWidth;
    height = halfHeight;
  }
}

TEST(Copies, RoundToTheFormatAndMakeTheSmallerLevels) {
  const auto backEnd = software::createBackEnd({3, testedKernels()});
  for (const CopyCase& c : copyCases()) {
    const CopyResult got = copied(*backEnd, c);
    const auto expected = expectedLevels(c, got.picture);
    for (std::size_t i = 0; i < expected.size(); ++i)
      ASSERT_EQ(got.levels[c.level + i], expected[i]) << c.name() << ", level " << c.level + i;
    for (std::uint32_t i = 0; i < c.level; ++i)
      for (const std::byte b : got.levels[i]) ASSERT_EQ(b, std::byte{0}) << c.name() << ": a larger level";
  }
}

// Draws that wait for the target show in the copy; draws that wait for others, or that sampled the texture before, do
// not change.
TEST(Copies, ComeBetweenDraws) {
  Scene scene(128, 8);
  const auto texture = scene.texture(100, 4, std::vector<std::uint32_t>(400, 0xFF00FF00));
  const auto screen = scene.target, surface = scene.backEnd->createTarget(100, 4, Format::X8R8G8B8);
  const auto drawOn = [&](device::TargetId target, std::uint32_t color) {
    scene.target = target;
    scene.state.viewport = {0, 0, 100, 4, 0, 1};
    scene.state.stages[0] = device::State().stages[0];
    scene.textures[0] = {};
    scene.clear(0xFF000000);
    scene.rectangle(0, 0, 100, 2, color);
    scene.target = screen;
    scene.state.viewport = {0, 0, 128, 8, 0, 1};
    scene.textures[0] = texture;
    scene.replaceByTexture();
  };
  drawOn(surface, 0xFFFF0000);
  scene.rectangle(0, 0, 100, 4, 0);  // the texture as it was
  scene.backEnd->copyToTexture(surface, texture, 0);
  scene.rectangle(0, 4, 100, 8, 0);
  drawOn(surface, 0xFF0000FF);
  scene.backEnd->copyToTexture(surface, texture, 0);
  EXPECT_EQ(scene.pixel(99, 1), 0xFF00FF00);
  EXPECT_EQ(scene.pixel(99, 4), 0xFFFF0000);
  EXPECT_EQ(scene.pixel(0, 7), 0xFF000000);
  scene.rectangle(0, 0, 100, 4, 0);
  EXPECT_EQ(scene.pixel(99, 1), 0xFF0000FF);
}

}  // namespace
}  // namespace ql::test
