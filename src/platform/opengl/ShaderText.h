/// @file
/// The text of shader programs.
#pragma once

#include "platform/opengl/ShaderKey.h"

#include <string>
#include <vector>

namespace ql::opengl {

/// Places of the vertex attributes; coordinate sets follow from kFirstSet on.
inline constexpr unsigned kPosition = 0, kNormal = 1, kPointSize = 2, kDiffuse = 3, kSpecular = 4, kFirstSet = 5;
/// Binding points of the uniform blocks.
inline constexpr unsigned kDrawBlock = 0, kLightBlock = 1;
inline constexpr unsigned kMostLights = device::kLights;

/// A value that is handed from stage to stage. Without a geometry stage it is called f_NAME; with one, v_NAME before it
/// and f_NAME after it.
struct Varying {
  const char* type;
  const char* name;
  bool flat = false;
};
std::vector<Varying> varyingsOf(const ShaderKey& key);

/// Declarations that every stage starts with.
std::string preamble();

std::string vertexText(const ShaderKey& key);
/// Only for keys whose topology expands.
std::string geometryText(const ShaderKey& key);
std::string fragmentText(const ShaderKey& key);

}  // namespace ql::opengl
