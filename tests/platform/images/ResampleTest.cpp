#include "platform/images/Image.h"

#include <random>

#include <gmock/gmock.h>

namespace ql::images {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

Image row(std::vector<std::uint32_t> pixels) {
  const auto width = static_cast<std::uint32_t>(pixels.size());
  return {.width = width, .height = 1, .pixels = std::move(pixels), .hasAlpha = true};
}

TEST(Resample, ShrinksByCoveredArea) {
  EXPECT_THAT(resample(row({0xFF000000, 0xFF0000FF, 0xFFFF0000, 0xFFFF0000}), 2, 1).pixels,
              ElementsAre(0xFF000080, 0xFFFF0000));
  // Each target pixel covers one and a half: 90 and half of 30, over 1.5; half of 30 and 0.
  EXPECT_THAT(resample(row({90, 30, 0}), 2, 1).pixels, ElementsAre(70u, 10u));
}

TEST(Resample, GrowsLinearlyBetweenCentres) {
  EXPECT_THAT(resample(row({0, 0x80}), 4, 1).pixels, ElementsAre(0u, 0x20u, 0x60u, 0x80u));
  EXPECT_THAT(resample(row({0x12345678}), 3, 5).pixels, Each(0x12345678u));
}

TEST(Resample, KeepsFlatPicturesFlatAndBrightnessEqual) {
  std::mt19937 random(5);
  Image noise{.width = 37, .height = 29, .pixels = {}, .hasAlpha = false};
  double sum = 0;
  for (std::uint32_t i = 0; i < 37 * 29; ++i) {
    noise.pixels.push_back(static_cast<std::uint32_t>(random()) & 255);
    sum += noise.pixels.back();
  }
  for (const auto& [width, height] : {std::pair{37u, 29u}, {8u, 8u}, {16u, 64u}, {1u, 1u}, {128u, 3u}}) {
    EXPECT_THAT(
        resample(Image{.width = 5, .height = 7, .pixels = std::vector<std::uint32_t>(35, 0x80FF01FE), .hasAlpha = true},
                 width, height)
            .pixels,
        Each(0x80FF01FEu));
    const Image scaled = resample(noise, width, height);
    ASSERT_EQ(scaled.pixels.size(), std::size_t{width} * height);
    if (width > 37 || height > 29) continue;  // growing weighs the border more
    double mean = 0;
    for (const std::uint32_t p : scaled.pixels) mean += p;
    EXPECT_NEAR(mean / (width * height), sum / (37 * 29), 0.6) << width << " x " << height;
  }
}

TEST(Halve, AveragesFourAndStopsAtOne) {
  const Image square{
      .width = 2, .height = 2, .pixels = {0xFF000000, 0xFF0000FF, 0x01010101, 0x01FF0103}, .hasAlpha = true};
  const Image one = halve(square);
  EXPECT_THAT(one.pixels, ElementsAre(0x80400141u));
  EXPECT_EQ(halve(one).pixels, one.pixels);
  EXPECT_THAT(halve(row({0, 4, 8, 12, 99})).pixels, ElementsAre(2u, 10u));
}

}  // namespace
}  // namespace ql::images
