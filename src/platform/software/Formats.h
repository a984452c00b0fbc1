/// @file
/// Rows of pixels between a format's bytes and 0xAARRGGBB.
#pragma once

#include "platform/device/Constants.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ql::software {

/// Converts rows of one format.
class FormatCodec {
 public:
  /// @throws device::DeviceError for formats that no surface has
  explicit FormatCodec(device::Format format);

  std::uint32_t bytes() const { return bytes_; }  ///< of one pixel
  void decode(std::span<const std::byte> pixels, std::span<std::uint32_t> argb) const;
  void encode(std::span<const std::uint32_t> argb, std::span<std::byte> pixels) const;

 private:
  device::Format format_;
  std::uint32_t bytes_;
};

/// How a target's format stores colours: bits per channel, and whether it stores alpha.
struct TargetBits {
  std::uint16_t red = 8, green = 8, blue = 8, alpha = 8;  ///< alpha 0: reads as 255
  bool sixteen() const { return red != 8; }
};
TargetBits targetBits(device::Format format);

}  // namespace ql::software
