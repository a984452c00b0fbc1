/// @file
/// A Quake 3 level in one pass: each face's texture times its lightmap.
#pragma once

#include "Context.h"
#include "common/Options.h"

namespace peers::gl {

/// Times loading until the first picture is finished, and a frame of every pose.
void timeLevel(const Context& context, const Options& options);

}  // namespace peers::gl
