/// @file
/// The modes that an adapter offers.
#pragma once

#include "platform/device/Display.h"

#include <cstdint>
#include <vector>

namespace ql::window {

/// Numbers of the two display formats.
inline constexpr std::uint32_t kFormatX8R8G8B8 = 22, kFormatR5G6B5 = 23;

/// The sizes that every display offers, since a picture is scaled to the desktop anyway.
const std::vector<device::Window::Size>& standardSizes();
/// Every size in both formats: smaller sizes first, doubles dropped.
std::vector<device::DisplayMode> modesOf(std::vector<device::Window::Size> sizes, std::uint32_t refreshRate);

}  // namespace ql::window
