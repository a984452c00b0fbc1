#include "platform/host/Fault.h"
#include "platform/images/Image.h"
#include "support/PngFile.h"

#include <gmock/gmock.h>

namespace ql::images {
namespace {

using test::PngFields;
using test::pngFile;
using test::raw;
using ::testing::ElementsAreArray;

TEST(Png, DecodesEachKind) {
  struct Case {
    const char* name;
    PngFields fields;
    std::vector<std::byte> rows;
    std::vector<std::uint32_t> expected;
    bool alpha = false;
  };
  const std::vector<std::byte> palette = raw({255, 0, 0, 0, 0, 255});
  const std::vector<Case> cases = {
      {"1-bit grey", {.depth = 1, .colorType = 0}, raw({0, 0x40}), {0xFF000000, 0xFFFFFFFF}},
      {"4-bit grey", {.depth = 4, .colorType = 0}, raw({0, 0x1F}), {0xFF111111, 0xFFFFFFFF}},
      {"grey with a transparent value",
       {.colorType = 0, .transparency = raw({0, 7})},
       raw({0, 7, 8}),
       {0x00070707, 0xFF080808},
       true},
      {"16-bit grey", {.depth = 16, .colorType = 0}, raw({0, 0x80, 0x80, 0xFF, 0xFF}), {0xFF808080, 0xFFFFFFFF}},
      {"colours", {}, raw({0, 1, 2, 3, 4, 5, 6}), {0xFF010203, 0xFF040506}},
      {"16-bit colours", {.width = 1, .depth = 16}, raw({0, 1, 1, 2, 2, 3, 3}), {0xFF010203}},
      {"2-bit palette", {.depth = 2, .colorType = 3, .palette = palette}, raw({0, 0x40}), {0xFF0000FF, 0xFFFF0000}},
      {"palette with alpha",
       {.colorType = 3, .palette = palette, .transparency = raw({9})},
       raw({0, 0, 1}),
       {0x09FF0000, 0xFF0000FF},
       true},
      {"grey and alpha", {.colorType = 4}, raw({0, 1, 2, 3, 4}), {0x02010101, 0x04030303}, true},
      {"colours and alpha", {.width = 1, .colorType = 6}, raw({0, 1, 2, 3, 4}), {0x04010203}, true},
      {"interlaced",
       {.width = 2, .height = 2, .colorType = 0, .interlaced = true},
       raw({0, 1, 0, 2, 0, 3, 4}),
       {0xFF010101, 0xFF020202, 0xFF030303, 0xFF040404}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::vector<std::byte> file = pngFile(c.fields, c.rows);
    const Image image = decode(file, "");
    EXPECT_THAT(image.pixels, ElementsAreArray(c.expected));
    EXPECT_EQ(image.hasAlpha, c.alpha);
    EXPECT_EQ(inspect(file, "").width, image.width);
  }
}

TEST(Png, RefusesWhatDoesNotAddUp) {
  struct Bad {
    const char* name;
    PngFields fields;
    std::vector<std::byte> rows;
  };
  const std::vector<Bad> bad = {
      {"a row is missing", {.height = 2}, raw({0, 1, 2, 3, 4, 5, 6})},
      {"16384 x 16384 in a few bytes", {.width = 16384, .height = 16384, .depth = 1, .colorType = 0}, raw({0, 1})},
      {"4096 x 4096 in a few bytes", {.width = 4096, .height = 4096, .depth = 1, .colorType = 0}, raw({0, 1})},
      {"wider than any", {.width = 0x7FFFFFFF}, raw({0, 1})},
      {"an unknown colour type", {.colorType = 5}, raw({0, 1})},
      {"3 bits", {.depth = 3, .colorType = 0}, raw({0, 1})},
      {"indices without a palette", {.colorType = 3}, raw({0, 0, 1})},
      {"an unknown filter", {}, raw({9, 1, 2, 3, 4, 5, 6})},
  };
  for (const Bad& b : bad) EXPECT_THROW(decode(pngFile(b.fields, b.rows), ""), host::FileFault) << b.name;
}

TEST(Png, OwnFilesComeBack) {
  for (const bool alpha : {false, true}) {
    Image image{.width = 33, .height = 21, .pixels = {}, .hasAlpha = alpha};
    for (std::uint32_t i = 0; i < 33 * 21; ++i) image.pixels.push_back(i * 0x01030507u | (alpha ? 0 : 0xFF000000u));
    const std::vector<std::byte> file = encodePng(image);
    EXPECT_EQ(inspect(file, "").bitsPerPixel, alpha ? 32u : 24u);
    const Image back = decode(file, "");
    EXPECT_EQ(back.pixels, image.pixels);
    EXPECT_EQ(back.hasAlpha, alpha);
  }
}

}  // namespace
}  // namespace ql::images
