/// @file
/// Small picture files made in memory, from their fields.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace ql::test {

/// A file being written, little-endian.
class FileBytes {
 public:
  FileBytes& put(std::uint64_t value, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) bytes_.push_back(static_cast<std::byte>(value >> (8 * i)));
    return *this;
  }
  FileBytes& u8(std::uint64_t v) { return put(v, 1); }
  FileBytes& u16(std::uint64_t v) { return put(v, 2); }
  FileBytes& u32(std::uint64_t v) { return put(v, 4); }
  FileBytes& big32(std::uint64_t v) { return u8(v >> 24).u8(v >> 16).u8(v >> 8).u8(v); }
  FileBytes& text(std::string_view text) {
    for (const char c : text) bytes_.push_back(static_cast<std::byte>(c));
    return *this;
  }
  FileBytes& zeros(std::size_t count) {
    bytes_.resize(bytes_.size() + count);
    return *this;
  }
  FileBytes& add(std::span<const std::byte> more) {
    bytes_.insert(bytes_.end(), more.begin(), more.end());
    return *this;
  }
  std::vector<std::byte> take() { return std::move(bytes_); }

 private:
  std::vector<std::byte> bytes_;
};

/// Bytes from numbers, for pixel data in tables.
inline std::vector<std::byte> raw(std::initializer_list<int> values) {
  std::vector<std::byte> out;
  for (const int v : values) out.push_back(static_cast<std::byte>(v));
  return out;
}

struct BmpFields {
  std::int32_t width = 2, height = 2;
  std::uint32_t bits = 24, compression = 0, colorsUsed = 0, imageSize = 0;
  std::vector<std::uint32_t> palette = {};  ///< 0x00RRGGBB
  std::vector<std::uint32_t> masks = {};    ///< between header and palette
  bool coreHeader = false;                  ///< the 12-byte header, palette entries of 3 bytes
};

inline std::vector<std::byte> bmpFile(const BmpFields& f, std::span<const std::byte> data) {
  FileBytes body;
  if (f.coreHeader) {
    body.u32(12).u16(static_cast<std::uint16_t>(f.width)).u16(static_cast<std::uint16_t>(f.height)).u16(1).u16(f.bits);
  } else {
    body.u32(40).u32(static_cast<std::uint32_t>(f.width)).u32(static_cast<std::uint32_t>(f.height)).u16(1).u16(f.bits);
    body.u32(f.compression).u32(f.imageSize).zeros(8).u32(f.colorsUsed).u32(0);
  }
  for (const std::uint32_t mask : f.masks) body.u32(mask);
  for (const std::uint32_t color : f.palette) body.put(color, f.coreHeader ? 3 : 4);
  const std::vector<std::byte> head = body.take();
  const std::size_t dataAt = 14 + head.size();
  return FileBytes().text("BM").u32(dataAt + data.size()).u32(0).u32(dataAt).add(head).add(data).take();
}

struct TgaFields {
  std::uint32_t type = 2, width = 2, height = 2, bits = 24;
  std::uint32_t descriptor = 0;  ///< alpha bits; 16: from the right; 32: from the top
  std::uint32_t paletteFirst = 0, paletteCount = 0, paletteBits = 0;
};

inline std::vector<std::byte> tgaFile(const TgaFields& f, std::span<const std::byte> data) {
  return FileBytes()
      .u8(0)
      .u8(f.paletteBits != 0 ? 1 : 0)
      .u8(f.type)
      .u16(f.paletteFirst)
      .u16(f.paletteCount)
      .u8(f.paletteBits)
      .u32(0)
      .u16(f.width)
      .u16(f.height)
      .u8(f.bits)
      .u8(f.descriptor)
      .add(data)
      .take();
}

struct DdsFields {
  std::uint32_t width = 4, height = 4, levels = 1, flags = 4;
  std::string_view code = {};  ///< "DXT1" and so on, with flags 4
  std::uint32_t bits = 0;
  std::uint32_t red = 0, green = 0, blue = 0, alpha = 0;
  std::uint32_t caps2 = 0;
};

inline std::vector<std::byte> ddsFile(const DdsFields& f, std::span<const std::byte> data) {
  FileBytes file;
  file.text("DDS ").u32(124).u32(0x1007).u32(f.height).u32(f.width).u32(0).u32(0).u32(f.levels).zeros(44);
  file.u32(32).u32(f.flags);
  if (f.code.empty())
    file.u32(0);
  else
    file.text(f.code);
  file.u32(f.bits).u32(f.red).u32(f.green).u32(f.blue).u32(f.alpha).u32(0x1000).u32(f.caps2).zeros(12);
  return file.add(data).take();
}

}  // namespace ql::test
