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

/// Brightens red, green, blue bytes (by 32, up to 255) and packs each pixel into 16 bits, R5G6B5, low byte first.
std::vector<std::byte> packLightmap(std::span<const std::byte> rgb);

/// Makes the texture of one lightmap, at least 8 pixels on each side. @param rgb width × height × 3 bytes
/// @throws device::DeviceError
std::shared_ptr<device::Texture> createLightmapTexture(engine::EngineContext& context, std::span<const std::byte> rgb,
                                                       std::uint32_t width, std::uint32_t height);

}  // namespace ql::level
