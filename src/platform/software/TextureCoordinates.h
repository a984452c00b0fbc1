/// @file
/// Texture coordinates: those of the vertices or generated ones, and their transforms.
#pragma once

#include "platform/device/State.h"
#include "platform/software/Block.h"

#include <cstdint>

namespace ql::software {

struct Pipeline;
struct VertexBatch;

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

/// Computes a stage's coordinates into the batch's attributes. A set's pairs are transformed as (u, v, 1, 0), so that
/// the matrix's third row moves them; generated triples as (x, y, z, 1).
void textureCoordinates(const Pipeline& pipeline, std::size_t stage, VertexBatch& batch);

}  // namespace ql::software
