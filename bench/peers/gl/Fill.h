/// @file
/// Rates of filling and of small triangles, with OpenGL's fixed function.
#pragma once

#include "Context.h"
#include "common/Options.h"

namespace peers::gl {

/// Full-screen layers in each state.
void timeFill(const Context& context, const Options& options);
/// A million small triangles from vertex and index buffers.
void timeTriangles(const Context& context, const Options& options);

}  // namespace peers::gl
