/// @file
/// Drawing a scene onto a texture.
#pragma once

#include "platform/device/Device.h"

#include <cstdint>
#include <memory>

namespace ql::utility {

/// A render target of a fixed size with its own depth buffer; begin and end take the place of the device's scene.
class RenderToSurface {
 public:
  RenderToSurface(device::Device& device, std::uint32_t width, std::uint32_t height, device::Format format, bool depth);
  ~RenderToSurface();
  /// Starts a scene on a level of a render-target texture; the viewport becomes the given one.
  /// @throws device::DeviceError invalid call inside a scene, for a texture that is no target or of another size
  void beginScene(const std::shared_ptr<device::Texture>& texture, std::uint32_t level, const math::Viewport& viewport);
  /// Ends it and returns to the back buffer and its viewport.
  void endScene();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ql::utility
