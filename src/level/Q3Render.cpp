#include "level/LevelState.h"

#include <limits>

namespace ql::level {
namespace {

using device::RenderState;
using device::StageState;

constexpr std::uint32_t kTrue = 0xFFFFFFFF, kFalse = 0;
/// No key and no lightmap has this number.
constexpr std::int32_t kNothingSet = std::numeric_limits<std::int32_t>::min();

template <class Enumerator>
constexpr std::uint32_t value(Enumerator enumerator) {
  return static_cast<std::uint32_t>(enumerator);
}

void setStates(device::Device& device, const LevelState& level) {
  device.setRenderState(RenderState::AlphaTestEnable, kFalse);
  device.setRenderState(RenderState::AlphaFunc, value(device::Compare::Greater));
  device.setRenderState(RenderState::AlphaRef, 0);
  device.setRenderState(RenderState::Lighting, kFalse);
  device.setRenderState(RenderState::CullMode, level.culling);
  device.setRenderState(RenderState::AlphaBlendEnable, kFalse);
  device.setTextureStageState(1, StageState::MipFilter, value(device::Filter::Point));
  device.setTextureStageState(0, StageState::MipFilter, value(device::Filter::Point));
  device.setVertexShader(kLevelVertexFormat);
  device.setStreamSource(0, level.data.vertices, sizeof(LevelVertex));
  device.setRenderState(RenderState::AlphaBlendEnable, kFalse);
  device.setTextureStageState(0, StageState::TexCoordIndex, 0);
}

/// Whether a face is drawn by the plain passes. Faces without triangles cost no device call.
bool isPlain(const FaceRecord& face) { return face.baseSlot == -1 && face.triangleCount != 0; }

void drawFace(device::Device& device, const FaceRecord& face) {
  device.drawPrimitive(device::PrimitiveType::TriangleList, face.firstVertex, face.triangleCount);
}

void drawBasePass(device::Device& device, LevelState& level) {
  const LevelData& data = level.data;
  std::int32_t set = kNothingSet;
  for (const VisibleFace& visible : level.visible.list()) {
    const FaceRecord& face = data.faces[static_cast<std::size_t>(visible.face)];
    if (!isPlain(face)) continue;
    if (visible.key != set) {
      set = visible.key;
      device.setTexture(0, face.texture < 0 ? nullptr : data.textures[static_cast<std::size_t>(face.texture)].texture);
    }
    drawFace(device, face);
    ++level.context.facesThisFrame;
  }
}

/// Multiplies what the base pass drew by the light that falls on it.
void drawLightmapPass(device::Device& device, const LevelState& level) {
  const LevelData& data = level.data;
  device.setRenderState(RenderState::AlphaTestEnable, kFalse);
  device.setTextureStageState(0, StageState::TexCoordIndex, 1);
  device.setRenderState(RenderState::SrcBlend, value(device::Blend::DestColor));
  device.setRenderState(RenderState::DestBlend, value(device::Blend::Zero));
  device.setRenderState(RenderState::AlphaBlendEnable, kTrue);
  std::int32_t set = kNothingSet;
  for (const VisibleFace& visible : level.visible.list()) {
    const FaceRecord& face = data.faces[static_cast<std::size_t>(visible.face)];
    if (!isPlain(face) || face.lightmap == -1) continue;
    if (face.lightmap != set) {
      set = face.lightmap;
      device.setTexture(0, data.lightmaps[static_cast<std::size_t>(face.lightmap)]);
    }
    drawFace(device, face);
  }
  device.setRenderState(RenderState::AlphaBlendEnable, kFalse);
}

}  // namespace

void renderQuake3(LevelState& level) {
  device::Device& device = level.context.requireDevice();
  device.setTextureStageState(0, StageState::TextureTransformFlags, 0);
  device.setTransform(device::Transform::World, level.levelMatrix);
  level.visible.update(level.data, {level.context.cameraPosition, level.context.cameraLookAt, level.levelMatrix,
                                    device.getTransform(device::Transform::World), level.context.frustumPlanes,
                                    level.context.ticks(), level.usePvsInfo});
  if (level.data.vertices) {
    setStates(device, level);
    drawBasePass(device, level);
    if (level.useLightMaps) drawLightmapPass(device, level);
    drawShaderPass(device, level);
  }
  device.setTextureStageState(0, StageState::TextureTransformFlags, 0);
  device.setTextureStageState(0, StageState::TexCoordIndex, 0);
  device.setTransform(device::Transform::Texture0, math::identity());
  if (level.displaySky) drawSky(level);
}

}  // namespace ql::level
