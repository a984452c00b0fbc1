/// @file
/// Laying a texture flat over groups.
#pragma once

#include "mesh/MeshRecord.h"

#include <cstdint>

namespace ql::mesh {

/// How a texture lies over a group's first three vertices: along the way to the second one and to the third one.
struct Projection {
  float scaleU = 1, scaleV = 1;
  float shiftU = 0, shiftV = 0;  ///< texels
  float rotation = 0;            ///< degrees
};

/// Gives the vertices of a group (-1: of all groups) first texture coordinates by a flat projection.
/// @param texture index in the texture table @throws engine::EngineError 9 for a group of more than 8 vertices, 11 for
/// a texture without a size
void projectTexture(engine::EngineContext& context, const MeshHandle& mesh, std::int16_t texture, std::int16_t group,
                    const Projection& projection);

}  // namespace ql::mesh
