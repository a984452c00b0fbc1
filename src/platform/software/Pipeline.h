/// @file
/// The state of a draw call, decoded into what vertices and pixels need.
#pragma once

#include "platform/device/BackEnd.h"
#include "platform/software/Lighting.h"
#include "platform/software/Target.h"
#include "platform/software/Texture.h"
#include "platform/software/TextureCoordinates.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>

namespace ql::software {

/// A texture with the filters and addressing of its stage.
struct Sampler {
  struct Level {
    const std::uint32_t* texels = nullptr;
    std::int32_t stride = 0, width = 1, height = 1;
    float scaleU = 256, scaleV = 256;   ///< coordinates to texels in 24.8 fixed point
    std::int32_t maskU = 0, maskV = 0;  ///< of the fast path: width - 1 when wrapping, all ones when clamping
    std::int32_t lowU = 0, lowV = 0;    ///< limits of the fixed-point coordinates
    std::int32_t highU = 0, highV = 0;
  };
  std::shared_ptr<const TextureData> data;  ///< nothing: no texture
  std::array<Level, kMaxLevels> levels;
  std::int32_t firstLevel = 0, lastLevel = 0;
  float width = 1, height = 1;  ///< of level 0
  device::Address addressU = device::Address::Wrap, addressV = device::Address::Wrap;
  bool fast = true;       ///< both directions clamp, or wrap a power of two
  bool clamps = false;    ///< some direction does
  bool bordered = false;  ///< some direction has a border
  bool linearMin = false, linearMag = false;
  enum class Mip : std::uint8_t { None, Nearest, Linear } mip = Mip::None;
  std::int32_t bias = 0;  ///< of the level, in 1/256
  std::uint32_t border = 0;
};

/// One active texture stage.
struct Stage {
  device::TextureOp colorOp = device::TextureOp::Disable, alphaOp = device::TextureOp::Disable;
  std::array<std::uint8_t, 3> colorArgs{}, alphaArgs{};  ///< argument 0, 1, 2 as texture argument codes
  bool samples = false;                                  ///< an argument reads the texture, and there is one
};

/// How vertices lie in memory; offsets in bytes, -1 when absent.
struct VertexLayout {
  bool transformed = false;
  std::int32_t size = 0;  ///< of all that a vertex has
  std::int32_t normal = -1, pointSize = -1, diffuse = -1, specular = -1;
  std::array<std::int32_t, device::kStages> coordinates{-1, -1};  ///< of the set that each stage reads
};

/// Attributes of a vertex record: interpolated values, all but the first two divided by w.
inline constexpr int kAttributeZ = 0, kAttributeQ = 1, kMaxAttributes = 24;
/// Words in front of the attributes: x, y (24.8 fixed point), outcode, point size. They hold bits, not floats.
inline constexpr int kRecordX = 0, kRecordY = 1, kRecordOutcode = 2, kRecordPointSize = 3, kRecordHead = 4;

/// Places of the attributes in a record, -1 when the pipeline doesn't interpolate them.
struct Attributes {
  std::array<std::int32_t, device::kStages> uv{-1, -1};
  /// What coordinates are divided by at each pixel: 1 / w alone, or a projected texture's divisor over w.
  std::array<std::int32_t, device::kStages> divisor{kAttributeQ, kAttributeQ};
  std::int32_t diffuse = -1, specular = -1, fog = -1;  ///< blue, green, red, alpha 0 to 255; blue, green, red; 0 to 255
  std::int32_t count = 2;
  std::int32_t recordFloats() const { return (kRecordHead + count + 3) & ~3; }
};

enum class FogSource : std::uint8_t { None, Vertex, Table };
/// How a fog factor comes from a distance.
struct Fog {
  FogSource source = FogSource::None;
  device::FogMode mode = device::FogMode::None;  ///< None: the factor is the alpha of the specular colour
  bool range = false;
  float start = 0, end = 1, density = 1, scale = 1;  ///< scale: 1 / (end - start)
  std::uint32_t color = 0;
};

/// What of a vertex is computed in camera space.
struct CameraSpace {
  bool position = false, normal = false, toEye = false;
  bool normalizes = false;        ///< normals
  bool localViewer = true;        ///< else everything is seen along the z axis
  math::Mat4 view, normalMatrix;  ///< from model space
};

/// How large points are, in pixels, or in heights of the viewport when they shrink with the distance.
struct PointSize {
  float size = 1, least = 1, most = 64;
  bool scales = false;
  float height = 0;           ///< of the viewport, pixels
  float a = 1, b = 0, c = 0;  ///< a point's size is divided by the root of a + b d + c d²
};

/// From clip space to the screen.
struct ScreenTransform {
  float halfWidth = 0, halfHeight = 0, centerX = 0, centerY = 0;
  float minZ = 0, depthZ = 1;
  /// Screen coordinates that vertices may have: the guard band, pixels.
  float guardLeft = 0, guardTop = 0, guardRight = 0, guardBottom = 0;
  float bias = 0;  ///< subtracted from the depth, in its units
};

/// Pipelines that have pixel code of their own.
enum class Texturing : std::uint8_t { General, None, Replace, Modulate };
enum class Blending : std::uint8_t { General, Opaque, Alpha, Multiply };
/// What vector code makes of alpha in a first stage that multiplies colours.
enum class FirstAlpha : std::uint8_t { Multiply, Texture, Diffuse };
/// What vector code does after the first stage: nothing, or a second one that multiplies by its texture, with what
/// becomes of alpha.
struct SecondStage {
  enum class Alpha : std::uint8_t { Keep, Multiply, Take };
  bool active = false;
  int shift = 0;  ///< of the product of colours: doubled, quadrupled
  Alpha alpha = Alpha::Keep;
};

struct Pipeline;
struct Tile;
struct TriangleRef;

struct Pipeline {
  // Vertices
  VertexLayout layout;
  Attributes attributes;
  math::Mat4 clip;  ///< from model to clip space
  CameraSpace camera;
  Lighting lighting;
  std::array<CoordinateSource, device::kStages> coordinates;
  ScreenTransform screen;
  Box scissor;  ///< the viewport inside the target: nothing is drawn outside
  device::FillMode fill = device::FillMode::Solid;
  device::CullMode cull = device::CullMode::None;
  bool flat = false, lastPixel = true;
  PointSize point;
  bool sprites = false;  ///< a point shows the whole of its textures

