#include "platform/software/Pipeline.h"

#include "math/Matrix.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace ql::software {
namespace {

using device::Address;
using device::Filter;
using device::TextureArg;
using device::TextureOp;

// The guard band and the largest target together stay below 32768 pixels, so that edge functions of 24.8 fixed point
// fit 32 bits inside a tile.
constexpr float kGuard = 8192;
// A step of the depth bias, in units of the 24-bit depth: a quarter of a step of 16-bit depth.
constexpr float kBiasStep = 64;

float floatOf(std::uint32_t bits) {
  const float value = std::bit_cast<float>(bits);
  return std::isfinite(value) ? value : 0.0f;
}

template <class E>
E enumerator(std::uint32_t value, E low, E high, E otherwise) {
  return value >= static_cast<std::uint32_t>(low) && value <= static_cast<std::uint32_t>(high) ? static_cast<E>(value)
                                                                                               : otherwise;
}

// All but the coordinates. @param end where they start
VertexLayout layoutOf(std::uint32_t code, std::int32_t& end) {
  namespace fvf = device::fvf;
  VertexLayout out;
  out.transformed = (code & fvf::kXyzRhw) != 0;
  std::int32_t offset = out.transformed ? 16 : 12;
  if (code & fvf::kNormal) {
    out.normal = offset;
    offset += 12;
  }
  const auto word = [&](std::uint32_t flag, std::int32_t& place) {
    if (!(code & flag)) return;
    place = offset;
    offset += 4;
  };
  word(fvf::kPointSize, out.pointSize);
  word(fvf::kDiffuse, out.diffuse);
  word(fvf::kSpecular, out.specular);
  end = offset;
  return out;
}

VertexLayout layoutOf(const device::DrawPacket& packet) {
  namespace fvf = device::fvf;
  const std::uint32_t code = packet.vertexFormat;
  std::int32_t offset = 0;
  VertexLayout out = layoutOf(code, offset);
  const std::uint32_t sets = (code & fvf::kTextureCountMask) >> fvf::kTextureCountShift;
  out.size = offset + static_cast<std::int32_t>(sets) * 8;
  for (std::size_t stage = 0; stage < device::kStages; ++stage) {
    const std::uint32_t set = packet.state->stages[stage].texCoordIndex & 0xFFFF;
    if (set < sets) out.coordinates[stage] = offset + static_cast<std::int32_t>(set) * 8;
  }
  return out;
}

bool reads(const std::array<std::uint8_t, 3>& args, TextureOp op, TextureArg arg) {
  if (op == TextureOp::Disable) return false;
  const auto is = [&](std::size_t i) { return (args[i] & device::kArgSelectMask) == static_cast<std::uint8_t>(arg); };
  const bool three = op == TextureOp::MultiplyAdd || op == TextureOp::Lerp;
  return (op != TextureOp::SelectArg2 && is(1)) || (op != TextureOp::SelectArg1 && is(2)) || (three && is(0));
}

bool reads(const Stage& stage, TextureArg arg) {
  if (arg == TextureArg::Texture)
    for (const TextureOp op : {stage.colorOp, stage.alphaOp})
      if (op == TextureOp::BlendTextureAlpha || op == TextureOp::BlendTextureAlphaPremultiplied) return true;
  if (arg == TextureArg::Diffuse)
    for (const TextureOp op : {stage.colorOp, stage.alphaOp})
      if (op == TextureOp::BlendDiffuseAlpha) return true;
  return reads(stage.colorArgs, stage.colorOp, arg) || reads(stage.alphaArgs, stage.alphaOp, arg);
}

TextureOp operation(std::uint32_t value) {
  const TextureOp op = enumerator(value, TextureOp::Disable, TextureOp::Lerp, TextureOp::Disable);
  // The numbers between are operations that the device doesn't offer (bump mapping, premodulation).
  if (value == 17 || value == 22 || value == 23) return TextureOp::SelectArg1;
  return op;
}

Stage stageOf(const device::StageStates& s, bool textured) {
  const auto arg = [](std::uint32_t value) { return static_cast<std::uint8_t>(value & 0x3F); };
  Stage out;
  out.colorOp = operation(s.colorOp);
  out.alphaOp = operation(s.alphaOp);
  out.colorArgs = {arg(s.colorArg0), arg(s.colorArg1), arg(s.colorArg2)};
  out.alphaArgs = {arg(s.alphaArg0), arg(s.alphaArg1), arg(s.alphaArg2)};
  if (!textured && out.alphaOp == TextureOp::SelectArg1 &&
      out.alphaArgs[1] == static_cast<std::uint8_t>(TextureArg::Texture))
    out.alphaArgs[1] = static_cast<std::uint8_t>(TextureArg::Current);  // the default without a texture: vertex alpha
  out.samples = textured && reads(out, TextureArg::Texture);
  return out;
}

Sampler samplerOf(const device::StageStates& s, const Texture& texture) {
  Sampler out;
  out.data = texture.data();
  const TextureData& data = *out.data;
  out.width = static_cast<float>(data.levels[0].width);
  out.height = static_cast<float>(data.levels[0].height);
  out.addressU = enumerator(s.addressU, Address::Wrap, Address::Border, Address::Wrap);
  out.addressV = enumerator(s.addressV, Address::Wrap, Address::Border, Address::Wrap);
  out.border = s.borderColor;
  out.linearMin = s.minFilter >= static_cast<std::uint32_t>(Filter::Linear);
  out.linearMag = s.magFilter >= static_cast<std::uint32_t>(Filter::Linear);
  out.lastLevel = static_cast<std::int32_t>(data.levelCount) - 1;
  out.firstLevel = static_cast<std::int32_t>(std::min(s.maxMipLevel, data.levelCount - 1));
  out.mip = s.mipFilter == 0 || out.firstLevel == out.lastLevel ? Sampler::Mip::None
            : s.mipFilter == 1                                  ? Sampler::Mip::Nearest
                                                                : Sampler::Mip::Linear;
  out.bias = static_cast<std::int32_t>(std::clamp(floatOf(s.mipMapLodBias), -16.0f, 16.0f) * 256.0f);
  for (std::size_t i = 0; i < data.levelCount; ++i) {
    const TextureLevel& from = data.levels[i];
    Sampler::Level& to = out.levels[i];
    to.texels = data.texels.data() + from.offset;
    to.stride = static_cast<std::int32_t>(from.stride);
    to.width = static_cast<std::int32_t>(from.width);
    to.height = static_cast<std::int32_t>(from.height);
    to.scaleU = static_cast<float>(to.width) * 256.0f;
    to.scaleV = static_cast<float>(to.height) * 256.0f;
    const auto axis = [&out](Address mode, std::int32_t size, std::int32_t& mask, std::int32_t& low,
                             std::int32_t& high) {
      const bool clamp = mode == Address::Clamp;
      if (!clamp && !(mode == Address::Wrap && std::has_single_bit(static_cast<std::uint32_t>(size)))) out.fast = false;
      out.clamps |= clamp;
      out.bordered |= mode == Address::Border;
      mask = mode == Address::Wrap && std::has_single_bit(static_cast<std::uint32_t>(size)) ? size - 1 : -1;
      low = clamp ? 0 : std::numeric_limits<std::int32_t>::min();
      high = clamp ? (size - 1) * 256 : std::numeric_limits<std::int32_t>::max();
    };
    axis(out.addressU, to.width, to.maskU, to.lowU, to.highU);
    axis(out.addressV, to.height, to.maskV, to.lowV, to.highV);
  }
  return out;
}

Fog fogOf(const device::RenderStates& r, bool transformed) {
  Fog fog;
  if (!r.fogEnable) return fog;
  fog.color = r.fogColor;
  fog.start = floatOf(r.fogStart);
  fog.end = floatOf(r.fogEnd);
  fog.density = floatOf(r.fogDensity);
  const float span = fog.end - fog.start;
  fog.scale = span != 0 ? 1.0f / span : 0.0f;
  fog.range = r.rangeFogEnable != 0;
  using device::FogMode;
  fog.source = r.fogTableMode != 0 ? FogSource::Table : FogSource::Vertex;
  fog.mode = enumerator(fog.source == FogSource::Table ? r.fogTableMode : r.fogVertexMode, FogMode::None,
                        FogMode::Linear, FogMode::None);
  // Vertices that arrive on the screen have no view depth: they bring their factor.
  if (transformed && fog.source == FogSource::Vertex) fog.mode = FogMode::None;
  return fog;
}

ScreenTransform screenOf(const math::Viewport& v, const Target& target, std::uint32_t zBias, bool transformed) {
  ScreenTransform s;
  s.halfWidth = static_cast<float>(v.width) * 0.5f;
  s.halfHeight = static_cast<float>(v.height) * 0.5f;
  s.centerX = static_cast<float>(v.x) + s.halfWidth;
  s.centerY = static_cast<float>(v.y) + s.halfHeight;
  s.minZ = transformed ? 0 : v.minZ;
  s.depthZ = transformed ? 1 : v.maxZ - v.minZ;
  s.guardLeft = s.guardTop = -kGuard;
  s.guardRight = static_cast<float>(target.width()) + kGuard;
  s.guardBottom = static_cast<float>(target.height()) + kGuard;
  s.bias = static_cast<float>(std::min(zBias, 16u)) * kBiasStep;
  return s;
}

// A viewport's far side, which must not overflow.
std::int32_t sum(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{a} + b, -0x40000000, 0x40000000));
}

