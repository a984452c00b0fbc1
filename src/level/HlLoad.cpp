#include "level/EntityText.h"
#include "level/HlFaces.h"
#include "level/HlTextures.h"
#include "level/Level.h"
#include "level/LevelState.h"
#include "level/Lightmap.h"
#include "level/LightmapPages.h"
#include "level/LoadingPanel.h"
#include "platform/host/Files.h"
#include "render/Lights.h"
#include "render/TextureTable.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <future>
#include <limits>
#include <string>
#include <system_error>
#include <utility>

namespace ql::level {
namespace {

void logSummary(diagnostics::Log& log, const HlBsp& file) {
  log.write("BSP file Summary :");
  log.write("Vertexes, models, planes, leafs loaded");
  const auto count = [&](std::size_t number, const char* what) { log.write(std::to_string(number) + what); };
  count(file.vertices.size(), " Vertexes");
  count(file.textures.size(), " Textures");
  count(file.models.size(), " Models");
  count(file.faces.size(), " Faces");
  count(file.lighting.size(), " lightmap bytes.");
  count(file.entities.size(), " entity bytes");
}

std::array<std::int32_t, 3> wide(const std::array<std::int16_t, 3>& v) { return {v[0], v[1], v[2]}; }

/// Puts the tree and its leaves into the tables that both kinds of levels share.
void buildTree(LevelData& data, const HlBsp& file) {
  for (const HlPlane& plane : file.planes) data.planes.push_back({plane.normal, plane.distance});
  for (const HlNode& node : file.nodes) {
    Q3Node& made = data.nodes.emplace_back();
    made.plane = node.plane;
    for (std::size_t i = 0; i < 2; ++i)
      made.children[i] = node.children[i] == kNoHlChild ? kNoChild : std::int32_t{node.children[i]};
    made.mins = wide(node.mins);
    made.maxs = wide(node.maxs);
  }
  // Rows of visibility start with leaf 1. Leaves beyond the world's belong to brush models.
  const std::int32_t told = file.models.empty() ? 0 : file.models[0].visibleLeaves;
  const auto leaves = static_cast<std::int32_t>(file.leaves.size());
  const std::int32_t last = told > 0 && told < leaves ? told : leaves - 1;
  for (std::int32_t i = 0; i < leaves; ++i) {
    const HlLeaf& leaf = file.leaves[static_cast<std::size_t>(i)];
    Leaf& made = data.leaves.emplace_back();
    made.cluster = i <= last ? i - 1 : -1;
    made.mins = wide(leaf.mins);
    made.maxs = wide(leaf.maxs);
    made.firstLeafFace = static_cast<std::int32_t>(data.leafFaces.size());
    for (std::size_t k = leaf.firstMarkSurface; k < std::size_t{leaf.firstMarkSurface} + leaf.markSurfaceCount; ++k)
      if (file.markSurfaces[k] < file.faces.size()) data.leafFaces.push_back(file.markSurfaces[k]);
    made.leafFaceCount = static_cast<std::int32_t>(data.leafFaces.size()) - made.firstLeafFace;
    made.solid = leaf.contents == kHlSolid;
    data.visibilityOffsets.push_back(leaf.visibilityOffset);
  }
  for (const HlModel& model : file.models)
    data.models.push_back({model.mins, model.maxs, model.firstFace, model.faceCount, 0, 0});
}

void createVertexBuffer(LevelState& level, const std::vector<HlVertex>& vertices) {
  constexpr std::uint32_t kNoUsage = 0;
  const std::span<const std::byte> bytes = std::as_bytes(std::span(vertices));
  level.data.vertices = level.context.requireDevice().createVertexBuffer(
      std::max(bytes.size(), sizeof(HlVertex)), kNoUsage, kHlVertexFormat, device::Pool::Default);
  level.data.vertices->write(0, bytes);
  level.data.positions.reserve(vertices.size());
  for (const HlVertex& vertex : vertices) level.data.positions.push_back({vertex.x, vertex.y, vertex.z});
}

void createLightmaps(LevelState& level, const std::vector<LightmapPage>& pages) {
  constexpr std::uint32_t kWhiteSide = 8, kLevels = 1, kNoUsage = 0;
  const std::vector<std::byte> white(std::size_t{kWhiteSide} * kWhiteSide * 3, std::byte{255});
  level.data.whiteLightmap = createLightmapTexture(level.context, white, kWhiteSide, kWhiteSide);
  device::Device& device = level.context.requireDevice();
  for (const LightmapPage& page : pages) {
    if (page.single) {
      level.data.lightmaps.push_back(createPackedTexture(level.context, page.pixels, page.width, page.height));
      continue;
    }
    level.data.lightmaps.push_back(device.createTexture(page.width, page.height, kLevels, kNoUsage,
                                                        device::Format::R5G6B5, device::Pool::Managed));
    level.data.lightmaps.back()->writeLevel(0, std::as_bytes(std::span(page.pixels)));
  }
}

/// Loads the pictures of sprites, where there are any.
void loadSprites(LevelState& level) {
  for (auto entity = firstEntity(level.data.entityText); entity; entity = firstEntity(entity->rest)) {
    const std::string_view name = entityValue(entity->block, "classname");
    if (name != "env_sprite" && name != "env_glow") continue;
    std::string file(entityValue(entity->block, "model"));
    level.context.pak.expand(file);
    if (!host::fileExists(file)) continue;
    std::int32_t width = -1, height = -1, colorKey = 0;
    render::loadTexture(level.context, file, "", width, height, colorKey);
    level.context.pak.deleteExpanded(file);
  }
}

/// The part of the world that needs no device.
struct World {
  HlFaces faces;
  std::vector<LightmapPage> pages;
};

std::uint32_t largestTextureSide(const engine::EngineContext& context) {
  if (!context.device) return kLightmapPageSide;  // the first texture will tell of it
  const device::Capabilities& most = context.device->capabilities();
  return std::min(most.maxTextureWidth, most.maxTextureHeight);
}

World buildWorld(const HlBsp& file, std::uint32_t largestTexture) {
  World world;
  world.faces = buildHlFaces(file);
  LightmapPages made = makeLightmapPages(file.lighting, world.faces.lightmaps, largestTexture);
  usePages(world.faces, made);
  world.pages = std::move(made.pages);
  return world;
}

void createWorld(LevelState& level, const HlBsp& file, std::future<World>& built) {
  try {
    showLoadingStep(level.context, "Create world...", 62);
    loadSprites(level);
    buildTree(level.data, file);
    World world = built.get();
    level.data.packedVisibility = file.visibility;
    showLoadingStep(level.context, "Load lightmaps...", 72);
    createLightmaps(level, world.pages);
    createVertexBuffer(level, world.faces.vertices);
    level.data.faces = std::move(world.faces.records);
    level.data.looks = std::move(world.faces.looks);
    level.data.brushModels = std::move(world.faces.brushModels);
  } catch (...) {
    level.context.log.write("BSPTREE : Error in creating world. STATE : ERROR (Level : 2/5)");
    throw;
  }
}

/// As many as there is room for.
void createEntityLights(LevelState& level) {
  const std::string_view all = level.data.entityText;
  for (const std::string_view kind : {"light", "light_spot"}) {
    for (EntityBlock entity = findEntity(kind, "classname", all); !entity.block.empty();
         entity = findEntity(kind, "classname", entity.rest)) {
      const math::Vec3 origin = parseVector(entityValue(entity.block, "origin"));
      const std::string_view light = entityValue(entity.block, "_light");
      const math::Vec3 color = parseVector(light);
      const auto lastBlank = light.find_last_of(' ');
      // The fourth number, after three blanks.
      const bool four = std::count(light.begin(), light.end(), ' ') >= 3;
      const double range = four ? host::numberFromText(light.substr(lastBlank + 1)) : 0;
      constexpr float kGain = 10, kFull = 255;
      try {
        render::createPointLight(level.context,
                                 math::transformPoint({-origin.x, origin.y, origin.z}, level.levelMatrix),
                                 static_cast<float>(std::clamp(range, 0.0, 1e9)),
                                 {kGain * color.x / kFull, kGain * color.y / kFull, kGain * color.z / kFull, 1});
      } catch (const engine::EngineError& error) {
        if (error.number != engine::kSubscript) throw;
        return;
      }
    }
  }
}

void enterFolder(const std::string& path) {
  if (path.empty()) return;
  std::error_code ignored;
  if (const auto folder = host::findFolder(path)) std::filesystem::current_path(*folder, ignored);
}

}  // namespace

void loadHalfLife(LevelState& level, std::vector<std::byte> bytes, const LoadOptions& options) {
  diagnostics::Log& log = level.context.log;
  level.kind = LevelKind::HalfLife;
  level.data = {};
  level.data.isHalfLife = true;
  level.visible.reset();
  level.faceCollision.reset();
  level.levelMatrix = levelRotation();

  HlBsp file;
  file.header = readHlHeader(bytes);
  log.write("Load entities.");
  try {
    readHlLumps(bytes, file);
  } catch (...) {
    level.data.entityText = std::move(file.entities);
    throw;
  }
  logSummary(log, file);
  if (file.repairs.count != 0)
    log.write("BSP TREE : " + std::to_string(file.repairs.count) +
              " damaged entries ignored, the first: " + file.repairs.first);
  level.data.entityText = file.entities;
  // While this thread makes textures.
  std::future<World> world =
      std::async(std::launch::async | std::launch::deferred,
                 [&file, side = largestTextureSide(level.context)] { return buildWorld(file, side); });
  if (options.loadTextures) {
    enterFolder(options.texturePath);
    log.write("BSP TREE : Load textures.");
    showLoadingStep(level.context, "Load textures...", 42);
    loadHlTextures(level, file, bytes, options.textureNumber);
  } else {
    level.data.textures.resize(file.textures.size());
  }
  log.write("BSP TREE : Create world...");
  createWorld(level, file, world);
  constexpr std::uint32_t kDoubleSided = 1;
  level.useLightMaps = options.loadLightMaps;
  level.usePvsInfo = true;
  level.culling = kDoubleSided;
  level.displaySky = false;
  if (options.createDynamicLights) createEntityLights(level);
}

}  // namespace ql::level
