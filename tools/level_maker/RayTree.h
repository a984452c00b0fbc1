#pragma once

#include "Vec.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace ql::maker {

struct Triangle {
  std::array<Vec3, 3> corners;
  std::array<std::pair<double, double>, 3> lightmap;  ///< sample coordinates inside the page
  int page = -1;                                      ///< lightmap page, -1 for none
  int material = 0;
};

struct Hit {
  double distance = 0.0;
  std::uint32_t triangle = 0;
  double b1 = 0.0;  ///< weights of corners 1 and 2
  double b2 = 0.0;
};

/// Triangles in a tree of boxes, for ray queries. Both sides of a triangle stop rays.
class RayTree {
 public:
  explicit RayTree(std::vector<Triangle> triangles);

  std::optional<Hit> nearest(Vec3 origin, Vec3 direction, double limit = 1e9) const;
  /// True when nothing lies between the origin and the point `limit` away.
  bool free(Vec3 origin, Vec3 direction, double limit = 1e9) const;
  const Triangle& at(std::uint32_t index) const { return triangles_[index]; }
  std::size_t size() const { return triangles_.size(); }

 private:
  struct Box {
    Vec3 mins, maxs;
    std::uint32_t first = 0;  ///< first triangle, or the second child (the first follows its parent)
    std::uint32_t count = 0;  ///< 0 for an inner box
  };
  void build(std::uint32_t from, std::uint32_t to);
  template <class Visit>
  void walk(Vec3 origin, Vec3 direction, double& limit, Visit visit) const;

  std::vector<Triangle> triangles_;
  std::vector<Box> boxes_;
};

}  // namespace ql::maker
