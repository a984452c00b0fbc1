#include "Keys.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace walk {
namespace {

using namespace Quasarlens3D;

constexpr double kSpeed = 160;      // world units per second
constexpr double kTurnSpeed = 120;  // degrees per second, by keys
constexpr double kDegreesPerPixel = 0.25;
constexpr double kSteepest = 85;  // degrees
constexpr double kDegrees = std::numbers::pi / 180;

/// A replay must go the same way on every machine, whatever the last bit of its sine.
double rounded(double value) {
  constexpr double kSteps = 1 << 16;
  return std::round(value * kSteps) / kSteps;
}

/// A step ahead and level, a step to the right, and the view's direction.
Point level(double heading) {
  return {rounded(std::sin(heading * kDegrees)), 0, rounded(std::cos(heading * kDegrees))};
}

}  // namespace

Wish Keys::read(double seconds) const {
  const auto down = [&](std::int32_t key) { return input_.IsKeyPressed(key) ? 1.0 : 0.0; };
  const auto either = [&](std::int32_t a, std::int32_t b) { return std::max(down(a), down(b)); };
  std::int32_t x = 0, y = 0;
  std::int16_t button = 0;
  input_.GetMouseState(x, y, button);
  Wish wish;
  wish.forward = either(QL_KEY_UP, QL_KEY_W) - either(QL_KEY_DOWN, QL_KEY_S);
  wish.aside = down(QL_KEY_D) - down(QL_KEY_A);
  const double turning = down(QL_KEY_RIGHT) - down(QL_KEY_LEFT);
  wish.turn = turning * kTurnSpeed * seconds + x * kDegreesPerPixel;
  wish.tilt = -y * kDegreesPerPixel;
  wish.steers = wish.forward != 0 || wish.aside != 0 || turning != 0 || button != 0;
  wish.jump = input_.IsKeyPressed(QL_KEY_SPACE);
  wish.leave = input_.IsKeyPressed(QL_KEY_ESCAPE);
  return wish;
}

Steering::Steering(const Pose& pose) : eye_(pose.eye) {
  const Point ahead = pose.look - pose.eye;
  heading_ = std::atan2(ahead.x, ahead.z) / kDegrees;
  pitch_ = std::clamp(std::atan2(ahead.y, std::hypot(ahead.x, ahead.z)) / kDegrees, -kSteepest, kSteepest);
}

void Steering::follow(const Wish& wish, double seconds) {
  heading_ = std::remainder(heading_ + wish.turn, 360.0);
  pitch_ = std::clamp(pitch_ + wish.tilt, -kSteepest, kSteepest);
  eye_ = eye_ + level(heading_) * (wish.forward * kSpeed * seconds) +
         level(heading_ + 90) * (wish.aside * kSpeed * seconds);
}

Pose Steering::pose() const {
  constexpr double kFar = 128;  // world units
  const double across = rounded(std::cos(pitch_ * kDegrees));
  const Point ahead = level(heading_) * across + Point{0, rounded(std::sin(pitch_ * kDegrees)), 0};
  return {eye_, eye_ + ahead * kFar};
}

}  // namespace walk
