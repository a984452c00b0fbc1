/// @file
/// Shader scripts: text that describes how surfaces are drawn, in stages. Reading is pure; nothing is loaded here.
///
/// A script holds shaders one after another, a name on a line of its own and a body in braces, each brace alone on its
/// line; inside the body, one block in braces per stage. Every other line is a keyword and an argument.
#pragma once

#include "render/shaders/ShaderTable.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ql::render::shaders {

/// Where a script defines a shader.
struct ScriptEntry {
  std::string name;
  std::size_t body = 0;  ///< byte offset just after the name's line
};

/// A stage as written: its textures are still names.
struct ScriptStage {
  /// "$lightmap" and "$texture" have become kLightmapName and kTextureName; empty without a map.
  std::vector<std::string> maps;
  bool fallBackToJpg = true;  ///< a name whose file is missing means the JPG picture
  std::int16_t frameCount = 1;
  float frequency = 0;  ///< frames per second
  std::int32_t flags = 0;
  std::int32_t sourceBlend = -1, destinationBlend = 0;
  float scaleS = 0, scaleT = 0, scrollS = 0, scrollT = 0;
  StageKind kind = StageKind::Map;
};

struct ScriptShader {
  std::int32_t surfaceFlags = 0;
  std::vector<ScriptStage> stages;
};

inline constexpr std::string_view kLightmapName = "$lightmap", kTextureName = "$texture";
/// No script that is meant to be drawn comes near; what lies beyond is passed over.
inline constexpr std::size_t kMostStages = 256, kMostFrames = 1024;

/// Names of all shaders of a script, in its order. Lines end with CR, LF or both.
std::vector<ScriptEntry> indexScript(std::string_view script);
/// Reads the body that starts at an offset; one without its last brace ends with the script. Unknown words are passed
/// over. @param end the offset just after the body, when asked for
ScriptShader parseShaderBody(std::string_view script, std::size_t body, std::size_t* end = nullptr);

}  // namespace ql::render::shaders
