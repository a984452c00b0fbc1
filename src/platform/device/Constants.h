/// @file
/// The numbers of the rendering device: states, formats, primitive types. They are visible to hosts, logs and traces,
/// so each enumerator has its fixed value.
#pragma once

#include <cstdint>

namespace ql::device {

enum class DeviceType : std::uint32_t { Hardware = 1, Reference = 2 };

enum class Format : std::uint32_t {
  Unknown = 0,
  R8G8B8 = 20,
  A8R8G8B8 = 21,
  X8R8G8B8 = 22,
  R5G6B5 = 23,
  X1R5G5B5 = 24,
  A1R5G5B5 = 25,
  A4R4G4B4 = 26,
  A8 = 28,
  X4R4G4B4 = 30,
  P8 = 41,
  L8 = 50,
  A8L8 = 51,
  D32 = 71,
  D24S8 = 75,
  D24X8 = 77,
  D16 = 80,
};

enum class ResourceType : std::uint32_t { Surface = 1, Texture = 3, VertexBuffer = 6 };
enum class Pool : std::uint32_t { Default = 0, Managed = 1, SystemMemory = 2 };
inline constexpr std::uint32_t kUsageRenderTarget = 1, kUsageDepthStencil = 2;

enum class PrimitiveType : std::uint32_t {
  PointList = 1,
  LineList = 2,
  LineStrip = 3,
  TriangleList = 4,
  TriangleStrip = 5,
  TriangleFan = 6,
};

/// Flags of flexible vertex format codes.
namespace fvf {
inline constexpr std::uint32_t kXyz = 0x2, kXyzRhw = 0x4, kNormal = 0x10, kPointSize = 0x20, kDiffuse = 0x40,
                               kSpecular = 0x80;
inline constexpr std::uint32_t kTextureCountMask = 0xF00, kTextureCountShift = 8;
}  // namespace fvf

enum class Transform : std::uint32_t { View = 2, Projection = 3, Texture0 = 16, Texture1 = 17, World = 256 };

enum class RenderState : std::uint32_t {
  ZEnable = 7,
  FillMode = 8,
  ShadeMode = 9,
  ZWriteEnable = 14,
  AlphaTestEnable = 15,
  LastPixel = 16,
  SrcBlend = 19,
  DestBlend = 20,
  CullMode = 22,
  ZFunc = 23,
  AlphaRef = 24,
  AlphaFunc = 25,
  DitherEnable = 26,
  AlphaBlendEnable = 27,
  FogEnable = 28,
  SpecularEnable = 29,
  FogColor = 34,
  FogTableMode = 35,
  FogStart = 36,
  FogEnd = 37,
  FogDensity = 38,
  EdgeAntialias = 40,
  ZBias = 47,
  RangeFogEnable = 48,
  StencilEnable = 52,
  StencilFail = 53,
  StencilZFail = 54,
  StencilPass = 55,
  StencilFunc = 56,
  StencilRef = 57,
  StencilMask = 58,
  StencilWriteMask = 59,
  TextureFactor = 60,
  Clipping = 136,
  Lighting = 137,
  Ambient = 139,
  FogVertexMode = 140,
  ColorVertex = 141,
  LocalViewer = 142,
  NormalizeNormals = 143,
  DiffuseMaterialSource = 145,
  SpecularMaterialSource = 146,
  AmbientMaterialSource = 147,
  EmissiveMaterialSource = 148,
  PointSize = 154,
  PointSizeMin = 155,
  PointSpriteEnable = 156,
  PointScaleEnable = 157,
  PointScaleA = 158,
  PointScaleB = 159,
  PointScaleC = 160,
  PointSizeMax = 166,
  ColorWriteEnable = 168,
  BlendOp = 171,
};

enum class StageState : std::uint32_t {
  ColorOp = 1,
  ColorArg1 = 2,
  ColorArg2 = 3,
  AlphaOp = 4,
  AlphaArg1 = 5,
  AlphaArg2 = 6,
  TexCoordIndex = 11,
  AddressU = 13,
  AddressV = 14,
  BorderColor = 15,
  MagFilter = 16,
  MinFilter = 17,
  MipFilter = 18,
  MipMapLodBias = 19,
  MaxMipLevel = 20,
  MaxAnisotropy = 21,
  TextureTransformFlags = 24,
  ColorArg0 = 26,
  AlphaArg0 = 27,
  ResultArg = 28,
};

enum class FillMode : std::uint32_t { Point = 1, Wireframe = 2, Solid = 3 };
enum class ShadeMode : std::uint32_t { Flat = 1, Gouraud = 2, Phong = 3 };
enum class CullMode : std::uint32_t { None = 1, Clockwise = 2, CounterClockwise = 3 };
enum class Compare : std::uint32_t {
  Never = 1,
  Less = 2,
  Equal = 3,
  LessEqual = 4,
  Greater = 5,
  NotEqual = 6,
  GreaterEqual = 7,
  Always = 8,
};
enum class Blend : std::uint32_t {
  Zero = 1,
  One = 2,
  SrcColor = 3,
  InvSrcColor = 4,
  SrcAlpha = 5,
  InvSrcAlpha = 6,
  DestAlpha = 7,
  InvDestAlpha = 8,
  DestColor = 9,
  InvDestColor = 10,
  SrcAlphaSat = 11,
  BothSrcAlpha = 12,
  BothInvSrcAlpha = 13,
};
enum class BlendOp : std::uint32_t { Add = 1, Subtract = 2, RevSubtract = 3, Min = 4, Max = 5 };
enum class FogMode : std::uint32_t { None = 0, Exp = 1, Exp2 = 2, Linear = 3 };
enum class Filter : std::uint32_t { None = 0, Point = 1, Linear = 2, Anisotropic = 3 };
enum class Address : std::uint32_t { Wrap = 1, Mirror = 2, Clamp = 3, Border = 4 };
enum class TextureOp : std::uint32_t {
  Disable = 1,
  SelectArg1 = 2,
  SelectArg2 = 3,
  Modulate = 4,
  Modulate2x = 5,
  Modulate4x = 6,
  Add = 7,
  AddSigned = 8,
  AddSigned2x = 9,
  Subtract = 10,
  AddSmooth = 11,
  BlendDiffuseAlpha = 12,
  BlendTextureAlpha = 13,
  BlendFactorAlpha = 14,
  BlendTextureAlphaPremultiplied = 15,
  BlendCurrentAlpha = 16,
  ModulateAlphaAddColor = 18,
  ModulateColorAddAlpha = 19,
  ModulateInvAlphaAddColor = 20,
  ModulateInvColorAddAlpha = 21,
  DotProduct3 = 24,
  MultiplyAdd = 25,
  Lerp = 26,
};
/// Arguments of texture operations; kComplement and kAlphaReplicate are ored in.
enum class TextureArg : std::uint32_t { Diffuse = 0, Current = 1, Texture = 2, TextureFactor = 3, Specular = 4 };
inline constexpr std::uint32_t kArgComplement = 0x10, kArgAlphaReplicate = 0x20, kArgSelectMask = 0x0F;

inline constexpr std::uint32_t kClearTarget = 1, kClearDepth = 2, kClearStencil = 4;

/// Flags of Capabilities::deviceFlags.
inline constexpr std::uint32_t kCapsHardwareTransformLight = 0x10000, kCapsPureDevice = 0x100000;
inline constexpr std::uint32_t kCreateSoftwareVertexProcessing = 0x20, kCreateHardwareVertexProcessing = 0x40;

/// Codes that device errors carry.
inline constexpr std::uint32_t kErrorInvalidCall = 0x8876086C, kErrorNotFound = 0x88760866,
                               kErrorNotAvailable = 0x8876086A, kErrorOutOfMemory = 0x8007000E,
                               kErrorDeviceLost = 0x88760868, kErrorInvalidData = 0x88760B59;

inline constexpr std::uint32_t kStages = 2;       ///< texture stages that the fixed function has
inline constexpr std::uint32_t kStageStates = 8;  ///< stages whose states can be set (as the classic device)
inline constexpr std::uint32_t kMaxTextureSide = 4096;
inline constexpr std::uint32_t kMaxTargetSide = 16384;
inline constexpr std::uint32_t kLights = 101;  ///< device lights 0 to 100

}  // namespace ql::device
