/// @file
/// Material and lights as uniforms.
#pragma once

#include "platform/opengl/DrawState.h"

#include <vector>

namespace ql::opengl {

/// Fills the material's colours and the global ambient light.
void materialUniforms(const device::State& state, DrawUniforms& out);

/// The enabled lights in camera space.
std::vector<LightUniforms> lightUniforms(const device::State& state);

}  // namespace ql::opengl
