/// @file
/// The state of a draw call, decoded into what OpenGL takes.
#pragma once

#include "platform/opengl/ShaderKey.h"

#include <array>
#include <cstdint>
#include <vector>

namespace ql::opengl {

using Float4 = std::array<float, 4>;
using Matrix = std::array<Float4, 4>;

/// The uniform block "Draw", laid out as the shaders declare it. Values that the program does not read are 0, so that
/// they never make two draws differ.
struct DrawUniforms {
  Matrix clip{}, view{};  ///< model to clip space and to camera space
  Matrix normal{};        ///< normals to camera space
  std::array<Matrix, device::kStages> texture{};
  Float4 diffuse{}, ambient{}, specular{}, emissive{};  ///< the material
  Float4 globalAmbient{};                               ///< w: the material's power
  Float4 factor{}, fogColor{};
  Float4 fog{};     ///< start, 1 / (end - start), end, density
  Float4 screen{};  ///< half width and height of the area that clip space spans, pixels; its first pixel
  Float4 point{};   ///< size, smallest, largest, height of the viewport
  Float4 nudge{};   ///< added to the texture coordinates of both stages
  Float4 scale{};   ///< point scale A, B, C; the reference value of the alpha test, 0 to 255
  std::array<std::int32_t, 4> counts{};  ///< lights; number of the line that shows its last pixel (-1: every line)
  bool operator==(const DrawUniforms&) const = default;
};
static_assert(sizeof(DrawUniforms) % 16 == 0);

/// A light in camera space, an element of the uniform block "Lights".
struct LightUniforms {
  Float4 diffuse{}, specular{}, ambient{};
  Float4 position{};     ///< w: device::LightType
  Float4 direction{};    ///< w: falloff
  Float4 attenuation{};  ///< factors 0, 1, 2; w: range
  Float4 cone{};         ///< cosines of half the inner and the outer angle
  bool operator==(const LightUniforms&) const = default;
};

/// State that lies outside of programs, with numbers of OpenGL.
struct FixedState {
  std::uint32_t depthFunction = 0;  ///< 0: no depth test
  bool depthWrite = false;
  std::uint32_t source = 0, destination = 0, blendOp = 0;  ///< blendOp 0: no blending
  std::uint32_t colorMask = 0xF;                           ///< red, green, blue, alpha
  std::uint32_t cullFace = 0;                              ///< 0: none
  float bias = 0;                                          ///< subtracted from the depth, in steps of 24 bits
  std::array<std::int32_t, 4> viewport{}, scissor{};
  float nearDepth = 0, farDepth = 1;
  bool operator==(const FixedState&) const = default;
};

/// How a texture is read.
struct SamplerKey {
  std::uint8_t addressU = 1, addressV = 1, magLinear = 0, minLinear = 0, mip = 0, firstLevel = 0;
  std::uint8_t anisotropy = 1;
  std::uint8_t unused = 0;
  std::uint32_t border = 0;
  std::int32_t bias = 0;  ///< in 1/256
  bool operator==(const SamplerKey&) const = default;
};
static_assert(std::has_unique_object_representations_v<SamplerKey>);

struct DrawState {
  ShaderKey key;
  FixedState fixed;
  DrawUniforms uniforms;
  std::vector<LightUniforms> lights;
  std::array<SamplerKey, device::kStages> samplers{};
  bool draws = true;  ///< anything at all
  bool operator==(const DrawState&) const = default;
};

/// What a draw needs to know of its target and textures.
struct DrawSurroundings {
  std::uint32_t targetWidth = 0, targetHeight = 0;
  device::Format targetFormat = device::Format::X8R8G8B8;
  std::array<bool, device::kStages> textured{};
  struct TextureSize {
    std::uint32_t width = 1, height = 1, levels = 1;
  };
  std::array<TextureSize, device::kStages> textures{};
};

DrawState decode(const device::DrawPacket& packet, const DrawSurroundings& around);

}  // namespace ql::opengl
