#pragma once

#include "Level.h"

#include <span>
#include <string>

namespace ql::maker {

/// Camera poses as a JSON array of {"eye": [x, y, z], "look": [x, y, z]} in world coordinates: (-x, z, -y) of a point
/// of the file.
std::string posesAsJson(std::span<const Pose> poses);

/// Shader scripts for surfaces that move: flowing water, flames, a sky. Their names differ from those of all texture
/// files.
std::string shaderScript();

}  // namespace ql::maker
