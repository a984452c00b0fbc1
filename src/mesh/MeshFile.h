/// @file
/// Meshes in files: as chunks ("QLOF"), which keep most of a mesh, and as a dump of the whole record ("QLMESH"), which
/// gives back its name only.
#pragma once

#include "mesh/ChunkFile.h"
#include "mesh/MeshRecord.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ql::mesh {

/// What a chunk file says of a mesh; what it does not say is absent.
struct ChunkMesh {
  std::optional<std::string> name;
  struct Place {
    math::Vec3 position, rotation, scale;
  };
  std::optional<Place> place;
  std::optional<std::int32_t> vertexCount;
  std::vector<math::NormalVertex> normalVertices;  ///< vertexCount + 1 elements when the file has them
  std::vector<math::ColorVertex> colorVertices;    ///< likewise
  std::optional<std::int16_t> primitiveType;
  bool billboard = false, sprite = false;
  bool shape = false;  ///< vertices are counted, but the list has no more than its spare: a shape's are not saved
  std::vector<MeshGroup> groups;  ///< element 0 and the file's; empty when it has none
  std::uint32_t repairs = 0;      ///< groups whose vertices do not exist, numbers that were none
};

/// Reads the mesh of a chunk file. A vertex chunk that is shorter than its count (shapes are saved without their
/// geometry) reads on as zeros. @throws host::FileFault BadIdentifier, Truncated, BadSize
ChunkMesh parseChunkMesh(std::span<const std::byte> bytes);

/// Takes the vertices from groups that name vertices which do not exist. Those of shapes may: they claim some beside
/// their shape's; but no group starts or ends before 0.
void emptyImpossibleGroups(ChunkMesh& file);

/// The chunk file of a mesh. @param textureDescriptions the faces' lightmaps, materials and textures too, and what the
/// texture table knows of those textures @throws engine::EngineError 9 for a texture outside the table
std::vector<std::byte> chunkFileOf(engine::EngineContext& context, const MeshHandle& mesh, bool textureDescriptions);
/// The dump of a mesh.
std::vector<std::byte> dumpOf(const MeshRecord& record);

/// Writes a chunk file over what was in the file. @throws as chunkFileOf, host::FileFault
void saveChunks(engine::EngineContext& context, const MeshHandle& mesh, const std::string& fileName,
                bool textureDescriptions);
/// Fills a mesh from a chunk file; another kind of file is logged and changes nothing. @throws host::FileFault,
/// engine::EngineError 6 for more than 32767 vertices; nothing changed
void loadChunks(engine::EngineContext& context, MeshHandle& mesh, const std::string& fileName);
/// Writes a dump over what was in the file. @throws host::FileFault
void saveDump(engine::EngineContext& context, const MeshHandle& mesh, const std::string& fileName);
/// Reads the name of a dump: as many characters as the mesh's present name has. Other files change nothing.
/// @throws host::FileFault
void loadDump(engine::EngineContext& context, const MeshHandle& mesh, const std::string& fileName);

/// Whether a file is a dump.
bool isMeshDump(std::span<const std::byte> bytes);

}  // namespace ql::mesh
