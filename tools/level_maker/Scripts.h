#pragma once

#include "Level.h"

#include <span>
#include <string>

namespace ql::maker {

/// Camera poses as a JSON array of {"eye": [x, y, z], "look": [x, y, z]} in world coordinates: (-x, z, -y) of a point
/// of the file.
std::string posesAsJson(std::span<const Pose> poses);

/// Shader scripts for surfaces that move or shine: water, flames, gold, a sky. Those of water, lamps and gold have the
/// names of textures, so that they take their places; the others are there to be used.
std::string shaderScript();

}  // namespace ql::maker
