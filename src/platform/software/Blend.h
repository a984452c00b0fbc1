/// @file
/// Putting a block's colours into the tile.
#pragma once

#include "platform/software/Block.h"
#include "platform/software/Pipeline.h"

namespace ql::software {

/// Thresholds of the ordered dither for the pixels of a block, in 1/32 of a step: neighbours differ much.
alignas(64) inline constexpr std::int32_t kDitherRank[kLanes] = {1, 17, 5, 21, 25, 9,  29, 13,
                                                                 7, 23, 3, 19, 31, 15, 27, 11};

/// Mixes colours with what the target holds, by any factors and operation. @param source becomes the result
void blend(const Pipeline& pipeline, const Colors& destination, Colors& source);

/// Rounds to the channels of a 16-bit target, with an ordered pattern when the pipeline dithers, and expands again.
/// A tile begins at a multiple of the pattern's 4 pixels, so the pattern is the same in every block.
void quantize(const Pipeline& pipeline, Colors& colors);

}  // namespace ql::software