  // Pixels
  std::array<Sampler, device::kStages> samplers;
  std::array<Stage, device::kStages> stages;
  int stageCount = 0;  ///< stages before the first that is disabled
  std::uint32_t textureFactor = 0;
  bool specularAdd = false;
  Fog fog;
  bool depthTest = false, depthWrite = false;
  device::Compare depthFunction = device::Compare::LessEqual;
  bool alphaTest = false;
  device::Compare alphaFunction = device::Compare::Always;
  std::uint16_t alphaRef = 0;
  bool blend = false;
  device::Blend source = device::Blend::One, destination = device::Blend::Zero;
  device::BlendOp blendOp = device::BlendOp::Add;
  std::uint32_t writeMask = 0xFFFFFFFF;
  TargetBits target;
  bool dither = false;
  Texturing texturing = Texturing::General;
  Blending blending = Blending::General;
  /// The same for vector code, where a second stage, adding specular colours and fog come on top.
  Texturing firstTexturing = Texturing::General;
  FirstAlpha firstAlpha = FirstAlpha::Multiply;
  SecondStage second;
  /// The code for it. @see PaintFunction
  void (*paint)(const Pipeline&, std::span<const TriangleRef>, const Box& area, Tile&) = nullptr;

  /// Whether vertices have these colours, their own or lit ones.
  bool hasDiffuse() const { return lighting.enabled || layout.diffuse >= 0; }
  bool hasSpecular() const { return lighting.enabled || layout.specular >= 0; }
  /// Whether anything at all can be drawn.
  bool draws() const { return !scissor.empty(); }
};

/// The diffuse colour's place in a vertex, bytes; -1 when a format has none.
std::int32_t diffuseOffset(std::uint32_t vertexFormat);

/// Decodes the state of a packet for a target. @param textures the packet's textures, null where there is none
/// @param white no vertex has another diffuse colour than white @param out is replaced; what it has allocated is used
void makePipeline(const device::DrawPacket& packet, const Target& target,
                  const std::array<const Texture*, device::kStages>& textures, bool white, Pipeline& out);

}  // namespace ql::software
