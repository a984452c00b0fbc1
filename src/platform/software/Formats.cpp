#include "platform/software/Formats.h"

#include "platform/device/Resources.h"

#include <cstring>

namespace ql::software {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;

}  // namespace

FormatCodec::FormatCodec(device::Format format) : format_(format), bytes_(device::bytesPerPixel(format)) {
  if (bytes_ > 2) return;
  for (std::uint32_t i = 0; i < 256; ++i) {
    low_[i] = device::toArgb(format, i);
    if (bytes_ == 2) high_[i] = device::toArgb(format, i << 8);
  }
}

void FormatCodec::decode(std::span<const std::byte> pixels, std::span<std::uint32_t> argb) const {
  const std::byte* p = pixels.data();
  const auto at = [&p](std::size_t i) { return std::to_integer<std::uint32_t>(p[i]); };
  const std::uint32_t fill = format_ == device::Format::A8R8G8B8 ? 0 : kOpaque;
  switch (bytes_) {
    case 4:
      std::memcpy(argb.data(), p, argb.size_bytes());
      for (std::uint32_t& pixel : argb) pixel |= fill;
      break;
    case 3:
      for (std::uint32_t& pixel : argb) {
        pixel = kOpaque | at(2) << 16 | at(1) << 8 | at(0);
        p += 3;
      }
      break;
    case 2:
      for (std::uint32_t& pixel : argb) {
        pixel = low_[at(0)] | high_[at(1)];
        p += 2;
      }
      break;
    default:
      for (std::uint32_t& pixel : argb) pixel = low_[at(0)], ++p;
  }
}

void FormatCodec::encode(std::span<const std::uint32_t> argb, std::span<std::byte> pixels) const {
  if (bytes_ == 4) {
    std::memcpy(pixels.data(), argb.data(), argb.size_bytes());
    return;
  }
  std::byte* p = pixels.data();
  for (const std::uint32_t pixel : argb) {
    const std::uint32_t value = bytes_ == 3 ? pixel & ~kOpaque : device::fromArgb(format_, pixel);
    for (std::uint32_t i = 0; i < bytes_; ++i) *p++ = static_cast<std::byte>(value >> (i * 8) & 255);
  }
}

TargetBits targetBits(device::Format format) {
  switch (format) {
    case device::Format::R5G6B5:
      return {5, 6, 5, 0};
    case device::Format::X1R5G5B5:
      return {5, 5, 5, 0};
    case device::Format::A1R5G5B5:
      return {5, 5, 5, 1};
    case device::Format::A8R8G8B8:
      return {8, 8, 8, 8};
    default:
      return {8, 8, 8, 0};
  }
}

}  // namespace ql::software
