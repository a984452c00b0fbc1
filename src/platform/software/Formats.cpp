#include "platform/software/Formats.h"

#include "platform/device/Resources.h"

#include <cstring>

namespace ql::software {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;

}  // namespace

FormatCodec::FormatCodec(device::Format format) : format_(format), bytes_(device::bytesPerPixel(format)) {}

void FormatCodec::decode(std::span<const std::byte> pixels, std::span<std::uint32_t> argb) const {
  if (bytes_ != 4) return device::toArgb(format_, pixels, argb);
  const std::uint32_t fill = format_ == device::Format::A8R8G8B8 ? 0 : kOpaque;
  std::memcpy(argb.data(), pixels.data(), argb.size_bytes());
  for (std::uint32_t& pixel : argb) pixel |= fill;
}

void FormatCodec::encode(std::span<const std::uint32_t> argb, std::span<std::byte> pixels) const {
  if (bytes_ != 4) return device::fromArgb(format_, argb, pixels);
  std::memcpy(pixels.data(), argb.data(), argb.size_bytes());
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
