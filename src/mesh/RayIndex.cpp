#include "mesh/RayIndex.h"

#include "math/Ray.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace ql::mesh {
namespace {

constexpr std::size_t kFewTriples = 64;         // fewer are scanned
constexpr std::size_t kManyTriples = 1u << 20;  // more come from groups that overlap
constexpr std::uint32_t kScansFirst = 16;       // an index costs about as much

/// Calls f with three consecutive vertices, for all triangles in their order, until it returns false.
template <class F>
void forEachTriple(const MeshRecord& mesh, F&& f) {
  const auto position = [&](std::size_t i) {
    const math::NormalVertex& vertex = mesh.normalVertices[i];
    return math::Vec3{vertex.x, vertex.y, vertex.z};
  };
  const std::size_t size = mesh.normalVertices.size();
  for (std::size_t g = 1; g < mesh.groups.size(); ++g) {
    const auto start = static_cast<std::size_t>(std::max<std::int16_t>(mesh.groups[g].start, 0));
    const auto count = static_cast<std::size_t>(std::max<std::int16_t>(mesh.groups[g].count, 0));
    const std::size_t end = std::min(start + count, size);
    for (std::size_t i = start; i + 2 < end; ++i)
      if (!f(math::Triangle{position(i), position(i + 1), position(i + 2)})) return;
  }
}

}  // namespace

RayIndex::Box RayIndex::boxOf(const MeshRecord& mesh) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  Box box{{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}};
  forEachTriple(mesh, [&](const math::Triangle& triangle) {
    for (const math::Vec3& p : triangle) {
      box.minimum = {std::min(box.minimum.x, p.x), std::min(box.minimum.y, p.y), std::min(box.minimum.z, p.z)};
      box.maximum = {std::max(box.maximum.x, p.x), std::max(box.maximum.y, p.y), std::max(box.maximum.z, p.z)};
    }
    return true;
  });
  return box;
}

std::optional<math::TriangleMet> RayIndex::scan(const MeshRecord& mesh, const math::Vec3& origin,
                                                const math::Vec3& direction, float reach) {
  std::optional<math::TriangleMet> first;
  std::uint32_t number = 0;
  forEachTriple(mesh, [&](const math::Triangle& triangle) {
    const auto& [a, b, c] = triangle;
    const math::TriangleHit met = math::intersectTriangle(origin, direction, a, b, c);
    if (met.hit && met.t >= 0 && met.t < reach)
      first = {number, met.t, math::cross(math::subtract(b, a), math::subtract(c, a))};
    ++number;
    return !first;
  });
  return first;
}

void RayIndex::build(const MeshRecord& mesh) {
  std::vector<math::Triangle> triangles;
  forEachTriple(mesh, [&](const math::Triangle& triangle) {
    triangles.push_back(triangle);
    return triangles.size() <= kManyTriples;
  });
  useless_ = triangles.size() < kFewTriples || triangles.size() > kManyTriples;
  if (!useless_) tree_.emplace(triangles);
}

std::optional<math::TriangleMet> RayIndex::firstHit(const MeshRecord& mesh, const math::Vec3& origin,
                                                    const math::Vec3& direction, float reach) {
  if (!tree_ && !useless_ && ++asked_ > kScansFirst) build(mesh);
  return tree_ ? tree_->first(origin, direction, {0, reach}) : scan(mesh, origin, direction, reach);
}

}  // namespace ql::mesh
