/// @file
/// Lightmaps: small pictures of the light that falls on faces.
#pragma once

#include "engine/EngineContext.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ql::level {

/// The smallest side of a lightmap's picture, texels.
inline constexpr std::uint32_t kSmallestLightmapSide = 8;

/// Brightens red, green, blue bytes (by 32, up to 255) and packs each pixel into 16 bits, R5G6B5.
/// @param pixels has room for a third as many
void brightenPixels(std::span<const std::byte> rgb, std::uint16_t* pixels);

/// Makes the texture of a picture of R5G6B5 pixels that every device can draw, at least 8 pixels on each side.
/// @throws device::DeviceError
std::shared_ptr<device::Texture> createPackedTexture(engine::EngineContext& context,
                                                     std::span<const std::uint16_t> pixels, std::uint32_t width,
                                                     std::uint32_t height);
/// Makes the texture of one lightmap, at least 8 pixels on each side. @param rgb width × height × 3 bytes
/// @throws device::DeviceError
std::shared_ptr<device::Texture> createLightmapTexture(engine::EngineContext& context, std::span<const std::byte> rgb,
                                                       std::uint32_t width, std::uint32_t height);

}  // namespace ql::level
