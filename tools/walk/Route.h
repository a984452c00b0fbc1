/// @file
/// Where a player goes without anybody at the keys.
#pragma once

#include "Player.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace walk {

/// Leads a player from place to place; where there are none it wanders, turning at walls. The same steps every time.
class Guide {
 public:
  /// @param places floor points, world coordinates; their heights do not matter
  explicit Guide(std::vector<Point> places) : places_(std::move(places)) {}

  Stride next(const Player& player);
  /// Where the player looks, degrees from +z towards +x.
  double heading() const { return heading_; }
  /// Whether the last place is reached; never when wandering.
  bool arrived() const { return !places_.empty() && at_ == places_.size(); }
  std::size_t reached() const { return at_; }

 private:
  std::uint32_t random();

  std::vector<Point> places_;
  std::size_t at_ = 0;
  double heading_ = 0, detour_ = 0;
  int stuck_ = 0, detourSteps_ = 0, steps_ = 0;
  std::uint32_t state_ = 1;
};

}  // namespace walk
