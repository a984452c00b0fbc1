/// @file
/// Textures and surfaces from picture files and memory.
#pragma once

#include "platform/device/Device.h"
#include "platform/utility/PictureCache.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ql::utility {

/// Adjusts what is asked of a texture to what the device can use: sides of -1 (or 0) become 256, sides are limited to
/// the device's largest, a level count of 0 (or too large) becomes the full chain, a format that the device has no
/// textures of becomes the nearest one that it has.
struct TextureRequirements {
  std::uint32_t width = 256, height = 256, levels = 0;
  device::Format format = device::Format::A8R8G8B8;
  std::uint32_t usage = 0;  ///< device::kUsageRenderTarget asks for a format that can be drawn into
};
TextureRequirements checkTextureRequirements(const device::Device& device, TextureRequirements asked);

/// The size of a picture file, from its header alone; nothing when there is no such file or it is damaged.
struct PictureSize {
  std::uint32_t width = 0, height = 0;
};
std::optional<PictureSize> pictureSize(const std::string& fileName);

/// What createTextureFromFile takes; sizes of -1 mean the file's own.
struct TextureFileOptions {
  std::int32_t width = -1, height = -1;
  std::uint32_t levels = 0;  ///< 0: full chain
  device::Format format = device::Format::A8R8G8B8;
  device::Pool pool = device::Pool::Managed;
  std::uint32_t colorKey = 0;  ///< packed ARGB that becomes transparent; 0: none
};
/// Loads a picture file as a texture: scaled to the size asked for, keyed, with mip levels.
/// @throws device::DeviceError kErrorNotFound when there is no such file, kErrorInvalidData when it cannot be decoded
/// @param cache keeps decoded pictures for the next time, when given
std::shared_ptr<device::Texture> createTextureFromFile(device::Device& device, const std::string& fileName,
                                                       const TextureFileOptions& options,
                                                       PictureCache* cache = nullptr);

/// Fills a surface from rows in memory, converting format and size. @param pitch bytes from row to row
/// @throws device::DeviceError invalid call: rows that the memory does not hold
void loadSurfaceFromMemory(device::Surface& surface, std::span<const std::byte> pixels, std::uint32_t pitch,
                           device::Format format, std::uint32_t width, std::uint32_t height);
/// Fills a surface from a picture file, scaled to it. @throws device::DeviceError as createTextureFromFile
void loadSurfaceFromFile(device::Surface& surface, const std::string& fileName, std::uint32_t colorKey);

/// The 24-bit BMP bytes of a surface: 54-byte header, rows bottom-up, unpadded, blue green red.
std::vector<std::byte> bitmapFromSurface(device::Surface& surface);
/// Writes the texture's largest level as such a file. @throws host::FileFault
void saveTextureToFile(const std::string& fileName, const device::Texture& texture);

}  // namespace ql::utility
