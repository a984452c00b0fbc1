/// @file
/// The box of pictures around the camera.
#pragma once

#include "engine/EngineContext.h"

#include <array>
#include <cstddef>
#include <memory>

namespace ql::render::scene {

/// Six pictures: left, right, front, back, top, bottom. The top picture lies at y = -distance, the bottom one at
/// y = distance.
class SkyBox {
 public:
  static constexpr std::size_t kFaces = 6;

  /// @param distance world units from the camera to each face
  void build(float distance);
  /// @param face 0 left, 1 right, 2 front, 3 back, 4 top, 5 bottom @param texture null draws white
  void setTexture(std::size_t face, std::shared_ptr<device::Texture> texture) { textures_[face] = std::move(texture); }
  /// Draws it around the camera; lighting, blending and culling stay off, the world transform at the camera.
  void render(engine::EngineContext& context) const;

 private:
  std::array<Quasarlens3D::LitVertex, kFaces * 4> vertices_{};
  std::array<std::shared_ptr<device::Texture>, kFaces> textures_;
};

}  // namespace ql::render::scene
