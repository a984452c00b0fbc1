/// @file
/// The modal message box for what makes the engine unusable.
#pragma once

#include <functional>
#include <string>

namespace ql::host {

/// Shows a message; replaced in tests and by the window system. Without one, the text goes to standard error.
using MessageBoxFunction = std::function<void(const std::string& title, const std::string& text)>;
void messageToStandardError(const std::string& title, const std::string& text);

}  // namespace ql::host