constexpr std::uint8_t codeOf(TextureArg arg) { return static_cast<std::uint8_t>(arg); }

bool selects(TextureArg arg, TextureOp op, const std::array<std::uint8_t, 3>& args) {
  return (op == TextureOp::SelectArg1 && args[1] == codeOf(arg)) ||
         (op == TextureOp::SelectArg2 && args[2] == codeOf(arg));
}
// Whether a stage's operation has the texture as one argument and the current colour as the other.
bool pairs(const std::array<std::uint8_t, 3>& args) {
  constexpr auto kTexture = codeOf(TextureArg::Texture), kCurrent = codeOf(TextureArg::Current);
  return (args[1] == kTexture && args[2] == kCurrent) || (args[2] == kTexture && args[1] == kCurrent);
}

// What pixel code of its own the first stage has.
Texturing texturingOf(const Pipeline& p, FirstAlpha& firstAlpha) {
  if (p.stageCount == 0) return Texturing::None;
  Stage s = p.stages[0];
  if (!s.samples) return Texturing::General;
  // The first stage's current colour is the diffuse one.
  for (auto* args : {&s.colorArgs, &s.alphaArgs})
    for (std::uint8_t& arg : *args)
      if (arg == codeOf(TextureArg::Diffuse)) arg = codeOf(TextureArg::Current);
  const bool modulatesColor = s.colorOp == TextureOp::Modulate && pairs(s.colorArgs);
  const bool modulatesAlpha = s.alphaOp == TextureOp::Modulate && pairs(s.alphaArgs);
  // Without vertex colours, modulating multiplies by white.
  const bool white = !p.hasDiffuse();
  const bool color = selects(TextureArg::Texture, s.colorOp, s.colorArgs) || (white && modulatesColor);
  const bool alpha = selects(TextureArg::Texture, s.alphaOp, s.alphaArgs) || (white && modulatesAlpha);
  if (color && alpha) return Texturing::Replace;
  if (!modulatesColor) return Texturing::General;
  if (!modulatesAlpha && !selects(TextureArg::Texture, s.alphaOp, s.alphaArgs) &&
      !selects(TextureArg::Current, s.alphaOp, s.alphaArgs))
    return Texturing::General;
  firstAlpha = modulatesAlpha                                         ? FirstAlpha::Multiply
               : selects(TextureArg::Texture, s.alphaOp, s.alphaArgs) ? FirstAlpha::Texture
                                                                      : FirstAlpha::Diffuse;
  return Texturing::Modulate;
}

