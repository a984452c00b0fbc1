#include "platform/host/Fault.h"
#include "platform/images/Image.h"
#include "support/PictureFiles.h"

#include <random>

#include <gmock/gmock.h>

namespace ql::images {
namespace {

using test::raw;
using test::TgaFields;
using test::tgaFile;
using ::testing::ElementsAreArray;
using Pixels = std::vector<std::uint32_t>;

constexpr std::uint32_t kRed = 0xFFFF0000, kGreen = 0xFF00FF00, kBlue = 0xFF0000FF, kWhite = 0xFFFFFFFF,
                        kBlack = 0xFF000000;
const Pixels kFour = {kRed, kGreen, kBlue, kWhite};

TEST(Tga, AllFourOriginsGiveOnePicture) {
  for (const std::uint32_t descriptor : {0u, 16u, 32u, 48u})
    for (const bool packed : {false, true}) {
      test::FileBytes data;
      if (packed) data.u8(3);  // one packet of four bare pixels, across the row end
      for (std::uint32_t i = 0; i < 4; ++i) {
        const std::uint32_t x = (descriptor & 16) != 0 ? 1 - i % 2 : i % 2;
        const std::uint32_t y = (descriptor & 32) != 0 ? i / 2 : 1 - i / 2;
        data.put(kFour[y * 2 + x], 3);
      }
      const Image image = decode(tgaFile({.type = packed ? 10u : 2u, .descriptor = descriptor}, data.take()), "a.tga");
      EXPECT_THAT(image.pixels, ElementsAreArray(kFour)) << descriptor << packed;
    }
}

struct Case {
  const char* name;
  TgaFields fields;
  std::vector<std::byte> data;
  Pixels expected;
  bool alpha = false;
};

const std::vector<Case> kCases = {
    {"grey", {.type = 3, .height = 1, .bits = 8}, raw({0, 128}), {kBlack, 0xFF808080}},
    {"grey and alpha",
     {.type = 3, .height = 1, .bits = 16, .descriptor = 8},
     raw({255, 0, 1, 128}),
     {0x00FFFFFF, 0x80010101},
     true},
    {"15 bits", {.height = 1, .bits = 15}, raw({0x00, 0x7C, 0xE0, 0x03}), {kRed, kGreen}},
    {"16 bits without alpha", {.height = 1, .bits = 16}, raw({0x00, 0xFC, 0xFF, 0x7F}), {kRed, kWhite}},
    {"16 bits with alpha",
     {.height = 1, .bits = 16, .descriptor = 1},
     raw({0x00, 0xFC, 0xFF, 0x7F}),
     {kRed, 0x00FFFFFF},
     true},
    {"32 bits",
     {.height = 1, .bits = 32, .descriptor = 8},
     raw({0, 0, 255, 0, 255, 0, 0, 64}),
     {0x00FF0000, 0x400000FF},
     true},
    {"32 bits, alpha undeclared but stored",
     {.height = 1, .bits = 32},
     raw({0, 0, 255, 0, 255, 0, 0, 64}),
     {0x00FF0000, 0x400000FF},
     true},
    {"32 bits, alpha undeclared and zero", {.height = 1, .bits = 32}, raw({0, 0, 255, 0, 255, 0, 0, 0}), {kRed, kBlue}},
    {"palette of 24 bits from colour 5",
     {.type = 1, .height = 1, .bits = 8, .paletteFirst = 5, .paletteCount = 2, .paletteBits = 24},
     raw({0, 0, 255, 0, 255, 0, 6, 5}),
     {kGreen, kRed}},
    {"palette indices outside",
     {.type = 1, .height = 1, .bits = 8, .paletteFirst = 5, .paletteCount = 1, .paletteBits = 24},
     raw({0, 0, 255, 4, 6}),
     {kBlack, kBlack}},
    {"palette of 16 bits, indices of 16 bits",
     {.type = 1, .height = 1, .bits = 16, .paletteCount = 2, .paletteBits = 16},
     raw({0x1F, 0x00, 0x00, 0x7C, 1, 0, 0, 0}),
     {kRed, kBlue}},
    {"palette of 32 bits",
     {.type = 9, .height = 1, .bits = 8, .descriptor = 8, .paletteCount = 1, .paletteBits = 32},
     raw({0, 0, 255, 128, 0x81, 0}),
     {0x80FF0000, 0x80FF0000},
     true},
    {"a palette that colours do not use is skipped",
     {.height = 1, .paletteCount = 1, .paletteBits = 24},
     raw({9, 9, 9, 0, 0, 255, 255, 0, 0}),
     {kRed, kBlue}},
    {"a run past the end is cut", {.type = 11, .height = 1, .bits = 8}, raw({0xFF, 255}), {kWhite, kWhite}},
};

TEST(Tga, DecodesEachKind) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    const Image image = decode(tgaFile(c.fields, c.data), "A.TGA");
    EXPECT_THAT(image.pixels, ElementsAreArray(c.expected));
    EXPECT_EQ(image.hasAlpha, c.alpha);
  }
}

