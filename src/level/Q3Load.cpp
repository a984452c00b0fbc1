#include "level/FaceBuilder.h"
#include "level/LevelState.h"
#include "level/Lightmap.h"
#include "level/LoadingPanel.h"
#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"
#include "render/TextureTable.h"

#include <algorithm>
#include <future>
#include <string>
#include <string_view>
#include <utility>

namespace ql::level {
namespace {

/// A damaged file cannot make the log grow without bounds.
constexpr std::uint32_t kMostPatchLines = 1000;
constexpr std::int32_t kSolidArea = -1;

template <class Count>
void logCount(diagnostics::Log& log, std::string_view label, Count count) {
  log.write(std::string(label) + std::to_string(count));
}

void logStatistics(diagnostics::Log& log, const Q3Bsp& file) {
  logCount(log, " num  Shader        : ", file.textures.size());
  logCount(log, " size Entities      : ", file.entities.size());
  logCount(log, " num  Vertex        : ", file.vertices.size());
  logCount(log, " num  Face          : ", file.faces.size());
  logCount(log, " num  Vertex elem   : ", file.meshVertices.size());
  logCount(log, " num  Indexed faces : ", file.header.lump(Lump::LeafFaces).length / sizeof(std::int32_t));
  logCount(log, " size PVS Info      : ", file.header.lump(Lump::Visibility).length);
  logCount(log, " num  Cluster       : ", file.visibility.clusterCount);
  logCount(log, " num  Leafs         : ", file.leaves.size());
  log.write("-------------------------------------------");
}

void loadLightmaps(LevelState& level, std::span<const std::byte> bytes) {
  for (std::size_t at = 0; at + kLightmapBytes <= bytes.size(); at += kLightmapBytes)
    level.data.lightmaps.push_back(
        createLightmapTexture(level.context, bytes.subspan(at, kLightmapBytes), kLightmapSide, kLightmapSide));
}

/// The image file that a texture's name, which has no ending, means.
std::string imageFile(const std::string& name) {
  const std::string targa = name + ".TGA";
  return host::fileExists(targa) ? targa : name + ".JPG";
}

/// The pictures that a level's textures are loaded from, in order; empty names for textures that shaders draw.
std::vector<std::string> pictureFiles(const LevelState& level, const std::vector<Q3Texture>& textures) {
  std::vector<std::string> files;
  files.reserve(textures.size());
  for (const Q3Texture& texture : textures) {
    const std::string name(host::fieldText(texture.name));
    files.push_back(level.scripts.has(name) ? std::string() : imageFile(name));
  }
  return files;
}

void loadTextures(LevelState& level, const std::vector<Q3Texture>& textures) {
  constexpr std::size_t kAhead = 3;  // pictures that are decoded meanwhile
  const auto& shaders = level.context.get<render::shaders::ShaderTable>().entries;
  auto& table = level.context.get<render::TextureTable>();
  level.skyShader = 0;
  level.data.textures.reserve(textures.size());
  const std::vector<std::string> files = pictureFiles(level, textures);
  std::size_t expected = 0;
  for (std::size_t i = 0; i < textures.size(); ++i) {
    for (; expected < std::min(i + kAhead, files.size()); ++expected)
      if (!files[expected].empty()) table.pictures.expect(files[expected]);
    LevelTexture& loaded = level.data.textures.emplace_back();
    loaded.name = host::fieldText(textures[i].name);
    if (const std::int16_t shader = level.scripts.load(level.context, loaded.name); shader != 0) {
      loaded.shaderSlot = shader;
      if ((shaders.at(shader).surfaceFlags & render::shaders::kSky) != 0) level.skyShader = shader;
      continue;
    }
    std::string file = files[i].empty() ? imageFile(loaded.name) : files[i];
    std::int32_t width = -1, height = -1, colorKey = 0;
    const auto handle = render::loadTexture(level.context, file, "", width, height, colorKey);
    loaded.texture = table.entries.at(handle->index).texture;
  }
  level.scripts.dropText();
}

/// Hands the faces whose textures have shaders to the shader pass.
void assignShaders(LevelData& data) {
  for (FaceRecord& face : data.faces) {
    if (face.texture < 0) continue;
    const std::int32_t slot = data.textures[static_cast<std::size_t>(face.texture)].shaderSlot;
    if (slot < 0) continue;
    face.texture = -1;
    face.baseSlot = static_cast<std::int16_t>(slot);
  }
}

void takeFaces(LevelState& level, BuiltFaces built, std::vector<LevelVertex>& vertices) {
  diagnostics::Log& log = level.context.log;
  for (std::uint32_t i = 0; i < std::min(built.badPatches, kMostPatchLines); ++i)
    log.write("QUAKE 3 MESH CURVES MAKER : ERROR : Bad controls points");
  if (built.crowdedFaces != 0)
    log.write("BSP TREE : " + std::to_string(built.crowdedFaces) +
              " curved faces left out, the level has too many vertices");
  level.data.faces = std::move(built.records);
  assignShaders(level.data);
  vertices = std::move(built.vertices);
}

void buildLeaves(LevelData& data, const std::vector<Q3Leaf>& leaves) {
  data.leaves.reserve(leaves.size());
  data.leafSpheres.reserve(leaves.size());
  for (const Q3Leaf& leaf : leaves) {
    data.leaves.push_back(
        {leaf.cluster, leaf.mins, leaf.maxs, leaf.firstLeafFace, leaf.leafFaceCount, leaf.area == kSolidArea});
    data.leafSpheres.push_back(leafSphere(data.leaves.back()));
  }
}

void createVertexBuffer(LevelState& level, const std::vector<LevelVertex>& vertices) {
  constexpr std::uint32_t kNoUsage = 0;
  const std::span<const std::byte> bytes = std::as_bytes(std::span(vertices));
  level.data.vertices = level.context.requireDevice().createVertexBuffer(
      std::max(bytes.size(), sizeof(LevelVertex)), kNoUsage, kLevelVertexFormat, device::Pool::Default);
  level.data.vertices->write(0, bytes);
  level.data.positions.reserve(vertices.size());
  for (const LevelVertex& vertex : vertices) level.data.positions.push_back({vertex.x, vertex.y, vertex.z});
}

void transformFaces(LevelState& level, Q3Bsp& file) {
  // While this thread loads textures.
  std::future<BuiltFaces> built =
      std::async(std::launch::async | std::launch::deferred,
                 [&file, precision = level.curvePrecision] { return buildFaces(file, precision); });
  showLoadingStep(level.context, "Load Shaders...", 62);
  loadTextures(level, file.textures);
  showLoadingStep(level.context, "Q3 Mesh Curves calculations...", 72);
  std::vector<LevelVertex> vertices;
  takeFaces(level, built.get(), vertices);
  // Only the expanded vertices are needed from here on.
  file.vertices = {};
  file.faces = {};
  file.meshVertices = {};
  showLoadingStep(level.context, "Managing Data", 82);
  buildLeaves(level.data, file.leaves);
  createVertexBuffer(level, vertices);
  createSky(level);
}

}  // namespace

void loadQuake3(LevelState& level, std::vector<std::byte> bytes) {
  diagnostics::Log& log = level.context.log;
  level.kind = LevelKind::Quake3;
  level.data = {};
  level.sky = nullptr;
  level.visible.reset();
  level.faceCollision.reset();

  Q3Bsp file;
  file.header = readQ3Header(bytes);
  for (const char* line : {"", "---------------------------------", " QUAKE BSP 3 Loading Stats       ",
                           "---------------------------------"})
    log.write(line);
  try {
    readQ3Lumps(bytes, file);
  } catch (...) {
    level.data.entityText = std::move(file.entities);
    throw;
  }
  logStatistics(log, file);
  if (file.repairs.count != 0)
    log.write("BSP TREE : " + std::to_string(file.repairs.count) +
              " damaged entries ignored, the first: " + file.repairs.first);
  level.data.entityText = std::move(file.entities);
  level.data.leafFaces = std::move(file.leafFaces);
  level.data.visibility = std::move(file.visibility);
  level.data.nodes = std::move(file.nodes);
  level.data.models = std::move(file.models);
  level.data.planes = std::move(file.planes);

  showLoadingStep(level.context, "Load lightmaps...", 42);
  logCount(log, "Load Lightmaps : ", file.lightmapCount());
  loadLightmaps(level, file.lightmaps);
  file.lightmaps = {};
  bytes = {};
  level.levelMatrix = levelRotation();
  log.write("Transform faces for Quasarlens");
  transformFaces(level, file);
}

}  // namespace ql::level
