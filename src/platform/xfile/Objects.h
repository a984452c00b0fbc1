/// @file
/// From tokens to meshes, frames and materials.
#pragma once

#include "platform/xfile/Tokens.h"
#include "platform/xfile/XFile.h"

namespace ql::xfile {

/// Frames may stand in each other this deep.
inline constexpr std::size_t kDeepestFrame = 512;

/// Reads all objects after the header. @throws host::FileFault as parseXFile
Scene readObjects(TextTokens tokens);
Scene readObjects(BinaryTokens tokens);

}  // namespace ql::xfile
