/// @file
/// The desktop's own settings of mouse and keyboard.
#pragma once

namespace ql::input {

/// Starts the program that the desktop has for these settings. @return false when none is installed
bool openControlPanel();

}  // namespace ql::input
