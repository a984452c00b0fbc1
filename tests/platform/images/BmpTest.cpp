#include "platform/host/Fault.h"
#include "platform/images/Image.h"
#include "support/PictureFiles.h"

#include <random>

#include <gmock/gmock.h>

namespace ql::images {
namespace {

using test::BmpFields;
using test::bmpFile;
using test::raw;
using ::testing::ElementsAreArray;
using Pixels = std::vector<std::uint32_t>;

constexpr std::uint32_t kRed = 0xFFFF0000, kGreen = 0xFF00FF00, kBlue = 0xFF0000FF, kWhite = 0xFFFFFFFF,
                        kBlack = 0xFF000000;
const Pixels kFour = {kRed, kGreen, kBlue, kWhite};  // top row, bottom row
const std::vector<std::uint32_t> kPalette4 = {0x000000, 0xFF0000, 0x00FF00, 0x0000FF, 0xFFFFFF};

struct Case {
  const char* name;
  BmpFields fields;
  std::vector<std::byte> data;
  Pixels expected;
  bool alpha = false;
};

const std::vector<std::byte> kRows24 = raw({255, 0, 0, 255, 255, 255, 0, 0, /**/ 0, 0, 255, 0, 255, 0, 0, 0});

const std::vector<Case> kCases = {
    {"bottom-up 24 bits", {}, kRows24, kFour},
    {"top-down 24 bits", {.height = -2}, raw({0, 0, 255, 0, 255, 0, 0, 0, 255, 0, 0, 255, 255, 255, 0, 0}), kFour},
    {"core header", {.coreHeader = true}, kRows24, kFour},
    {"last row without its padding", {}, {kRows24.begin(), kRows24.end() - 2}, kFour},
    {"unpadded rows that the image size states",
     {.imageSize = 12},
     raw({255, 0, 0, 255, 255, 255, 0, 0, 255, 0, 255, 0}),
     kFour},
    {"1 bit",
     {.width = 3, .bits = 1, .palette = {0xFF0000, 0x0000FF}},
     raw({0x40, 0, 0, 0, 0xA0, 0, 0, 0}),
     {kBlue, kRed, kBlue, kRed, kBlue, kRed}},
    {"4 bits",
     {.width = 3, .height = 1, .bits = 4, .colorsUsed = 5, .palette = kPalette4},
     raw({0x12, 0x40, 0, 0}),
     {kRed, kGreen, kWhite}},
    {"8 bits, indices past the palette",
     {.bits = 8, .colorsUsed = 5, .palette = kPalette4},
     raw({3, 200, 0, 0, 1, 2, 0, 0}),
     {kRed, kGreen, kBlue, kBlack}},
    {"8 bits, core header, a palette shorter than 256",
     {.bits = 8, .palette = kPalette4, .coreHeader = true},
     raw({3, 4, 0, 0, 1, 2, 0, 0}),
     kFour},
    {"16 bits are 555", {.height = 1, .bits = 16}, raw({0x00, 0x7C, 0xFF, 0xFF}), {kRed, kWhite}},
    {"16 bits with 565 masks",
     {.height = 1, .bits = 16, .compression = 3, .masks = {0xF800, 0x07E0, 0x001F}},
     raw({0xE0, 0x07, 0x10, 0x84}),
     {kGreen, 0xFF848284}},
    {"32 bits ignore the fourth byte", {.height = 1, .bits = 32}, raw({0, 0, 255, 0, 0, 255, 0, 17}), {kRed, kGreen}},
    {"32 bits with an alpha mask",
     {.height = 1, .bits = 32, .compression = 6, .masks = {0xFF, 0xFF00, 0xFF0000, 0xFF000000}},
     raw({255, 0, 0, 128, 0, 0, 255, 0}),
     {0x80FF0000, 0x000000FF},
     true},
    {"10-bit masks",
     {.width = 1, .height = 1, .bits = 32, .compression = 3, .masks = {0x3FF00000, 0x000FFC00, 0x3FF}},
     raw({0, 0, 0xF0, 0x3F}),
     {kRed}},
    {"RLE8: run, end of line, literal with padding, end",
     {.width = 3, .bits = 8, .compression = 1, .colorsUsed = 5, .palette = kPalette4},
     raw({3, 1, 0, 0, 0, 3, 2, 3, 4, 0, 0, 1}),
     {kGreen, kBlue, kWhite, kRed, kRed, kRed}},
    {"RLE8: a skip leaves the first colour",
     {.width = 3, .bits = 8, .compression = 1, .colorsUsed = 5, .palette = kPalette4},
     raw({0, 2, 1, 1, 2, 4, 0, 1}),
     {kBlack, kWhite, kWhite, kBlack, kBlack, kBlack}},
    {"RLE8: a run past the edge is cut",
     {.width = 2, .bits = 8, .compression = 1, .colorsUsed = 5, .palette = kPalette4},
     raw({9, 1, 0, 0, 9, 2, 0, 1}),
     {kGreen, kGreen, kRed, kRed}},
    {"RLE8: a skip past the top",
     {.width = 2, .bits = 8, .compression = 1, .colorsUsed = 5, .palette = kPalette4},
     raw({2, 1, 0, 2, 0, 255, 9, 2, 0, 1}),
     {kBlack, kBlack, kRed, kRed}},
    {"RLE4: run of two colours, literal of three",
     {.width = 5, .height = 1, .bits = 4, .compression = 2, .colorsUsed = 5, .palette = kPalette4},
     raw({2, 0x12, 0, 3, 0x34, 0x10, 0, 1}),
     {kRed, kGreen, kBlue, kWhite, kRed}},
    {"RLE: complete without an end mark",
     {.width = 2, .height = 1, .bits = 8, .compression = 1, .colorsUsed = 5, .palette = kPalette4},
     raw({2, 1}),
     {kRed, kRed}},
};

TEST(Bmp, DecodesEachKind) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    const Image image = decode(bmpFile(c.fields, c.data), "");
    EXPECT_EQ(image.width, static_cast<std::uint32_t>(c.fields.width));
    EXPECT_THAT(image.pixels, ElementsAreArray(c.expected));
    EXPECT_EQ(image.hasAlpha, c.alpha);
  }
}

