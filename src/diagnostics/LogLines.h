/// @file
/// Many lines for the log at once.
#pragma once

#include "diagnostics/Log.h"

#include <span>
#include <string>

namespace ql::diagnostics {

/// Appends lines as Log::write does, each with the time, in one go: for whoever has a line for every part of a file.
/// They are on disk when the call returns.
void writeLines(const Log& log, std::span<const std::string> messages);

}  // namespace ql::diagnostics
