/// @file
/// The framing of the engine's object files: "QLOF", the position of a directory, chunks of a 16-bit type and a
/// payload, and the directory, which runs to the end of the file.
///
/// Positions are counted from 1. Files are overwritten from their first byte without being cut, so what follows a
/// directory may be the rest of an older, longer file.
#pragma once

#include "mesh/RecordBytes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace ql::mesh {

enum class ChunkType : std::int16_t {
  Version = 1,
  Mesh = 2,
  Features = 3,
  Face = 4,
  FaceCount = 5,
  Vertices = 6,
  VertexCount = 7,
  Sprite = 8,
  Textures = 9,
  TextureCount = 10,
  ColorVertices = 11,
  PrimitiveType = 12,
  Billboard = 13,
  SphereMapping = 14,
  EndFace = 15,
  EndMesh = 16,
  FaceTexture = 17,
  FaceMaterial = 18,
  FaceLightmap = 19,
  FaceVertexStart = 20,
  FaceVertexNumber = 21,
  MeshName = 25,  ///< inside a face: its blending
};
/// The version that is written.
inline constexpr std::int32_t kChunkFileVersion = 8;

/// One chunk as the directory has it.
struct ChunkEntry {
  std::int16_t type = 0;
  std::int32_t length = 0;  ///< bytes of the payload; 0 for the last chunk of a file
  std::int32_t offset = 0;  ///< position of the payload's first byte
};

/// The name of a chunk type; "" for those without.
std::string_view chunkName(std::int32_t type);

/// Where the last chunk that was written began, of any file: the directory's first entry, which stands for no chunk,
/// gets a length from what was left of the file before.
struct LastChunk {
  std::int32_t start = 0;
};

/// Writes a chunk file.
class ChunkWriter {
 public:
  explicit ChunkWriter(LastChunk& last);
  /// Starts a chunk; its payload is what is written to the bytes until the next one.
  RecordBytes& begin(ChunkType type);
  /// The whole file.
  std::vector<std::byte> finish();

 private:
  std::int32_t position() const { return static_cast<std::int32_t>(bytes_.size()) + 1; }
  LastChunk& last_;
  RecordBytes bytes_;
  std::vector<ChunkEntry> directory_;
};

bool isChunkFile(std::span<const std::byte> bytes);
/// The chunks in the order of the directory, without its first entry. It ends before an entry that is not past the one
/// before or not before the directory. @throws host::FileFault Truncated, BadIdentifier
std::vector<ChunkEntry> readDirectory(std::span<const std::byte> bytes);

/// Writes over a file from its first byte, by way of a temporary file: what an older file had beyond stays.
/// @throws host::FileFault FolderMissing, Unreadable
void overwriteFile(std::string_view name, std::vector<std::byte> bytes);

}  // namespace ql::mesh
