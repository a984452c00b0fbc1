/// @file
/// Everything that a level object holds, for the steps that load and draw it.
#pragma once

#include "engine/EngineContext.h"
#include "level/Collision.h"
#include "level/LevelData.h"
#include "level/Visibility.h"
#include "mesh/MeshRecord.h"
#include "render/shaders/Shaders.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ql::level {

struct LoadOptions;

enum class LevelKind : std::uint8_t { HalfLife = 0, Quake3 = 1 };

struct LevelState {
  explicit LevelState(engine::EngineContext& engineContext) : context(engineContext) {}

  engine::EngineContext& context;
  LevelKind kind = LevelKind::HalfLife;
  LevelData data;
  VisibleFaces visible;
  FaceCollision faceCollision;
  SphereDescent lastDescent;  ///< of the last sphere that was tested
  math::Mat4 levelMatrix = math::identity();

  render::shaders::ScriptFiles scripts;   ///< where shaders are looked up
  std::int16_t skyShader = 0;             ///< 0: the level's faces show no sky
  std::shared_ptr<mesh::MeshHandle> sky;  ///< the sphere that shows it

  bool createMipmaps = true;
  bool useLightMaps = true, usePvsInfo = true, displaySky = false;
  std::uint32_t culling = 1;
  std::int16_t curvePrecision = 0;

  std::vector<std::string> packages;  ///< texture packages that are open, in the order of opening
  std::string copyTexturesFolder;     ///< empty: textures are not copied
  bool copyTexturesNumbered = false;  ///< copies are named by the textures' numbers
};

/// Turns the file's z-up space into the engine's y-up, left-handed one: with x negated, a file point (x, y, z) lands at
/// (-x, z, -y).
math::Mat4 levelRotation();

/// Loads a level of this kind from its file's bytes, which are freed as soon as they are not needed any more.
void loadQuake3(LevelState& level, std::vector<std::byte> file);
void renderQuake3(LevelState& level);
/// Draws the listed faces that have shaders, stage by stage. The vertex buffer and the world transform are set.
void drawShaderPass(device::Device& device, LevelState& level);
/// Makes the sphere that shows a level's sky, when it has one.
void createSky(LevelState& level);
/// Draws the sky around the camera.
void drawSky(LevelState& level);
void loadHalfLife(LevelState& level, std::vector<std::byte> file, const LoadOptions& options);
void renderHalfLife(LevelState& level);

}  // namespace ql::level
