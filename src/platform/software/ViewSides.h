/// @file
/// Finding out that a whole draw lies outside the picture.
#pragma once

#include "platform/device/State.h"
#include "platform/software/Target.h"

#include <array>

namespace ql::software {

/// A box around positions.
struct Bounds {
  math::Vec3 low, high;
};

/// The sides of what a state shows of a target.
class ViewSides {
 public:
  ViewSides(const device::State& state, const Target& target);

  /// Whether some side has the whole box so far outside that every triangle in it would be found outside, too.
  bool outside(const Bounds& box) const;

 private:
  /// Something linear in a position: the factors of x, y and z, and what is added.
  using Linear = std::array<double, 4>;
  struct Side {
    Linear distance;  ///< homogeneous; negative outside
    Linear size;      ///< of the terms that a distance is added up from: rounding may err in proportion to them
  };
  std::array<Side, 6> sides_;
};

}  // namespace ql::software
