#include "platform/opengl/DrawState.h"

#include "math/Matrix.h"
#include "platform/device/Resources.h"
#include "platform/opengl/KeyOfState.h"
#include "platform/opengl/LightState.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include <epoxy/gl.h>

namespace ql::opengl {
namespace {

// A step of the depth bias, in units of 24-bit depth: a quarter of a step of 16-bit depth.
constexpr float kBiasStep = 64;
constexpr float kLargestPoint = 64;

float floatOf(std::uint32_t bits) {
  const float value = std::bit_cast<float>(bits);
  return std::isfinite(value) ? value : 0.0f;
}

Float4 colorOf(std::uint32_t argb) {
  const auto channel = [argb](int shift) { return static_cast<float>(argb >> shift & 255) / 255.0f; };
  return {channel(16), channel(8), channel(0), channel(24)};
}

GLenum compareOf(std::uint32_t function) {
  // The device's functions are numbered in OpenGL's order.
  return GL_NEVER + std::clamp(function, 1u, 8u) - 1;
}

GLenum factorOf(device::Blend factor) {
  using device::Blend;
  switch (factor) {
    case Blend::Zero:
      return GL_ZERO;
    case Blend::SrcColor:
      return GL_SRC_COLOR;
    case Blend::InvSrcColor:
      return GL_ONE_MINUS_SRC_COLOR;
    case Blend::SrcAlpha:
      return GL_SRC_ALPHA;
    case Blend::InvSrcAlpha:
      return GL_ONE_MINUS_SRC_ALPHA;
    case Blend::DestAlpha:
      return GL_DST_ALPHA;
    case Blend::InvDestAlpha:
      return GL_ONE_MINUS_DST_ALPHA;
    case Blend::DestColor:
      return GL_DST_COLOR;
    case Blend::InvDestColor:
      return GL_ONE_MINUS_DST_COLOR;
    case Blend::SrcAlphaSat:
      return GL_SRC_ALPHA_SATURATE;
    default:
      return GL_ONE;
  }
}

// A target without an alpha channel counts as opaque, whatever is in the channel that holds it here.
GLenum onOpaque(GLenum factor) {
  if (factor == GL_DST_ALPHA) return GL_ONE;
  return factor == GL_ONE_MINUS_DST_ALPHA || factor == GL_SRC_ALPHA_SATURATE ? GLenum{GL_ZERO} : factor;
}

void decodeBlend(const device::RenderStates& r, bool targetHasAlpha, FixedState& out) {
  using device::Blend;
  using device::BlendOp;
  if (!r.alphaBlendEnable) return;
  auto source = static_cast<Blend>(r.srcBlend), destination = static_cast<Blend>(r.destBlend);
  if (source == Blend::BothSrcAlpha) {
    source = Blend::SrcAlpha;
    destination = Blend::InvSrcAlpha;
  } else if (source == Blend::BothInvSrcAlpha) {
    source = Blend::InvSrcAlpha;
    destination = Blend::SrcAlpha;
  }
  out.source = targetHasAlpha ? factorOf(source) : onOpaque(factorOf(source));
  out.destination = targetHasAlpha ? factorOf(destination) : onOpaque(factorOf(destination));
  switch (static_cast<BlendOp>(r.blendOp)) {
    case BlendOp::Subtract:
      out.blendOp = GL_FUNC_SUBTRACT;
      break;
    case BlendOp::RevSubtract:
      out.blendOp = GL_FUNC_REVERSE_SUBTRACT;
      break;
    case BlendOp::Min:
      out.blendOp = GL_MIN;
      break;
    case BlendOp::Max:
      out.blendOp = GL_MAX;
      break;
    default:
      out.blendOp = GL_FUNC_ADD;
  }
  // What changes nothing is not blended.
  if (out.blendOp == GL_FUNC_ADD && out.source == GL_ONE && out.destination == GL_ZERO)
    out.blendOp = out.source = out.destination = 0;
}

FixedState fixedOf(const device::State& state, const ShaderKey& key, const DrawSurroundings& around) {
  const device::RenderStates& r = state.render;
  FixedState out;
  if (r.zEnable) {
    out.depthFunction = compareOf(r.zFunc);
    out.depthWrite = r.zWriteEnable != 0;
  }
  const bool alpha = device::hasAlpha(around.targetFormat);
  decodeBlend(r, alpha, out);
  out.colorMask = r.colorWriteEnable & 0xF;
  // Nobody reads an alpha that the format does not have, and whole pixels are written faster than some channels.
  if (!alpha) out.colorMask = (out.colorMask & 0x7) == 0x7 ? 0xF : out.colorMask & 0x7;
  // Pictures are drawn with their first row at y = 0: what is clockwise on the screen is counter-clockwise to OpenGL,
  // whose front side it is.
  if (key.topology == Topology::Triangles) {
    if (r.cullMode == static_cast<std::uint32_t>(device::CullMode::Clockwise)) out.cullFace = GL_FRONT;
    if (r.cullMode == static_cast<std::uint32_t>(device::CullMode::CounterClockwise)) out.cullFace = GL_BACK;
  }
  out.bias = static_cast<float>(std::min(r.zBias, 16u)) * kBiasStep;
  const math::Viewport& v = state.viewport;
  const auto width = static_cast<std::int32_t>(around.targetWidth);
  const auto height = static_cast<std::int32_t>(around.targetHeight);
  const std::int32_t left = std::clamp(v.x, 0, width), top = std::clamp(v.y, 0, height);
  const auto end = [](std::int32_t first, std::int32_t length, std::int32_t most) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{first} + length, 0, most));
  };
  out.scissor = {left, top, std::max(end(v.x, v.width, width) - left, 0),
                 std::max(end(v.y, v.height, height) - top, 0)};
  if (key.transformed) {
    out.viewport = {0, 0, width, height};
  } else {
    out.viewport = {v.x, v.y, std::max(v.width, 0), std::max(v.height, 0)};
    out.nearDepth = v.minZ;
    out.farDepth = v.maxZ;
  }
  return out;
}

