/// @file
/// The display system of this machine.
#pragma once

#include "platform/device/Display.h"

#include <memory>

namespace ql::window {

/// The user's display when there is one, else one without any: everything works then but nothing is seen.
std::unique_ptr<device::Display> openDisplay();

}  // namespace ql::window
