/// @file
/// Quake 3 level files as plain records: bytes in, checked records out, no engine state.
///
/// Levels are hostile. Every lump is proven to lie inside the file before it is copied, the lumps that are copied may
/// together not exceed copyLimit(), and after reading every number that refers to something else is checked once
/// (repairReferences). What refers outside is neutralised: a face without triangles, a face without a texture, a node
/// without a child. Code that runs per frame trusts these records.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace ql::level {

/// Lumps in the order of the file's directory.
enum class Lump : std::uint8_t {
  Entities,
  Textures,
  Planes,
  Nodes,
  Leaves,
  LeafFaces,
  LeafBrushes,
  Models,
  Brushes,
  BrushSides,
  Vertices,
  MeshVertices,
  Effects,
  Faces,
  Lightmaps,
  LightGrid,
  Visibility,
};
inline constexpr std::size_t kLumps = 17;

struct Q3LumpEntry {
  std::uint32_t offset = 0, length = 0;  ///< bytes from the start of the file
};

/// The start of every file.
struct Q3Header {
  std::array<char, 4> identifier{};
  std::int32_t version = 0;  ///< not checked
  std::array<Q3LumpEntry, kLumps> lumps{};
  const Q3LumpEntry& lump(Lump which) const { return lumps[static_cast<std::size_t>(which)]; }
};

struct Q3Texture {
  std::array<char, 64> name{};  ///< cut at its first NUL
  std::int32_t flags = 0, contents = 0;
};
struct Q3Plane {
  std::array<float, 3> normal{};
  float distance = 0;
};
/// A child that leads nowhere: what a bad reference is replaced by.
inline constexpr std::int32_t kNoChild = std::numeric_limits<std::int32_t>::min();
/// An inner node. The nodes that can be reached from node 0 form a tree; it may be as deep as it has nodes.
struct Q3Node {
  std::int32_t plane = 0;
  std::array<std::int32_t, 2> children{};  ///< a node, or ~leaf when negative, or kNoChild
  std::array<std::int32_t, 3> mins{}, maxs{};
};
struct Q3Leaf {
  std::int32_t cluster = 0;  ///< -1: not to be seen
  std::int32_t area = 0;
  std::array<std::int32_t, 3> mins{}, maxs{};  ///< file coordinates
  std::int32_t firstLeafFace = 0, leafFaceCount = 0, firstLeafBrush = 0, leafBrushCount = 0;
};
struct Q3Model {
  std::array<float, 3> mins{}, maxs{};
  std::int32_t firstFace = 0, faceCount = 0, firstBrush = 0, brushCount = 0;
};
struct Q3Vertex {
  std::array<float, 3> position{};  ///< x is negated once it is read
  std::array<float, 2> texture{}, lightmap{};
  std::array<float, 3> normal{};
  std::array<std::uint8_t, 4> color{};
};
inline constexpr std::int32_t kPatchFace = 2;
struct Q3Face {
  std::int32_t texture = 0;  ///< -1: none
  std::int32_t effect = 0, type = 0;
  std::int32_t firstVertex = 0, vertexCount = 0;
  std::int32_t firstMeshVertex = 0, meshVertexCount = 0;
  std::int32_t lightmap = 0;  ///< -1: none
  std::array<std::int32_t, 2> lightmapStart{}, lightmapSize{};
  std::array<float, 3> lightmapOrigin{}, lightmapS{}, lightmapT{}, normal{};
  std::array<std::int32_t, 2> patchSize{};  ///< control points across and down: both odd and at least 3, or both 0
};

static_assert(sizeof(Q3Header) == 144 && sizeof(Q3Texture) == 72 && sizeof(Q3Plane) == 16 && sizeof(Q3Node) == 36);
static_assert(sizeof(Q3Leaf) == 48 && sizeof(Q3Model) == 40 && sizeof(Q3Vertex) == 44 && sizeof(Q3Face) == 104);

/// One row of bits per cluster: bit c mod 8 of byte c div 8 is set when cluster c may be seen from the row's cluster.
struct Q3Visibility {
  std::int32_t clusterCount = 0;  ///< 0: the file says nothing, everything may be seen
  std::int32_t bytesPerCluster = 0;
  std::vector<std::byte> rows;
};

/// Bytes of one lightmap: 128 × 128 pixels of red, green, blue.
inline constexpr std::size_t kLightmapSide = 128, kLightmapBytes = kLightmapSide * kLightmapSide * 3;

/// What was found wrong and neutralised.
struct Repairs {
  std::uint32_t count = 0;
  std::string first;  ///< the first one in words
};

struct Q3Bsp {
  Q3Header header;
  std::vector<Q3Texture> textures;
  std::string entities;
  std::vector<Q3Vertex> vertices;
  std::vector<Q3Face> faces;
  std::vector<std::int32_t> meshVertices;
  std::vector<std::int32_t> leafFaces;
  Q3Visibility visibility;
  std::vector<Q3Node> nodes;
  std::vector<Q3Leaf> leaves;
  std::vector<Q3Model> models;
  std::span<const std::byte> lightmaps;  ///< a view of the file's own bytes
  std::vector<Q3Plane> planes;
  /// Most vertices that all faces together may expand to; faces beyond stay empty.
  std::size_t vertexLimit = 0;
  Repairs repairs;

  std::int32_t lightmapCount() const { return static_cast<std::int32_t>(lightmaps.size() / kLightmapBytes); }
};

/// Bytes of lumps that may be copied from a file of a size. Good files stay below their own size; only files whose
/// lumps overlap need more.
constexpr std::uint64_t copyLimit(std::uint64_t fileSize) { return fileSize + fileSize / 2 + (1U << 20); }
/// Vertices that a file's faces may expand to: 24 MB of level vertices, plus half the file's size.
constexpr std::size_t vertexLimit(std::uint64_t fileSize) {
  return static_cast<std::size_t>((fileSize / 2 + (24U << 20)) / 36);
}

bool isQ3Bsp(std::span<const std::byte> bytes);
/// @throws host::FileFault Truncated
Q3Header readQ3Header(std::span<const std::byte> bytes);
/// Reads the lumps in the engine's order into level and repairs their references; what was read before a fault stays.
/// Lightmaps keep pointing into bytes. @throws host::FileFault Truncated, TooLarge
void readQ3Lumps(std::span<const std::byte> bytes, Q3Bsp& level);
/// Header and lumps. @throws host::FileFault BadIdentifier, Truncated, TooLarge
Q3Bsp parseQ3Bsp(std::span<const std::byte> bytes);

/// Checks everything that refers to something else, and that numbers are numbers. Runs in linear time.
void repairReferences(Q3Bsp& level);

}  // namespace ql::level
