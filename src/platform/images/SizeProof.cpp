#include "platform/images/SizeProof.h"

#include "platform/host/Fault.h"

#include <algorithm>

namespace ql::images {

void proveSize(std::uint64_t width, std::uint64_t height, std::uint64_t fileSize, std::uint64_t pixelsPerByte) {
  using host::Fault;
  using host::FileFault;
  if (width == 0 || width > kMaxSide) throw FileFault(Fault::BadSize, "picture width", 0, width, kMaxSide);
  if (height == 0 || height > kMaxSide) throw FileFault(Fault::BadSize, "picture height", 0, height, kMaxSide);
  const std::uint64_t pixels = width * height;
  const std::uint64_t bytes = pixels * sizeof(std::uint32_t);
  if (bytes > kFreeBytes + 4 * fileSize)
    throw FileFault(Fault::TooLarge, "bytes of decoded pixels", 0, bytes, kFreeBytes + 4 * fileSize);
  const std::uint64_t plausible = std::max(kFreePixels, pixelsPerByte * fileSize);
  if (pixels > plausible) throw FileFault(Fault::TooLarge, "pixels in a file of this size", 0, pixels, plausible);
}

Image blankImage(std::uint32_t width, std::uint32_t height) {
  Image image{.width = width, .height = height, .pixels = {}, .hasAlpha = false};
  image.pixels.assign(std::size_t{width} * height, 0xFF000000u);
  return image;
}

}  // namespace ql::images
