/// @file
/// Reading textures, a block at a time.
#pragma once

#include "platform/software/Block.h"
#include "platform/software/Pipeline.h"

#include <array>
#include <cstdint>

namespace ql::software {

/// Which level a block reads, and how.
struct LevelChoice {
  std::uint8_t level = 0;
  std::uint8_t blend = 0;  ///< share of the next level, in 1/128
  bool linear = false;
  std::uint8_t unused = 0;
};

/// The texels of a column and a row, of the next column, of the next row, and of both, under any addressing; flipped.
std::array<std::uint32_t, 4> fourTexels(const Sampler& sampler, const Sampler::Level& level, std::int32_t x,
                                        std::int32_t y);

/// Colours at coordinates in texture space (0 to 1 is one repetition).
void sample(const Sampler& sampler, const LevelChoice& choice, const Lanes<float>& u, const Lanes<float>& v,
            Colors& out);

}  // namespace ql::software
