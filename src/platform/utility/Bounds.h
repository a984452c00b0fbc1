/// @file
/// Bounding volumes of vertices; the probes of rays against them are in math/Ray.h.
#pragma once

#include "math/Vector.h"

#include <cstddef>
#include <span>

namespace ql::utility {

struct Sphere {
  math::Vec3 center;
  float radius = 0;
};
struct Box {
  math::Vec3 minimum, maximum;
};
/// Bounds of vertices that begin with their position, about their average; all zero when there are none.
/// @param stride bytes from vertex to vertex, at least 12; a last vertex that is cut off does not count
Sphere boundingSphere(std::span<const std::byte> vertices, std::size_t stride);
Box boundingBox(std::span<const std::byte> vertices, std::size_t stride);

}  // namespace ql::utility
