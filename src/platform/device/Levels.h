/// @file
/// The arithmetic behind copies of pictures to textures and their smaller levels; both renderers give its results.
#pragma once

#include "platform/device/Constants.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ql::device {

/// What is left of colours (0xAARRGGBB) when a surface of the format has kept them.
/// @throws DeviceError invalid call for formats that no surface has
void roundTo(Format format, std::span<std::uint32_t> argb);

/// A row of the next smaller level, from two rows of a level: each colour is the mean of 2 × 2, to the nearest. The
/// last column of an odd width is left out; a single column, or a single row given twice, counts twice.
/// @param smaller half as many as the others, at least 1
void halveRows(std::span<const std::uint32_t> upper, std::span<const std::uint32_t> lower,
               std::span<std::uint32_t> smaller);

/// The next smaller level of a picture: half its sides, at least 1.
std::vector<std::uint32_t> halved(std::span<const std::uint32_t> picture, std::uint32_t width, std::uint32_t height);

}  // namespace ql::device
