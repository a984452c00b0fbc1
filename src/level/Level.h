/// @file
/// The level object: loads a level file, draws it, answers for it.
#pragma once

#include "engine/EngineContext.h"
#include "engine/HitTarget.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ql::level {

/// Levels differ in how a host asks for them; all are optional.
struct LoadOptions {
  bool loadLightMaps = true, loadTextures = true, textureNumber = false;
  std::string texturePath = {};
  bool createDynamicLights = false, createMipmaps = true;
};

/// One level. It registers itself as the active one.
class Level : public engine::HitTarget {
 public:
  explicit Level(engine::EngineContext& context);
  ~Level() override;
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;

  /// Reads a level file. Errors end the load with a log line; what was read until then is kept.
  void load(std::string& fileName, const LoadOptions& options);
  /// Opens a texture package for the loads to come; the file is read then. The one opened last is looked into first.
  void openPackage(const std::string& fileName);
  void closePackages();
  /// Where loads copy the level's textures to as bitmaps; empty: nowhere. @param numbered names them by their numbers
  void copyTexturesTo(const std::string& folder, bool numbered);
  /// Adds the shader scripts of a folder, where the loads to come look for what textures mean.
  void loadShaderDirectory(const std::string& folder);
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

  // Queries, in world coordinates where nothing else is said.
  /// Whether a ray from start through end meets a face within the engine's collision precision.
  bool detectCollision(const math::Vec3& start, const math::Vec3& end);
  engine::HitResult castRay(const math::Vec3& start, const math::Vec3& end) override;
  /// The height of the first face below a point; the point's own when there is none.
  float altitude(const math::Vec3& point);
  /// Whether a sphere reaches a solid leaf. @param flags 1: solid leaves count as nothing (Quake 3 levels)
  bool detectSphereCollision(const math::Vec3& position, float radius, std::int16_t flags);
  engine::HitResult moveSphere(const math::Vec3& from, const math::Vec3& to, float radius);
  /// Whether a segment in file coordinates reaches no solid leaf below a node. @throws EngineError 9: no such node
  bool lineSight(const math::Vec3& start, const math::Vec3& end, std::int32_t node) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// The level that was created last and still lives.
struct ActiveLevel {
  Level* level = nullptr;
};

}  // namespace ql::level