TEST(Bmp, RefusesWhatDoesNotAddUp) {
  using host::Fault;
  struct Bad {
    const char* name;
    BmpFields fields;
    std::vector<std::byte> data;
    Fault expect;
  };
  const std::vector<Bad> bad = {
      {"a row is missing", {.height = 3}, kRows24, Fault::Truncated},
      {"no width", {.width = 0}, kRows24, Fault::BadSize},
      {"negative width", {.width = -2}, kRows24, Fault::BadSize},
      {"the most negative height", {.height = INT32_MIN}, kRows24, Fault::BadSize},
      {"2 bits", {.bits = 2}, kRows24, Fault::BadSize},
      {"24 bits in run lengths", {.compression = 1}, kRows24, Fault::BadSize},
      {"embedded PNG", {.compression = 5}, kRows24, Fault::Unsupported},
      {"run lengths from the top", {.height = -2, .bits = 8, .compression = 1}, kRows24, Fault::BadEncoding},
      {"overlapping masks",
       {.bits = 16, .compression = 3, .masks = {0xFF00, 0x0FF0, 0x1F}},
       kRows24,
       Fault::BadEncoding},
      {"masks with gaps", {.bits = 16, .compression = 3, .masks = {0xF400, 0x03E0, 0x1F}}, kRows24, Fault::BadEncoding},
      {"runs stop early",
       {.width = 4, .bits = 8, .compression = 1, .palette = kPalette4},
       raw({4, 1}),
       Fault::Truncated},
      {"a literal past the end",
       {.width = 4, .bits = 8, .compression = 1, .palette = kPalette4},
       raw({0, 9, 1}),
       Fault::Truncated},
      {"16384 x 16384 in a few bytes",
       {.width = 16384, .height = 16384, .bits = 8, .compression = 1},
       kRows24,
       Fault::TooLarge},
      {"4096 x 4096 in a few bytes",
       {.width = 4096, .height = 4096, .bits = 8, .compression = 1},
       kRows24,
       Fault::TooLarge},
  };
  for (const Bad& b : bad) {
    SCOPED_TRACE(b.name);
    try {
      decode(bmpFile(b.fields, b.data), "");
      ADD_FAILURE() << "decoded";
    } catch (const host::FileFault& fault) {
      EXPECT_EQ(fault.id, b.expect) << fault.what();
    }
  }
}

/// Run lengths as a plain encoder writes them: runs of equal indices, nothing else.
std::vector<std::byte> runsOf(const std::vector<std::uint8_t>& indices, std::uint32_t width, bool nibbles) {
  test::FileBytes out;
  for (std::size_t at = 0; at < indices.size();) {
    std::size_t count = 1;
    while (count < 255 && (at + count) % width != 0 && indices[at + count] == indices[at]) ++count;
    out.u8(count).u8(nibbles ? indices[at] * 17u : indices[at]);
    at += count;
    if (at % width == 0) out.u16(0);
  }
  return out.u16(0x0100).take();
}

TEST(Bmp, RunLengthsComeBack) {
  std::mt19937 random(7);
  for (const bool nibbles : {false, true}) {
    constexpr std::uint32_t kWidth = 300, kHeight = 20;
    BmpFields fields{.width = kWidth, .height = kHeight, .bits = nibbles ? 4u : 8u, .compression = nibbles ? 2u : 1u};
    for (std::uint32_t i = 0; i < (nibbles ? 16u : 256u); ++i) fields.palette.push_back(i * 0x010203);
    std::vector<std::uint8_t> indices;
    while (indices.size() < kWidth * kHeight)
      indices.insert(indices.end(), random() % 40 + 1, random() % fields.palette.size() & 255);
    indices.resize(kWidth * kHeight);
    const Image image = decode(bmpFile(fields, runsOf(indices, kWidth, nibbles)), "");
    for (std::uint32_t y = 0; y < kHeight; ++y)
      for (std::uint32_t x = 0; x < kWidth; ++x)
        ASSERT_EQ(image.at(x, kHeight - 1 - y), 0xFF000000u | fields.palette[indices[y * kWidth + x]])
            << x << ", " << y;
  }
}

TEST(Bmp, OwnFilesComeBackForEveryWidth) {
  for (const std::uint32_t width : {1u, 2u, 3u, 4u, 5u, 7u}) {
    Image image{.width = width, .height = 3, .pixels = {}, .hasAlpha = false};
    for (std::uint32_t i = 0; i < width * 3; ++i) image.pixels.push_back(0xFF000000u | i * 0x0B0D11);
    const std::vector<std::byte> file = encodeBmp(image);
    EXPECT_EQ(file.size(), 54 + width * 3 * 3);
    EXPECT_EQ(decode(file, "shot.bmp").pixels, image.pixels) << width;
  }
}

}  // namespace
}  // namespace ql::images
