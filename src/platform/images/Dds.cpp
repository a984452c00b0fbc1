#include "platform/images/Decoders.h"
#include "platform/images/DxtBlocks.h"
#include "platform/images/PixelMasks.h"
#include "platform/images/SizeProof.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>

namespace ql::images {
namespace {

using host::ByteReader;
using host::Fault;
using host::FileFault;

constexpr std::uint32_t kHeaderBytes = 124, kDataAt = 128, kExtensionBytes = 20;
constexpr std::uint32_t kVolume = 0x200000;
enum PixelFlags : std::uint32_t { kAlphaPixels = 1, kAlphaOnly = 2, kFourCode = 4, kRgb = 0x40, kLuminance = 0x20000 };

constexpr std::uint32_t fourCode(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (std::uint32_t i = 0; i < 4; ++i)
    code |= static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])) << (8 * i);
  return code;
}

/// How the pixels are stored: in blocks, or one by one under masks.
struct PixelLayout {
  std::optional<BlockKind> blocks;
  bool premultiplied = false;  ///< colours are stored times alpha
  bool grey = false;           ///< the red mask serves all three colours
  std::uint32_t bits = 0;
  PixelMasks masks;
};

struct Header {
  std::uint32_t width = 0, height = 0, levels = 1;
  PixelLayout layout;
  std::uint32_t dataAt = kDataAt;
};

PixelLayout blocks(BlockKind kind, bool premultiplied = false) {
  const std::uint32_t bits = kind == BlockKind::Dxt1 ? 4 : 8;
  return {.blocks = kind, .premultiplied = premultiplied, .grey = false, .bits = bits, .masks = {}};
}

PixelLayout masked(std::uint32_t bits, PixelMasks masks) {
  return {.blocks = {}, .premultiplied = false, .grey = false, .bits = bits, .masks = masks};
}

/// Newer files carry a format number in a second header.
PixelLayout layoutOfExtension(const ByteReader& file) {
  file.range(kDataAt, kExtensionBytes, "second DDS header");
  const auto format = file.at<std::uint32_t>(kDataAt, "pixel format number");
  const auto dimension = file.at<std::uint32_t>(kDataAt + 4, "texture dimension");
  if (dimension != 3) throw FileFault(Fault::Unsupported, "texture dimension", kDataAt + 4, dimension, 3);
  constexpr std::uint32_t kAlpha8 = 0xFF000000u;
  if (format >= 27 && format <= 29) return masked(32, {0xFF, 0xFF00, 0xFF0000, kAlpha8});
  if (format >= 70 && format <= 72) return blocks(BlockKind::Dxt1);
  if (format >= 73 && format <= 75) return blocks(BlockKind::Dxt3);
  if (format >= 76 && format <= 78) return blocks(BlockKind::Dxt5);
  if (format == 85) return masked(16, {0xF800, 0x07E0, 0x001F, 0});
  if (format == 86) return masked(16, {0x7C00, 0x03E0, 0x001F, 0x8000});
  if (format == 87 || format == 90 || format == 91) return masked(32, {0xFF0000, 0xFF00, 0xFF, kAlpha8});
  if (format == 88 || format == 92 || format == 93) return masked(32, {0xFF0000, 0xFF00, 0xFF, 0});
  if (format == 115) return masked(16, {0x0F00, 0x00F0, 0x000F, 0xF000});
  throw FileFault(Fault::Unsupported, "pixel format number", kDataAt, format, 115);
}

PixelLayout layoutOfMasks(const ByteReader& file, std::uint32_t flags) {
  PixelLayout layout;
  layout.bits = file.at<std::uint32_t>(88, "bits per pixel");
  if (layout.bits != 8 && layout.bits != 16 && layout.bits != 24 && layout.bits != 32)
    throw FileFault(Fault::BadSize, "bits per pixel", 88, layout.bits, 32);
  const std::uint32_t inPixel = layout.bits == 32 ? ~0u : (1u << layout.bits) - 1;
  const auto mask = [&](std::uint64_t at) { return file.at<std::uint32_t>(at, "channel mask") & inPixel; };
  layout.grey = (flags & kLuminance) != 0;
  if ((flags & (kRgb | kLuminance)) != 0) layout.masks.red = mask(92);
  if ((flags & kRgb) != 0) {
    layout.masks.green = mask(96);
    layout.masks.blue = mask(100);
  }
  if ((flags & (kAlphaPixels | kAlphaOnly)) != 0) layout.masks.alpha = mask(104);
  // Some writers of grey pixels place the mask elsewhere: the grey is the lowest byte.
  if (layout.grey && layout.masks.red == 0) layout.masks.red = 0xFF;
  if (!MaskDecoder::valid(layout.masks)) throw FileFault(Fault::BadEncoding, "channel masks", 92, layout.masks.red);
  return layout;
}

