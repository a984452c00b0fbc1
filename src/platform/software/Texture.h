/// @file
/// Textures as the pixel work reads them.
#pragma once

#include "platform/device/BackEnd.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ql::software {

inline constexpr std::uint32_t kMaxLevels = 13;  ///< 4096 down to 1

/// Texels are stored with the top bit of every byte flipped: as signed numbers around 0 they suit multiply-adds of
/// bytes.
inline constexpr std::uint32_t kTexelFlip = 0x80808080;

/// One level: rows of width + 1 texels and one more row, the additions repeating column 0 and row 0, so that two
/// neighbours of a wrapped texture always lie side by side.
struct TextureLevel {
  std::uint32_t width = 1, height = 1;
  std::uint32_t stride = 2;  ///< texels from row to row
  std::size_t offset = 0;    ///< of the first texel in TextureData::texels
};

/// The texels of all levels as flipped 0xAARRGGBB. It is the only copy: formats of 16 bits and less expand by repeating
/// bits, which reading back inverts exactly; bits that a format leaves unused come back as ones (X8) or zeros.
struct TextureData {
  std::array<TextureLevel, kMaxLevels> levels;
  std::uint32_t levelCount = 1;
  std::vector<std::uint32_t> texels;
};

/// A texture of the device. Draws that wait hold its data; what changes it meanwhile changes a copy.
class Texture {
 public:
  explicit Texture(const device::TextureDescription& description);

  const device::TextureDescription& description() const { return description_; }
  std::shared_ptr<const TextureData> data() const { return data_; }
  std::uint32_t levels() const { return data_->levelCount; }
  const TextureLevel& level(std::uint32_t index) const { return data_->levels[index]; }

  void upload(std::uint32_t level, std::span<const std::byte> pixels);
  std::vector<std::byte> read(std::uint32_t level) const;

  /// The level's first texel for writing; nobody else sees the writes until they ask for data() again.
  std::uint32_t* writable(std::uint32_t level);
  /// Repeats the first column and row of a level that was written.
  void wrapEdges(std::uint32_t level);

 private:
  device::TextureDescription description_;
  std::shared_ptr<TextureData> data_;
};

}  // namespace ql::software
