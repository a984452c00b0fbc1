/// @file
/// Pictures that are drawn into textures.
#pragma once

#include "engine/EngineContext.h"
#include "platform/utility/RenderToSurface.h"
#include "render/TextureTable.h"

#include <array>
#include <cstdint>
#include <memory>

namespace ql::render {

/// A texture of the table with a camera of its own. Between startRender and endRender everything draws into the
/// texture and sees the engine's camera, matrices, planes and viewport as the surface's.
class RenderSurface {
 public:
  /// @param width,height pixels; overwritten by what the device can use
  /// @throws engine::EngineError 91 without a device, device::DeviceError
  RenderSurface(engine::EngineContext& context, std::int32_t& width, std::int32_t& height);
  RenderSurface(const RenderSurface&) = delete;
  RenderSurface& operator=(const RenderSurface&) = delete;
  /// Ends what is being drawn. The texture stays in the table.
  ~RenderSurface();

  /// World units; no roll. It counts from the next startRender on.
  void setCamera(const math::Vec3& position, const math::Vec3& lookAt);
  /// Clears the texture to transparent black and begins drawing. Another surface that was left open is ended first.
  /// @throws device::DeviceError invalid call inside a frame; then nothing has changed
  void startRender();
  /// Ends drawing and puts the engine's camera back. @throws device::DeviceError invalid call when nothing was begun
  void endRender();
  /// Null when the host has deleted the texture.
  std::shared_ptr<TextureHandle> texture() const;

 private:
  /// What the engine's view was before.
  struct View {
    std::array<math::Plane, 6> planes;
    math::Vec3 position, lookAt;
    math::Mat4 view, projection;
    math::Viewport viewport;
  };
  void makeTarget();
  View engineView() const;
  void setEngineView(const View& view);

  engine::EngineContext& context_;
  std::uint32_t width_ = 0, height_ = 0;
  float fieldOfView_;
  math::Vec3 position_, lookAt_{0, 0, 1};
  math::Mat4 view_, projection_;
  std::shared_ptr<device::Device> device_;  ///< that the members below belong to; outlives them
  std::unique_ptr<utility::RenderToSurface> target_;
  std::shared_ptr<device::Texture> texture_;
  std::shared_ptr<TextureHandle> handle_;
  bool rendering_ = false;
  View before_;  ///< while rendering
};

/// The planes of a surface's view: near, far, right, left, top, bottom, normalised, with their positive sides inside.
/// The far rectangle is as high and wide as a picture of 4:3, or as the surface's own where that is larger.
/// @param fieldOfView vertical, radians @param aspect height / width
std::array<math::Plane, 6> surfacePlanes(const math::Vec3& position, const math::Vec3& lookAt, float fieldOfView,
                                         float aspect);

}  // namespace ql::render
