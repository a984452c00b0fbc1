#include "level/Lightmap.h"

#include "platform/utility/TextureFiles.h"

#include <algorithm>
#include <array>

namespace ql::level {
namespace {

/// A channel's bits in a pixel, by its byte. Lightmaps are dark by design: they are made for hardware that doubles
/// them.
template <unsigned kBits, unsigned kShift>
constexpr std::array<std::uint16_t, 256> brightened() {
  constexpr std::uint32_t kGain = 32, kFull = 255;
  std::array<std::uint16_t, 256> out{};
  for (std::uint32_t i = 0; i < out.size(); ++i)
    out[i] = static_cast<std::uint16_t>(std::min(i + kGain, kFull) >> (8 - kBits) << kShift);
  return out;
}
constexpr auto kRed = brightened<5, 11>(), kGreen = brightened<6, 5>(), kBlue = brightened<5, 0>();

}  // namespace

void brightenPixels(std::span<const std::byte> rgb, std::uint16_t* pixels) {
  const auto at = [&](std::size_t i) { return std::to_integer<std::uint8_t>(rgb[i]); };
  for (std::size_t i = 0; i + 3 <= rgb.size(); i += 3)
    *pixels++ = static_cast<std::uint16_t>(kRed[at(i)] | kGreen[at(i + 1)] | kBlue[at(i + 2)]);
}

std::shared_ptr<device::Texture> createPackedTexture(engine::EngineContext& context,
                                                     std::span<const std::uint16_t> pixels, std::uint32_t width,
                                                     std::uint32_t height) {
  constexpr std::uint32_t kLevels = 1, kNoUsage = 0;
  device::Device& device = context.requireDevice();
  const utility::TextureRequirements size = utility::checkTextureRequirements(
      device, {std::max(width, kSmallestLightmapSide), std::max(height, kSmallestLightmapSide), kLevels,
               device::Format::R5G6B5});
  auto texture = device.createTexture(size.width, size.height, kLevels, kNoUsage, size.format, device::Pool::Managed);
  const auto image = device.createImageSurface(size.width, size.height, size.format);
  utility::loadSurfaceFromMemory(*image, std::as_bytes(pixels), width * 2, device::Format::R5G6B5, width, height);
  device.copyRects(image, {}, device::surfaceLevel(texture, 0), {});
  return texture;
}

std::shared_ptr<device::Texture> createLightmapTexture(engine::EngineContext& context, std::span<const std::byte> rgb,
                                                       std::uint32_t width, std::uint32_t height) {
  std::vector<std::uint16_t> pixels(rgb.size() / 3);
  brightenPixels(rgb, pixels.data());
  return createPackedTexture(context, pixels, width, height);
}

}  // namespace ql::level
