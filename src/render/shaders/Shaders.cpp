#include "render/shaders/Shaders.h"

#include "platform/host/Files.h"
#include "render/Materials.h"
#include "render/TextureTable.h"

#include <algorithm>
#include <utility>

namespace ql::render::shaders {
namespace {

constexpr std::size_t kEndingLength = 4;  // of ".TGA"
constexpr std::int32_t kBlackKey = static_cast<std::int32_t>(0xFF000000);
constexpr math::Color4 kWhite{1, 1, 1, 1};

std::int16_t loadPicture(engine::EngineContext& context, const std::string& name) {
  std::int32_t width = -1, height = -1, key = kBlackKey;
  std::string file = name;
  return loadTexture(context, file, name, width, height, key)->index;
}

std::int16_t textureOf(engine::EngineContext& context, const std::string& map, bool fallBackToJpg, bool load) {
  if (map == kLightmapName) return kFaceLightmap;
  if (map == kTextureName) return kFaceTexture;
  if (!load) return findTextureIndex(context, map);
  if (!fallBackToJpg || host::fileExists(map)) return loadPicture(context, map);
  return loadPicture(context, map.substr(0, map.size() - std::min(map.size(), kEndingLength)) + ".JPG");
}

/// What a stage without a map shows: the picture that has the shader's name, else what the surface has itself.
std::int16_t ownPicture(engine::EngineContext& context, const std::string& shader, bool load) {
  for (const char* ending : {".TGA", ".JPG"})
    if (load && host::fileExists(shader + ending)) return loadPicture(context, shader + ending);
  return kFaceTexture;
}

ShaderStage buildStage(engine::EngineContext& context, const std::string& shader, const ScriptStage& script,
                       bool load) {
  ShaderStage stage;
  for (const std::string& map : script.maps)
    stage.textures.push_back(textureOf(context, map, script.fallBackToJpg, load));
  if (script.maps.empty()) stage.textures.push_back(ownPicture(context, shader, load));
  stage.frameCount = script.frameCount;
  stage.frequency = script.frequency;
  stage.flags = script.flags;
  stage.sourceBlend = script.sourceBlend;
  stage.destinationBlend = script.destinationBlend;
  stage.scaleS = script.scaleS;
  stage.scaleT = script.scaleT;
  stage.scrollS = script.scrollS;
  stage.scrollT = script.scrollT;
  stage.kind = script.kind;
  stage.material = createMaterialQuick(context, kWhite, "MatShader");
  return stage;
}

}  // namespace

std::int16_t addShader(engine::EngineContext& context, const std::string& name, const ScriptShader& shader,
                       bool loadTextures) {
  std::vector<ShaderStage> stages;
  stages.reserve(shader.stages.size());
  for (const ScriptStage& stage : shader.stages) stages.push_back(buildStage(context, name, stage, loadTextures));
  auto& entries = context.get<ShaderTable>().entries;
  std::int16_t index = entries.find([&](const ShaderEntry& entry) { return !entry.inUse || entry.name == name; });
  if (index == 0) index = entries.grow();
  ShaderEntry& entry = entries.at(index);
  if (!entry.handle) entry.handle = std::make_shared<ShaderHandle>(ShaderHandle{index});
  entry.stages = std::move(stages);
  entry.name = name;
  entry.surfaceFlags = shader.surfaceFlags;
  entry.inUse = true;
  return index;
}

std::shared_ptr<ShaderHandle> findShader(engine::EngineContext& context, std::string_view name) {
  auto& entries = context.get<ShaderTable>().entries;
  const std::int16_t index =
      entries.find([&](const ShaderEntry& entry) { return entry.inUse && host::equalIgnoringCase(entry.name, name); });
  return index == 0 ? nullptr : entries.at(index).handle;
}

}  // namespace ql::render::shaders