TEST(Tga, RefusesWhatDoesNotAddUp) {
  using host::Fault;
  struct Bad {
    const char* name;
    TgaFields fields;
    std::vector<std::byte> data;
    Fault expect;
  };
  const std::vector<std::byte> rows = raw({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  const std::vector<Bad> bad = {
      {"a row is missing", {.height = 3}, rows, Fault::Truncated},
      {"no picture", {.type = 0}, rows, Fault::BadIdentifier},
      {"an unknown type", {.type = 32}, rows, Fault::BadIdentifier},
      {"no height", {.height = 0}, rows, Fault::BadSize},
      {"24-bit grey", {.type = 3}, rows, Fault::BadSize},
      {"indices without a palette", {.type = 1, .bits = 8}, rows, Fault::BadReference},
      {"a palette past the end", {.type = 1, .bits = 8, .paletteCount = 9, .paletteBits = 24}, rows, Fault::Truncated},
      {"a palette of 7 bits", {.type = 1, .bits = 8, .paletteCount = 9, .paletteBits = 7}, rows, Fault::BadSize},
      {"a run without its pixel", {.type = 10}, raw({0x83, 1, 2}), Fault::Truncated},
      {"4096 x 4096 in a few bytes", {.type = 10, .width = 4096, .height = 4096}, rows, Fault::TooLarge},
      {"65535 x 65535", {.type = 10, .width = 65535, .height = 65535}, rows, Fault::BadSize},
  };
  for (const Bad& b : bad) {
    SCOPED_TRACE(b.name);
    try {
      decode(tgaFile(b.fields, b.data), "a.tga");
      ADD_FAILURE() << "decoded";
    } catch (const host::FileFault& fault) {
      EXPECT_EQ(fault.id, b.expect) << fault.what();
    }
  }
}

TEST(Tga, RunLengthsComeBack) {
  std::mt19937 random(3);
  for (const std::uint32_t bits : {8u, 16u, 24u, 32u}) {
    constexpr std::uint32_t kWidth = 77, kHeight = 31;
    const std::size_t size = bits / 8;
    std::vector<std::byte> plain;  // the same picture without packets
    test::FileBytes packed;
    for (std::size_t left = kWidth * kHeight; left > 0;) {
      const std::size_t count = std::min<std::size_t>(left, random() % 128 + 1);
      const bool run = random() % 2 == 0;
      packed.u8((run ? 0x80 : 0) | (count - 1));
      std::uint32_t value = static_cast<std::uint32_t>(random());
      for (std::size_t i = 0; i < count; ++i) {
        if (!run) value = static_cast<std::uint32_t>(random());
        if (!run || i == 0) packed.put(value, size);
        const std::vector<std::byte> pixel = test::FileBytes().put(value, size).take();
        plain.insert(plain.end(), pixel.begin(), pixel.end());
      }
      left -= count;
    }
    TgaFields fields{.type = bits == 8 ? 3u : 2u, .width = kWidth, .height = kHeight, .bits = bits};
    const Image expected = decode(tgaFile(fields, plain), "a.tga");
    fields.type |= 8;
    EXPECT_EQ(decode(tgaFile(fields, packed.take()), "a.tga").pixels, expected.pixels) << bits;
  }
}

TEST(Tga, IsKnownByNameOrSignatureAndContentsRuleOtherwise) {
  const std::vector<std::byte> data = raw({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  const std::vector<std::byte> plain = tgaFile({}, data);
  EXPECT_NO_THROW(inspect(plain, "folder/Name.TgA"));
  EXPECT_THROW(inspect(plain, "name.jpg"), host::FileFault);
  const std::vector<std::byte> signedFile =
      test::FileBytes().add(plain).zeros(8).text(std::string_view("TRUEVISION-XFILE.\0", 18)).take();
  EXPECT_EQ(inspect(signedFile, "name.jpg").format, ImageFormat::Tga);
  EXPECT_EQ(inspect(test::bmpFile({}, raw({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})), "name.tga").format,
            ImageFormat::Bmp);
}

}  // namespace
}  // namespace ql::images
