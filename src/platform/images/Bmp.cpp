#include "platform/images/Decoders.h"
#include "platform/images/PixelMasks.h"
#include "platform/images/SizeProof.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace ql::images {
namespace {

using host::ByteReader;
using host::Fault;
using host::FileFault;

constexpr std::uint32_t kFileHeader = 14, kCoreHeader = 12, kInfoHeader = 40, kOs2Header = 64;
enum Compression : std::uint32_t { kRgb = 0, kRle8 = 1, kRle4 = 2, kBitFields = 3, kAlphaBitFields = 6 };
using Palette = std::array<std::uint32_t, 256>;

struct Header {
  std::uint32_t width = 0, height = 0, bits = 0, compression = kRgb;
  bool topDown = false;
  std::uint32_t dataAt = 0;     ///< file offset of the pixels
  std::uint32_t imageSize = 0;  ///< bytes of pixels as the header states them; may be 0
  std::uint64_t paletteAt = 0;
  std::uint32_t paletteEntry = 4, paletteCount = 0;
  PixelMasks masks;
};

bool knownHeaderSize(std::uint32_t size) {
  constexpr std::array<std::uint32_t, 7> kSizes = {kCoreHeader, kInfoHeader, 52, 56, kOs2Header, 108, 124};
  return std::find(kSizes.begin(), kSizes.end(), size) != kSizes.end();
}

bool knownDepth(const Header& h) {
  switch (h.compression) {
    case kRgb:
      return h.bits == 1 || h.bits == 4 || h.bits == 8 || h.bits == 16 || h.bits == 24 || h.bits == 32;
    case kRle8:
      return h.bits == 8;
    case kRle4:
      return h.bits == 4;
    default:
      return h.bits == 16 || h.bits == 32;
  }
}

/// Fills in the masks, from the file where it has any. @return bytes of masks between header and palette
std::uint32_t readMasks(const ByteReader& file, std::uint32_t headerSize, Header& h) {
  if (h.compression != kBitFields && h.compression != kAlphaBitFields) {
    h.masks = h.bits == 16 ? PixelMasks{0x7C00, 0x03E0, 0x001F, 0} : PixelMasks{0xFF0000, 0x00FF00, 0x0000FF, 0};
    return 0;
  }
  // The masks stand at the same place whether the header counts them as its own or not.
  constexpr std::uint32_t kMasksAt = kFileHeader + kInfoHeader;
  const bool alpha = headerSize >= 56 || h.compression == kAlphaBitFields;
  h.masks.red = file.at<std::uint32_t>(kMasksAt, "red mask");
  h.masks.green = file.at<std::uint32_t>(kMasksAt + 4, "green mask");
  h.masks.blue = file.at<std::uint32_t>(kMasksAt + 8, "blue mask");
  if (alpha) h.masks.alpha = file.at<std::uint32_t>(kMasksAt + 12, "alpha mask");
  if (!MaskDecoder::valid(h.masks)) throw FileFault(Fault::BadEncoding, "colour masks", kMasksAt, h.masks.red);
  if (headerSize > kInfoHeader) return 0;
  return alpha ? 16 : 12;
}

Header readHeader(const ByteReader& file) {
  Header h;
  h.dataAt = file.at<std::uint32_t>(10, "bitmap data offset");
  const auto headerSize = file.at<std::uint32_t>(kFileHeader, "bitmap header size");
  if (!knownHeaderSize(headerSize))
    throw FileFault(Fault::BadVersion, "bitmap header size", kFileHeader, headerSize, 124);
  file.range(kFileHeader, headerSize, "bitmap header");
  std::int64_t width = 0, height = 0;
  std::uint32_t colorsUsed = 0;
  if (headerSize == kCoreHeader) {
    width = file.at<std::uint16_t>(18, "width");
    height = file.at<std::uint16_t>(20, "height");
    h.bits = file.at<std::uint16_t>(24, "bits per pixel");
    h.paletteEntry = 3;
  } else {
    width = file.at<std::int32_t>(18, "width");
    height = file.at<std::int32_t>(22, "height");
    h.bits = file.at<std::uint16_t>(28, "bits per pixel");
    h.compression = file.at<std::uint32_t>(30, "compression");
    h.imageSize = file.at<std::uint32_t>(34, "image size");
    colorsUsed = file.at<std::uint32_t>(46, "colours used");
  }
  const bool packed = h.compression == kRle8 || h.compression == kRle4;
  // The OS/2 header gives compression 3 another meaning (a fax code).
  const bool fields = (h.compression == kBitFields || h.compression == kAlphaBitFields) && headerSize != kOs2Header;
  if (h.compression != kRgb && !packed && !fields)
    throw FileFault(Fault::Unsupported, "bitmap compression", 30, h.compression);
  if (!knownDepth(h)) throw FileFault(Fault::BadSize, "bits per pixel", 28, h.bits, 32);
  h.topDown = height < 0;
  if (h.topDown && packed) throw FileFault(Fault::BadEncoding, "run lengths from the top", 22);
  // A negative width fails as too wide. Two bytes of a run stand for at most 255 pixels.
  proveSize(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(std::llabs(height)), file.size(),
            packed ? 128 : 8);
  h.width = static_cast<std::uint32_t>(width);
  h.height = static_cast<std::uint32_t>(std::llabs(height));

  h.paletteAt = std::uint64_t{kFileHeader} + headerSize + readMasks(file, headerSize, h);
  if (h.dataAt < h.paletteAt) throw FileFault(Fault::BadReference, "bitmap data offset", 10, h.dataAt, h.paletteAt);
  if (h.bits <= 8) {
    const std::uint32_t most = 1u << h.bits;
    h.paletteCount = colorsUsed == 0 ? most : std::min(colorsUsed, most);
    // Short palettes are common in old files whose count was left at 0: what lies at the pixels is no colour.
    h.paletteCount =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(h.paletteCount, (h.dataAt - h.paletteAt) / h.paletteEntry));
  }
  return h;
}

