#include "platform/host/Files.h"
#include "platform/utility/Pixels.h"
#include "platform/utility/TextureFiles.h"

namespace ql::utility {
namespace {

/// A picture file of 565 pixels has no rounding: each channel's bits move up and the free ones stay 0, so that white is
/// (248, 252, 248). Other formats give their full values.
std::vector<std::byte> bitmap(std::span<const std::byte> pixels, const device::SurfaceDescription& size) {
  if (size.format != device::Format::R5G6B5)
    return images::encodeBmp(
        imageFromPixels(pixels, std::uint64_t{size.width} * device::bytesPerPixel(size.format), size));
  images::Image image{size.width, size.height, {}, false};
  image.pixels.reserve(pixels.size() / 2);
  for (std::size_t i = 0; i + 1 < pixels.size(); i += 2) {
    const auto low = std::to_integer<std::uint32_t>(pixels[i]), high = std::to_integer<std::uint32_t>(pixels[i + 1]);
    const std::uint32_t blue = (low & 31) * 8, green = (high & 7) * 32 + (low >> 3 & 28), red = high & 248;
    image.pixels.push_back(red << 16 | green << 8 | blue);
  }
  return images::encodeBmp(image);
}

}  // namespace

std::vector<std::byte> bitmapFromSurface(device::Surface& surface) {
  const device::SurfaceDescription size = surface.description();
  return bitmap(surface.read({0, 0, size.width, size.height}), size);
}

void saveTextureToFile(const std::string& fileName, const device::Texture& texture) {
  host::writeFile(fileName, bitmap(texture.readLevel(0), texture.levelDescription(0)));
}

}  // namespace ql::utility