SecondStage secondOf(const Stage& s) {
  SecondStage out;
  const auto shift = [](TextureOp op) { return static_cast<int>(op) - static_cast<int>(TextureOp::Modulate); };
  out.shift = shift(s.colorOp);
  if (!s.samples || out.shift < 0 || out.shift > 2 || !pairs(s.colorArgs)) return {};
  if (s.alphaOp == TextureOp::Disable || selects(TextureArg::Current, s.alphaOp, s.alphaArgs))
    out.alpha = SecondStage::Alpha::Keep;
  else if (selects(TextureArg::Texture, s.alphaOp, s.alphaArgs))
    out.alpha = SecondStage::Alpha::Take;
  else if (s.alphaOp == s.colorOp && pairs(s.alphaArgs))
    out.alpha = SecondStage::Alpha::Multiply;
  else
    return {};
  out.active = true;
  return out;
}

void chooseTexturing(Pipeline& p) {
  const Texturing first = texturingOf(p, p.firstAlpha);
  if (!p.specularAdd && p.fog.source == FogSource::None && p.stageCount < 2 && p.firstAlpha == FirstAlpha::Multiply)
    p.texturing = first;
  p.second = p.stageCount == 2 ? secondOf(p.stages[1]) : SecondStage{};
  if (p.stageCount < 2 || p.second.active) p.firstTexturing = first;
}

