#pragma once

#include <cstdint>

namespace ql::maker {

/// Smooth noise in [-1, 1] that repeats every `period` cells in both directions; x and y in [0, 1) cover one repeat.
double noise(double x, double y, int period, std::uint32_t seed);
/// `octaves` layers of noise, each twice as fine and half as strong; about [-1, 1].
double layeredNoise(double x, double y, int period, int octaves, std::uint32_t seed);

/// The nearest of the scattered points, one to a cell of a repeating grid.
struct Cell {
  std::uint32_t id = 0;
  double nearest = 0.0;  ///< distance in cells
  double second = 0.0;   ///< distance of the second nearest point
};
Cell scatteredCell(double x, double y, int period, std::uint32_t seed);

/// Blends from 0 to 1 between two thresholds.
constexpr double smoothStep(double from, double to, double x) {
  const double t = x <= from ? 0.0 : x >= to ? 1.0 : (x - from) / (to - from);
  return t * t * (3.0 - 2.0 * t);
}

}  // namespace ql::maker
