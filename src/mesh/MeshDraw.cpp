#include "mesh/MeshDraw.h"

#include "mesh/LightmapList.h"
#include "mesh/MeshPlacement.h"
#include "platform/utility/SubsetMesh.h"
#include "render/Camera.h"
#include "render/Materials.h"
#include "render/TextureTable.h"
#include "render/shaders/ShaderTable.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace ql::mesh {
namespace {

using device::Blend;
using device::RenderState;
using device::StageState;
using render::shaders::ShaderStage;
using render::shaders::StageKind;

constexpr std::uint32_t kTwoCoordinates = 2;  // of texture transforms
constexpr std::int16_t kAddBlending = 2, kColorBlending = 3;

/// The groups that a drawing is of.
struct Groups {
  bool range = false;  ///< drawn by the rules of a range
  std::int32_t first = 1, last = 0;
};

/// Draws meshes with what it looked up once.
class Painter {
 public:
  explicit Painter(engine::EngineContext& context)
      : context_(context),
        device_(context.requireDevice()),
        registry_(*context.get<MeshRegistry>().slots),
        textures_(context.get<render::TextureTable>().entries),
        materials_(context.get<render::MaterialTable>().entries),
        shaders_(context.get<render::shaders::ShaderTable>().entries),
        lightmaps_(context.get<LightmapList>().maps) {}

  /// A mesh and, below it, its children: each after the groups of its parent.
  void drawTree(std::int16_t slot, const Groups& groups) {
    MeshRecord& root = *registry_.at(slot);
    if (!draw(slot, root, groups) || root.children.empty()) return;
    path_.assign(1, slot);
    pending_.clear();
    pushChildren(root);
    while (!pending_.empty()) {
      const auto [child, depth] = pending_.back();
      pending_.pop_back();
      path_.resize(depth);
      // Links that lead back to a mesh above would never end.
      if (child < 1 || child > registry_.count() || std::ranges::find(path_, child) != path_.end()) continue;
      MeshRecord& record = *registry_.at(child);
      if (!draw(child, record, {.range = true})) continue;
      path_.push_back(child);
      pushChildren(record);
    }
  }

  void drawAll() {
    for (std::int32_t slot = 1; slot <= registry_.count(); ++slot)
      if (registry_.at(slot)->parent == 0) drawTree(static_cast<std::int16_t>(slot), {});
  }

 private:
  void pushChildren(const MeshRecord& mesh) {
    for (auto child = mesh.children.rbegin(); child != mesh.children.rend(); ++child)
      pending_.emplace_back(*child, path_.size());
  }

  /// @return whether the mesh was drawn, so that its children are
  bool draw(std::int16_t slot, MeshRecord& mesh, const Groups& groups) {
    if (!mesh.enabled || mesh.vertexCount <= 0 || !outlives(mesh, groups.range)) return false;
    device_.setTransform(device::Transform::World, mesh.worldMatrix);
    if (mesh.boundsValid && !mesh.matrixDirty &&
        !render::sphereInFrustum(context_, mesh.sphereCenter, mesh.sphereRadius)) {
      mesh.visible = 0;
      return false;
    }
    mesh.visible = 1;
    const std::int32_t last = groups.last == 0 ? mesh.groupCount : groups.last;
    if (groups.first < 0 || last > mesh.groupCount)
      throw engine::EngineError(engine::kSubscript, "Subscript out of range");
    if (mesh.matrixDirty || mesh.billboard || mesh.parent != 0) {
      rebuildMatrix(context_, slot);
      device_.setTransform(device::Transform::World, mesh.worldMatrix);
    }
    const bool subsetRange = groups.range && mesh.usesSubsets;
    if (!subsetRange) {
      device_.setRenderState(RenderState::AlphaBlendEnable, 1);
      device_.setRenderState(RenderState::AlphaTestEnable, 1);
      setLighting(mesh);
    }
    setCoordinates(mesh);
    if (!groups.range) {
      for (std::int32_t g = groups.first; g <= last; ++g) drawGroup(mesh, g);
      mesh.renderedThisFrame = true;
      return true;
    }
    device_.setRenderState(RenderState::CullMode, static_cast<std::uint32_t>(mesh.cullMode));
    if (subsetRange) {
      device_.setRenderState(RenderState::Lighting, 1);
      for (std::int32_t g = groups.first; g <= last; ++g) drawSubsetOfRange(mesh, g);
      return true;
    }
    setRangeBlend(Blend::InvSrcAlpha, Blend::SrcAlpha);
    device_.setRenderState(RenderState::AlphaTestEnable, 1);
    device_.setRenderState(RenderState::AlphaBlendEnable, 1);
    setLighting(mesh);
    for (std::int32_t g = groups.first; g <= last; ++g) drawGroupOfRange(mesh, g);
    return true;
  }

