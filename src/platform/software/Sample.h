/// @file
/// Reading textures, a block at a time.
#pragma once

#include "platform/software/Block.h"
#include "platform/software/Triangle.h"

#include <cstdint>

namespace ql::software {

/// Which level a block reads, and how.
struct LevelChoice {
  std::int32_t level = 0;
  std::int32_t blend = 0;  ///< share of the next level, in 1/128
  bool linear = false;
};

/// The level of detail of a block, from the exact derivatives at its centre. @param x,y of the block's first pixel seen
/// from vertex 0 @param uv the attribute of the u coordinate @param divisor the attribute that divides u and v
LevelChoice chooseLevel(const Sampler& sampler, const Triangle& triangle, int uv, int divisor, float x, float y);

/// Colours at coordinates in texture space (0 to 1 is one repetition).
void sample(const Sampler& sampler, const LevelChoice& choice, const Lanes<float>& u, const Lanes<float>& v,
            Colors& out);

}  // namespace ql::software
