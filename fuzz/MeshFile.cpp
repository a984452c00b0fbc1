#include "mesh/MeshFile.h"

#include "SeedFolder.h"
#include "platform/host/Fault.h"

#include <cmath>
#include <cstdlib>

namespace {

using namespace ql;
using mesh::ChunkType;

/// A triangle in one face. @param colored which list it has
std::vector<std::byte> seed(bool colored) {
  mesh::LastChunk last;
  mesh::ChunkWriter file(last);
  file.begin(ChunkType::Version).value(mesh::kChunkFileVersion);
  file.begin(ChunkType::Mesh);
  file.begin(ChunkType::MeshName).text("Seed");
  file.begin(ChunkType::Features)
      .value(mesh::ChunkMesh::Place{{1, 2, 3}, {}, {1, 1, 1}})
      .value(math::Vec3{})
      .value(1.0F);
  file.begin(ChunkType::VertexCount).value(std::int32_t{3});
  if (colored) {
    file.begin(ChunkType::ColorVertices).elements(std::vector<math::ColorVertex>(4));
  } else {
    file.begin(ChunkType::Vertices).elements(std::vector<math::NormalVertex>(4));
  }
  file.begin(ChunkType::Billboard);
  file.begin(ChunkType::FaceCount).value(std::int16_t{1});
  file.begin(ChunkType::Face);
  for (const ChunkType type : {ChunkType::SphereMapping, ChunkType::MeshName, ChunkType::FaceLightmap,
                               ChunkType::FaceMaterial, ChunkType::FaceTexture, ChunkType::FaceVertexStart})
    file.begin(type).value(std::int16_t{0});
  file.begin(ChunkType::FaceVertexNumber).value(std::int16_t{3});
  file.begin(ChunkType::EndFace);
  file.begin(ChunkType::EndMesh);
  return file.finish();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  ql::test::writeSeeds(*argc, *argv, {seed(false), seed(true)});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    mesh::ChunkMesh file = mesh::parseChunkMesh(std::as_bytes(std::span(data, size)));
    const std::int32_t vertices = file.vertexCount.value_or(0);
    if (vertices < 0) std::abort();
    mesh::emptyImpossibleGroups(file);
    for (const mesh::MeshGroup& group : file.groups)
      if (group.start < 0 || group.count < 0 || (!file.shape && group.start + group.count > vertices)) std::abort();
    for (const math::NormalVertex& v : file.normalVertices)
      if (!std::isfinite(v.x) || !std::isfinite(v.nz) || !std::isfinite(v.tv1)) std::abort();
    for (const math::ColorVertex& v : file.colorVertices)
      if (!std::isfinite(v.y) || !std::isfinite(v.tu)) std::abort();
  } catch (const host::FileFault&) {
  }
  return 0;
}
