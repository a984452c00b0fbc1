#include "platform/utility/TextureFiles.h"

#include "platform/host/Files.h"
#include "platform/utility/Pixels.h"

#include <algorithm>
#include <new>
#include <utility>

namespace ql::utility {
namespace {

using device::DeviceError;
using device::Format;
using images::Image;

// Formats that no texture has, by their numbers, and the nearest that textures have. All others become A8R8G8B8.
constexpr std::pair<std::uint32_t, Format> kNearest[] = {
    {20, Format::X8R8G8B8},  // R8G8B8
    {27, Format::R5G6B5},    // R3G3B2
    {52, Format::A8L8},      // A4L4
};

Format nearestFormat(Format asked, bool target) {
  if (target) {
    if (device::isTargetFormat(asked)) return asked;
    const bool opaque = asked == Format::X4R4G4B4 || asked == Format::L8 || asked == Format::R8G8B8;
    return opaque ? Format::X8R8G8B8 : Format::A8R8G8B8;
  }
  if (device::isTextureFormat(asked)) return asked;
  for (const auto& [number, format] : kNearest)
    if (number == static_cast<std::uint32_t>(asked)) return format;
  return Format::A8R8G8B8;
}

std::uint32_t allowedSide(std::uint32_t asked, std::uint32_t largest) {
  constexpr std::uint32_t kDefault = 256, kAny = 0xFFFFFFFF;
  return std::min(asked == 0 || asked == kAny ? kDefault : asked, largest);
}

/// Carries a fault of the file on as the device's error.
template <class F>
auto asDeviceErrors(F&& load) {
  try {
    return load();
  } catch (const host::FileFault& fault) {
    throw DeviceError(fault.id == host::Fault::Missing ? device::kErrorNotFound : device::kErrorInvalidData,
                      fault.what());
  } catch (const std::bad_alloc&) {
    throw DeviceError(device::kErrorOutOfMemory, "not enough memory for the picture");
  }
}

/// The levels of a texture: those that the file stores when they fit, else made from the largest.
std::vector<Image> levelsFor(const std::vector<Image>& stored, const TextureRequirements& size, std::uint32_t key) {
  Image first = stored.front();
  if (!first.hasAlpha)
    for (std::uint32_t& pixel : first.pixels) pixel |= 0xFF000000;
  const bool keyed = key != 0 && applyColorKey(first, key);
  const bool sameSize = first.width == size.width && first.height == size.height;
  if (keyed || !sameSize || stored.size() == 1)
    return mipChain(scaled(std::move(first), size.width, size.height, keyed), size.levels, keyed);
  std::vector<Image> levels(stored.begin(),
                            stored.begin() + std::min<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(stored.size()),
                                                                      static_cast<std::ptrdiff_t>(size.levels)));
  while (levels.size() < size.levels) levels.push_back(images::halve(levels.back()));
  return levels;
}

}  // namespace

TextureRequirements checkTextureRequirements(const device::Device& device, TextureRequirements asked) {
  const device::Capabilities& caps = device.capabilities();
  asked.width = allowedSide(asked.width, caps.maxTextureWidth);
  asked.height = allowedSide(asked.height, caps.maxTextureHeight);
  const std::uint32_t full = device::fullLevelCount(asked.width, asked.height);
  asked.levels = asked.levels == 0 ? full : std::min(asked.levels, full);
  asked.format = nearestFormat(asked.format, (asked.usage & device::kUsageRenderTarget) != 0);
  return asked;
}

std::optional<PictureSize> pictureSize(const std::string& fileName) {
  try {
    const images::ImageInfo info = images::inspect(host::readFile(fileName), fileName);
    return PictureSize{info.width, info.height};
  } catch (const host::FileFault&) {
    return {};
  }
}

std::shared_ptr<device::Texture> createTextureFromFile(device::Device& device, const std::string& fileName,
                                                       const TextureFileOptions& options, PictureCache* cache) {
  return asDeviceErrors([&] {
    const Picture picture = cache ? cache->load(fileName) : loadPicture(fileName);
    const Image& largest = picture->front();
    TextureRequirements size;
    size.width = options.width > 0 ? static_cast<std::uint32_t>(options.width) : largest.width;
    size.height = options.height > 0 ? static_cast<std::uint32_t>(options.height) : largest.height;
    size.levels = options.levels;
    size.format = options.format;
    size = checkTextureRequirements(device, size);
    const std::vector<Image> levels = levelsFor(*picture, size, options.colorKey);
    auto texture = device.createTexture(size.width, size.height, size.levels, 0, size.format, options.pool);
    for (std::uint32_t level = 0; level < levels.size(); ++level)
      texture->writeLevel(level, pixelsFromImage(levels[level], size.format));
    return texture;
  });
}

void loadSurfaceFromMemory(device::Surface& surface, std::span<const std::byte> pixels, std::uint32_t pitch,
                           Format format, std::uint32_t width, std::uint32_t height) {
  const device::SurfaceDescription to = surface.description();
  const std::size_t bytes = std::size_t{width} * height * device::bytesPerPixel(format);
  if (to.width == width && to.height == height && to.format == format && std::size_t{pitch} * height == bytes &&
      pixels.size() >= bytes && !surface.locked())
    return surface.write({0, 0, width, height}, pixels.first(bytes));
  const Image image = scaled(imageFromPixels(pixels, pitch, {width, height, format}), to.width, to.height, false);
  if (surface.locked()) throw DeviceError(device::kErrorInvalidCall, "loading into a locked surface");
  surface.write({0, 0, to.width, to.height}, pixelsFromImage(image, to.format));
}

void loadSurfaceFromFile(device::Surface& surface, const std::string& fileName, std::uint32_t colorKey) {
  asDeviceErrors([&] {
    Image image = images::decode(host::readFile(fileName), fileName);
    if (!image.hasAlpha)
      for (std::uint32_t& pixel : image.pixels) pixel |= 0xFF000000;
    const bool keyed = colorKey != 0 && applyColorKey(image, colorKey);
    const device::SurfaceDescription to = surface.description();
    if (surface.locked()) throw DeviceError(device::kErrorInvalidCall, "loading into a locked surface");
    surface.write({0, 0, to.width, to.height},
                  pixelsFromImage(scaled(std::move(image), to.width, to.height, keyed), to.format));
  });
}

}  // namespace ql::utility
