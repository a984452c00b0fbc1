/// @file
/// The level object: loads a level file, draws it, answers for it.
#pragma once

#include "engine/EngineContext.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ql::level {

/// Levels differ in how a host asks for them; all are optional.
struct LoadOptions {
  bool loadLightMaps = true, loadTextures = true, textureNumber = false;
  std::string texturePath;
  bool createDynamicLights = false, createMipmaps = true;
};

/// One level. It registers itself as the active one.
class Level {
 public:
  explicit Level(engine::EngineContext& context);
  ~Level();
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;

  /// Reads a level file. Errors end the load with a log line; what was read until then is kept.
  void load(std::string& fileName, const LoadOptions& options);
  /// Draws what the camera may see.
  void render();
  /// @param culling a cull mode of the device: 1 none, 2 clockwise, 3 counter-clockwise
  void setParameters(bool useLightMaps, bool usePvsInfo, std::int32_t culling, bool displaySky);
  void setPosition(float x, float y, float z);
  /// 0 low, 1 normal, 2 high; used by the next load.
  void setCurvePrecision(std::int16_t precision);
  /// The player start in world coordinates; (0, 0, 0) when the level has none.
  math::Vec3 startPosition() const;
  const std::string& entityText() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// The level that was created last and still lives.
struct ActiveLevel {
  Level* level = nullptr;
};

}  // namespace ql::level
