/// @file
/// Shows the textures of a file as a sheet.
#pragma once

#include "FileKind.h"
#include "Options.h"

namespace view {

/// Writes a page of the sheet, or shows it in a window in which one turns the pages.
/// @throws walk::Failure, Quasarlens3D::Error
void showSheet(Kind kind, const Options& options);

}  // namespace view
