/// @file
/// Recording what the engine does on its device.
#pragma once

#include "engine/EngineContext.h"

#include <string>

namespace ql::engine {

/// Starts to write every device call from now on to a trace file, which begins with all that the device has already. A
/// trace in progress is finished first. It goes on over new devices until stopTrace or the engine's end.
/// @return false, with a line in the log, when the file cannot be written
bool startTrace(EngineContext& context, const std::string& fileName);
/// Finishes the trace. @return whether all of it was written; false without one
bool stopTrace(EngineContext& context);

}  // namespace ql::engine
