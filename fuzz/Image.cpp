// One driver for every picture format; QL_FUZZ_ENDING names the format that a target seeds and keeps to.
#include "platform/images/Image.h"

#include "platform/host/Fault.h"
#include "support/JpgFile.h"
#include "support/PngFile.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <zlib.h>

namespace {

using ql::test::raw;
using File = std::vector<std::byte>;
constexpr std::string_view kEnding = QL_FUZZ_ENDING;
constexpr std::string_view kPngSignature = "\x89PNG\r\n\x1A\n";

std::vector<File> bmpSeeds() {
  const std::vector<std::uint32_t> palette = {0, 0xFF0000, 0x00FF00};
  return {
      ql::test::bmpFile({}, raw({1, 2, 3, 4, 5, 6, 0, 0, 1, 2, 3, 4, 5, 6, 0, 0})),
      ql::test::bmpFile({.height = 1, .bits = 16, .compression = 3, .masks = {0xF800, 0x7E0, 0x1F}}, raw({1, 2, 3, 4})),
      ql::test::bmpFile({.width = 4, .bits = 8, .compression = 1, .colorsUsed = 3, .palette = palette},
                        raw({4, 1, 0, 0, 0, 3, 1, 2, 0, 0, 0, 2, 0, 0, 1, 1, 0, 1})),
      ql::test::bmpFile({.width = 4, .bits = 4, .compression = 2, .colorsUsed = 3, .palette = palette},
                        raw({4, 0x12, 0, 0, 4, 0, 0, 1})),
      ql::test::bmpFile({.bits = 4, .palette = palette, .coreHeader = true}, raw({0x12, 0, 0, 0, 0x21, 0, 0, 0}))};
}

std::vector<File> tgaSeeds() {
  return {ql::test::tgaFile({}, raw({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})),
          ql::test::tgaFile({.type = 9, .bits = 8, .paletteCount = 2, .paletteBits = 24},
                            raw({1, 2, 3, 4, 5, 6, 0x82, 1, 0, 0})),
          ql::test::tgaFile({.type = 10, .bits = 32, .descriptor = 0x38},
                            raw({0x81, 1, 2, 3, 4, 1, 1, 2, 3, 4, 5, 6, 7, 8}))};
}

std::vector<File> ddsSeeds() {
  const File block = raw({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
  return {ql::test::ddsFile({.code = "DXT1"}, block), ql::test::ddsFile({.code = "DXT2"}, block),
          ql::test::ddsFile({.code = "DXT5"}, block),
          ql::test::ddsFile({.code = "DX10"}, ql::test::FileBytes().u32(87).u32(3).zeros(12).zeros(64).take()),
          ql::test::ddsFile({.width = 2,
                             .height = 2,
                             .levels = 2,
                             .flags = 0x41,
                             .bits = 16,
                             .red = 0xF00,
                             .green = 0xF0,
                             .blue = 0xF,
                             .alpha = 0xF000},
                            block)};
}

std::vector<File> jpgSeeds() {
  std::vector<std::uint32_t> pixels;
  for (std::uint32_t i = 0; i < 24 * 24; ++i) pixels.push_back(i * 0x00030507u);
  return {ql::test::jpgFile(pixels, 24, 24, TJPF_BGRA, TJSAMP_420, 0),
          ql::test::jpgFile(pixels, 24, 24, TJPF_BGRA, TJSAMP_420, TJFLAG_PROGRESSIVE),
          ql::test::jpgFile(pixels, 24, 24, TJPF_BGRA, TJSAMP_GRAY, 0),
          ql::test::jpgFile(pixels, 24, 24, TJPF_CMYK, TJSAMP_444, 0)};
}

std::vector<File> pngSeeds() {
  return {
      ql::test::pngFile({.colorType = 3, .palette = raw({1, 2, 3, 4, 5, 6}), .transparency = raw({9})}, raw({0, 0, 1})),
      ql::test::pngFile({.width = 2, .height = 2, .colorType = 0, .interlaced = true}, raw({0, 1, 0, 2, 0, 3, 4})),
      ql::test::pngFile({.width = 1, .depth = 16, .colorType = 6}, raw({1, 1, 2, 3, 4, 5, 6, 7, 8}))};
}

std::vector<File> seeds() {
  if (kEnding == ".bmp") return bmpSeeds();
  if (kEnding == ".tga") return tgaSeeds();
  if (kEnding == ".dds") return ddsSeeds();
  if (kEnding == ".jpg") return jpgSeeds();
  return pngSeeds();
}

/// Makes every chunk's checksum right, so that what was changed is looked at.
void repairChecksums(std::uint8_t* data, std::size_t size) {
  const auto bigEndian = [&](std::size_t at) {
    return std::size_t{data[at]} << 24 | std::size_t{data[at + 1]} << 16 | std::size_t{data[at + 2]} << 8 |
           data[at + 3];
  };
  for (std::size_t at = kPngSignature.size(); at + 12 <= size;) {
    const std::size_t length = bigEndian(at);
    if (length > size - at - 12) return;
    const auto sum = static_cast<std::uint32_t>(crc32(0, data + at + 4, static_cast<uInt>(length + 4)));
    for (std::size_t i = 0; i < 4; ++i) data[at + 8 + length + i] = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
    at += 12 + length;
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
  static const std::vector<File> kSeeds = seeds();
  const File& start = kSeeds[seed % kSeeds.size()];
  constexpr std::size_t kTooSmall = 18;
  if ((size < kTooSmall || seed % 1000 == 0) && start.size() <= maxSize) {
    std::memcpy(data, start.data(), start.size());
    return start.size();
  }
  size = LLVMFuzzerMutate(data, size, maxSize);
  if (kEnding == ".png") {
    std::memcpy(data, kPngSignature.data(), std::min(size, kPngSignature.size()));
    repairChecksums(data, size);
  } else if (kEnding != ".tga") {  // the identifier stays
    std::memcpy(data, start.data(), std::min<std::size_t>(size, kEnding == ".bmp" ? 2 : kEnding == ".jpg" ? 3 : 4));
  }
  return size;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto bytes = std::as_bytes(std::span(data, size));
  try {
    const ql::images::ImageInfo info = ql::images::inspect(bytes, kEnding);
    const std::vector<ql::images::Image> levels = ql::images::decodeLevels(bytes, kEnding);
    if (levels.empty() || levels.front().width != info.width || levels.front().height != info.height) std::abort();
    for (const ql::images::Image& level : levels)
      if (level.pixels.size() != std::size_t{level.width} * level.height) std::abort();
  } catch (const ql::host::FileFault&) {
  }
  return 0;
}
