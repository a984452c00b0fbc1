/// @file
/// The scene: projection, global states, text, the sky, and what belongs to everything that is drawn.
#pragma once

#include "engine/EngineContext.h"
#include "render/TextureTable.h"
#include "render/scene/SkyBox.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ql::render::scene {

/// One scene. Make it with createScene, which makes it the active one.
class Scene {
 public:
  explicit Scene(engine::EngineContext& context) : context_(context) {}

  /// A projection of that vertical field of view, aspect 3 / 4 and near plane 1. Without a device the values are kept
  /// for the next one. @param degrees field of view @param farPlane world units
  void setViewFrustum(float degrees, float farPlane);
  void setCamera(const math::Vec3& position, const math::Vec3& lookAt);
  /// The colour of clear. Components 0 to 1.
  void setBackground(float red, float green, float blue);
  /// @param mode 1 points, 2 wireframe, 3 solid; others change nothing
  void setRenderMode(std::int32_t mode);
  /// Mip levels of stage 0 are used, the nearest one.
  void enableMipMapping();
  void setDithering(bool on);
  /// World units that the level's ray tests reach.
  void setCollisionPrecision(float distance) { context_.collisionPrecision = distance; }
  /// World units that the landscape's ray test reaches.
  void setPickingPrecision(float distance) { context_.pickingPrecision = distance; }

  /// Draws a text with the system font. @param x,y top left, pixels @param color packed ARGB
  /// @throws engine::EngineError 91 without a device
  void drawText(const std::string& text, std::int32_t x, std::int32_t y, std::int32_t color);
  /// Replaces the system font. An empty name or a size that is no number (or 0) leaves that part as it is.
  /// @param size points, as text @throws engine::EngineError 91 without a device
  void selectFont(const std::string& name, const std::string& size, bool bold, bool italic, bool underlined);

  /// Loads a texture without a colour key; -1 asks for the file's own size and is overwritten by the size in use.
  std::shared_ptr<TextureHandle> loadTexture(std::string& fileName, std::int32_t& width, std::int32_t& height,
                                             const std::string& name);
  /// Loads the textures that a text file lists, 256 x 256 with black as the key, and its shaders, whose textures are
  /// found among those that are loaded. @see parseShaderList
  /// @throws host::FileFault when it cannot be read; engine::EngineError 9 for a texture line without ">", 62 for a
  /// list that ends early: what came before stays loaded
  void loadShaders(const std::string& fileName);

  /// Loads the six pictures of a sky box by the name of one of them: its last five characters are a digit, which is
  /// replaced by 1 (left, right, front, back, top) to 6 (bottom), and an ending.
  /// @throws engine::EngineError 5 for a name of fewer than five characters
  void loadSky(const std::string& fileName, float distance);
  /// The sky box of this scene.
  SkyBox& sky() { return sky_; }
  void renderSky() { sky_.render(context_); }

 private:
  engine::EngineContext& context_;
  SkyBox sky_;
};

/// The scene that was created last; the engine keeps it alive.
struct ActiveScene {
  std::shared_ptr<Scene> scene;
};

/// Joins scenes to a started engine: the cursor in every frame, decals that die.
void startScenes(engine::EngineContext& context);
/// Makes a scene, the active one from now on, and sets both precisions to their defaults (30 and 1000).
std::shared_ptr<Scene> createScene(engine::EngineContext& context);
/// The active scene, created when there is none.
Scene& activeScene(engine::EngineContext& context);

}  // namespace ql::render::scene