  /// Runs the death time down; a mesh whose time is over is disabled.
  bool outlives(MeshRecord& mesh, bool range) const {
    if (mesh.deathTime <= 0 || (!range && mesh.renderedThisFrame)) return true;
    mesh.deathTime -= static_cast<float>(context_.elapsedMs);
    if (mesh.deathTime > 0) return true;
    mesh.enabled = false;
    return false;
  }

  void setLighting(const MeshRecord& mesh) {
    device_.setRenderState(RenderState::Lighting, mesh.vertexType == kColorVertices ? 0 : 1);
  }

  void setCoordinates(const MeshRecord& mesh) {
    if (mesh.sphereMapping) {
      device_.setTransform(device::Transform::Texture0, context_.sphereMapMatrix);
      device_.setRenderState(RenderState::CullMode, static_cast<std::uint32_t>(device::CullMode::None));
      device_.setTextureStageState(0, StageState::TextureTransformFlags, kTwoCoordinates);
      device_.setTextureStageState(0, StageState::TexCoordIndex, static_cast<std::uint32_t>(mesh.texCoordGen));
      device_.setRenderState(RenderState::NormalizeNormals, 1);
    } else {
      device_.setTransform(device::Transform::Texture0, math::identity());
      device_.setTextureStageState(0, StageState::TextureTransformFlags, 0);
      device_.setTextureStageState(0, StageState::TexCoordIndex, 0);
    }
  }

  void setBlend(Blend source, Blend destination) {
    setBlend(static_cast<std::uint32_t>(source), static_cast<std::uint32_t>(destination));
  }
  void setBlend(std::uint32_t source, std::uint32_t destination) {
    device_.setRenderState(RenderState::SrcBlend, source);
    device_.setRenderState(RenderState::DestBlend, destination);
  }
  void setRangeBlend(Blend destination, Blend source) {
    device_.setRenderState(RenderState::DestBlend, static_cast<std::uint32_t>(destination));
    device_.setRenderState(RenderState::SrcBlend, static_cast<std::uint32_t>(source));
  }

  void drawGroup(MeshRecord& mesh, std::int32_t number) {
    MeshGroup& group = mesh.groups[static_cast<std::size_t>(number)];
    if (group.shader != 0) {
      std::int16_t texture = 0;
      for (const ShaderStage& stage : shaders_.at(group.shader).stages) {
        texture = stageTexture(mesh, group, stage, texture);
        if (stage.sourceBlend == -1)
          setBlend(Blend::SrcAlpha, Blend::InvSrcAlpha);
        else
          setBlend(static_cast<std::uint32_t>(stage.sourceBlend), static_cast<std::uint32_t>(stage.destinationBlend));
        drawSurface(mesh, number, texture, stage.material);
      }
      return;
    }
    if (group.blending == 0 || group.blending == 1)
      setBlend(Blend::SrcAlpha, Blend::InvSrcAlpha);
    else if (group.blending == kAddBlending)
      setBlend(Blend::One, Blend::One);
    else if (group.blending == kColorBlending)
      setBlend(Blend::SrcColor, Blend::One);
    drawSurface(mesh, number, group.texture, group.material);
  }

  /// The texture that a shader's stage shows on a group.
  std::int16_t stageTexture(const MeshRecord& mesh, MeshGroup& group, const ShaderStage& stage,
                            std::int16_t previous) const {
    const auto shown = [&](std::size_t entry) {
      const std::int16_t texture =
          entry < stage.textures.size() ? stage.textures[entry] : render::shaders::kFaceTexture;
      return texture < 0 ? group.texture : texture;
    };
    switch (stage.kind) {
      case StageKind::Map:
        return shown(0);
      case StageKind::Lightmap:
        return group.lightmap;
      case StageKind::Animation:
        if (!mesh.renderedThisFrame) group.framePos += stage.frequency * static_cast<float>(context_.elapsedMs) / 1000;
        group.framePos = withinFrames(group.framePos, stage.frameCount);
        return shown(group.framePos < 1 ? 0 : static_cast<std::size_t>(group.framePos) - 1);
      default:
        return previous;
    }
  }

  /// Takes the number of frames off as often as the position, rounded down, exceeds it.
  static float withinFrames(float position, std::int16_t frames) {
    if (!std::isfinite(position) || frames <= 0) return 0;
    const float whole = std::floor(position);
    if (whole <= frames) return position;
    const auto count = static_cast<float>(frames);
    return position - count * (std::ceil(whole / count) - 1);
  }

