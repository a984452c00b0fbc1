/// @file
/// Half-Life level files as plain records: bytes in, checked records out, no engine state. As hostile as Quake 3 files,
/// and treated like them: see Q3Bsp.h.
#pragma once

#include "level/Q3Bsp.h"
#include "level/Wad3.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace ql::level {

/// Lumps in the order of the file's directory.
enum class HlLump : std::uint8_t {
  Entities,
  Planes,
  Textures,
  Vertices,
  Visibility,
  Nodes,
  TextureInfo,
  Faces,
  Lighting,
  ClipNodes,
  Leaves,
  MarkSurfaces,
  Edges,
  SurfaceEdges,
  Models,
};
inline constexpr std::size_t kHlLumps = 15;

struct HlHeader {
  std::int32_t version = 0;  ///< not checked
  std::array<Q3LumpEntry, kHlLumps> lumps{};
  const Q3LumpEntry& lump(HlLump which) const { return lumps[static_cast<std::size_t>(which)]; }
};

struct HlPlane {
  std::array<float, 3> normal{};
  float distance = 0;
  std::int32_t type = 0;
};
/// A child that leads nowhere: what a bad reference is replaced by.
inline constexpr std::int16_t kNoHlChild = std::numeric_limits<std::int16_t>::min();
struct HlNode {
  std::int32_t plane = 0;
  std::array<std::int16_t, 2> children{};  ///< a node, or ~leaf when negative, or kNoHlChild
  std::array<std::int16_t, 3> mins{}, maxs{};
  std::uint16_t firstFace = 0, faceCount = 0;
};
struct HlTextureInfo {
  std::array<float, 4> s{}, t{};  ///< an axis and an offset, texels
  std::int32_t texture = 0;       ///< -1: none
  std::int32_t flags = 0;
};
inline constexpr std::uint8_t kNoLightStyle = 255;
struct HlFace {
  std::uint16_t plane = 0, side = 0;
  std::int32_t firstEdge = 0;
  std::uint16_t edgeCount = 0, textureInfo = 0;
  std::array<std::uint8_t, 4> styles{};
  std::int32_t lightOffset = 0;  ///< bytes; negative: no light
};
struct HlLeaf {
  std::int32_t contents = 0;          ///< kHlSolid: nothing can be in it
  std::int32_t visibilityOffset = 0;  ///< bytes; negative: everything may be seen
  std::array<std::int16_t, 3> mins{}, maxs{};
  std::uint16_t firstMarkSurface = 0, markSurfaceCount = 0;
  std::array<std::uint8_t, 4> ambient{};
};
inline constexpr std::int32_t kHlSolid = -2;
struct HlEdge {
  std::array<std::uint16_t, 2> vertices{};
};
struct HlModel {
  std::array<float, 3> mins{}, maxs{}, origin{};
  std::array<std::int32_t, 4> headNodes{};
  std::int32_t visibleLeaves = 0, firstFace = 0, faceCount = 0;
};
static_assert(sizeof(HlHeader) == 124 && sizeof(HlPlane) == 20 && sizeof(HlNode) == 24 && sizeof(HlTextureInfo) == 40);
static_assert(sizeof(HlFace) == 20 && sizeof(HlLeaf) == 28 && sizeof(HlEdge) == 4 && sizeof(HlModel) == 64);

/// A texture of the level: its header, and where it stands in the file, for those whose pixels the file holds.
struct HlTexture {
  MipTexture header;
  std::uint32_t offset = 0;  ///< bytes from the start of the file; 0: there is no such texture
};

struct HlBsp {
  HlHeader header;
  std::vector<std::array<float, 3>> vertices;
  std::vector<HlPlane> planes;
  std::vector<std::byte> visibility;  ///< rows of bits, their zeros packed
  std::vector<HlFace> faces;
  std::vector<HlNode> nodes;
  std::vector<HlEdge> edges;
  std::vector<HlLeaf> leaves;
  std::vector<HlTextureInfo> textureInfos;
  std::vector<std::int32_t> surfaceEdges;
  std::vector<HlModel> models;
  std::vector<std::uint16_t> markSurfaces;
  std::span<const std::byte> lighting;  ///< a view of the file's own bytes
  std::string entities;
  std::vector<HlTexture> textures;
  Repairs repairs;
};

/// @throws host::FileFault Truncated
HlHeader readHlHeader(std::span<const std::byte> bytes);
/// Reads the lumps in the engine's order into level and repairs their references; what was read before a fault stays.
/// @throws host::FileFault Truncated, TooLarge
void readHlLumps(std::span<const std::byte> bytes, HlBsp& level);
HlBsp parseHlBsp(std::span<const std::byte> bytes);

/// The bytes that may belong to a texture: from its record to the end of the texture lump.
std::span<const std::byte> textureBytes(std::span<const std::byte> file, const HlBsp& level, const HlTexture& texture);

/// Checks everything that refers to something else, and that numbers are numbers. A face that cannot be used has no
/// edges, a texture info without a texture has -1, a bad child is kNoHlChild, light and visibility that are not there
/// have the offset -1. Marks may name faces that do not exist. Runs in linear time.
void repairReferences(HlBsp& level);

}  // namespace ql::level
