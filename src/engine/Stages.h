/// @file
/// Writing down what every thread does when.
#pragma once

#include "engine/EngineContext.h"

#include <string>

namespace ql::engine {

/// Starts to write the stages of each frame to a file of trace events, which trace viewers open. A file in progress is
/// finished first. It goes on over new devices until stopStages or the engine's end.
/// @return false, with a line in the log, when the file cannot be written
bool startStages(EngineContext& context, const std::string& fileName);
/// Finishes the file. @return whether all of it was written; false without one
bool stopStages(EngineContext& context);

}  // namespace ql::engine
