/// @file
/// How the groups of a mesh look.
#pragma once

#include "mesh/MeshRecord.h"

#include <cstdint>

namespace ql::mesh {

inline constexpr float kAllGroups = -1;

/// Each sets one thing of the group of a number, or of all groups for kAllGroups; a number without a group changes
/// nothing.
/// @param texture index in the texture table, 0 for none
void setTexture(MeshRecord& mesh, std::int16_t texture, float group = kAllGroups);
void setMaterial(MeshRecord& mesh, std::int16_t material, float group = kAllGroups);
/// @param shader index in the shader table, 0 for none
void setShader(MeshRecord& mesh, std::int16_t shader, float group = kAllGroups);
/// @param blending 0 or 1 by the source's alpha, 2 adding, 3 adding by the source's colour; others keep the device's
void setBlending(MeshRecord& mesh, std::int16_t blending, float group = kAllGroups);

/// Reflections: stage 0 takes its coordinates from the view. @param normals from the normal alone
void setSphereMapping(MeshRecord& mesh, bool on, bool normals);

}  // namespace ql::mesh
