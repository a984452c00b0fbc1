#include "platform/opengl/KeyOfState.h"

#include "platform/device/Resources.h"

#include <algorithm>

namespace ql::opengl {
namespace {

using device::TextureArg;
using device::TextureOp;

constexpr bool hasThree(TextureOp op) { return op == TextureOp::MultiplyAdd || op == TextureOp::Lerp; }

// Only the arguments that an operation reads stay, so that the others make no new programs.
std::array<std::uint8_t, 3> arguments(TextureOp op, std::uint32_t a0, std::uint32_t a1, std::uint32_t a2) {
  const auto arg = [](std::uint32_t value, bool read) { return static_cast<std::uint8_t>(read ? value & 0x3F : 0); };
  return {arg(a0, hasThree(op)), arg(a1, op != TextureOp::Disable && op != TextureOp::SelectArg2),
          arg(a2, op != TextureOp::Disable && op != TextureOp::SelectArg1)};
}

bool readsArgument(std::uint8_t code, const std::array<std::uint8_t, 3>& args, TextureArg arg) {
  const auto op = static_cast<TextureOp>(code);
  if (op == TextureOp::Disable) return false;
  const auto is = [&](std::size_t i) { return (args[i] & device::kArgSelectMask) == static_cast<std::uint8_t>(arg); };
  return (op != TextureOp::SelectArg2 && is(1)) || (op != TextureOp::SelectArg1 && is(2)) || (hasThree(op) && is(0));
}

StageKey stageOf(const device::StageStates& s, bool textured) {
  StageKey out;
  const auto colorOp = static_cast<TextureOp>(s.colorOp), alphaOp = static_cast<TextureOp>(s.alphaOp);
  out.colorOp = static_cast<std::uint8_t>(colorOp);
  out.colorArgs = arguments(colorOp, s.colorArg0, s.colorArg1, s.colorArg2);
  if (colorOp != TextureOp::DotProduct3) {  // which fills alpha too
    out.alphaOp = static_cast<std::uint8_t>(alphaOp);
    out.alphaArgs = arguments(alphaOp, s.alphaArg0, s.alphaArg1, s.alphaArg2);
  }
  if (!textured && alphaOp == TextureOp::SelectArg1 &&
      out.alphaArgs[1] == static_cast<std::uint8_t>(TextureArg::Texture))
    out.alphaArgs[1] = static_cast<std::uint8_t>(TextureArg::Current);  // the default without a texture: vertex alpha
  out.samples = textured && reads(out, TextureArg::Texture);
  return out;
}

// Which coordinates a stage samples at. Vertices that arrive on the screen bring finished ones.
void coordinatesOf(const device::StageStates& s, ShaderKey& key, StageKey& stage) {
  const std::uint32_t set = s.texCoordIndex & 0xFFFF, generated = s.texCoordIndex >> 16;
  if (!key.transformed && generated >= 1 && generated <= 3) {
    constexpr std::array kGenerated{Coordinates::Normal, Coordinates::Position, Coordinates::Reflection};
    stage.coordinates = kGenerated[generated - 1];
  } else if (set < key.coordinateSets) {
    stage.coordinates = Coordinates::Vertex;
    stage.set = static_cast<std::uint8_t>(set);
  }
  if (key.transformed || stage.coordinates == Coordinates::None) return;
  const std::uint32_t count = s.textureTransformFlags & 0xFF;
  stage.transformCount = static_cast<std::uint8_t>(std::min(count, 4u));
  stage.projected = stage.transformCount >= 2 && (s.textureTransformFlags & 0x100) != 0;
}

void fogKey(const device::RenderStates& r, ShaderKey& key) {
  if (!r.fogEnable) return;
  key.fogSource = r.fogTableMode != 0 ? FogSource::Table : FogSource::Vertex;
  key.fogMode = static_cast<std::uint8_t>(r.fogTableMode != 0 ? r.fogTableMode : r.fogVertexMode);
  // Vertices that arrive on the screen have no view depth: they bring their factor.
  if (key.transformed && key.fogSource == FogSource::Vertex) key.fogMode = 0;
  key.fogRange = r.rangeFogEnable != 0 && key.fogSource == FogSource::Vertex && key.fogMode != 0;
}

void lightingKey(const device::RenderStates& r, ShaderKey& key) {
  key.lighting = r.lighting != 0 && !key.transformed;
  if (!key.lighting) return;
  key.lightSpecular = r.specularEnable != 0;
  key.localViewer = r.localViewer != 0;
  const auto source = [&](std::uint32_t wanted) {
    const bool there = (wanted == 1 && key.diffuse) || (wanted == 2 && key.specular);
    return static_cast<std::uint8_t>(r.colorVertex && there ? wanted : 0);
  };
  key.diffuseSource = source(r.diffuseMaterialSource);
  key.specularSource = source(r.specularMaterialSource);
  key.ambientSource = source(r.ambientMaterialSource);
  key.emissiveSource = source(r.emissiveMaterialSource);
}

Topology topologyOf(device::PrimitiveType primitive, std::uint32_t fillMode) {
  using device::PrimitiveType;
  if (primitive == PrimitiveType::PointList) return Topology::Points;
  if (primitive == PrimitiveType::LineList || primitive == PrimitiveType::LineStrip) return Topology::Lines;
  if (fillMode == static_cast<std::uint32_t>(device::FillMode::Wireframe)) return Topology::TriangleEdges;
  if (fillMode == static_cast<std::uint32_t>(device::FillMode::Point)) return Topology::TriangleCorners;
  return Topology::Triangles;
}

void targetKey(device::Format format, const device::RenderStates& r, ShaderKey& key) {
  // A blended colour cannot be rounded before it is stored: it is when it is read.
  if (r.alphaBlendEnable || device::bytesPerPixel(format) != 2) return;
  key.redBits = key.blueBits = 5;
  key.greenBits = format == device::Format::R5G6B5 ? 6 : 5;
  key.alphaBits = format == device::Format::A1R5G5B5 ? 1 : 8;
  key.dither = r.ditherEnable != 0;
}

}  // namespace

bool reads(const StageKey& stage, TextureArg arg) {
  for (const auto op : {static_cast<TextureOp>(stage.colorOp), static_cast<TextureOp>(stage.alphaOp)}) {
    if (arg == TextureArg::Texture &&
        (op == TextureOp::BlendTextureAlpha || op == TextureOp::BlendTextureAlphaPremultiplied))
      return true;
    if (arg == TextureArg::Diffuse && op == TextureOp::BlendDiffuseAlpha) return true;
  }
  return readsArgument(stage.colorOp, stage.colorArgs, arg) || readsArgument(stage.alphaOp, stage.alphaArgs, arg);
}

ShaderKey keyOf(const device::DrawPacket& packet, const DrawSurroundings& around) {
  namespace fvf = device::fvf;
  const device::State& state = *packet.state;
  const device::RenderStates& r = state.render;
  const std::uint32_t code = packet.vertexFormat;
  ShaderKey key;
  key.transformed = (code & fvf::kXyzRhw) != 0;
  key.normal = (code & fvf::kNormal) != 0;
  key.pointSize = (code & fvf::kPointSize) != 0;
  key.diffuse = (code & fvf::kDiffuse) != 0;
  key.specular = (code & fvf::kSpecular) != 0;
  key.coordinateSets = static_cast<std::uint8_t>((code & fvf::kTextureCountMask) >> fvf::kTextureCountShift);
  key.topology = topologyOf(packet.primitive, r.fillMode);
  if (key.topology >= Topology::TriangleEdges && r.cullMode > 1) key.cull = static_cast<std::uint8_t>(r.cullMode);
  key.lastPixel = key.topology == Topology::Lines && r.lastPixel != 0;
  if (key.topology == Topology::Points || key.topology == Topology::TriangleCorners) {
    key.pointSprite = r.pointSpriteEnable != 0 && key.topology == Topology::Points;
    key.pointScale = r.pointScaleEnable != 0 && !key.transformed;
  }
  lightingKey(r, key);
  key.flat = r.shadeMode == static_cast<std::uint32_t>(device::ShadeMode::Flat);
  key.specularAdd = r.specularEnable != 0 && (key.lighting || key.specular);
  fogKey(r, key);
  bool generates = false;
  for (std::size_t i = 0; i < device::kStages; ++i) {
    StageKey stage = stageOf(state.stages[i], around.textured[i]);
    if (stage.colorOp == static_cast<std::uint8_t>(TextureOp::Disable)) break;
    if (stage.samples && !key.pointSprite) coordinatesOf(state.stages[i], key, stage);
    generates |= stage.coordinates == Coordinates::Normal || stage.coordinates == Coordinates::Reflection;
    if (stage.coordinates == Coordinates::Reflection) key.localViewer = r.localViewer != 0;
    key.stages[i] = stage;
    key.stageCount = static_cast<std::uint8_t>(i + 1);
  }
  key.normalize = r.normalizeNormals != 0 && key.normal && (key.lighting || generates);
  if (r.alphaTestEnable) key.alphaFunction = static_cast<std::uint8_t>(r.alphaFunc);
  targetKey(around.targetFormat, r, key);
  return key;
}

}  // namespace ql::opengl
