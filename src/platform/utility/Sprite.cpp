#include "platform/utility/Sprite.h"

#include "platform/utility/StateGuard.h"

#include <Quasarlens3D/Types.h>

#include <array>
#include <bit>
#include <cmath>

namespace ql::utility {

void Sprite::draw(device::Device& device, const std::shared_ptr<device::Texture>& texture,
                  const std::optional<math::Rect>& source, Point2 scale, Point2 center, float radians, Point2 position,
                  std::uint32_t color) {
  if (!texture) throw device::DeviceError(device::kErrorInvalidCall, "a sprite without a texture");
  const device::SurfaceDescription size = texture->levelDescription(0);
  const auto wide = static_cast<float>(size.width), high = static_cast<float>(size.height);
  const float left = source ? static_cast<float>(source->left) : 0, top = source ? static_cast<float>(source->top) : 0;
  const float right = source ? static_cast<float>(source->right) : wide;
  const float bottom = source ? static_cast<float>(source->bottom) : high;
  const float cosine = std::cos(radians), sine = std::sin(radians);

  std::array<Quasarlens3D::TransformedLitVertex, 4>
      corners;  // a strip: upper left, upper right, lower left, lower right
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const float u = i % 2 ? right : left, v = i / 2 ? bottom : top;
    const float x = (u - left) * scale.x - center.x, y = (v - top) * scale.y - center.y;
    Quasarlens3D::TransformedLitVertex& corner = corners[i];
    // Screen coordinates name the middles of pixels: half a pixel back puts texels onto pixels.
    corner.x = x * cosine - y * sine + center.x + position.x - 0.5f;
    corner.y = x * sine + y * cosine + center.y + position.y - 0.5f;
    corner.rhw = 1;
    corner.diffuse = std::bit_cast<std::int32_t>(color);
    corner.tu = u / wide;
    corner.tv = v / high;
  }
  StateGuard guard(device);
  guard.overlay(texture, device::Filter::Linear);
  device.drawPrimitiveUP(device::PrimitiveType::TriangleStrip, 2, std::as_bytes(std::span(corners)),
                         sizeof(corners[0]));
}

}  // namespace ql::utility
