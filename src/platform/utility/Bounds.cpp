#include "platform/utility/Bounds.h"

#include <algorithm>
#include <cstring>

namespace ql::utility {
namespace {

template <class F>
std::size_t forEachPosition(std::span<const std::byte> vertices, std::size_t stride, F&& f) {
  std::size_t count = 0;
  for (; stride >= sizeof(math::Vec3) && vertices.size() >= sizeof(math::Vec3); ++count) {
    math::Vec3 position;
    std::memcpy(&position, vertices.data(), sizeof position);
    f(position);
    vertices = vertices.subspan(std::min(stride, vertices.size()));
  }
  return count;
}

}  // namespace

Sphere boundingSphere(std::span<const std::byte> vertices, std::size_t stride) {
  double x = 0, y = 0, z = 0;
  const std::size_t count =
      forEachPosition(vertices, stride, [&](const math::Vec3& p) { x += p.x, y += p.y, z += p.z; });
  if (count == 0) return {};
  const auto n = static_cast<double>(count);
  Sphere sphere{{static_cast<float>(x / n), static_cast<float>(y / n), static_cast<float>(z / n)}, 0};
  forEachPosition(vertices, stride, [&](const math::Vec3& p) {
    sphere.radius = std::max(sphere.radius, math::length(math::subtract(p, sphere.center)));
  });
  return sphere;
}

Box boundingBox(std::span<const std::byte> vertices, std::size_t stride) {
  Box box;
  bool first = true;
  forEachPosition(vertices, stride, [&](const math::Vec3& p) {
    if (first) box = {p, p};
    first = false;
    box.minimum = {std::min(box.minimum.x, p.x), std::min(box.minimum.y, p.y), std::min(box.minimum.z, p.z)};
    box.maximum = {std::max(box.maximum.x, p.x), std::max(box.maximum.y, p.y), std::max(box.maximum.z, p.z)};
  });
  return box;
}

}  // namespace ql::utility
