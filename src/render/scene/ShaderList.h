/// @file
/// Lists of textures and shaders in text files.
#pragma once

#include "render/shaders/ShaderScript.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ql::render::scene {

/// One line of a list of textures.
struct ListedTexture {
  std::string fileName, name;
};
/// A shader, its textures still names.
struct ListedShader {
  std::string name;
  shaders::ScriptShader shader;
};
/// One thing of a list: a texture, unless it is a shader.
struct ListEntry {
  ListedTexture texture;
  bool isShader = false;
  ListedShader shader;
};

enum class ListFault { None, NoSeparator, PastEnd };
/// What a file lists, in order, up to its first fault.
struct ShaderList {
  std::vector<ListEntry> entries;
  ListFault fault = ListFault::None;
  std::size_t line = 0;  ///< of the fault, from 1
};

/// Reads a list. Lines end with CR, LF or both; blank lines and lines that begin with "//" are skipped.
///
///     TEXTURES 2                 (or TEXTURETABLE, TEXTURESTABLE, in any letter case)
///     wall.jpg > wall            (exactly as many lines follow: file name, ">", name)
///     floor.jpg > floor
///     SHADER shiny               (its body follows, as in shader scripts)
///     {
///     ...
///     }
///
/// Lines with other keywords mean nothing.
ShaderList parseShaderList(std::string_view text);

}  // namespace ql::render::scene
