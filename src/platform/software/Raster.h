/// @file
/// Drawing a triangle into a tile.
#pragma once

#include "platform/software/Tile.h"
#include "platform/software/Triangle.h"

namespace ql::software {

/// The code for a pipeline: one of its own for common kinds, else the general one. All give the same bits.
PaintFunction paintFunction(const Pipeline& pipeline);

}  // namespace ql::software
