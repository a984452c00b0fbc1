/// @file
/// Records of a trace as lines that people read.
#pragma once

#include "platform/recording/Trace.h"

#include <string>

namespace ql::recording {

/// A record as "Name(value, value, ...)", an effect after "-> ". Numbers are written as Recorder writes them; states,
/// transforms and primitives by their names, matrices, materials and lights as their numbers, other bytes as "#" +
/// their count + ":" + a 64-bit hash. Control characters of texts are written as "?".
std::string lineOf(TraceCursor& cursor, const TraceRecord& record);

}  // namespace ql::recording
