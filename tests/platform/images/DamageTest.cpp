// Prefixes and single damaged bytes of small good files of every format but JPG, which has its own sweep.
#include "platform/host/Fault.h"
#include "platform/images/Image.h"
#include "support/PngFile.h"

#include <optional>

#include <gtest/gtest.h>

namespace ql::images {
namespace {

using test::raw;

struct Good {
  const char* name;
  std::vector<std::byte> file;
};

std::vector<Good> goodFiles() {
  const std::vector<std::uint32_t> palette = {0, 0xFF0000, 0x00FF00};
  return {
      {"rows.bmp", test::bmpFile({.height = 1}, raw({1, 2, 3, 4, 5, 6, 0, 0}))},
      {"masks.bmp",
       test::bmpFile({.height = 1, .bits = 16, .compression = 3, .masks = {0xF800, 0x7E0, 0x1F}}, raw({1, 2, 3, 4}))},
      {"runs.bmp", test::bmpFile({.width = 4, .bits = 8, .compression = 1, .colorsUsed = 3, .palette = palette},
                                 raw({4, 1, 0, 0, 0, 3, 1, 2, 0, 0, 0, 2, 0, 0, 1, 1, 0, 1}))},
      {"core.bmp",
       test::bmpFile({.bits = 4, .palette = palette, .coreHeader = true}, raw({0x12, 0, 0, 0, 0x21, 0, 0, 0}))},
      {"plain.tga", test::tgaFile({}, raw({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}))},
      {"runs.tga", test::tgaFile({.type = 9, .bits = 8, .paletteCount = 2, .paletteBits = 24},
                                 raw({1, 2, 3, 4, 5, 6, 0x82, 1, 0, 0}))},
      {"blocks.dds", test::ddsFile({.code = "DXT5"}, raw({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}))},
      {"masks.dds",
       test::ddsFile({.width = 2, .height = 1, .flags = 0x40, .bits = 16, .red = 0xF800, .green = 0x7E0, .blue = 0x1F},
                     raw({1, 2, 3, 4}))},
      {"second-header.dds",
       test::ddsFile({.code = "DX10"}, test::FileBytes().u32(71).u32(3).zeros(12).zeros(8).take())},
      {"palette.png",
       test::pngFile({.colorType = 3, .palette = raw({1, 2, 3, 4, 5, 6}), .transparency = raw({9})}, raw({0, 0, 1}))},
      {"interlaced.png",
       test::pngFile({.width = 2, .height = 2, .colorType = 0, .interlaced = true}, raw({0, 1, 0, 2, 0, 3, 4}))},
  };
}

/// The picture, or nothing after a fault; anything else that is thrown fails the test.
std::optional<Image> tryDecode(std::span<const std::byte> bytes, const char* name) {
  const std::vector<std::byte> own(bytes.begin(), bytes.end());  // exactly as long, so that a sanitizer sees an overrun
  try {
    return decode(own, name);
  } catch (const host::FileFault&) {
    return std::nullopt;
  }
}

TEST(DamagedPicture, EveryPrefixFailsUnlessThePictureIsComplete) {
  for (const Good& good : goodFiles()) {
    const std::optional<Image> whole = tryDecode(good.file, good.name);
    ASSERT_TRUE(whole) << good.name;
    std::size_t complete = 0;
    for (std::size_t n = 0; n < good.file.size(); ++n) {
      const std::optional<Image> cut = tryDecode(std::span(good.file).first(n), good.name);
      if (!cut) continue;
      ++complete;
      EXPECT_EQ(cut->pixels, whole->pixels) << good.name << " cut to " << n << " bytes";
    }
    EXPECT_LE(complete, 16u) << good.name << ": only end marks and padding are dispensable";
  }
}

TEST(DamagedPicture, EveryByteMayHoldAnything) {
  for (const Good& good : goodFiles())
    for (std::size_t at = 0; at < good.file.size(); ++at)
      for (const int value : {0, 1, 0x7F, 0x80, 0xFF}) {
        std::vector<std::byte> bad = good.file;
        bad[at] = static_cast<std::byte>(value);
        const std::optional<Image> image = tryDecode(bad, good.name);
        if (!image) continue;
        EXPECT_EQ(image->pixels.size(), std::size_t{image->width} * image->height) << good.name << " at " << at;
      }
}

}  // namespace
}  // namespace ql::images