/// The palette, with opaque black for indices that it lacks.
Palette readPalette(const ByteReader& file, const Header& h) {
  Palette palette;
  palette.fill(0xFF000000u);
  const auto bytes = file.range(h.paletteAt, std::uint64_t{h.paletteCount} * h.paletteEntry, "palette");
  for (std::size_t i = 0; i < h.paletteCount; ++i) palette[i] |= readPixel(&bytes[i * h.paletteEntry], 3);
  return palette;
}

/// Rows from a place in the file, each starting stride bytes after the one before.
struct RowData {
  std::span<const std::byte> bytes;
  std::uint64_t stride = 0;
};

RowData findRows(const ByteReader& file, const Header& h) {
  const std::uint64_t rowBytes = (std::uint64_t{h.width} * h.bits + 7) / 8;
  const std::uint64_t stride = (rowBytes + 3) / 4 * 4;
  const std::uint64_t padded = stride * (h.height - 1) + rowBytes;  // the last row's padding is often left out
  const std::uint64_t unpadded = rowBytes * h.height;
  // Screenshots of this engine have unpadded rows, whatever their width: the stated size and the missing bytes tell.
  const std::uint64_t present = file.size() - std::min<std::uint64_t>(h.dataAt, file.size());
  if (h.bits == 24 && h.imageSize == unpadded && present >= unpadded && present < padded)
    return {file.range(h.dataAt, unpadded, "bitmap rows"), rowBytes};
  return {file.range(h.dataAt, padded, "bitmap rows"), stride};
}

void decodeIndexedRow(const std::byte* row, std::span<std::uint32_t> out, std::uint32_t bits, const Palette& palette) {
  const std::uint32_t perByte = 8 / bits, mask = (1u << bits) - 1;
  for (std::uint32_t x = 0; x < out.size(); ++x) {
    const std::uint32_t shift = 8 - bits - x % perByte * bits;
    out[x] = palette[std::to_integer<std::uint32_t>(row[x / perByte]) >> shift & mask];
  }
}

