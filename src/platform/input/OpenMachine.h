/// @file
/// The input devices of this machine.
#pragma once

#include "platform/input/Machine.h"

#include <memory>

namespace ql::input {

/// Never nothing: without any way to devices, a machine that has none. The display is opened before.
std::unique_ptr<Machine> openMachine();

}  // namespace ql::input
