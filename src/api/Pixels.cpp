#include "api/Pixels.h"

#include <cstddef>
#include <cstring>

namespace ql::api {

std::vector<std::uint32_t> readPixels(device::Surface& surface) {
  const device::SurfaceDescription description = surface.description();
  const std::vector<std::byte> stored = surface.read({0, 0, description.width, description.height});
  const std::size_t size = device::bytesPerPixel(description.format);
  std::vector<std::uint32_t> pixels(std::size_t{description.width} * description.height);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    std::uint32_t value = 0;
    std::memcpy(&value, stored.data() + i * size, size);
    pixels[i] = device::toArgb(description.format, value);
  }
  return pixels;
}

}  // namespace ql::api
