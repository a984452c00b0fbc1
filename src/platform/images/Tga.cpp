#include "platform/images/Decoders.h"
#include "platform/images/PixelMasks.h"
#include "platform/images/SizeProof.h"

#include <algorithm>
#include <array>

namespace ql::images {
namespace {

using host::ByteReader;
using host::Fault;
using host::FileFault;

constexpr std::uint32_t kHeaderBytes = 18, kFooterBytes = 26;
constexpr std::string_view kSignature("TRUEVISION-XFILE.\0", 18);  // ends the footer of newer files

enum class Kind : std::uint8_t { Indexed = 1, Color = 2, Grey = 3 };

struct Header {
  Kind kind{};
  bool packed = false;
  std::uint32_t width = 0, height = 0, bits = 0, alphaBits = 0;
  bool fromTop = false, fromRight = false;
  std::uint32_t paletteFirst = 0, paletteCount = 0, paletteBits = 0;  ///< of the colour map, 0 without one
  std::uint64_t paletteAt = 0, dataAt = 0;

  std::size_t pixelBytes() const { return (bits + 7) / 8; }
};

bool isColorDepth(std::uint32_t bits) { return bits == 15 || bits == 16 || bits == 24 || bits == 32; }

bool knownDepth(const Header& h) {
  switch (h.kind) {
    case Kind::Indexed:
      return h.bits == 8 || h.bits == 15 || h.bits == 16;
    case Kind::Color:
      return isColorDepth(h.bits);
    case Kind::Grey:
      return h.bits == 8 || h.bits == 16;
  }
  return false;
}

Header readHeader(const ByteReader& file) {
  file.range(0, kHeaderBytes, "Targa header");
  Header h;
  const auto idLength = file.at<std::uint8_t>(0, "identification length");
  const auto mapType = file.at<std::uint8_t>(1, "colour map type");
  const auto type = file.at<std::uint8_t>(2, "picture type");
  const auto descriptor = file.at<std::uint8_t>(17, "descriptor");
  if (mapType > 1) throw FileFault(Fault::BadIdentifier, "colour map type", 1, mapType, 1);
  h.packed = (type & 8) != 0;
  const std::uint32_t kind = type & ~8u;
  if (kind < 1 || kind > 3) throw FileFault(Fault::BadIdentifier, "picture type", 2, type, 11);
  h.kind = static_cast<Kind>(kind);
  h.width = file.at<std::uint16_t>(12, "width");
  h.height = file.at<std::uint16_t>(14, "height");
  h.bits = file.at<std::uint8_t>(16, "bits per pixel");
  h.alphaBits = descriptor & 15;
  h.fromRight = (descriptor & 0x10) != 0;
  h.fromTop = (descriptor & 0x20) != 0;
  if (!knownDepth(h)) throw FileFault(Fault::BadSize, "bits per pixel", 16, h.bits, 32);
  if ((descriptor & 0xC0) != 0) throw FileFault(Fault::Unsupported, "interleaved rows", 17, descriptor, 0x3F);
  // A run packet stands for at most 128 pixels in two bytes; bare pixels are proven by their bytes.
  proveSize(h.width, h.height, file.size(), h.packed ? 64 : 1);

  h.paletteAt = std::uint64_t{kHeaderBytes} + idLength;
  h.dataAt = h.paletteAt;
  if (mapType == 1) {
    h.paletteFirst = file.at<std::uint16_t>(3, "first colour");
    h.paletteCount = file.at<std::uint16_t>(5, "colour count");
    h.paletteBits = file.at<std::uint8_t>(7, "bits per colour");
    if (h.paletteCount != 0 && !isColorDepth(h.paletteBits))
      throw FileFault(Fault::BadSize, "bits per colour", 7, h.paletteBits, 32);
    h.dataAt += std::uint64_t{h.paletteCount} * ((h.paletteBits + 7) / 8);
  } else if (h.kind == Kind::Indexed) {
    throw FileFault(Fault::BadReference, "colour map of an indexed picture", 1, mapType, 1);
  }
  return h;
}

/// One colour of 15 to 32 bits. 15 bits have no alpha; the top bit of 16 counts only when the file declares it.
std::uint32_t readColor(const std::byte* at, std::uint32_t bits, bool alpha) {
  switch (bits) {
    case 24:
      return 0xFF000000u | readPixel(at, 3);
    case 32:
      return readPixel(at, 4);
    default:
      return fromA1R5G5B5(readPixel(at, 2)) | (alpha && bits == 16 ? 0u : 0xFF000000u);
  }
}

/// The colours of indices from 0 on; indices outside are opaque black.
std::vector<std::uint32_t> readPalette(const ByteReader& file, const Header& h) {
  std::vector<std::uint32_t> palette;
  const std::size_t entry = (h.paletteBits + 7) / 8;
  const auto bytes = file.range(h.paletteAt, std::uint64_t{h.paletteCount} * entry, "colour map");
  palette.assign(std::size_t{h.paletteFirst} + h.paletteCount, 0xFF000000u);
  for (std::size_t i = 0; i < h.paletteCount; ++i)
    palette[h.paletteFirst + i] = readColor(&bytes[i * entry], h.paletteBits, h.alphaBits == 1);
  return palette;
}

/// Hands out the pixels' bytes in file order, expanding run packets, which may cross row ends.
class PixelSource {
 public:
  PixelSource(const ByteReader& file, const Header& h)
      : file_(file), at_(h.dataAt), size_(h.pixelBytes()), packed_(h.packed) {}

