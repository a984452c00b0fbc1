/// @file
/// The program's work.
#pragma once

#include "Options.h"

namespace view {

/// Shows the file. @throws walk::Failure, Quasarlens3D::Error
void show(const Options& options);

}  // namespace view
