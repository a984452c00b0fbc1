#include "platform/opengl/ShaderText.h"

#include "platform/opengl/KeyOfState.h"

namespace ql::opengl {

std::vector<Varying> varyingsOf(const ShaderKey& key) {
  using device::TextureArg;
  std::vector<Varying> out;
  bool diffuse = true, specular = key.specularAdd != 0;
  for (const StageKey& stage : key.stages) specular |= reads(stage, TextureArg::Specular);
  if (key.stageCount > 0 && key.stages[0].samples) {
    // A texture that replaces the colour leaves nothing of the vertex's.
    const StageKey& first = key.stages[0];
    diffuse = reads(first, TextureArg::Diffuse) || reads(first, TextureArg::Current) ||
              first.alphaOp == static_cast<std::uint8_t>(device::TextureOp::Disable) ||
              (key.stageCount > 1 && reads(key.stages[1], TextureArg::Diffuse)) ||
              first.colorOp == static_cast<std::uint8_t>(device::TextureOp::BlendCurrentAlpha) ||
              first.alphaOp == static_cast<std::uint8_t>(device::TextureOp::BlendCurrentAlpha);
  }
  const bool colors = key.lighting != 0;
  if (diffuse && (colors || key.diffuse)) out.push_back({"vec4", "diffuse", key.flat != 0});
  if (specular && (colors || key.specular)) out.push_back({"vec4", "specular", key.flat != 0});
  if (key.fogSource == FogSource::Vertex) out.push_back({"float", "fog"});
  constexpr const char* kNames[] = {"uv0", "uv1"};
  for (std::size_t i = 0; i < key.stageCount; ++i) {
    const StageKey& stage = key.stages[i];
    if (stage.samples && stage.coordinates != Coordinates::None)
      out.push_back({stage.projected ? "vec3" : "vec2", kNames[i]});
  }
  return out;
}

std::string preamble() {
  return R"(#version 330 core
layout(std140) uniform Draw {
  mat4 clip, view, normalToCamera;
  mat4 textureTransform[2];
  vec4 materialDiffuse, materialAmbient, materialSpecular, materialEmissive;
  vec4 globalAmbient;  // w: power
  vec4 factor, fogColor;
  vec4 fog;            // start, 1 / (end - start), end, density
  vec4 area;           // half width, half height, left, top
  vec4 pointValues;    // size, smallest, largest, height of the viewport
  vec4 nudge;          // added to the texture coordinates of both stages
  vec4 pointScale;     // A, B, C; the alpha test's reference
  ivec4 counts;        // lights, line that shows its last pixel
};
// Row vectors: matrices lie in memory as the device has them, so that their columns here are its rows.
vec4 transformed(vec4 p, mat4 m) { return p.x * m[0] + p.y * m[1] + p.z * m[2] + p.w * m[3]; }
vec4 transformedPoint(vec3 p, mat4 m) { return p.x * m[0] + p.y * m[1] + p.z * m[2] + m[3]; }
)";
}

}  // namespace ql::opengl
