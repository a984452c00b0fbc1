#include "level/HlFaces.h"
#include "level/LevelState.h"
#include "render/Camera.h"

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

namespace ql::level {
namespace {

using device::Blend;
using device::RenderState;
using device::StageState;
using device::TextureArg;
using device::TextureOp;

constexpr std::uint32_t kTrue = 0xFFFFFFFF, kFalse = 0;
/// Pixels of cut-out textures that are less opaque are holes; the others are solid.
constexpr std::uint32_t kHoleAlpha = 127;
constexpr std::int32_t kNothingSet = std::numeric_limits<std::int32_t>::min();

template <class Enumerator>
constexpr std::uint32_t value(Enumerator enumerator) {
  return static_cast<std::uint32_t>(enumerator);
}

/// Draws one frame.
class Painter {
 public:
  explicit Painter(LevelState& level) : level_(level), data_(level.data), device_(level.context.requireDevice()) {}

  void run() {
    setStates();
    if (level_.useLightMaps) {
      drawLight();
      device_.setRenderState(RenderState::AlphaFunc, value(device::Compare::Greater));
      device_.setRenderState(RenderState::AlphaRef, 0);
      device_.setRenderState(RenderState::AlphaTestEnable, kTrue);
      device_.setRenderState(RenderState::AlphaBlendEnable, kTrue);
    }
    drawTextures();
    device_.setRenderState(RenderState::AlphaBlendEnable, kFalse);
    drawCutOuts();
    drawBrushModels();
    device_.setRenderState(RenderState::AlphaBlendEnable, kFalse);
    device_.setRenderState(RenderState::ZWriteEnable, kTrue);
    device_.setRenderState(RenderState::Lighting, kFalse);
  }

 private:
  void setStates() {
    device_.setRenderState(RenderState::Lighting, kFalse);
    device_.setRenderState(RenderState::SrcBlend, value(Blend::DestColor));
    device_.setRenderState(RenderState::DestBlend, value(Blend::Zero));
    device_.setRenderState(RenderState::CullMode, level_.culling);
    device_.setRenderState(RenderState::AlphaBlendEnable, kFalse);
    device_.setRenderState(RenderState::AlphaTestEnable, kFalse);
    device_.setTextureStageState(1, StageState::MipFilter, value(device::Filter::Point));
    device_.setTextureStageState(0, StageState::MipFilter, value(device::Filter::Point));
    device_.setVertexShader(kHlVertexFormat);
    device_.setStreamSource(0, data_.vertices, sizeof(HlVertex));
    device::Material white;
    white.diffuse = white.ambient = {1, 1, 1, 1};
    device_.setMaterial(white);
  }

  const FaceRecord& face(std::size_t index) const { return data_.faces[index]; }
  const FaceLook& look(std::size_t index) const { return data_.looks[index]; }
  /// Whether a listed face is drawn in the two passes over the world.
  bool inWorldPasses(std::size_t index) const {
    return face(index).triangleCount != 0 && !look(index).sky && !look(index).cutOut;
  }

  const std::shared_ptr<device::Texture>& lightOf(std::size_t index) const {
    const std::int32_t lightmap = face(index).lightmap;
    return lightmap < 0 ? data_.whiteLightmap : data_.lightmaps[static_cast<std::size_t>(lightmap)];
  }
  std::shared_ptr<device::Texture> textureOf(std::size_t index) const {
    const std::int32_t texture = face(index).texture;
    return texture < 0 ? nullptr : data_.textures[static_cast<std::size_t>(texture)].texture;
  }

  void draw(std::size_t index) {
    device_.drawPrimitive(device::PrimitiveType::TriangleFan, face(index).firstVertex, face(index).triangleCount);
  }

  /// The light that falls on the visible faces, which their textures then multiply.
  void drawLight() {
    device_.setTextureStageState(0, StageState::TexCoordIndex, 1);
    std::int32_t set = kNothingSet;
    for (const VisibleFace& visible : level_.visible.list()) {
      const auto index = static_cast<std::size_t>(visible.face);
      if (!inWorldPasses(index)) continue;
      if (face(index).lightmap != set) device_.setTexture(0, lightOf(index));
      set = face(index).lightmap;
      draw(index);
    }
  }

  void drawTextures() {
    device_.setTextureStageState(0, StageState::TexCoordIndex, 0);
    std::int32_t set = kNothingSet;
    for (const VisibleFace& visible : level_.visible.list()) {
      const auto index = static_cast<std::size_t>(visible.face);
      if (!inWorldPasses(index)) continue;
      if (visible.key != set) device_.setTexture(0, textureOf(index));
      set = visible.key;
      draw(index);
      ++level_.context.facesThisFrame;
    }
  }

  /// Draws faces in one pass, texture times light, those with holes with their holes.
  void drawSolid(const std::vector<std::size_t>& faces) {
    if (faces.empty()) return;
    if (level_.useLightMaps) {
      device_.setTextureStageState(1, StageState::TexCoordIndex, 1);
      device_.setTextureStageState(1, StageState::ColorArg1, value(TextureArg::Texture));
      device_.setTextureStageState(1, StageState::ColorArg2, value(TextureArg::Current));
      device_.setTextureStageState(1, StageState::ColorOp, value(TextureOp::Modulate));
      device_.setTextureStageState(1, StageState::AlphaArg2, value(TextureArg::Current));
      device_.setTextureStageState(1, StageState::AlphaOp, value(TextureOp::SelectArg2));
    }
    const std::uint32_t alphaTest = device_.getRenderState(RenderState::AlphaTestEnable);
    bool holes = false;
    for (const std::size_t index : faces) {
      if (look(index).cutOut != holes) setHoles(holes = look(index).cutOut, alphaTest);
      device_.setTexture(0, textureOf(index));
      if (level_.useLightMaps) device_.setTexture(1, lightOf(index));
      draw(index);
      ++level_.context.facesThisFrame;
    }
    if (holes) setHoles(false, alphaTest);
    if (level_.useLightMaps) {
      device_.setTexture(1, nullptr);
      device_.setTextureStageState(1, StageState::ColorOp, value(TextureOp::Disable));
      device_.setTextureStageState(1, StageState::AlphaOp, value(TextureOp::Disable));
    }
  }

