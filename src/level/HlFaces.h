/// @file
/// From a Half-Life file's faces to what a level is drawn from.
#pragma once

#include "level/HlBsp.h"
#include "level/LevelData.h"

#include <cstdint>
#include <vector>

namespace ql::level {

/// A vertex of a Half-Life level: position, normal, texture and lightmap coordinates.
using HlVertex = Quasarlens3D::NormalVertex;
inline constexpr std::uint32_t kHlVertexFormat = 0x212;

/// The size of a face's lightmap, luxels. A luxel covers 16 texels, and luxels stand at both ends.
struct LightmapExtent {
  std::int32_t low[2] = {0, 0};  ///< the first luxel along each axis
  std::uint32_t width = 0, height = 0;
};
/// @param lowU,highU,lowV,highV the bounds of the face in texels
LightmapExtent lightmapExtent(float lowU, float highU, float lowV, float highV);

/// The light of a face: a part of the lighting lump.
struct HlLightmap {
  std::size_t offset = 0;  ///< bytes
  std::uint32_t width = 0, height = 0;
};

struct HlFaces {
  std::vector<FaceRecord> records;  ///< lightmap is an index of lightmaps, -1: no light of its own
  std::vector<FaceLook> looks;
  std::vector<HlVertex> vertices;  ///< fans, in the level's space, brush models where their entities place them
  std::vector<HlLightmap> lightmaps;
  std::vector<BrushModel> brushModels;
};

/// Expands the faces and gives brush models what their entities say.
HlFaces buildHlFaces(const HlBsp& file);

}  // namespace ql::level