Matrix matrixOf(const math::Mat4& m) { return std::bit_cast<Matrix>(m); }

void fogUniforms(const device::RenderStates& r, DrawUniforms& u) {
  u.fogColor = colorOf(r.fogColor);
  const float start = floatOf(r.fogStart), end = floatOf(r.fogEnd), span = end - start;
  u.fog = {start, span != 0 ? 1.0f / span : 0.0f, end, floatOf(r.fogDensity)};
}

// Pictures that are copied pixel by pixel meet the borders between texels exactly: half a 256th of a texel decides for
// the one after the border, whatever the rounding of interpolated coordinates.
void nudgeUniforms(const DrawState& draw, const DrawSurroundings& around, DrawUniforms& u) {
  constexpr float kNudge = 1.0f / 512;
  for (std::size_t i = 0; i < device::kStages; ++i) {
    if (!draw.key.stages[i].samples || (draw.samplers[i].magLinear && draw.samplers[i].minLinear)) continue;
    u.nudge[i * 2] = kNudge / static_cast<float>(around.textures[i].width);
    u.nudge[i * 2 + 1] = kNudge / static_cast<float>(around.textures[i].height);
  }
}

DrawUniforms uniformsOf(const device::DrawPacket& packet, const DrawState& draw, const DrawSurroundings& around) {
  const device::State& state = *packet.state;
  const device::RenderStates& r = state.render;
  const ShaderKey& key = draw.key;
  DrawUniforms u;
  const auto generates = [&key](std::size_t stage) { return key.stages[stage].coordinates > Coordinates::Vertex; };
  if (!key.transformed) {
    const math::Mat4 view = math::multiply(state.world, state.view);
    u.clip = matrixOf(math::multiply(view, state.projection));
    const bool vertexFog = key.fogSource == FogSource::Vertex && key.fogMode != 0;
    if (key.lighting || key.pointScale || vertexFog || generates(0) || generates(1)) u.view = matrixOf(view);
    if (key.lighting || generates(0) || generates(1)) u.normal = matrixOf(math::transpose(math::inverse(view)));
  }
  for (std::size_t i = 0; i < device::kStages; ++i)
    if (key.stages[i].transformCount) u.texture[i] = matrixOf(state.textureTransforms[i]);
  if (key.lighting) materialUniforms(state, u);
  u.factor = colorOf(r.textureFactor);
  if (key.fogSource != FogSource::None) fogUniforms(r, u);
  const auto half = [](std::int32_t length) { return static_cast<float>(std::max(length, 1)) * 0.5f; };
  u.screen = {half(draw.fixed.viewport[2]), half(draw.fixed.viewport[3]), static_cast<float>(draw.fixed.viewport[0]),
              static_cast<float>(draw.fixed.viewport[1])};
  if (key.topology == Topology::Points || key.topology == Topology::TriangleCorners) {
    const float least = std::clamp(floatOf(r.pointSizeMin), 0.0f, kLargestPoint);
    u.point = {floatOf(r.pointSize), least, std::clamp(floatOf(r.pointSizeMax), least, kLargestPoint),
               static_cast<float>(state.viewport.height)};
  }
  if (key.pointScale) u.scale = {floatOf(r.pointScaleA), floatOf(r.pointScaleB), floatOf(r.pointScaleC), 0};
  if (key.alphaFunction != 8) u.scale[3] = static_cast<float>(r.alphaRef & 0xFF);
  nudgeUniforms(draw, around, u);
  u.counts[0] = static_cast<std::int32_t>(draw.lights.size());
  u.counts[1] =
      packet.primitive == device::PrimitiveType::LineStrip ? static_cast<std::int32_t>(packet.primitiveCount) - 1 : -1;
  return u;
}

