/// @file
/// Texture coordinates: those of the vertices or generated ones, and their transforms.
#pragma once

#include "platform/device/State.h"

#include <cstdint>

namespace ql::software {

/// Where a stage's coordinates come from.
struct CoordinateSource {
  enum class Kind : std::uint8_t {
    Vertex,      ///< a set of the vertex; 0, 0 when it has none
    Normal,      ///< in camera space
    Position,    ///< in camera space
    Reflection,  ///< the direction to the viewer, mirrored at the normal, in camera space
  } kind = Kind::Vertex;
  int transformed = 0;     ///< coordinates that the matrix gives, 0 to 4; 0: it is not applied
  bool projected = false;  ///< the last of them divides the others
  math::Mat4 matrix;
};

/// Decodes how a stage gets its coordinates. @param onScreen vertices that arrive transformed bring finished ones
/// @param present whether they have the set that the stage names
CoordinateSource coordinateSourceOf(const device::State& state, std::size_t stage, bool onScreen, bool present);

}  // namespace ql::software
