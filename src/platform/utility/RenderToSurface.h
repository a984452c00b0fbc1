/// @file
/// Drawing a scene onto a texture.
#pragma once

#include "platform/device/Device.h"

#include <cstdint>
#include <memory>

namespace ql::utility {

/// What a scene finds on its level.
enum class LevelContents {
  Keep,    ///< what stands there, until it is drawn over
  Discard  ///< anything: the scene clears it all
};

/// A render target of a fixed size with its own depth buffer, which must not outlive the device; begin and end take the
/// place of the device's scene.
class RenderToSurface {
 public:
  RenderToSurface(device::Device& device, std::uint32_t width, std::uint32_t height, device::Format format, bool depth);
  ~RenderToSurface();
  /// Starts a scene on a level of a texture; the viewport becomes the given one. A render-target texture of the same
  /// format is drawn into directly, any other takes the picture, converted and with its smaller levels made anew, when
  /// the scene ends.
  /// @throws device::DeviceError invalid call: inside a scene, without a texture, for a level of another size, or for a
  /// viewport outside it
  void beginScene(const std::shared_ptr<device::Texture>& texture, std::uint32_t level, const math::Viewport& viewport,
                  LevelContents contents = LevelContents::Keep);
  /// Ends it and returns to the back buffer and the viewport from before.
  /// @throws device::DeviceError invalid call: not begun
  void endScene();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ql::utility
