/// @file
/// Writing text.
#pragma once

#include <string>

namespace walk {

/// @param file "-": standard output @throws Failure Unreadable when it cannot be written
void writeText(const std::string& file, const std::string& text);

}  // namespace walk
