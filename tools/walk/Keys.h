/// @file
/// What the user wants, by keys and mouse.
#pragma once

#include "Pose.h"

#include <Quasarlens3D/InputEngine8.h>
#include <Quasarlens3D/Quasarlens8.h>

#include <cstdint>

namespace walk {

/// A frame's wishes, as parts of full speed; angles in degrees.
struct Wish {
  double forward = 0, aside = 0;  ///< -1 to 1; aside to the right
  double turn = 0, tilt = 0;      ///< to the right; upwards
  bool steers = false;            ///< a key of motion or a mouse button is pressed
  bool jump = false;              ///< Space
  bool leave = false;             ///< Escape
};

/// Arrow keys and W A S D, the mouse to look around, Escape to leave. Made after the device.
class Keys {
 public:
  /// @param seconds since the frame before
  Wish read(double seconds) const;

 private:
  Quasarlens3D::InputEngine8 input_;
};

/// A walker that goes where the user wants, through walls, too.
class Steering {
 public:
  /// Starts with a pose; looking straight up or down is not possible.
  explicit Steering(const Pose& pose);
  void follow(const Wish& wish, double seconds);
  Pose pose() const;

 private:
  Point eye_;
  double heading_ = 0, pitch_ = 0;  ///< degrees; from +z towards +x, upwards
};

}  // namespace walk
