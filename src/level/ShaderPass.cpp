#include "level/LevelState.h"
#include "mesh/MeshDraw.h"
#include "mesh/MeshPlacement.h"
#include "mesh/MeshSurface.h"
#include "mesh/Shapes.h"
#include "render/TextureTable.h"

#include <cmath>
#include <span>

namespace ql::level {
namespace {

using device::RenderState;
using device::StageState;
using render::shaders::ShaderEntry;
using render::shaders::ShaderStage;

constexpr std::uint32_t kTrue = 0xFFFFFFFF, kFalse = 0;
constexpr std::uint32_t kReflection = 0x30000;  // texture coordinates from the camera's reflection vector
constexpr std::uint32_t kTwoCoordinates = 2;
constexpr float kSkyRadius = 2048;
constexpr std::int32_t kSkySlices = 12, kSkyStacks = 12;
constexpr std::int16_t kBothSides = 1;

/// Draws the faces of one shader.
class ShaderRun {
 public:
  ShaderRun(device::Device& device, LevelState& level, const ShaderEntry& shader, std::span<const VisibleFace> faces)
      : device_(device), level_(level), shader_(shader), faces_(faces), ticks_(level.context.ticks()) {}

  void draw() {
    for (const VisibleFace& visible : faces_)
      if (faceOf(visible).triangleCount != 0) ++level_.context.facesThisFrame;
    for (const ShaderStage& stage : shader_.stages) {
      setBlending(stage);
      device_.setTextureStageState(0, StageState::TexCoordIndex, 0);
      setTexture(stage);
      setCoordinates(stage);
      for (const VisibleFace& visible : faces_) drawFace(faceOf(visible), has(stage, render::shaders::kLightmapStage));
    }
    device_.setTextureStageState(0, StageState::TextureTransformFlags, 0);
    device_.setTextureStageState(0, StageState::TexCoordIndex, 0);
    device_.setTransform(device::Transform::Texture0, math::identity());
  }

 private:
  static bool has(const ShaderStage& stage, std::int32_t flag) { return (stage.flags & flag) != 0; }
  const FaceRecord& faceOf(const VisibleFace& visible) const {
    return level_.data.faces[static_cast<std::size_t>(visible.face)];
  }
  double seconds() const { return ticks_ * 0.001; }

  void setBlending(const ShaderStage& stage) {
    if (!has(stage, render::shaders::kBlending)) {
      device_.setRenderState(RenderState::AlphaBlendEnable, kFalse);
      return;
    }
    // A blend whose source no word names adds.
    const bool given = stage.sourceBlend != -1;
    const auto one = static_cast<std::uint32_t>(device::Blend::One);
    device_.setRenderState(RenderState::AlphaBlendEnable, kTrue);
    device_.setRenderState(RenderState::SrcBlend, given ? static_cast<std::uint32_t>(stage.sourceBlend) : one);
    device_.setRenderState(RenderState::DestBlend, given ? static_cast<std::uint32_t>(stage.destinationBlend) : one);
  }

  void setTexture(const ShaderStage& stage) {
    if (has(stage, render::shaders::kAnimated)) {
      show(stage.textures.empty() ? render::shaders::kFaceTexture : stage.textures[frameOf(stage)]);
    } else if (has(stage, render::shaders::kLightmapStage)) {
      device_.setTextureStageState(0, StageState::TexCoordIndex, 1);  // and each face's own, with the face
    } else {
      show(stage.textures.front());
    }
  }
  std::size_t frameOf(const ShaderStage& stage) const {
    const double position = std::floor(std::fabs(stage.frequency) * seconds());
    return static_cast<std::size_t>(std::fmod(position, static_cast<double>(stage.textures.size())));
  }
  void show(std::int16_t texture) {
    const auto& table = level_.context.get<render::TextureTable>().entries;
    device_.setTexture(0, texture > 0 && texture <= table.count() ? table.at(texture).texture : nullptr);
  }

  void setCoordinates(const ShaderStage& stage) {
    if (!has(stage, render::shaders::kTexCoordModifier)) {
      device_.setTextureStageState(0, StageState::TextureTransformFlags, 0);
      return;
    }
    device_.setTextureStageState(0, StageState::TexCoordIndex, kReflection);
    device_.setTextureStageState(0, StageState::TextureTransformFlags, kTwoCoordinates);
    math::Mat4 matrix = math::identity();
    if (has(stage, render::shaders::kScaleGiven)) {
      matrix.m11 = stage.scaleS;
      matrix.m22 = stage.scaleT;
    }
    if (has(stage, render::shaders::kScrollGiven)) {
      matrix.m41 = static_cast<float>(stage.scrollT * seconds());
      matrix.m42 = static_cast<float>(stage.scrollS * seconds());
    }
    device_.setTransform(device::Transform::Texture0, matrix);
  }

  void drawFace(const FaceRecord& face, bool withLightmap) {
    if (face.triangleCount == 0) return;
    if (withLightmap)
      device_.setTexture(0,
                         face.lightmap < 0 ? nullptr : level_.data.lightmaps[static_cast<std::size_t>(face.lightmap)]);
    device_.drawPrimitive(device::PrimitiveType::TriangleList, face.firstVertex, face.triangleCount);
  }

  device::Device& device_;
  LevelState& level_;
  const ShaderEntry& shader_;
  std::span<const VisibleFace> faces_;
  std::uint32_t ticks_;
};

}  // namespace

void drawShaderPass(device::Device& device, LevelState& level) {
  const std::span<const VisibleFace> list(level.visible.list());
  const auto& shaders = level.context.get<render::shaders::ShaderTable>().entries;
  for (std::size_t first = 0, end = 0; first < list.size(); first = end) {
    while (end < list.size() && list[end].key == list[first].key) ++end;
    const std::int32_t key = list[first].key;
    const std::int32_t slot = key < 0 ? -1 : level.data.textures[static_cast<std::size_t>(key)].shaderSlot;
    if (slot < 0) continue;
    const ShaderEntry& shader = shaders.at(slot);
    if ((shader.surfaceFlags & render::shaders::kSky) != 0) continue;  // the sky mesh shows it
    ShaderRun(device, level, shader, list.subspan(first, end - first)).draw();
  }
}

void createSky(LevelState& level) {
  if (level.skyShader == 0) return;
  level.sky = mesh::allocateMesh(level.context, "BSPSky");
  mesh::createSphere(level.context, *level.sky, 0, kSkyRadius, kSkySlices, kSkyStacks);
  mesh::MeshRecord& record = mesh::meshRecord(level.context, level.sky->slot);
  mesh::setShader(record, level.skyShader);
  record.enabled = false;  // the scene's own drawing of meshes leaves it out
}

void drawSky(LevelState& level) {
  if (!level.sky) return;
  mesh::MeshRecord& record = mesh::meshRecord(level.context, level.sky->slot);
  record.enabled = true;
  record.cullMode = kBothSides;
  mesh::setPosition(record, level.context.cameraPosition);
  mesh::renderMesh(level.context, level.sky->slot);
  mesh::setSphereMapping(record, true, false);
  record.enabled = false;
}

}  // namespace ql::level
