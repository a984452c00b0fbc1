/// @file
/// What ends the program early, with its exit code.
#pragma once

#include <stdexcept>
#include <string>

namespace ql::trace {

enum class ExitCode { Success = 0, Differ = 1, Usage = 2, Unreadable = 3, Malformed = 4, NoDevice = 5, Limit = 6 };

struct Failure : std::runtime_error {
  Failure(ExitCode exitCode, const std::string& message) : std::runtime_error(message), code(exitCode) {}
  ExitCode code;
};

}  // namespace ql::trace
