#include "platform/images/Image.h"

#include <stdexcept>

#include <png.h>

namespace ql::images {
namespace {

void put(std::vector<std::byte>& out, std::uint32_t value, std::uint32_t bytes) {
  for (std::uint32_t i = 0; i < bytes; ++i) out.push_back(static_cast<std::byte>(value >> (8 * i)));
}

std::vector<std::byte> blueGreenRed(const Image& image, bool bottomUp) {
  std::vector<std::byte> out;
  out.reserve(image.pixels.size() * 3);
  for (std::uint32_t y = 0; y < image.height; ++y)
    for (std::uint32_t x = 0; x < image.width; ++x) put(out, image.at(x, bottomUp ? image.height - 1 - y : y), 3);
  return out;
}

}  // namespace

std::vector<std::byte> encodeBmp(const Image& image) {
  constexpr std::uint32_t kHeaders = 54, kInfoHeader = 40, kResolution = 50;
  const std::vector<std::byte> rows = blueGreenRed(image, true);
  const auto size = static_cast<std::uint32_t>(rows.size());
  std::vector<std::byte> out;
  out.reserve(kHeaders + rows.size());
  put(out, 'B' | 'M' << 8, 2);
  put(out, kHeaders + size, 4);
  put(out, 0, 4);  // reserved
  put(out, kHeaders, 4);
  put(out, kInfoHeader, 4);
  put(out, image.width, 4);
  put(out, image.height, 4);
  put(out, 1, 2);   // planes
  put(out, 24, 2);  // bits per pixel
  put(out, 0, 4);   // no compression
  put(out, size, 4);
  put(out, kResolution, 4);
  put(out, kResolution, 4);
  put(out, 0, 4);  // colours used
  put(out, 0, 4);  // colours that matter
  out.insert(out.end(), rows.begin(), rows.end());
  return out;
}

std::vector<std::byte> encodePng(const Image& image) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = image.width;
  png.height = image.height;
  png.format = image.hasAlpha ? PNG_FORMAT_BGRA : PNG_FORMAT_BGR;
  const std::vector<std::byte> opaque = image.hasAlpha ? std::vector<std::byte>() : blueGreenRed(image, false);
  const void* pixels = image.hasAlpha ? static_cast<const void*>(image.pixels.data()) : opaque.data();
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png);
  std::vector<std::byte> out(size);
  if (png_image_write_to_memory(&png, out.data(), &size, 0, pixels, 0, nullptr) == 0)
    throw std::runtime_error(std::string("a picture of ") + std::to_string(image.width) + " x " +
                             std::to_string(image.height) + " cannot be written as PNG: " + png.message);
  out.resize(size);
  return out;
}

}  // namespace ql::images
