#include "level/Lightmap.h"

#include "platform/utility/TextureFiles.h"

#include <algorithm>

namespace ql::level {
namespace {

/// Lightmaps are dark by design: they are made for hardware that doubles them.
std::uint32_t brighten(std::byte channel) {
  constexpr std::uint32_t kGain = 32;
  return std::min(std::to_integer<std::uint32_t>(channel) + kGain, 255U);
}

}  // namespace

std::vector<std::byte> packLightmap(std::span<const std::byte> rgb) {
  std::vector<std::byte> packed;
  packed.reserve(rgb.size() / 3 * 2);
  for (std::size_t i = 0; i + 3 <= rgb.size(); i += 3) {
    const std::uint32_t r = brighten(rgb[i]), g = brighten(rgb[i + 1]), b = brighten(rgb[i + 2]);
    packed.push_back(static_cast<std::byte>((g & 0x1C) << 3 | b >> 3));
    packed.push_back(static_cast<std::byte>((r & 0xF8) | g >> 5));
  }
  return packed;
}

std::shared_ptr<device::Texture> createLightmapTexture(engine::EngineContext& context, std::span<const std::byte> rgb,
                                                       std::uint32_t width, std::uint32_t height) {
  constexpr std::uint32_t kSmallestSide = 8, kLevels = 1, kNoUsage = 0;
  device::Device& device = context.requireDevice();
  const utility::TextureRequirements size = utility::checkTextureRequirements(
      device, {std::max(width, kSmallestSide), std::max(height, kSmallestSide), kLevels, device::Format::R5G6B5});
  auto texture = device.createTexture(size.width, size.height, kLevels, kNoUsage, size.format, device::Pool::Managed);
  const auto image = device.createImageSurface(size.width, size.height, size.format);
  utility::loadSurfaceFromMemory(*image, packLightmap(rgb), width * 2, device::Format::R5G6B5, width, height);
  device.copyRects(image, {}, device::surfaceLevel(texture, 0), {});
  return texture;
}

}  // namespace ql::level
