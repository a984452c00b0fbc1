#include "Picture.h"

#include "Failure.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include <fmt/format.h>
#include <png.h>

namespace walk {
namespace {

constexpr std::uint32_t kSmallWidth = 256, kGap = 4;  // pixels
constexpr std::uint32_t kSheetColor = 0x202020;

/// Averages the pixels under each pixel of the smaller picture.
Picture shrink(const Picture& picture, std::uint32_t width, std::uint32_t height) {
  Picture small{width, height, std::vector<std::uint32_t>(std::size_t{width} * height)};
  const auto edge = [](std::uint32_t i, std::uint32_t count, std::uint32_t size) {
    return static_cast<std::uint32_t>(std::uint64_t{i} * size / count);
  };
  for (std::uint32_t y = 0; y < height; ++y) {
    const std::uint32_t top = edge(y, height, picture.height);
    const std::uint32_t bottom = std::max(edge(y + 1, height, picture.height), top + 1);
    for (std::uint32_t x = 0; x < width; ++x) {
      const std::uint32_t left = edge(x, width, picture.width);
      const std::uint32_t right = std::max(edge(x + 1, width, picture.width), left + 1);
      std::uint64_t red = 0, green = 0, blue = 0;
      for (std::uint32_t v = top; v < bottom; ++v)
        for (std::uint32_t u = left; u < right; ++u) {
          const std::uint32_t pixel = picture.pixels[std::size_t{v} * picture.width + u];
          red += pixel >> 16 & 255;
          green += pixel >> 8 & 255;
          blue += pixel & 255;
        }
      const std::uint64_t count = std::uint64_t{bottom - top} * (right - left);
      small.pixels[std::size_t{y} * width + x] =
          static_cast<std::uint32_t>(red / count << 16 | green / count << 8 | blue / count);
    }
  }
  return small;
}

}  // namespace

void writePng(const std::filesystem::path& file, const Picture& picture) {
  std::vector<std::uint8_t> bytes(picture.pixels.size() * 3);
  for (std::size_t i = 0; i < picture.pixels.size(); ++i)
    for (std::size_t c = 0; c < 3; ++c) bytes[i * 3 + c] = static_cast<std::uint8_t>(picture.pixels[i] >> (16 - 8 * c));
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = picture.width;
  image.height = picture.height;
  image.format = PNG_FORMAT_RGB;
  if (!png_image_write_to_file(&image, file.c_str(), 0, bytes.data(), 0, nullptr))
    throw Failure(ExitCode::Unreadable, fmt::format("cannot write {}: {}", file.string(), image.message));
}

void ContactSheet::add(const Picture& picture) {
  const std::uint32_t width = std::min(kSmallWidth, picture.width);
  const auto height = static_cast<std::uint32_t>(std::uint64_t{picture.height} * width / picture.width);
  small_.push_back(shrink(picture, width, std::max(height, 1u)));
}

Picture ContactSheet::sheet() const {
  const std::uint32_t width = small_.front().width, height = small_.front().height;
  const auto count = static_cast<std::uint32_t>(small_.size());
  const auto columns = static_cast<std::uint32_t>(std::ceil(std::sqrt(static_cast<double>(count))));
  const std::uint32_t rows = (count + columns - 1) / columns;
  Picture sheet{columns * (width + kGap) + kGap, rows * (height + kGap) + kGap, {}};
  sheet.pixels.assign(std::size_t{sheet.width} * sheet.height, kSheetColor);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t left = kGap + i % columns * (width + kGap), top = kGap + i / columns * (height + kGap);
    for (std::uint32_t y = 0; y < height; ++y)
      std::copy_n(small_[i].pixels.begin() + static_cast<std::ptrdiff_t>(std::size_t{y} * width), width,
                  sheet.pixels.begin() + static_cast<std::ptrdiff_t>((top + y) * sheet.width + left));
  }
  return sheet;
}

}  // namespace walk
