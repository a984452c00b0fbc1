/// @file
/// Reading trace files, with messages that name them.
#pragma once

#include "Failure.h"
#include "platform/host/Fault.h"
#include "platform/recording/Trace.h"

#include <filesystem>

namespace ql::trace {

ExitCode codeOf(const host::FileFault& fault);

/// @throws Failure Unreadable, Malformed, Limit
recording::Trace openTrace(const std::filesystem::path& file);

}  // namespace ql::trace
