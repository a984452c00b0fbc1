/// @file
/// The whole fixed-function state as plain data, with one list of its fields that serves every loop over it.
#pragma once

#include "math/Matrix.h"
#include "platform/device/Constants.h"

#include <array>
#include <bit>
#include <cstdint>

namespace ql::device {

/// One texture stage, values as they were set.
struct StageStates {
  std::uint32_t colorOp = 1, colorArg1 = 2, colorArg2 = 1, alphaOp = 1, alphaArg1 = 2, alphaArg2 = 1;
  std::uint32_t texCoordIndex = 0;
  std::uint32_t addressU = 1, addressV = 1, borderColor = 0;
  std::uint32_t magFilter = 1, minFilter = 1, mipFilter = 0;
  std::uint32_t mipMapLodBias = 0;  ///< a float's bits
  std::uint32_t maxMipLevel = 0, maxAnisotropy = 1, textureTransformFlags = 0;
  std::uint32_t colorArg0 = 1, alphaArg0 = 1, resultArg = 1;
  bool operator==(const StageStates&) const = default;
};

/// All render states, values as they were set; floats are kept as their bits.
struct RenderStates {
  std::uint32_t zEnable = 1, fillMode = 3, shadeMode = 2, zWriteEnable = 1, alphaTestEnable = 0, lastPixel = 1;
  std::uint32_t srcBlend = 2, destBlend = 1, cullMode = 3, zFunc = 4, alphaRef = 0, alphaFunc = 8, ditherEnable = 0;
  std::uint32_t alphaBlendEnable = 0, fogEnable = 0, specularEnable = 0, fogColor = 0, fogTableMode = 0;
  std::uint32_t fogStart = 0, fogEnd = std::bit_cast<std::uint32_t>(1.0f),
                fogDensity = std::bit_cast<std::uint32_t>(1.0f);
  std::uint32_t edgeAntialias = 0, zBias = 0, rangeFogEnable = 0;
  std::uint32_t stencilEnable = 0, stencilFail = 1, stencilZFail = 1, stencilPass = 1, stencilFunc = 8, stencilRef = 0;
  std::uint32_t stencilMask = 0xFFFFFFFF, stencilWriteMask = 0xFFFFFFFF;
  std::uint32_t textureFactor = 0xFFFFFFFF, clipping = 1, lighting = 1, ambient = 0, fogVertexMode = 0, colorVertex = 1;
  std::uint32_t localViewer = 1, normalizeNormals = 0, diffuseMaterialSource = 1, specularMaterialSource = 2;
  std::uint32_t ambientMaterialSource = 0, emissiveMaterialSource = 0;
  std::uint32_t pointSize = std::bit_cast<std::uint32_t>(1.0f), pointSizeMin = std::bit_cast<std::uint32_t>(1.0f);
  std::uint32_t pointSpriteEnable = 0, pointScaleEnable = 0;
  std::uint32_t pointScaleA = std::bit_cast<std::uint32_t>(1.0f), pointScaleB = 0, pointScaleC = 0;
  std::uint32_t pointSizeMax = std::bit_cast<std::uint32_t>(64.0f), colorWriteEnable = 0xF, blendOp = 1;
  bool operator==(const RenderStates&) const = default;
};

/// Calls f(state number, name, field) for every render state, in the order of their numbers.
template <class States, class F>
constexpr void forEachRenderState(States& s, F&& f) {
  f(RenderState::ZEnable, "zEnable", s.zEnable);
  f(RenderState::FillMode, "fillMode", s.fillMode);
  f(RenderState::ShadeMode, "shadeMode", s.shadeMode);
  f(RenderState::ZWriteEnable, "zWriteEnable", s.zWriteEnable);
  f(RenderState::AlphaTestEnable, "alphaTestEnable", s.alphaTestEnable);
  f(RenderState::LastPixel, "lastPixel", s.lastPixel);
  f(RenderState::SrcBlend, "srcBlend", s.srcBlend);
  f(RenderState::DestBlend, "destBlend", s.destBlend);
  f(RenderState::CullMode, "cullMode", s.cullMode);
  f(RenderState::ZFunc, "zFunc", s.zFunc);
  f(RenderState::AlphaRef, "alphaRef", s.alphaRef);
  f(RenderState::AlphaFunc, "alphaFunc", s.alphaFunc);
  f(RenderState::DitherEnable, "ditherEnable", s.ditherEnable);
  f(RenderState::AlphaBlendEnable, "alphaBlendEnable", s.alphaBlendEnable);
  f(RenderState::FogEnable, "fogEnable", s.fogEnable);
  f(RenderState::SpecularEnable, "specularEnable", s.specularEnable);
  f(RenderState::FogColor, "fogColor", s.fogColor);
  f(RenderState::FogTableMode, "fogTableMode", s.fogTableMode);
  f(RenderState::FogStart, "fogStart", s.fogStart);
  f(RenderState::FogEnd, "fogEnd", s.fogEnd);
  f(RenderState::FogDensity, "fogDensity", s.fogDensity);
  f(RenderState::EdgeAntialias, "edgeAntialias", s.edgeAntialias);
  f(RenderState::ZBias, "zBias", s.zBias);
  f(RenderState::RangeFogEnable, "rangeFogEnable", s.rangeFogEnable);
  f(RenderState::StencilEnable, "stencilEnable", s.stencilEnable);
  f(RenderState::StencilFail, "stencilFail", s.stencilFail);
  f(RenderState::StencilZFail, "stencilZFail", s.stencilZFail);
  f(RenderState::StencilPass, "stencilPass", s.stencilPass);
  f(RenderState::StencilFunc, "stencilFunc", s.stencilFunc);
  f(RenderState::StencilRef, "stencilRef", s.stencilRef);
  f(RenderState::StencilMask, "stencilMask", s.stencilMask);
  f(RenderState::StencilWriteMask, "stencilWriteMask", s.stencilWriteMask);
  f(RenderState::TextureFactor, "textureFactor", s.textureFactor);
  f(RenderState::Clipping, "clipping", s.clipping);
  f(RenderState::Lighting, "lighting", s.lighting);
  f(RenderState::Ambient, "ambient", s.ambient);
  f(RenderState::FogVertexMode, "fogVertexMode", s.fogVertexMode);
  f(RenderState::ColorVertex, "colorVertex", s.colorVertex);
  f(RenderState::LocalViewer, "localViewer", s.localViewer);
  f(RenderState::NormalizeNormals, "normalizeNormals", s.normalizeNormals);
  f(RenderState::DiffuseMaterialSource, "diffuseMaterialSource", s.diffuseMaterialSource);
  f(RenderState::SpecularMaterialSource, "specularMaterialSource", s.specularMaterialSource);
  f(RenderState::AmbientMaterialSource, "ambientMaterialSource", s.ambientMaterialSource);
  f(RenderState::EmissiveMaterialSource, "emissiveMaterialSource", s.emissiveMaterialSource);
  f(RenderState::PointSize, "pointSize", s.pointSize);
  f(RenderState::PointSizeMin, "pointSizeMin", s.pointSizeMin);
  f(RenderState::PointSpriteEnable, "pointSpriteEnable", s.pointSpriteEnable);
  f(RenderState::PointScaleEnable, "pointScaleEnable", s.pointScaleEnable);
  f(RenderState::PointScaleA, "pointScaleA", s.pointScaleA);
  f(RenderState::PointScaleB, "pointScaleB", s.pointScaleB);
  f(RenderState::PointScaleC, "pointScaleC", s.pointScaleC);
  f(RenderState::PointSizeMax, "pointSizeMax", s.pointSizeMax);
  f(RenderState::ColorWriteEnable, "colorWriteEnable", s.colorWriteEnable);
  f(RenderState::BlendOp, "blendOp", s.blendOp);
}

/// Calls f(state number, name, field) for every state of a texture stage, in the order of their numbers.
template <class States, class F>
constexpr void forEachStageState(States& s, F&& f) {
  f(StageState::ColorOp, "colorOp", s.colorOp);
  f(StageState::ColorArg1, "colorArg1", s.colorArg1);
  f(StageState::ColorArg2, "colorArg2", s.colorArg2);
  f(StageState::AlphaOp, "alphaOp", s.alphaOp);
  f(StageState::AlphaArg1, "alphaArg1", s.alphaArg1);
  f(StageState::AlphaArg2, "alphaArg2", s.alphaArg2);
  f(StageState::TexCoordIndex, "texCoordIndex", s.texCoordIndex);
  f(StageState::AddressU, "addressU", s.addressU);
  f(StageState::AddressV, "addressV", s.addressV);
  f(StageState::BorderColor, "borderColor", s.borderColor);
  f(StageState::MagFilter, "magFilter", s.magFilter);
  f(StageState::MinFilter, "minFilter", s.minFilter);
  f(StageState::MipFilter, "mipFilter", s.mipFilter);
  f(StageState::MipMapLodBias, "mipMapLodBias", s.mipMapLodBias);
  f(StageState::MaxMipLevel, "maxMipLevel", s.maxMipLevel);
  f(StageState::MaxAnisotropy, "maxAnisotropy", s.maxAnisotropy);
  f(StageState::TextureTransformFlags, "textureTransformFlags", s.textureTransformFlags);
  f(StageState::ColorArg0, "colorArg0", s.colorArg0);
  f(StageState::AlphaArg0, "alphaArg0", s.alphaArg0);
  f(StageState::ResultArg, "resultArg", s.resultArg);
}

/// A device material, 68 bytes.
struct Material {
  math::Color4 diffuse, ambient, specular, emissive;
  float power = 0;
};
static_assert(sizeof(Material) == 68);

enum class LightType : std::uint32_t { Point = 1, Spot = 2, Directional = 3 };
/// A device light, 104 bytes. Angles in radians, range in world units.
struct Light {
  std::uint32_t type = 3;
  math::Color4 diffuse{1, 1, 1, 0}, specular, ambient;
  math::Vec3 position, direction{0, 0, 1};
  float range = 0, falloff = 0, attenuation0 = 0, attenuation1 = 0, attenuation2 = 0, theta = 0, phi = 0;
};
static_assert(sizeof(Light) == 104);

/// Every value that a draw can depend on.
struct State {
  RenderStates render;
  std::array<StageStates, kStages> stages;
  math::Mat4 world, view, projection;
  std::array<math::Mat4, kStages> textureTransforms;
  math::Viewport viewport;
  Material material;
  std::array<Light, kLights> lights;
  std::array<bool, kLights> lightEnabled{};
  State();  ///< the values of a new device
};

}  // namespace ql::device
