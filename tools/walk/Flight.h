/// @file
/// Poses from a file, and a smooth path through them.
#pragma once

#include "Pose.h"

#include <filesystem>
#include <vector>

namespace walk {

/// A JSON array of {"eye": [x, y, z], "look": [x, y, z]}. @throws Failure Unreadable, Malformed
std::vector<Pose> readPoses(const std::filesystem::path& file);

/// A path through key poses at constant speed: a centripetal Catmull-Rom spline (Yuksel, Schaefer and Keyser, "On the
/// Parameterization of Catmull-Rom Curves", 2009), which neither overshoots nor loops between uneven keys.
class Flight {
 public:
  /// One key turns about itself once; no key at all is one at the origin.
  explicit Flight(std::vector<Pose> keys);
  /// The pose at a part of the way. @param t 0 to 1
  Pose at(double t) const;
  /// World units.
  double length() const { return lengths_.back(); }

 private:
  Pose onSpline(double knot) const;

  std::vector<Pose> keys_;       ///< with one more before the first and after the last
  std::vector<double> knots_;    ///< of keys_, ascending
  std::vector<double> lengths_;  ///< way to each of many even steps of the knots
};

}  // namespace walk
