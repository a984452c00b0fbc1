#include "mesh/MeshFile.h"
#include "render/TextureTable.h"

#include <algorithm>

namespace ql::mesh {
namespace {

constexpr std::string_view kDumpMagic = "QLMESH";

void writeVertices(ChunkWriter& file, const MeshRecord& record) {
  if (record.vertexType == kColorVertices) {
    file.begin(ChunkType::ColorVertices).elements(record.colorVertices);
  } else {
    file.begin(ChunkType::Vertices).elements(record.normalVertices);
  }
}

void writeFace(ChunkWriter& file, const MeshGroup& group, bool textureDescriptions) {
  file.begin(ChunkType::Face);
  file.begin(ChunkType::SphereMapping).value(group.sphereMap);
  file.begin(ChunkType::MeshName).value(group.blending);
  if (textureDescriptions) {
    if (group.lightmap > 0) file.begin(ChunkType::FaceLightmap).value(group.lightmap);
    if (group.material > 0) file.begin(ChunkType::FaceMaterial).value(group.material);
    if (group.texture >= 1) file.begin(ChunkType::FaceTexture).value(group.texture);
  }
  file.begin(ChunkType::FaceVertexNumber).value(group.count);
  file.begin(ChunkType::FaceVertexStart).value(group.start);
  file.begin(ChunkType::EndFace);
}

/// The textures of a mesh's groups, each once, in order of first use.
std::vector<std::int16_t> texturesOf(const MeshRecord& record) {
  std::vector<std::int16_t> used;
  std::vector<bool> seen(32768);
  for (std::size_t g = 1; g < record.groups.size(); ++g) {
    const std::int16_t texture = record.groups[g].texture;
    if (texture < 1 || seen[static_cast<std::size_t>(texture)]) continue;
    seen[static_cast<std::size_t>(texture)] = true;
    used.push_back(texture);
  }
  return used;
}

void writeTextures(engine::EngineContext& context, ChunkWriter& file, const MeshRecord& record) {
  const std::vector<std::int16_t> used = texturesOf(record);
  file.begin(ChunkType::TextureCount).value(static_cast<std::int16_t>(used.size()));
  RecordBytes& bytes = file.begin(ChunkType::Textures);
  constexpr std::int32_t kReserved = 0;
  for (const std::int16_t index : used) {
    const render::TextureEntry& entry = context.get<render::TextureTable>().entries.at(index);
    bytes.string(entry.fileName).string(entry.name).value(kReserved).value(entry.height).value(entry.width);
  }
}

void dumpGroup(RecordBytes& bytes, const MeshGroup& group) {
  if (group.indices.empty()) {
    bytes.noList();
  } else {
    bytes.list(group.indices.size(), 0).elements(group.indices);
  }
  bytes.value(group.count).value(group.start).value(group.texture).value(group.material).value(group.lightmap);
  bytes.value(group.blending).value(group.sphereMap).value(group.shader).value(group.framePos);
}

}  // namespace

std::vector<std::byte> chunkFileOf(engine::EngineContext& context, const MeshHandle& mesh, bool textureDescriptions) {
  const MeshRecord& record = meshRecord(context, mesh.slot);
  ChunkWriter file(context.get<LastChunk>());
  file.begin(ChunkType::Version).value(kChunkFileVersion);
  file.begin(ChunkType::Mesh);
  file.begin(ChunkType::MeshName).text(record.name);
  file.begin(ChunkType::Features)
      .value(record.position)
      .value(record.rotation)
      .value(record.scale)
      .value(record.sphereCenter)
      .value(record.sphereRadius);
  file.begin(ChunkType::VertexCount).value(record.vertexCount);
  writeVertices(file, record);
  if (record.billboard) file.begin(ChunkType::Billboard);
  if (record.sprite) file.begin(ChunkType::Sprite);
  file.begin(ChunkType::FaceCount).value(record.groupCount);
  for (std::size_t g = 1; g < record.groups.size(); ++g) writeFace(file, record.groups[g], textureDescriptions);
  file.begin(ChunkType::EndMesh);
  if (textureDescriptions) writeTextures(context, file, record);
  return file.finish();
}

std::vector<std::byte> dumpOf(const MeshRecord& record) {
  RecordBytes bytes;
  bytes.text(kDumpMagic).text(record.name);
  bytes.value(record.position).value(record.rotation).value(record.scale);
  bytes.boolean(record.usesSubsets).boolean(record.sphereMapping).value(record.texCoordGen).value(record.visible);
  bytes.boolean(record.billboard).boolean(record.sprite);
  bytes.value(record.sphereCenter).value(record.sphereRadius).boolean(record.boundsValid);
  bytes.value(record.boxMin).value(record.boxMax).value(record.velocity).value(record.gravity);
  bytes.list(record.normalVertices.size(), 0).elements(record.normalVertices);
  bytes.list(record.colorVertices.size(), 0).elements(record.colorVertices);
  bytes.value(record.vertexCount).value(record.vertexType).value(record.groupCount);
  bytes.list(record.groups.size(), 0);
  for (const MeshGroup& group : record.groups) dumpGroup(bytes, group);
  bytes.value(record.primitiveType).value(record.worldMatrix);
  bytes.value(static_cast<std::int16_t>(record.children.size()));
  if (record.children.empty()) {
    bytes.noList();
  } else {
    bytes.list(record.children.size(), 1).elements(record.children);
  }
  bytes.value(record.parent).value(record.cullMode).boolean(record.renderedThisFrame).value(record.deathTime);
  return bytes.take();
}

void saveChunks(engine::EngineContext& context, const MeshHandle& mesh, const std::string& fileName,
                bool textureDescriptions) {
  overwriteFile(fileName, chunkFileOf(context, mesh, textureDescriptions));
}

void saveDump(engine::EngineContext& context, const MeshHandle& mesh, const std::string& fileName) {
  overwriteFile(fileName, dumpOf(meshRecord(context, mesh.slot)));
}

}  // namespace ql::mesh
