/// @file
/// What ends the program early, as all programs do.
#pragma once

#include "walk/Failure.h"

namespace ql::trace {

using walk::ExitCode;
using walk::Failure;

}  // namespace ql::trace
