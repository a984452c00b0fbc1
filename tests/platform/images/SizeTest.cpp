// The bounds on what a header may promise must not refuse the most compressible honest texture.
#include "platform/images/Image.h"
#include "support/JpgFile.h"
#include "support/PngFile.h"

#include <gmock/gmock.h>

namespace ql::images {
namespace {

constexpr std::uint32_t kSide = 4096;

/// The same few bytes over and over.
std::vector<std::byte> repeated(std::initializer_list<int> bytes, std::size_t times) {
  const std::vector<std::byte> piece = test::raw(bytes);
  std::vector<std::byte> out;
  for (std::size_t i = 0; i < times; ++i) out.insert(out.end(), piece.begin(), piece.end());
  return out;
}

TEST(PictureSize, FlatTexturesOfFourThousandPixelsLoad) {
  const std::vector<std::uint32_t> grey(kSide * kSide, 0xFF808080);
  const int side = static_cast<int>(kSide);
  const test::BmpFields bmp{
      .width = side, .height = side, .bits = 8, .compression = 1, .colorsUsed = 1, .palette = {0x808080}};
  struct Case {
    const char* name;
    std::vector<std::byte> file;
  };
  // Each BMP row: sixteen runs of 255, one of 16, the end of the line.
  std::vector<std::byte> row = repeated({255, 0}, 16);
  for (const std::byte b : test::raw({16, 0, 0, 0})) row.push_back(b);
  test::FileBytes rows;
  for (std::uint32_t y = 0; y < kSide; ++y) rows.add(row);
  const std::vector<Case> cases = {
      {"indexed.png",
       test::pngFile(
           {.width = kSide, .height = kSide, .depth = 8, .colorType = 3, .palette = test::raw({0x80, 0x80, 0x80})},
           std::vector<std::byte>((kSide + 1) * kSide))},
      {"progressive.jpg", test::jpgFile(grey, side, side, TJPF_BGRA, TJSAMP_GRAY, TJFLAG_PROGRESSIVE)},
      {"runs.bmp", test::bmpFile(bmp, rows.take())},
      {"runs.tga", test::tgaFile({.type = 11, .width = kSide, .height = kSide, .bits = 8},
                                 repeated({0xFF, 0x80}, kSide * kSide / 128))}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_LT(c.file.size(), kSide * kSide / 50);
    const Image image = decode(c.file, c.name);
    EXPECT_EQ(image.width, kSide);
    EXPECT_TRUE(image.pixels == grey);
  }
}

}  // namespace
}  // namespace ql::images