  void drawSurface(const MeshRecord& mesh, std::int32_t number, std::int16_t texture, std::int16_t material) {
    const MeshGroup& group = mesh.groups[static_cast<std::size_t>(number)];
    if (!mesh.usesSubsets && group.count < 2) return;
    setTexture(texture);
    setMaterial(material);
    if (mesh.usesSubsets) {
      drawSubset(mesh, number);
      return;
    }
    device_.setVertexShader(static_cast<std::uint32_t>(mesh.vertexType));
    drawVertices(mesh, group);
  }

  void drawGroupOfRange(const MeshRecord& mesh, std::int32_t number) {
    const MeshGroup& group = mesh.groups[static_cast<std::size_t>(number)];
    if (group.count < 2) return;
    device_.setVertexShader(static_cast<std::uint32_t>(mesh.vertexType));
    if (group.lightmap > 0) {
      setRangeBlend(Blend::InvSrcAlpha, Blend::SrcAlpha);
      device_.setTexture(0, lightmaps_.at(group.lightmap));
      drawVertices(mesh, group);
      setRangeBlend(Blend::SrcColor, Blend::Zero);
      setTexture(group.texture);
    } else {
      setTexture(group.texture);
      setMaterial(group.material);
    }
    drawVertices(mesh, group);
  }

  void drawSubsetOfRange(const MeshRecord& mesh, std::int32_t number) {
    const MeshGroup& group = mesh.groups[static_cast<std::size_t>(number)];
    setTexture(group.texture);
    if (group.texture > 0 && textures_.at(group.texture).colorKey != 0)
      device_.setRenderState(RenderState::AlphaTestEnable, 1);
    setMaterial(group.material);
    drawSubset(mesh, number);
  }

  void drawSubset(const MeshRecord& mesh, std::int32_t number) {
    if (mesh.subsets && number >= 1) mesh.subsets->drawSubset(device_, static_cast<std::size_t>(number) - 1);
  }

  void setTexture(std::int16_t index) { device_.setTexture(0, index > 0 ? textures_.at(index).texture : nullptr); }
  void setMaterial(std::int16_t index) { device_.setMaterial(materials_.at(index > 0 ? index : 0).record); }

  void drawVertices(const MeshRecord& mesh, const MeshGroup& group) {
    if (mesh.vertexType == kColorVertices)
      drawVertices(std::span(mesh.colorVertices), mesh.primitiveType, group);
    else
      drawVertices(std::span(mesh.normalVertices), mesh.primitiveType, group);
  }

  /// A group's vertices; what a list does not hold (a group may say anything) is left out.
  template <class Vertex>
  void drawVertices(std::span<const Vertex> vertices, std::int16_t primitiveType, const MeshGroup& group) {
    const auto start = static_cast<std::size_t>(std::max<std::int16_t>(group.start, 0));
    const auto count = static_cast<std::size_t>(group.count);
    const std::span<const Vertex> run = vertices.subspan(std::min(start, vertices.size()));
    const std::span<const Vertex> drawn = run.first(std::min(count, run.size()));
    const bool list = primitiveType == kTriangleList;
    const std::size_t primitives = list ? drawn.size() / 3 : drawn.size() - std::min<std::size_t>(drawn.size(), 2);
    device_.drawPrimitiveUP(list ? device::PrimitiveType::TriangleList : device::PrimitiveType::TriangleStrip,
                            static_cast<std::uint32_t>(primitives), std::as_bytes(drawn), sizeof(Vertex));
  }

  engine::EngineContext& context_;
  device::Device& device_;
  engine::SlotTable<std::unique_ptr<MeshRecord>>& registry_;
  engine::SlotTable<render::TextureEntry>& textures_;
  engine::SlotTable<render::MaterialEntry>& materials_;
  engine::SlotTable<render::shaders::ShaderEntry>& shaders_;
  engine::SlotTable<std::shared_ptr<device::Texture>>& lightmaps_;
  std::vector<std::pair<std::int16_t, std::size_t>> pending_;  ///< meshes to draw, the next one last, and their depth
  std::vector<std::int16_t> path_;                             ///< the meshes above the next one
};

}  // namespace

void renderMesh(engine::EngineContext& context, std::int16_t slot) { Painter(context).drawTree(slot, {}); }

void renderGroupRange(engine::EngineContext& context, std::int16_t slot, std::int32_t first, std::int32_t last) {
  Painter(context).drawTree(slot, {.range = true, .first = first, .last = last});
}

void renderAllMeshes(engine::EngineContext& context) { Painter(context).drawAll(); }

void startMeshes(engine::EngineContext& context) {
  context.frameSteps.add(engine::FrameStage::EndOfFrame, [&context] {
    auto& slots = *context.get<MeshRegistry>().slots;
    for (std::int32_t slot = 1; slot <= slots.count(); ++slot) slots.at(slot)->renderedThisFrame = false;
  });
}

}  // namespace ql::mesh
