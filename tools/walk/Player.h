/// @file
/// Somebody who walks in a level: on floors, up steps, against walls, down ledges.
#pragma once

#include "Pose.h"

#include <Quasarlens3D/BSPTree8.h>
#include <Quasarlens3D/CollisionResult8.h>
#include <Quasarlens3D/Scene8.h>

#include <optional>

namespace walk {

/// A frame's wishes, world directions.
struct Stride {
  double x = 0, z = 0;  ///< direction times part of full speed, 0 to 1
  bool jump = false;
};

/// A body of the size that levels are made for. It asks the level with rays alone, whose faces must all count: draw the
/// level without its visibility, or not at all.
class Player {
 public:
  /// @param feet world coordinates; the body comes down to the floor below
  Player(Quasarlens3D::BSPTree8 level, Quasarlens3D::Scene8 scene, const Point& feet);

  /// Moves for a part of a second (at most a tenth, more counts as that).
  void move(const Stride& stride, double seconds);

  const Point& feet() const { return feet_; }
  Point eye() const { return {feet_.x, feet_.y + smoothed_, feet_.z}; }
  bool onGround() const { return onGround_; }
  /// The last move met a wall, or a ledge over nothing.
  bool blocked() const { return blocked_; }

  static constexpr double kRadius = 16, kHeight = 56, kEyeHeight = 50, kStep = 18;  // world units
  static constexpr double kSpeed = 200, kJumpSpeed = 270, kGravity = 800;           // per second

 private:
  struct Hit {
    double distance = 0;
    Point normal;  ///< of length 1
  };
  std::optional<Hit> cast(const Point& from, const Point& direction, double reach);
  /// The highest floor below the body, down to a depth below a height; steep faces are none.
  std::optional<double> floorBelow(const Point& at, double height, double reach);
  bool hasGround(const Point& at);
  void moveAcross(Point way);
  std::optional<Hit> wallAhead(const Point& way, double length);
  bool fits(const Point& at);
  void moveUpAndDown(double seconds, bool jump);

  Quasarlens3D::BSPTree8 level_;
  Quasarlens3D::Scene8 scene_;
  Quasarlens3D::CollisionResult8 lastHit_;
  Point feet_;
  double rise_ = 0;               ///< speed upwards
  double smoothed_ = kEyeHeight;  ///< the eye follows steps softly
  bool onGround_ = false, blocked_ = false;
};

}  // namespace walk
