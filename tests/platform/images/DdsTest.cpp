#include "platform/host/Fault.h"
#include "platform/images/Image.h"
#include "support/PictureFiles.h"

#include <random>

#include <gmock/gmock.h>
#include <squish.h>

namespace ql::images {
namespace {

using test::DdsFields;
using test::ddsFile;
using test::raw;
using ::testing::ElementsAreArray;

TEST(Dds, BlocksAgreeWithAnIndependentDecoder) {
  struct Kind {
    const char* code;
    int flag;
    std::size_t bytes;
  };
  std::mt19937 random(11);
  for (const Kind& kind : {Kind{"DXT1", squish::kDxt1, 8}, {"DXT3", squish::kDxt3, 16}, {"DXT5", squish::kDxt5, 16}}) {
    for (int round = 0; round < 500; ++round) {
      std::vector<std::byte> block(kind.bytes);
      for (std::byte& b : block) b = static_cast<std::byte>(random());
      if (round % 5 == 0) std::copy_n(block.end() - 8, 2, block.end() - 6);  // two equal colours
      if (round % 7 == 0) block[1] = block[0];                               // two equal alphas
      const Image image = decode(ddsFile({.code = kind.code}, block), "");
      std::uint8_t expected[64];
      squish::Decompress(expected, block.data(), kind.flag);
      for (std::size_t i = 0; i < 16; ++i) {
        const std::uint8_t* p = expected + 4 * i;
        const std::uint32_t want =
            std::uint32_t{p[3]} << 24 | std::uint32_t{p[0]} << 16 | std::uint32_t{p[1]} << 8 | p[2];
        ASSERT_EQ(image.pixels[i], want) << kind.code << " round " << round << " pixel " << i;
      }
    }
  }
}

TEST(Dds, DecodesPixelsUnderMasks) {
  struct Case {
    const char* name;
    DdsFields fields;
    std::vector<std::byte> data;
    std::vector<std::uint32_t> expected;
    bool alpha;
  };
  const std::vector<Case> cases = {
      {"565",
       {.flags = 0x40, .bits = 16, .red = 0xF800, .green = 0x7E0, .blue = 0x1F},
       raw({0, 0xF8, 0xFF, 0xFF}),
       {0xFFFF0000, 0xFFFFFFFF},
       false},
      {"1555",
       {.flags = 0x41, .bits = 16, .red = 0x7C00, .green = 0x3E0, .blue = 0x1F, .alpha = 0x8000},
       raw({0, 0x7C, 0xE0, 0x83}),
       {0x00FF0000, 0xFF00FF00},
       true},
      {"4444",
       {.flags = 0x41, .bits = 16, .red = 0xF00, .green = 0xF0, .blue = 0xF, .alpha = 0xF000},
       raw({0x34, 0x12, 0, 0xF0}),
       {0x11223344, 0xFF000000},
       true},
      {"888",
       {.flags = 0x40, .bits = 24, .red = 0xFF0000, .green = 0xFF00, .blue = 0xFF},
       raw({1, 2, 3, 4, 5, 6}),
       {0xFF030201, 0xFF060504},
       false},
      {"8888 in the other order",
       {.flags = 0x41, .bits = 32, .red = 0xFF, .green = 0xFF00, .blue = 0xFF0000, .alpha = 0xFF000000},
       raw({1, 2, 3, 4, 5, 6, 7, 8}),
       {0x04010203, 0x08050607},
       true},
      {"an alpha mask that the flags do not name",
       {.flags = 0x40, .bits = 32, .red = 0xFF0000, .green = 0xFF00, .blue = 0xFF, .alpha = 0xFF000000},
       raw({1, 2, 3, 4, 5, 6, 7, 8}),
       {0xFF030201, 0xFF070605},
       false},
      {"grey", {.flags = 0x20000, .bits = 8, .red = 0xFF}, raw({0, 200}), {0xFF000000, 0xFFC8C8C8}, false},
      {"grey under a mask outside the pixel",
       {.flags = 0x20000, .bits = 8, .red = 0xFF000000},
       raw({0, 200}),
       {0xFF000000, 0xFFC8C8C8},
       false},
      {"grey and alpha",
       {.flags = 0x20001, .bits = 16, .red = 0xFF, .alpha = 0xFF00},
       raw({9, 1, 200, 2}),
       {0x01090909, 0x02C8C8C8},
       true},
      {"alpha alone", {.flags = 2, .bits = 8, .alpha = 0xFF}, raw({0, 200}), {0, 0xC8000000}, true},
  };
  for (Case c : cases) {
    SCOPED_TRACE(c.name);
    c.fields.width = 2;
    c.fields.height = 1;
    const Image image = decode(ddsFile(c.fields, c.data), "");
    EXPECT_THAT(image.pixels, ElementsAreArray(c.expected));
    EXPECT_EQ(image.hasAlpha, c.alpha);
  }
}

/// A DXT1 block of one colour.
std::vector<std::byte> solid(std::uint32_t r5g6b5) { return test::FileBytes().u16(r5g6b5).u16(0).u32(0).take(); }

TEST(Dds, LevelsShrinkToOnePixelAndPartialBlocksAreCut) {
  test::FileBytes data;
  for (int i = 0; i < 4; ++i) data.add(solid(0xF800));  // 6 × 5: four blocks
  data.add(solid(0x07E0)).add(solid(0x001F));           // 3 × 2, 1 × 1
  const std::vector<std::byte> file = ddsFile({.width = 6, .height = 5, .levels = 99, .code = "DXT1"}, data.take());
  EXPECT_EQ(inspect(file, "").mipLevels, 3u);
  const std::vector<Image> levels = decodeLevels(file, "");
  ASSERT_EQ(levels.size(), 3u);
  const std::uint32_t sizes[3][2] = {{6, 5}, {3, 2}, {1, 1}}, colors[3] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(levels[i].width, sizes[i][0]);
    EXPECT_EQ(levels[i].height, sizes[i][1]);
    EXPECT_THAT(levels[i].pixels, ::testing::Each(colors[i]));
  }
  EXPECT_EQ(decodeLevels(std::span(file).first(file.size() - 8), "").size(), 2u)
      << "a level that is cut off is left out";
}

TEST(Dds, PremultipliedColoursAreDivided) {
  // Alpha 0x88 everywhere, colour 132 of 255 stored: 132 × 255 / 136 = 247.5.
  const std::vector<std::byte> block =
      test::FileBytes().u32(0x88888888).u32(0x88888888).u16(0x8410).u16(0).u32(0).take();
  EXPECT_EQ(decode(ddsFile({.code = "DXT3"}, block), "").pixels[0], 0x88848284u);
  EXPECT_EQ(decode(ddsFile({.code = "DXT2"}, block), "").pixels[0], 0x88F8F4F8u);
}

TEST(Dds, RefusesWhatDoesNotAddUp) {
  using host::Fault;
  struct Bad {
    const char* name;
    DdsFields fields;
    Fault expect;
  };
  const std::vector<Bad> bad = {
      {"too few blocks", {.width = 5, .code = "DXT1"}, Fault::Truncated},
      {"no width", {.width = 0, .code = "DXT1"}, Fault::BadSize},
      {"huge", {.width = 0xFFFFFFFF, .height = 0xFFFFFFFF, .code = "DXT1"}, Fault::BadSize},
      {"16384 x 16384 in a block", {.width = 16384, .height = 16384, .code = "DXT1"}, Fault::TooLarge},
      {"an unknown code", {.code = "ATI2"}, Fault::Unsupported},
      {"a volume", {.code = "DXT1", .caps2 = 0x200000}, Fault::Unsupported},
      {"no bits", {.flags = 0x40, .red = 1}, Fault::BadSize},
      {"no masks", {.flags = 0x40, .bits = 32}, Fault::BadEncoding},
  };
  for (const Bad& b : bad) {
    SCOPED_TRACE(b.name);
    try {
      decode(ddsFile(b.fields, solid(0)), "");
      ADD_FAILURE() << "decoded";
    } catch (const host::FileFault& fault) {
      EXPECT_EQ(fault.id, b.expect) << fault.what();
    }
  }
}

}  // namespace
}  // namespace ql::images