SamplerKey samplerOf(const device::StageStates& s, std::uint32_t levels) {
  using device::Filter;
  SamplerKey out;
  const auto address = [](std::uint32_t mode) { return static_cast<std::uint8_t>(mode >= 1 && mode <= 4 ? mode : 1); };
  out.addressU = address(s.addressU);
  out.addressV = address(s.addressV);
  const auto border = static_cast<std::uint8_t>(device::Address::Border);
  if (out.addressU == border || out.addressV == border) out.border = s.borderColor;
  const auto linear = static_cast<std::uint32_t>(Filter::Linear);
  out.magLinear = s.magFilter >= linear;
  out.minLinear = s.minFilter >= linear;
  out.firstLevel = static_cast<std::uint8_t>(std::min(s.maxMipLevel, levels - 1));
  out.mip = static_cast<std::uint8_t>(levels - 1 == out.firstLevel ? 0 : std::min(s.mipFilter, linear));
  if (s.minFilter == static_cast<std::uint32_t>(Filter::Anisotropic))
    out.anisotropy = static_cast<std::uint8_t>(std::clamp(s.maxAnisotropy, 1u, 16u));
  out.bias = static_cast<std::int32_t>(std::clamp(floatOf(s.mipMapLodBias), -16.0f, 16.0f) * 256.0f);
  return out;
}

}  // namespace

DrawState decode(const device::DrawPacket& packet, const DrawSurroundings& around) {
  const device::State& state = *packet.state;
  DrawState out;
  out.key = keyOf(packet, around);
  out.fixed = fixedOf(state, out.key, around);
  out.draws = out.fixed.scissor[2] > 0 && out.fixed.scissor[3] > 0;
  if (out.key.lighting) out.lights = lightUniforms(state);
  for (std::size_t i = 0; i < device::kStages; ++i)
    if (out.key.stages[i].samples) out.samplers[i] = samplerOf(state.stages[i], around.textures[i].levels);
  out.uniforms = uniformsOf(packet, out, around);
  return out;
}

}  // namespace ql::opengl