void decodeColorRow(const std::byte* row, std::span<std::uint32_t> out, std::uint32_t bits, const MaskDecoder& masks) {
  const std::size_t bytes = bits / 8;
  if (bits == 24)
    for (std::size_t x = 0; x < out.size(); ++x) out[x] = 0xFF000000u | readPixel(row + 3 * x, 3);
  else
    for (std::size_t x = 0; x < out.size(); ++x) out[x] = masks(readPixel(row + bytes * x, bytes));
}

/// Run lengths: pairs of a count and a byte, or a zero and a command. Pixels that nothing sets keep palette entry 0.
class RunDecoder {
 public:
  RunDecoder(const ByteReader& file, const Header& h, const Palette& palette, Image& image)
      : file_(file), h_(h), palette_(palette), image_(image), at_(h.dataAt) {
    std::fill(image_.pixels.begin(), image_.pixels.end(), palette_[0]);
  }

  void decode() {
    while (y_ < h_.height) {
      // A file may end without its end mark once the picture is complete.
      if (y_ + 1 == h_.height && x_ >= h_.width && at_ + 2 > file_.size()) return;
      const std::uint32_t count = next(), value = next();
      if (count != 0) {
        for (std::uint32_t i = 0; i < count; ++i) put(nibbleOr(value, i));
      } else if (value == 0) {
        x_ = 0;
        ++y_;
      } else if (value == 1) {
        return;
      } else if (value == 2) {
        x_ += next();
        y_ += next();
      } else {
        literal(value);
      }
    }
  }

 private:
  std::uint32_t next() { return file_.at<std::uint8_t>(at_++, "bitmap run"); }
  std::uint32_t nibbleOr(std::uint32_t byte, std::uint32_t i) const {
    if (h_.bits == 8) return byte;
    return i % 2 == 0 ? byte >> 4 : byte & 15;
  }
  void put(std::uint32_t index) {
    if (x_ < h_.width) image_.at(x_, h_.height - 1 - y_) = palette_[index];
    ++x_;
  }
  void literal(std::uint32_t count) {
    const std::uint32_t bytes = h_.bits == 8 ? count : (count + 1) / 2;
    const auto values = file_.range(at_, bytes, "bitmap literal");
    for (std::uint32_t i = 0; i < count; ++i)
      put(nibbleOr(std::to_integer<std::uint32_t>(values[h_.bits == 8 ? i : i / 2]), i));
    at_ += (bytes + 1) / 2 * 2;
  }

  const ByteReader& file_;
  const Header& h_;
  const Palette& palette_;
  Image& image_;
  std::uint64_t at_;
  std::uint32_t y_ = 0;  ///< from the bottom; never more than 255 past the top
  std::uint32_t x_ = 0;  ///< may run past the right edge; counts on, by at most 255 for each two bytes
};

}  // namespace

ImageInfo inspectBmp(const ByteReader& file) {
  const Header h = readHeader(file);
  return {.format = ImageFormat::Bmp,
          .width = h.width,
          .height = h.height,
          .bitsPerPixel = h.bits,
          .mipLevels = 1,
          .compressed = h.compression == kRle8 || h.compression == kRle4};
}

Image decodeBmp(const ByteReader& file) {
  const Header h = readHeader(file);
  const Palette palette = readPalette(file, h);
  if (h.compression == kRle8 || h.compression == kRle4) {
    file.range(h.dataAt, 1, "bitmap runs");
    Image image = blankImage(h.width, h.height);
    RunDecoder(file, h, palette, image).decode();
    return image;
  }
  const RowData rows = findRows(file, h);
  const MaskDecoder masks(h.masks);
  Image image = blankImage(h.width, h.height);
  image.hasAlpha = h.masks.alpha != 0;
  for (std::uint32_t y = 0; y < h.height; ++y) {
    const std::byte* row = &rows.bytes[rows.stride * y];
    const std::span out(&image.at(0, h.topDown ? y : h.height - 1 - y), h.width);
    if (h.bits <= 8)
      decodeIndexedRow(row, out, h.bits, palette);
    else
      decodeColorRow(row, out, h.bits, masks);
  }
  return image;
}

}  // namespace ql::images
