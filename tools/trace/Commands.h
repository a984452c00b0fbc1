/// @file
/// What the program does.
#pragma once

#include "Failure.h"
#include "Options.h"

namespace ql::trace {

/// Runs the walk in this program's place; returns only when it cannot. @throws Failure Unreadable
[[noreturn]] void record(const Options& options);
/// Each throws host::FileFault for a trace that cannot be read, Failure and device::DeviceError.
ExitCode show(const Options& options);
ExitCode replay(const Options& options);
ExitCode compare(const Options& options);
ExitCode diff(const Options& options);

}  // namespace ql::trace
