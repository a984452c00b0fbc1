/// @file
/// Pictures made ready for textures: colour keys, scaling, mip chains, device formats.
#pragma once

#include "platform/device/Resources.h"
#include "platform/images/Image.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ql::utility {

/// Rows in a device format as a picture. @param pitch bytes from row to row
/// @throws device::DeviceError invalid call: rows that the bytes do not hold, or sides outside 1 to the largest target
images::Image imageFromPixels(std::span<const std::byte> pixels, std::uint64_t pitch,
                              const device::SurfaceDescription& size);
/// A picture's pixels in a device format, tightly packed.
std::vector<std::byte> pixelsFromImage(const images::Image& image, device::Format format);

/// Makes every pixel of exactly this colour transparent black. In a picture without alpha all pixels count as opaque.
/// @return whether there was any
bool applyColorKey(images::Image& image, std::uint32_t key);

/// The picture in another size. @param keyed colours of transparent pixels do not show in their neighbours
images::Image scaled(images::Image image, std::uint32_t width, std::uint32_t height, bool keyed);

/// The picture and so many smaller levels below it that there are `levels`, each half of the one above.
std::vector<images::Image> mipChain(images::Image image, std::uint32_t levels, bool keyed);

}  // namespace ql::utility