void chooseBlending(Pipeline& p) {
  using device::Blend;
  if (p.target.sixteen() || p.writeMask != 0xFFFFFFFF) return;
  if (!p.blend) {
    p.blending = Blending::Opaque;
  } else if (p.blendOp == device::BlendOp::Add) {
    if (p.source == Blend::SrcAlpha && p.destination == Blend::InvSrcAlpha) p.blending = Blending::Alpha;
    if ((p.source == Blend::Zero && p.destination == Blend::SrcColor) ||
        (p.source == Blend::DestColor && p.destination == Blend::Zero))
      p.blending = Blending::Multiply;
  }
}

void placeAttributes(Pipeline& p) {
  Attributes& a = p.attributes;
  const auto place = [&a](std::int32_t& slot, std::int32_t count) {
    slot = a.count;
    a.count += count;
  };
  bool diffuse = p.stageCount == 0, specular = p.specularAdd;
  for (int i = 0; i < p.stageCount; ++i) {
    const Stage& stage = p.stages[static_cast<std::size_t>(i)];
    // The first stage's current colour is the diffuse one.
    diffuse |= (i == 0 && p.firstTexturing != Texturing::Replace) || reads(stage, TextureArg::Diffuse);
    specular |= reads(stage, TextureArg::Specular);
    if (!stage.samples) continue;
    const auto at = static_cast<std::size_t>(i);
    place(a.uv[at], 2);
    if (p.coordinates[at].projected) place(a.divisor[at], 1);
  }
  if (diffuse && p.hasDiffuse()) place(a.diffuse, 4);
  if (specular && p.hasSpecular()) place(a.specular, 4);
  if (p.fog.source == FogSource::Vertex) place(a.fog, 1);
}

PointSize pointSizeOf(const device::State& state, bool onScreen) {
  constexpr float kLargest = 64;
  const device::RenderStates& r = state.render;
  PointSize out;
  out.size = floatOf(r.pointSize);
  out.least = std::clamp(floatOf(r.pointSizeMin), 0.0f, kLargest);
  out.most = std::clamp(floatOf(r.pointSizeMax), out.least, kLargest);
  out.scales = r.pointScaleEnable != 0 && !onScreen;
  out.height = static_cast<float>(state.viewport.height);
  out.a = floatOf(r.pointScaleA);
  out.b = floatOf(r.pointScaleB);
  out.c = floatOf(r.pointScaleC);
  return out;
}

// After the attributes have their places: what nothing reads is not computed.
void decideCameraSpace(Pipeline& p, const device::RenderStates& r) {
  if (p.layout.transformed) return;
  CameraSpace& c = p.camera;
  const bool lit = p.lighting.enabled && (p.attributes.diffuse >= 0 || p.attributes.specular >= 0);
  c.normal = lit;
  c.toEye = p.lighting.specular && p.attributes.specular >= 0;
  c.position = lit || p.point.scales || (p.attributes.fog >= 0 && p.fog.mode != device::FogMode::None);
  for (const CoordinateSource& source : p.coordinates) {
    using Kind = CoordinateSource::Kind;
    c.position |= source.kind == Kind::Position;
    c.normal |= source.kind == Kind::Normal || source.kind == Kind::Reflection;
    c.toEye |= source.kind == Kind::Reflection;
  }
  c.position |= c.toEye;
  c.localViewer = r.localViewer != 0;
  c.normalizes = r.normalizeNormals != 0;
  if (c.normal) c.normalMatrix = math::transpose(math::inverse(c.view));
}

