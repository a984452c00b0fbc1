#include "Route.h"

#include <algorithm>
#include <cmath>

namespace walk {
namespace {

constexpr double kClose = 40;  // world units: a place is reached
constexpr int kPatience = 12;  // blocked steps before a detour
constexpr int kDetourSteps = 45;
constexpr int kJumpEvery = 150;    // steps, when wandering
constexpr double kTurnPart = 0.2;  // of the way to the wanted heading, each step
constexpr double kDegrees = 180 / 3.14159265358979;

double between(double from, double to) { return std::remainder(to - from, 360.0); }

}  // namespace

std::uint32_t Guide::random() {
  state_ = state_ * 1664525U + 1013904223U;
  return state_ >> 16;
}

Stride Guide::next(const Player& player) {
  ++steps_;
  stuck_ = player.blocked() ? stuck_ + 1 : std::max(stuck_ - 1, 0);
  double wanted = heading_;
  bool jump = false;
  if (!places_.empty()) {
    while (at_ < places_.size() &&
           std::hypot(places_[at_].x - player.feet().x, places_[at_].z - player.feet().z) < kClose)
      ++at_;
    if (arrived()) return {};
    wanted = std::atan2(places_[at_].x - player.feet().x, places_[at_].z - player.feet().z) * kDegrees;
  } else {
    jump = steps_ % kJumpEvery == 0;
  }
  if (stuck_ > kPatience && detourSteps_ == 0) {
    // Around what is in the way, now on one side, now on the other; sometimes over it.
    const double turn = 50 + random() % 80;
    detour_ = random() % 2 == 0 ? turn : -turn;
    detourSteps_ = kDetourSteps;
    stuck_ = 0;
    jump = true;
    if (places_.empty()) wanted = heading_ + detour_;
  }
  if (detourSteps_ > 0) {
    --detourSteps_;
    if (!places_.empty()) wanted += detour_;
  }
  heading_ += places_.empty() ? between(heading_, wanted) : between(heading_, wanted) * kTurnPart;
  const double angle = heading_ / kDegrees;
  return {std::sin(angle), std::cos(angle), jump};
}

}  // namespace walk
