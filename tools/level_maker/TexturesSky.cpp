#include "Noise.h"
#include "Numbers.h"
#include "Textures.h"

#include <array>

namespace ql::maker {
namespace {

// The box of sky around the level that the five pictures fit: half its width, its height range, and the height it is
// seen from.
constexpr double kHalf = 2400.0;
constexpr double kBottom = 240.0;
constexpr double kTop = 2000.0;
constexpr double kEye = 200.0;
constexpr Vec3 kSun{-0.38, -0.56, 0.74};

double fraction(double v) { return v - std::floor(v); }

/// Noise over an angle around the horizon.
double around(double angle, double row, int period, std::uint32_t seed) {
  return noise(angle / (2 * kPi) + 0.5, row, period, seed);
}

double ridge(double angle, int period, std::uint32_t seed) {
  double sum = 0.0;
  double weight = 0.5;
  for (int i = 0; i < 5; ++i) {
    sum += weight * (1.0 - 2.0 * std::fabs(around(angle, 0.31, period, seed + static_cast<std::uint32_t>(i))));
    weight *= 0.5;
    period *= 2;
  }
  return sum;
}

Vec3 skyColour(Vec3 d) {
  d = normalized(d);
  const double height = std::max(0.0, d.z);
  Vec3 c = mix(Vec3{0.80, 0.84, 0.86}, Vec3{0.20, 0.42, 0.74}, power(std::min(1.0, height * 1.25), 0.55));
  const double toSun = std::max(0.0, dot(d, normalized(kSun)));
  c = mix(c, {1.0, 0.93, 0.76}, 0.55 * power(toSun, 10.0));
  // Clouds on a flat layer far above, thinning out towards the horizon.
  if (d.z > 0.02) {
    const double scale = 0.055 / (d.z + 0.12);
    const double cx = fraction(0.5 + d.x * scale);
    const double cy = fraction(0.5 + d.y * scale);
    const double warp = layeredNoise(cx, cy, 5, 3, 511);
    const double cover =
        layeredNoise(fraction(cx + 0.03 * warp), fraction(cy + 0.03 * warp), 9, 6, 513) + 0.35 * noise(cx, cy, 3, 517);
    const double thick = smoothStep(0.02, 0.55, cover);
    const double lit = layeredNoise(fraction(cx - 0.006), fraction(cy - 0.006), 9, 5, 513);
    Vec3 cloud = mix(Vec3{0.99, 0.97, 0.93}, Vec3{0.72, 0.74, 0.80}, std::clamp(0.25 + 0.9 * lit, 0.0, 1.0) * thick);
    cloud = mix(cloud, {1.0, 0.92, 0.80}, 0.4 * power(toSun, 4.0));
    c = mix(c, cloud, thick * smoothStep(0.03, 0.25, d.z) * 0.92);
  }
  c += Vec3{1.0, 0.95, 0.8} * (1.2 * smoothStep(0.9985, 0.9996, toSun));
  // Three chains of hills, paler with distance.
  const double slope = d.z / std::sqrt(d.x * d.x + d.y * d.y + 1e-9);
  const double angle = angleOf(d.y, d.x);
  struct Chain {
    double base, size;
    int period;
    Vec3 colour;
  };
  static constexpr std::array<Chain, 3> kChains{Chain{0.115, 0.10, 5, {0.62, 0.69, 0.78}},
                                                Chain{0.075, 0.075, 8, {0.47, 0.56, 0.62}},
                                                Chain{0.045, 0.045, 12, {0.33, 0.42, 0.38}}};
  std::uint32_t seed = 521;
  for (const Chain& chain : kChains) {
    const double top = chain.base + chain.size * ridge(angle, chain.period, seed);
    const double inside = smoothStep(-0.0015, 0.0015, top - slope);
    const Vec3 rock = chain.colour * (1.0 + 0.10 * around(angle, fraction(slope * 2), 64, seed + 9));
    c = mix(c, mix(rock, {0.76, 0.79, 0.80}, 0.35 * smoothStep(0.0, 0.12, top - slope)), inside);
    seed += 40;
  }
  return c;
}

}  // namespace

std::vector<TextureRecipe> skyRecipes() {
  using enum TextureFile;
  const auto side = [](Vec3 middle, Vec3 across) {
    return [=](double x, double y) {
      return Paint{skyColour(middle + across * (2 * x - 1) + Vec3{0, 0, kTop - kEye - y * (kTop - kBottom)}), 0, 1};
    };
  };
  return {
      {"sky_north", 512, Jpeg, 0.0, side({0, kHalf, 0}, {kHalf, 0, 0})},
      {"sky_south", 512, Jpeg, 0.0, side({0, -kHalf, 0}, {-kHalf, 0, 0})},
      {"sky_east", 512, Jpeg, 0.0, side({kHalf, 0, 0}, {0, -kHalf, 0})},
      {"sky_west", 512, Jpeg, 0.0, side({-kHalf, 0, 0}, {0, kHalf, 0})},
      {"sky_up", 512, Jpeg, 0.0,
       [](double x, double y) {
         return Paint{skyColour({kHalf - 2 * kHalf * x, kHalf - 2 * kHalf * y, kTop - kEye}), 0, 1};
       }},
      {"sky_glow", 64, Jpeg, 0.0,
       [](double, double y) {
         return Paint{mix(Vec3{0.66, 0.78, 0.90}, Vec3{0.90, 0.90, 0.86}, y), 0, 1};
       }},
  };
}

}  // namespace ql::maker
