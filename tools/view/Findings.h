/// @file
/// What the engine's log says of a load.
#pragma once

#include "walk/Failure.h"

#include <optional>
#include <string>
#include <vector>

namespace view {

struct Findings {
  std::vector<std::string> missing;    ///< textures that were not found or could not be read, each once
  std::vector<std::string> errors;     ///< what could not be loaded of the file itself
  std::optional<walk::ExitCode> code;  ///< what the errors call for
};

Findings findingsOf(const std::vector<std::string>& logLines);

}  // namespace view
