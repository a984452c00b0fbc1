/// @file
/// Texture stages: any operation on any arguments.
#pragma once

#include "platform/software/Block.h"
#include "platform/software/Pipeline.h"

#include <array>

namespace ql::software {

/// What the arguments of a stage can name.
struct StageInputs {
  Colors diffuse, specular, texture, factor;
};

/// Carries out a stage: current becomes its result.
void combine(const Stage& stage, const StageInputs& inputs, Colors& current);

}  // namespace ql::software
