/// @file
/// Textured rectangles on the screen.
#pragma once

#include "math/Vector.h"
#include "platform/device/Device.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace ql::utility {

struct Point2 {
  float x = 0, y = 0;
};
/// Draws textures over the frame, with scale, rotation and colour.
class Sprite {
 public:
  /// The rectangle is scaled about its top left, turned about the centre and moved to the position; every state that
  /// the drawing changes is put back.
  /// @param source pixels of the texture (whole when absent) @param scale factors @param center of rotation, pixels of
  /// the scaled rectangle @param radians clockwise @param position of the top left, pixels @param color multiplies the
  /// texture @throws device::DeviceError invalid call: no texture, or outside a scene
  void draw(device::Device& device, const std::shared_ptr<device::Texture>& texture,
            const std::optional<math::Rect>& source, Point2 scale, Point2 center, float radians, Point2 position,
            std::uint32_t color);
};

}  // namespace ql::utility
