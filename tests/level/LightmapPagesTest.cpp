#include "level/Lightmap.h"
#include "level/LightmapPages.h"
#include "platform/utility/Pixels.h"

#include <algorithm>
#include <random>
#include <utility>

#include <gtest/gtest.h>

namespace ql::level {
namespace {

/// The pixels that a lightmap's own texture would have.
std::vector<std::uint16_t> alone(std::span<const std::byte> lighting, const HlLightmap& light) {
  std::vector<std::uint16_t> pixels(std::size_t{light.width} * light.height);
  brightenPixels(lighting.subspan(light.offset, pixels.size() * 3), pixels.data());
  const images::Image own = utility::imageFromPixels(std::as_bytes(std::span(pixels)), std::uint64_t{light.width} * 2,
                                                     {light.width, light.height, device::Format::R5G6B5});
  const images::Image grown = images::resample(own, std::max(light.width, kSmallestLightmapSide),
                                               std::max(light.height, kSmallestLightmapSide));
  pixels.resize(grown.pixels.size());
  device::fromArgb(device::Format::R5G6B5, grown.pixels, std::as_writable_bytes(std::span(pixels)));
  return pixels;
}

struct Case {
  const char* name;
  std::uint32_t count, longest, largestTexture;
  std::size_t pages;
};
constexpr Case kCases[] = {{"none", 0, 1, 4096, 0},
                           {"one luxel", 1, 1, 4096, 1},
                           {"a few small ones", 9, 7, 4096, 1},
                           {"a level's", 3500, 18, 4096, 3},
                           {"small textures", 300, 18, 64, 16},
                           {"some too large for a page", 6, 900, 4096, 6}};

TEST(LightmapPages, HoldEveryLightmapAsItsOwnTextureWould) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    std::mt19937 random(7);
    const auto upTo = [&](std::uint32_t most) { return static_cast<std::uint32_t>(1 + random() % most); };
    std::vector<HlLightmap> lights;
    std::size_t bytes = 0;
    for (std::uint32_t i = 0; i < c.count; ++i) {
      lights.push_back({bytes, upTo(c.longest), upTo(c.longest)});
      bytes += std::size_t{lights.back().width} * lights.back().height * 3;
    }
    std::vector<std::byte> lighting(bytes);
    std::ranges::generate(lighting, [&] { return static_cast<std::byte>(random()); });

    const LightmapPages made = makeLightmapPages(lighting, lights, c.largestTexture);
    EXPECT_EQ(made.pages.size(), c.pages);
    std::vector<std::vector<char>> taken;
    for (const LightmapPage& page : made.pages) taken.emplace_back(page.pixels.size());
    for (std::size_t i = 0; i < lights.size(); ++i) {
      const LightmapPlace& place = made.places[i];
      const LightmapPage& page = made.pages[place.page];
      const std::vector<std::uint16_t> expected = alone(lighting, lights[i]);
      const std::int64_t edge = page.single ? 0 : 1, width = place.width, height = place.height;
      ASSERT_EQ(expected.size(), static_cast<std::size_t>(width * height));
      for (std::int64_t y = -edge; y < height + edge; ++y)
        for (std::int64_t x = -edge; x < width + edge; ++x) {
          const auto at = static_cast<std::size_t>((place.y + y) * page.width + place.x + x);
          ASSERT_EQ(std::exchange(taken[place.page].at(at), 1), 0) << "lightmap " << i << " overlaps another";
          const auto from = static_cast<std::size_t>(std::clamp<std::int64_t>(y, 0, height - 1) * width +
                                                     std::clamp<std::int64_t>(x, 0, width - 1));
          ASSERT_EQ(page.pixels[at], expected[from]) << "lightmap " << i << " at " << x << ", " << y;
        }
    }
  }
}

TEST(LightmapPages, MoveCoordinatesOntoThePage) {
  HlFaces faces;
  faces.records = {FaceRecord{.lightmap = 1, .firstVertex = 1, .triangleCount = 1}, FaceRecord{}};
  faces.vertices.resize(5);
  faces.vertices[2].tu1 = 0.5f;
  faces.vertices[3].tv1 = 1;
  const LightmapPages pages{{{64, 32, false, {}}}, {{}, {0, 4, 8, 16, 12}}};
  usePages(faces, pages);
  EXPECT_EQ(faces.records[0].lightmap, 0);
  EXPECT_EQ(faces.vertices[0].tu1, 0) << "of no lit face";
  EXPECT_EQ(faces.vertices[1].tu1, 4 / 64.0f);
  EXPECT_EQ(faces.vertices[2].tu1, 12 / 64.0f);
  EXPECT_EQ(faces.vertices[3].tv1, 20 / 32.0f);
  EXPECT_EQ(faces.vertices[4].tv1, 0);
}

}  // namespace
}  // namespace ql::level