Header readHeader(const ByteReader& file) {
  file.range(0, kDataAt, "DDS header");
  const auto headerSize = file.at<std::uint32_t>(4, "DDS header size");
  if (headerSize != kHeaderBytes) throw FileFault(Fault::BadSize, "DDS header size", 4, headerSize, kHeaderBytes);
  Header h;
  h.height = file.at<std::uint32_t>(12, "height");
  h.width = file.at<std::uint32_t>(16, "width");
  const auto caps2 = file.at<std::uint32_t>(112, "DDS capabilities");
  if ((caps2 & kVolume) != 0) throw FileFault(Fault::Unsupported, "volume texture", 112, caps2);
  const auto flags = file.at<std::uint32_t>(80, "pixel flags");
  if ((flags & kFourCode) != 0) {
    const auto code = file.at<std::uint32_t>(84, "four-character code");
    if (code == fourCode("DX10")) {
      h.layout = layoutOfExtension(file);
      h.dataAt += kExtensionBytes;
    } else if (code == fourCode("DXT1")) {
      h.layout = blocks(BlockKind::Dxt1);
    } else if (code == fourCode("DXT2") || code == fourCode("DXT3")) {
      h.layout = blocks(BlockKind::Dxt3, code == fourCode("DXT2"));
    } else if (code == fourCode("DXT4") || code == fourCode("DXT5")) {
      h.layout = blocks(BlockKind::Dxt5, code == fourCode("DXT4"));
    } else {
      throw FileFault(Fault::Unsupported, "four-character code", 84, code);
    }
  } else {
    h.layout = layoutOfMasks(file, flags);
  }
  // The levels' bytes are proven one by one; four thirds leave room for the smaller ones.
  proveSize(h.width, h.height, file.size(), 2);
  const auto chain = static_cast<std::uint32_t>(std::bit_width(std::max(h.width, h.height)));
  h.levels = std::clamp(file.at<std::uint32_t>(28, "mip level count"), 1u, chain);
  return h;
}

struct Level {
  std::uint32_t width, height;
  std::uint64_t at, bytes;
};

/// The first level and the smaller ones that are there completely; the chain ends at the first that is not.
std::vector<Level> findLevels(const ByteReader& file, const Header& h) {
  std::vector<Level> levels;
  std::uint64_t at = h.dataAt;
  for (std::uint32_t i = 0; i < h.levels; ++i) {
    Level level{std::max(1u, h.width >> i), std::max(1u, h.height >> i), at, 0};
    if (h.layout.blocks)
      level.bytes = std::uint64_t{(level.width + 3) / 4} * ((level.height + 3) / 4) * blockBytes(*h.layout.blocks);
    else
      level.bytes = std::uint64_t{level.width} * (h.layout.bits / 8) * level.height;
    if (i == 0) file.range(at, level.bytes, "largest level");
    if (level.bytes > file.size() - at) break;
    at += level.bytes;
    levels.push_back(level);
  }
  return levels;
}

std::uint32_t withoutPremultiplication(std::uint32_t pixel) {
  const std::uint32_t alpha = pixel >> 24;
  if (alpha == 0 || alpha == 255) return pixel;
  std::uint32_t out = alpha << 24;
  for (std::uint32_t shift = 0; shift < 24; shift += 8)
    out |= std::min(255u, ((pixel >> shift & 255) * 255 + alpha / 2) / alpha) << shift;
  return out;
}

void decodeBlocks(std::span<const std::byte> bytes, BlockKind kind, Image& image) {
  const std::size_t size = blockBytes(kind);
  for (std::uint32_t y = 0; y < image.height; y += 4)
    for (std::uint32_t x = 0; x < image.width; x += 4) {
      const Block block = decodeBlock(kind, bytes.first(size));
      bytes = bytes.subspan(size);
      const std::uint32_t columns = std::min(4u, image.width - x), rows = std::min(4u, image.height - y);
      for (std::uint32_t row = 0; row < rows; ++row) std::copy_n(&block[row * 4], columns, &image.at(x, y + row));
    }
}

void decodeMasked(std::span<const std::byte> bytes, const PixelLayout& layout, Image& image) {
  const MaskDecoder masks(layout.masks);
  const std::size_t size = layout.bits / 8;
  for (std::size_t i = 0; i < image.pixels.size(); ++i) {
    std::uint32_t pixel = masks(readPixel(&bytes[i * size], size));
    if (layout.grey) pixel |= (pixel >> 16 & 255) * 0x0101u;
    image.pixels[i] = pixel;
  }
}

Image decodeLevel(const ByteReader& file, const Header& h, const Level& level) {
  const auto bytes = file.range(level.at, level.bytes, "level");
  Image image = blankImage(level.width, level.height);
  image.hasAlpha = h.layout.masks.alpha != 0;
  if (!h.layout.blocks) {
    decodeMasked(bytes, h.layout, image);
    return image;
  }
  decodeBlocks(bytes, *h.layout.blocks, image);
  if (h.layout.premultiplied) std::ranges::transform(image.pixels, image.pixels.begin(), withoutPremultiplication);
  // Whether blocks of the first kind carry alpha shows only in the blocks.
  image.hasAlpha = *h.layout.blocks != BlockKind::Dxt1 ||
                   std::ranges::any_of(image.pixels, [](std::uint32_t p) { return p >> 24 != 255; });
  return image;
}

}  // namespace

ImageInfo inspectDds(const ByteReader& file) {
  const Header h = readHeader(file);
  return {.format = ImageFormat::Dds,
          .width = h.width,
          .height = h.height,
          .bitsPerPixel = h.layout.bits,
          .mipLevels = h.levels,
          .compressed = h.layout.blocks.has_value()};
}

std::vector<Image> decodeDds(const ByteReader& file, std::uint32_t maxLevels) {
  const Header h = readHeader(file);
  std::vector<Image> images;
  for (const Level& level : findLevels(file, h)) {
    if (images.size() == maxLevels) break;
    images.push_back(decodeLevel(file, h, level));
  }
  return images;
}

}  // namespace ql::images