  void fill(std::span<std::byte> row) {
    while (!row.empty()) {
      if (left_ == 0) nextPacket();
      const std::size_t pixels = std::min(left_, row.size() / size_);
      const std::size_t bytes = pixels * size_;
      if (run_) {
        for (std::size_t i = 0; i < bytes; i += size_) std::copy_n(value_.begin(), size_, &row[i]);
      } else {
        std::ranges::copy(file_.range(at_, bytes, "pixels"), row.begin());
        at_ += bytes;
      }
      left_ -= pixels;
      row = row.subspan(bytes);
    }
  }

 private:
  void nextPacket() {
    if (!packed_) {  // the whole picture is one packet of bare pixels
      left_ = SIZE_MAX;
      return;
    }
    const auto head = file_.at<std::uint8_t>(at_++, "run packet");
    run_ = (head & 0x80) != 0;
    left_ = (head & 0x7Fu) + 1;
    if (!run_) return;
    std::ranges::copy(file_.range(at_, size_, "run packet"), value_.begin());
    at_ += size_;
  }

  const ByteReader& file_;
  std::uint64_t at_;
  std::size_t size_;
  bool packed_, run_ = false;
  std::size_t left_ = 0;
  std::array<std::byte, 4> value_{};
};

void convertRow(std::span<const std::byte> row, std::span<std::uint32_t> out, const Header& h,
                std::span<const std::uint32_t> palette) {
  const std::size_t size = h.pixelBytes();
  if (h.kind == Kind::Indexed) {
    for (std::size_t x = 0; x < out.size(); ++x) {
      const std::uint32_t index = readPixel(&row[x * size], size);
      out[x] = index < palette.size() ? palette[index] : 0xFF000000u;
    }
  } else if (h.kind == Kind::Grey) {
    for (std::size_t x = 0; x < out.size(); ++x) {
      const auto grey = std::to_integer<std::uint32_t>(row[x * size]);
      const std::uint32_t alpha = size == 2 ? std::to_integer<std::uint32_t>(row[x * size + 1]) : 255u;
      out[x] = alpha << 24 | grey * 0x010101u;
    }
  } else if (h.bits == 24) {
    for (std::size_t x = 0; x < out.size(); ++x) out[x] = 0xFF000000u | readPixel(&row[x * 3], 3);
  } else {
    for (std::size_t x = 0; x < out.size(); ++x) out[x] = readColor(&row[x * size], h.bits, h.alphaBits == 1);
  }
}

bool carriesAlpha(const Header& h) {
  const std::uint32_t bits = h.kind == Kind::Indexed ? h.paletteBits : h.bits;
  if (h.kind == Kind::Grey) return bits == 16;
  return bits == 32 || (bits == 16 && h.alphaBits == 1);
}

/// Writers that leave the alpha count at 0 may still store alpha in the fourth byte, or leave that byte zero: then
/// nothing would be visible, and the picture is meant to be opaque.
void repairAlpha(const Header& h, Image& image) {
  if (h.alphaBits != 0 || std::ranges::any_of(image.pixels, [](std::uint32_t p) { return p >> 24 != 0; })) return;
  for (std::uint32_t& pixel : image.pixels) pixel |= 0xFF000000u;
  image.hasAlpha = false;
}

}  // namespace

bool endsAsTga(const ByteReader& file) {
  if (file.size() < kHeaderBytes + kFooterBytes) return false;
  const auto end = file.range(file.size() - kSignature.size(), kSignature.size(), "footer");
  return std::memcmp(end.data(), kSignature.data(), kSignature.size()) == 0;
}

ImageInfo inspectTga(const ByteReader& file) {
  const Header h = readHeader(file);
  return {.format = ImageFormat::Tga,
          .width = h.width,
          .height = h.height,
          .bitsPerPixel = h.bits,
          .mipLevels = 1,
          .compressed = h.packed};
}

Image decodeTga(const ByteReader& file) {
  const Header h = readHeader(file);
  const std::vector<std::uint32_t> palette = readPalette(file, h);
  const std::size_t rowBytes = h.width * h.pixelBytes();
  if (!h.packed) file.range(h.dataAt, std::uint64_t{rowBytes} * h.height, "pixels");
  Image image = blankImage(h.width, h.height);
  image.hasAlpha = carriesAlpha(h);
  PixelSource source(file, h);
  std::vector<std::byte> row(rowBytes);
  for (std::uint32_t y = 0; y < h.height; ++y) {
    source.fill(row);
    const std::span out(&image.at(0, h.fromTop ? y : h.height - 1 - y), h.width);
    convertRow(row, out, h, palette);
    if (h.fromRight) std::ranges::reverse(out);
  }
  if (image.hasAlpha) repairAlpha(h, image);
  return image;
}

}  // namespace ql::images
