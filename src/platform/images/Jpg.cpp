#include "platform/images/Decoders.h"
#include "platform/images/SizeProof.h"

#include <algorithm>
#include <array>
#include <memory>

#include <turbojpeg.h>

namespace ql::images {
namespace {

using host::ByteReader;
using host::Fault;
using host::FileFault;

/// More scans than any encoder writes: a progressive picture has at most 64 for each component.
constexpr std::uint32_t kMaxScans = 256;
/// One bit is the least that an 8 × 8 block of the finest component takes; components that are fine in one direction
/// each halve that.
constexpr std::uint64_t kPixelsPerByte = 1024;

struct Header {
  std::uint32_t width = 0, height = 0, components = 0;
  bool progressive = false;
  bool adobe = false;  ///< has the marker of a writer that stores four-colour samples inverted
};

std::uint32_t bigEndian16(const ByteReader& file, std::uint64_t at, const char* what) {
  const auto bytes = file.range(at, 2, what);
  return std::to_integer<std::uint32_t>(bytes[0]) << 8 | std::to_integer<std::uint32_t>(bytes[1]);
}

/// The position of the next marker from a position on, fill bytes skipped, and its code.
struct Marker {
  std::uint64_t at;
  std::uint8_t code;
};

/// Skips whatever is no marker: stuffed bytes and restart markers belong to the coded data.
Marker nextMarker(const ByteReader& file, std::uint64_t at) {
  const auto bytes = file.bytes();
  for (; at + 1 < bytes.size(); ++at) {
    if (bytes[at] != std::byte{0xFF}) continue;
    const auto code = std::to_integer<std::uint8_t>(bytes[at + 1]);
    const bool restart = code >= 0xD0 && code <= 0xD7;
    if (code != 0 && code != 0xFF && !restart) return {at, code};
  }
  throw FileFault(Fault::Truncated, "JPEG marker", at, file.size());
}

bool isFrame(std::uint8_t code) { return code >= 0xC0 && code <= 0xCF && code != 0xC4 && code != 0xC8 && code != 0xCC; }

bool isAdobe(const ByteReader& file, const Marker& marker) {
  constexpr std::string_view kName = "Adobe";
  if (marker.code != 0xEE || marker.at + 4 + kName.size() > file.size()) return false;
  return std::memcmp(&file.bytes()[marker.at + 4], kName.data(), kName.size()) == 0;
}

/// Walks the markers up to the end of the picture, so that a file that was cut off is known as such. @param toEnd false
/// stops at the frame header
Header readHeader(const ByteReader& file, bool toEnd) {
  Header h;
  std::uint32_t scans = 0;
  for (std::uint64_t at = 2;;) {
    const Marker marker = nextMarker(file, at);
    at = marker.at + 2;
    if (marker.code == 0xD9) break;                            // end of picture
    if (marker.code == 0x01 || marker.code == 0xD8) continue;  // these stand alone
    if (marker.code == 0xDA && ++scans > kMaxScans)
      throw FileFault(Fault::TooLarge, "JPEG scans", at, scans, kMaxScans);
    const std::uint32_t length = bigEndian16(file, at, "JPEG segment length");
    file.range(at, length, "JPEG segment");
    if (length < 2) throw FileFault(Fault::BadSize, "JPEG segment length", at, length, 2);
    h.adobe = h.adobe || isAdobe(file, marker);
    if (isFrame(marker.code) && h.width == 0) {
      file.range(at, 8, "JPEG frame");
      h.height = bigEndian16(file, at + 3, "height");
      h.width = bigEndian16(file, at + 5, "width");
      h.components = file.at<std::uint8_t>(at + 7, "component count");
      h.progressive = marker.code == 0xC2;
      const auto depth = file.at<std::uint8_t>(at + 2, "sample depth");
      if (depth != 8) throw FileFault(Fault::Unsupported, "sample depth", at + 2, depth, 8);
      proveSize(h.width, h.height, file.size(), kPixelsPerByte);
      if (!toEnd) return h;
    }
    at += length;
  }
  if (h.width == 0) throw FileFault(Fault::Truncated, "JPEG frame", file.size(), file.size());
  return h;
}

/// Four-colour samples as the library hands them out, ink amounts or (after the Adobe marker) their complements.
void fromInks(std::span<std::uint32_t> pixels, bool inverted) {
  for (std::uint32_t& pixel : pixels) {
    const std::uint32_t inks = inverted ? pixel : ~pixel;
    const std::uint32_t black = inks >> 24;
    const auto channel = [&](std::uint32_t shift) { return ((inks >> shift & 255) * black + 127) / 255; };
    pixel = 0xFF000000u | channel(0) << 16 | channel(8) << 8 | channel(16);
  }
}

struct Destroy {
  void operator()(void* handle) const { tjDestroy(handle); }
};

}  // namespace

ImageInfo inspectJpg(const ByteReader& file) {
  const Header h = readHeader(file, false);
  return {.format = ImageFormat::Jpg,
          .width = h.width,
          .height = h.height,
          .bitsPerPixel = h.components * 8,
          .mipLevels = 1,
          .compressed = true};
}

Image decodeJpg(const ByteReader& file) {
  const Header h = readHeader(file, true);
  const std::unique_ptr<void, Destroy> decoder(tjInitDecompress());
  if (!decoder) throw FileFault(Fault::Unsupported, "JPEG decoder");
  const auto* bytes = reinterpret_cast<const unsigned char*>(file.bytes().data());
  int width = 0, height = 0, sampling = 0, space = 0;
  if (tjDecompressHeader3(decoder.get(), bytes, file.size(), &width, &height, &sampling, &space) != 0 &&
      tjGetErrorCode(decoder.get()) == TJERR_FATAL)
    throw FileFault(Fault::BadEncoding, std::string("JPEG header: ") + tjGetErrorStr2(decoder.get()));
  if (width != static_cast<int>(h.width) || height != static_cast<int>(h.height))
    throw FileFault(Fault::BadSize, "JPEG frames of two sizes", 0, static_cast<std::uint64_t>(width), h.width);
  const bool inks = space == TJCS_CMYK || space == TJCS_YCCK;
  Image image = blankImage(h.width, h.height);
  const int status =
      tjDecompress2(decoder.get(), bytes, file.size(), reinterpret_cast<unsigned char*>(image.pixels.data()), width, 0,
                    height, inks ? TJPF_CMYK : TJPF_BGRA, TJFLAG_LIMITSCANS);
  // Warnings are what every decoder lives with: stray bytes between segments, a damaged block.
  if (status != 0 && tjGetErrorCode(decoder.get()) == TJERR_FATAL)
    throw FileFault(Fault::BadEncoding, std::string("JPEG data: ") + tjGetErrorStr2(decoder.get()));
  if (inks) fromInks(image.pixels, h.adobe);
  return image;
}

}  // namespace ql::images
