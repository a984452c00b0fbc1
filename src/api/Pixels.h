/// @file
/// Pixels of surfaces for hosts.
#pragma once

#include "platform/device/Resources.h"

#include <cstdint>
#include <vector>

namespace ql::api {

/// All pixels of a surface, rows from the top, each 0xAARRGGBB.
std::vector<std::uint32_t> readPixels(device::Surface& surface);

}  // namespace ql::api
