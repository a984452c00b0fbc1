#include "platform/utility/Pixels.h"

#include "platform/device/DeviceError.h"

#include <algorithm>
#include <string>
#include <utility>

namespace ql::utility {
namespace {

using images::Image;

template <class F>
Image eachChannel(Image image, F&& f) {
  for (std::uint32_t& pixel : image.pixels) {
    const std::uint32_t alpha = pixel >> 24;
    std::uint32_t out = alpha << 24;
    for (std::uint32_t shift = 0; shift < 24; shift += 8) out |= f(pixel >> shift & 255, alpha) << shift;
    pixel = out;
  }
  return image;
}

// Colours times alpha: averages of these weigh every pixel by how much it shows.
Image premultiplied(Image image) {
  return eachChannel(std::move(image),
                     [](std::uint32_t value, std::uint32_t alpha) { return (value * alpha + 127) / 255; });
}

Image straight(Image image) {
  return eachChannel(std::move(image), [](std::uint32_t value, std::uint32_t alpha) {
    return alpha == 0 ? 0 : std::min((value * 255 + alpha / 2) / alpha, 255u);
  });
}

}  // namespace

Image imageFromPixels(std::span<const std::byte> pixels, std::uint64_t pitch, const device::SurfaceDescription& size) {
  const std::uint64_t row = std::uint64_t{size.width} * device::bytesPerPixel(size.format);
  const bool sides = size.width >= 1 && size.height >= 1 && size.width <= device::kMaxTargetSide &&
                     size.height <= device::kMaxTargetSide;
  // Sides up to 16384 and a pitch below 2^32 keep the product within 64 bits.
  if (!sides || pitch < row || pitch > UINT32_MAX || (size.height - 1) * pitch + row > pixels.size())
    throw device::DeviceError(device::kErrorInvalidCall, std::to_string(size.width) + " x " +
                                                             std::to_string(size.height) + " pixels with a pitch of " +
                                                             std::to_string(pitch) + " in " +
                                                             std::to_string(pixels.size()) + " bytes");
  Image image{size.width, size.height, {}, device::hasAlpha(size.format)};
  image.pixels.resize(std::size_t{size.width} * size.height);
  for (std::size_t y = 0; y < size.height; ++y)
    device::toArgb(size.format, pixels.subspan(static_cast<std::size_t>(y * pitch), static_cast<std::size_t>(row)),
                   std::span(image.pixels).subspan(y * size.width, size.width));
  return image;
}

std::vector<std::byte> pixelsFromImage(const Image& image, device::Format format) {
  std::vector<std::byte> pixels(image.pixels.size() * device::bytesPerPixel(format));
  device::fromArgb(format, image.pixels, pixels);
  return pixels;
}

bool applyColorKey(Image& image, std::uint32_t key) {
  constexpr std::uint32_t kOpaque = 0xFF000000;
  const std::uint32_t forced = image.hasAlpha ? 0 : kOpaque;
  bool any = false;
  for (std::uint32_t& pixel : image.pixels) {
    if ((pixel | forced) != key) continue;
    pixel = 0;
    any = true;
  }
  image.hasAlpha |= any;
  return any;
}

Image scaled(Image image, std::uint32_t width, std::uint32_t height, bool keyed) {
  if (image.width == width && image.height == height) return image;
  return keyed ? straight(images::resample(premultiplied(std::move(image)), width, height))
               : images::resample(image, width, height);
}

std::vector<Image> mipChain(Image image, std::uint32_t levels, bool keyed) {
  std::vector<Image> chain;
  chain.push_back(std::move(image));
  Image above = keyed ? premultiplied(chain.front()) : Image{};
  while (chain.size() < levels) {
    if (!keyed) {
      chain.push_back(images::halve(chain.back()));
      continue;
    }
    above = images::halve(above);
    chain.push_back(straight(above));
  }
  return chain;
}

}  // namespace ql::utility