  void setHoles(bool on, std::uint32_t otherwise) {
    device_.setRenderState(RenderState::AlphaFunc, value(device::Compare::Greater));
    device_.setRenderState(RenderState::AlphaRef, on ? kHoleAlpha : 0);
    device_.setRenderState(RenderState::AlphaTestEnable, on ? kTrue : otherwise);
  }

  /// Faces of the world whose textures have holes: light that is drawn first would fill them.
  void drawCutOuts() {
    std::vector<std::size_t> faces;
    for (const VisibleFace& visible : level_.visible.list()) {
      const auto index = static_cast<std::size_t>(visible.face);
      if (face(index).triangleCount != 0 && look(index).cutOut && !look(index).sky) faces.push_back(index);
    }
    drawSolid(faces);
  }

  void drawBrushModels() {
    std::vector<std::pair<float, const BrushModel*>> models;
    for (const BrushModel& model : data_.brushModels) {
      if (model.faceCount == 0 || !render::sphereInFrustum(level_.context, model.sphere.center, model.sphere.radius))
        continue;
      const math::Vec3 center = math::transformPoint(model.sphere.center, level_.levelMatrix);
      models.emplace_back(math::length(math::subtract(center, level_.context.cameraPosition)), &model);
    }
    std::vector<std::size_t> solid, translucent;
    // What lies behind shows through what is translucent: the farthest comes first.
    std::stable_sort(models.begin(), models.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    for (const auto& [distance, model] : models) {
      for (std::size_t i = model->firstFace; i < model->firstFace + model->faceCount; ++i) {
        const bool drawn = face(i).triangleCount != 0 && !look(i).sky && !look(i).hidden &&
                           !(data_.triggerTexture >= 0 && face(i).texture == data_.triggerTexture);
        if (drawn) (look(i).translucent() ? translucent : solid).push_back(i);
      }
    }
    std::stable_sort(solid.begin(), solid.end(),
                     [&](std::size_t a, std::size_t b) { return face(a).key < face(b).key; });
    drawSolid(solid);
    device_.setRenderState(RenderState::DestBlend, value(Blend::InvSrcColor));
    device_.setRenderState(RenderState::SrcBlend, value(Blend::SrcAlpha));
    device_.setRenderState(RenderState::AlphaBlendEnable, kTrue);
    device_.setRenderState(RenderState::ZWriteEnable, kFalse);
    drawTranslucent(translucent);
  }

  void drawTranslucent(const std::vector<std::size_t>& faces) {
    if (faces.empty()) return;
    constexpr std::array kStates{StageState::ColorOp, StageState::ColorArg1, StageState::AlphaOp, StageState::AlphaArg1,
                                 StageState::AlphaArg2};
    std::array<std::uint32_t, kStates.size()> before{};
    for (std::size_t i = 0; i < kStates.size(); ++i) before[i] = device_.getTextureStageState(0, kStates[i]);
    const std::uint32_t factor = device_.getRenderState(RenderState::TextureFactor);
    for (const std::size_t index : faces) {
      setTranslucency(look(index));
      device_.setTexture(0, textureOf(index));
      draw(index);
      ++level_.context.facesThisFrame;
    }
    for (std::size_t i = 0; i < kStates.size(); ++i) device_.setTextureStageState(0, kStates[i], before[i]);
    device_.setRenderState(RenderState::TextureFactor, factor);
  }

  /// The amount scales what a face covers or adds; the mode Color draws a colour instead of the texture.
  void setTranslucency(const FaceLook& look) {
    const bool adds = look.mode == RenderMode::Additive || look.mode == RenderMode::Glow;
    const bool plain = look.mode == RenderMode::Color;
    device_.setRenderState(RenderState::SrcBlend, value(Blend::SrcAlpha));
    device_.setRenderState(RenderState::DestBlend, value(adds ? Blend::One : Blend::InvSrcAlpha));
    device_.setRenderState(RenderState::TextureFactor, std::uint32_t{look.amount} << 24 | look.color);
    device_.setTextureStageState(0, StageState::ColorArg1,
                                 value(plain ? TextureArg::TextureFactor : TextureArg::Texture));
    device_.setTextureStageState(0, StageState::ColorOp, value(TextureOp::SelectArg1));
    device_.setTextureStageState(0, StageState::AlphaArg1, value(TextureArg::TextureFactor));
    device_.setTextureStageState(0, StageState::AlphaArg2, value(TextureArg::Texture));
    device_.setTextureStageState(0, StageState::AlphaOp, value(plain ? TextureOp::SelectArg1 : TextureOp::Modulate));
  }

  LevelState& level_;
  const LevelData& data_;
  device::Device& device_;
};

}  // namespace

void renderHalfLife(LevelState& level) {
  device::Device& device = level.context.requireDevice();
  device.setTransform(device::Transform::World, level.levelMatrix);
  level.visible.update(level.data, {level.context.cameraPosition, level.context.cameraLookAt, level.levelMatrix,
                                    device.getTransform(device::Transform::World), level.context.frustumPlanes,
                                    level.context.ticks(), level.usePvsInfo});
  if (level.data.vertices) Painter(level).run();
}

}  // namespace ql::level
