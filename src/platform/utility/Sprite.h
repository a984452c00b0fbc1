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
  /// @param source pixels of the texture (whole when absent) @param scale factors @param center of rotation, pixels of
  /// the source @param radians clockwise @param position of the top left, pixels @param color multiplies the texture
  void draw(device::Device& device, const std::shared_ptr<device::Texture>& texture,
            const std::optional<math::Rect>& source, Point2 scale, Point2 center, float radians, Point2 position,
            std::uint32_t color);
};

}  // namespace ql::utility
