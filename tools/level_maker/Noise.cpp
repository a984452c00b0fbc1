#include "Noise.h"

#include "Numbers.h"

#include <cmath>

namespace ql::maker {
namespace {

std::uint32_t wrap(int v, int period) { return static_cast<std::uint32_t>(((v % period) + period) % period); }

double gradientAt(int cx, int cy, int period, std::uint32_t seed, double dx, double dy) {
  const double angle = 2.0 * kPi * hashUnit(wrap(cx, period), wrap(cy, period), seed);
  return cosine(angle) * dx + sine(angle) * dy;
}

}  // namespace

double noise(double x, double y, int period, std::uint32_t seed) {
  const double fx = x * period;
  const double fy = y * period;
  const int cx = static_cast<int>(std::floor(fx));
  const int cy = static_cast<int>(std::floor(fy));
  const double dx = fx - cx;
  const double dy = fy - cy;
  const double sx = dx * dx * dx * (dx * (dx * 6 - 15) + 10);
  const double sy = dy * dy * dy * (dy * (dy * 6 - 15) + 10);
  const double a = gradientAt(cx, cy, period, seed, dx, dy);
  const double b = gradientAt(cx + 1, cy, period, seed, dx - 1, dy);
  const double c = gradientAt(cx, cy + 1, period, seed, dx, dy - 1);
  const double d = gradientAt(cx + 1, cy + 1, period, seed, dx - 1, dy - 1);
  return 1.4 * ((a + (b - a) * sx) * (1 - sy) + (c + (d - c) * sx) * sy);
}

double layeredNoise(double x, double y, int period, int octaves, std::uint32_t seed) {
  double sum = 0.0;
  double weight = 0.55;
  for (int i = 0; i < octaves; ++i) {
    sum += weight * noise(x, y, period, seed + static_cast<std::uint32_t>(i) * 101U);
    weight *= 0.5;
    period *= 2;
  }
  return sum;
}

Cell scatteredCell(double x, double y, int period, std::uint32_t seed) {
  const double fx = x * period;
  const double fy = y * period;
  const int cx = static_cast<int>(std::floor(fx));
  const int cy = static_cast<int>(std::floor(fy));
  Cell best{0, 1e9, 1e9};
  for (int j = -1; j <= 1; ++j)
    for (int i = -1; i <= 1; ++i) {
      const std::uint32_t wx = wrap(cx + i, period);
      const std::uint32_t wy = wrap(cy + j, period);
      const double px = cx + i + 0.15 + 0.7 * hashUnit(wx, wy, seed);
      const double py = cy + j + 0.15 + 0.7 * hashUnit(wx, wy, seed + 7);
      const double d = std::sqrt((px - fx) * (px - fx) + (py - fy) * (py - fy));
      if (d < best.nearest) {
        best = {wx * 4099U + wy, d, best.nearest};
      } else if (d < best.second) {
        best.second = d;
      }
    }
  return best;
}

}  // namespace ql::maker
