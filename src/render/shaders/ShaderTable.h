/// @file
/// The engine-wide table of shaders: surfaces drawn in several stages.
#pragma once

#include "engine/SlotTable.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ql::render::shaders {

inline constexpr std::int16_t kFaceLightmap = -2, kFaceTexture = -1;  ///< in a stage's list of textures

enum class StageKind : std::int16_t { Map = 0, Lightmap = 1, Animation = 2 };

/// Bits of a stage's flags.
inline constexpr std::int32_t kBlending = 1, kTexCoordModifier = 2, kDepthWrite = 4, kAnimated = 8, kLightmapStage = 16,
                              kScaleGiven = 64, kScrollGiven = 128;
inline constexpr std::int32_t kSky = 0x200;  ///< of a shader's surface flags

/// One pass over a surface.
struct ShaderStage {
  std::vector<std::int16_t> textures;  ///< texture table indices; one, or one per frame of an animation
  std::int16_t frameCount = 0;
  float frequency = 0;  ///< frames per second
  std::int32_t flags = 0;
  std::int32_t sourceBlend = -1, destinationBlend = 0;  ///< device blend factors; source -1: not given
  float scaleS = 0, scaleT = 0;                         ///< diagonal of the texture matrix, with kScaleGiven
  float scrollS = 0, scrollT = 0;                       ///< per second
  StageKind kind = StageKind::Map;
  std::int16_t material = 0;
};

/// What a host's shader handle refers to.
struct ShaderHandle {
  std::int16_t index = 0;
};

struct ShaderEntry {
  std::vector<ShaderStage> stages;
  std::string name;
  std::int32_t surfaceFlags = 0;
  std::shared_ptr<ShaderHandle> handle;
  bool inUse = false;
};

struct ShaderTable {
  engine::SlotTable<ShaderEntry> entries;
};

}  // namespace ql::render::shaders