void decodeBlend(Pipeline& p, const device::RenderStates& r) {
  using device::Blend;
  using device::BlendOp;
  p.blend = r.alphaBlendEnable != 0;
  p.source = enumerator(r.srcBlend, Blend::Zero, Blend::BothInvSrcAlpha, Blend::One);
  p.destination = enumerator(r.destBlend, Blend::Zero, Blend::BothInvSrcAlpha, Blend::Zero);
  p.blendOp = enumerator(r.blendOp, BlendOp::Add, BlendOp::Max, BlendOp::Add);
  if (p.source == Blend::One && p.destination == Blend::Zero && p.blendOp == BlendOp::Add) p.blend = false;
  if (p.source == Blend::BothSrcAlpha) {
    p.source = Blend::SrcAlpha;
    p.destination = Blend::InvSrcAlpha;
  } else if (p.source == Blend::BothInvSrcAlpha) {
    p.source = Blend::InvSrcAlpha;
    p.destination = Blend::SrcAlpha;
  }
  if (p.destination > Blend::SrcAlphaSat) p.destination = Blend::Zero;
  p.writeMask = 0;
  constexpr std::array<std::uint32_t, 4> kMasks{0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000};  // red first
  for (std::size_t i = 0; i < 4; ++i)
    if (r.colorWriteEnable >> i & 1) p.writeMask |= kMasks[i];
}

}  // namespace

std::int32_t diffuseOffset(std::uint32_t vertexFormat) {
  std::int32_t end = 0;
  return layoutOf(vertexFormat, end).diffuse;
}

void makePipeline(const device::DrawPacket& packet, const Target& target,
                  const std::array<const Texture*, device::kStages>& textures, bool white, Pipeline& p) {
  using device::Compare;
  const device::State& state = *packet.state;
  const device::RenderStates& r = state.render;
  const math::Viewport& v = state.viewport;
  std::vector<LightSource> lights = std::move(p.lighting.lights);
  lights.clear();
  p = Pipeline();
  p.lighting.lights = std::move(lights);
  p.layout = layoutOf(packet);
  if (white && r.lighting == 0) p.layout.diffuse = -1;
  p.camera.view = math::multiply(state.world, state.view);
  p.clip = math::multiply(p.camera.view, state.projection);
  p.screen = screenOf(v, target, r.zBias, p.layout.transformed);
  p.scissor = intersect({v.x, v.y, sum(v.x, v.width), sum(v.y, v.height)}, {0, 0, target.width(), target.height()});
  p.fill = enumerator(r.fillMode, device::FillMode::Point, device::FillMode::Solid, device::FillMode::Solid);
  p.cull = enumerator(r.cullMode, device::CullMode::None, device::CullMode::CounterClockwise, device::CullMode::None);
  p.flat = r.shadeMode == static_cast<std::uint32_t>(device::ShadeMode::Flat);
  p.lastPixel = r.lastPixel != 0;
  p.point = pointSizeOf(state, p.layout.transformed);
  p.sprites = r.pointSpriteEnable != 0;
  // Stencil states are ignored: no target has a stencil buffer.
  if (r.lighting != 0 && !p.layout.transformed)
    decodeLighting(state, p.layout.diffuse >= 0, p.layout.specular >= 0, p.lighting);
  p.textureFactor = r.textureFactor;
  p.specularAdd = r.specularEnable != 0 && p.hasSpecular();
  p.fog = fogOf(r, p.layout.transformed);
  for (std::size_t i = 0; i < device::kStages; ++i) {
    const device::StageStates& s = state.stages[i];
    const Stage stage = stageOf(s, textures[i] != nullptr);
    if (stage.colorOp == TextureOp::Disable) break;
    p.stages[i] = stage;
    p.stageCount = static_cast<int>(i) + 1;
    if (!stage.samples) continue;
    p.samplers[i] = samplerOf(s, *textures[i]);
    p.coordinates[i] = coordinateSourceOf(state, i, p.layout.transformed, p.layout.coordinates[i] >= 0);
  }
  p.depthTest = r.zEnable != 0;
  p.depthFunction = enumerator(r.zFunc, Compare::Never, Compare::Always, Compare::LessEqual);
  p.depthWrite = p.depthTest && r.zWriteEnable != 0;
  p.alphaFunction = enumerator(r.alphaFunc, Compare::Never, Compare::Always, Compare::Always);
  p.alphaTest = r.alphaTestEnable != 0 && p.alphaFunction != Compare::Always;
  p.alphaRef = static_cast<std::uint16_t>(r.alphaRef & 0xFF);
  decodeBlend(p, r);
  p.target = target.bits();
  p.dither = r.ditherEnable != 0 && p.target.sixteen();
  chooseTexturing(p);
  chooseBlending(p);
  placeAttributes(p);
  decideCameraSpace(p, r);
}

}  // namespace ql::software
