/// @file
/// PNG files made chunk by chunk, for kinds that the engine's own writer does not write.
#pragma once

#include "support/PictureFiles.h"

#include <string_view>

#include <zlib.h>

namespace ql::test {

struct PngFields {
  std::uint32_t width = 2, height = 1, depth = 8, colorType = 2;
  bool interlaced = false;
  std::vector<std::byte> palette = {};       ///< red, green, blue
  std::vector<std::byte> transparency = {};  ///< the tRNS chunk
};

inline void addChunk(FileBytes& file, std::string_view name, std::span<const std::byte> data) {
  const std::vector<std::byte> checked = FileBytes().text(name).add(data).take();
  const auto* bytes = reinterpret_cast<const Bytef*>(checked.data());
  file.big32(data.size()).add(checked).big32(crc32(0, bytes, static_cast<uInt>(checked.size())));
}

/// @param rows filter bytes and samples, uncompressed
inline std::vector<std::byte> pngFile(const PngFields& f, std::span<const std::byte> rows) {
  uLongf size = compressBound(static_cast<uLong>(rows.size()));
  std::vector<std::byte> packed(size);
  compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(rows.data()),
           static_cast<uLong>(rows.size()));
  packed.resize(size);
  FileBytes file;
  file.text("\x89PNG\r\n\x1A\n");
  const std::vector<std::byte> header =
      FileBytes().big32(f.width).big32(f.height).u8(f.depth).u8(f.colorType).u16(0).u8(f.interlaced ? 1 : 0).take();
  addChunk(file, "IHDR", header);
  if (!f.palette.empty()) addChunk(file, "PLTE", f.palette);
  if (!f.transparency.empty()) addChunk(file, "tRNS", f.transparency);
  addChunk(file, "IDAT", packed);
  addChunk(file, "IEND", {});
  return file.take();
}

}  // namespace ql::test
