/// @file
/// Pictures in memory and the decoding of picture files.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace ql::images {

/// The largest width and height that decoders accept, pixels.
inline constexpr std::uint32_t kMaxSide = 16384;

/// A picture: rows from top to bottom, each pixel packed 0xAARRGGBB.
struct Image {
  std::uint32_t width = 0, height = 0;
  std::vector<std::uint32_t> pixels;
  bool hasAlpha = false;  ///< the file carried an alpha channel

  std::uint32_t& at(std::uint32_t x, std::uint32_t y) { return pixels[std::size_t{y} * width + x]; }
  std::uint32_t at(std::uint32_t x, std::uint32_t y) const { return pixels[std::size_t{y} * width + x]; }
};

enum class ImageFormat { Bmp, Jpg, Tga, Png, Dds };
struct ImageInfo {
  ImageFormat format{};
  std::uint32_t width = 0, height = 0;
  std::uint32_t bitsPerPixel = 0;  ///< of the stored pixels
  std::uint32_t mipLevels = 1;     ///< levels that the header promises
  bool compressed = false;
};

/// Format, size and depth from the header alone. The contents decide; the name's ending serves only for TGA, which has
/// no identifier. @throws host::FileFault
ImageInfo inspect(std::span<const std::byte> file, std::string_view name);

/// Decodes BMP, JPG (baseline and progressive), TGA, PNG or DDS (DXT1 to DXT5, uncompressed; the largest level).
/// Damaged files fault, cut-off ones included; a picture that the file cannot hold faults before its pixels are
/// allocated (SizeProof.h has the bounds; every texture up to 4096 × 4096 passes them). Colours are as stored: no
/// gamma, no profiles.
/// @throws host::FileFault
Image decode(std::span<const std::byte> file, std::string_view name);
/// All stored levels, largest first: one for every format but DDS. Smaller levels that a DDS file promises but does not
/// hold are left out. @throws host::FileFault
std::vector<Image> decodeLevels(std::span<const std::byte> file, std::string_view name);

/// 24 bits, or 32 when the picture has alpha. @throws std::runtime_error for an empty picture
std::vector<std::byte> encodePng(const Image& image);
/// 24-bit bottom-up BMP: the 54-byte header, rows unpadded, resolution fields 50.
std::vector<std::byte> encodeBmp(const Image& image);

/// Scales by area averaging when shrinking and linearly when growing.
Image resample(const Image& image, std::uint32_t width, std::uint32_t height);
/// Half size in both directions (at least 1), by averaging 2 × 2 pixels; the last column or row of an odd size is
/// dropped.
Image halve(const Image& image);

}  // namespace ql::images
