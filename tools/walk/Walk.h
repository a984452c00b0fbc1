/// @file
/// The walk itself.
#pragma once

#include "Options.h"

namespace walk {

/// Loads the level, draws and writes everything that the options ask for. @throws Failure, Quasarlens3D::Error
void run(const Options& options);

}  // namespace walk
