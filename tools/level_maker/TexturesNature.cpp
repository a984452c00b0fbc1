#include "Noise.h"
#include "Numbers.h"
#include "Textures.h"

namespace ql::maker {
namespace {

double fraction(double v) { return v - std::floor(v); }

Paint water(double x, double y) {
  // Two sets of ripples of different size; where both are bright the sky glints.
  const double warp = layeredNoise(x, y, 4, 4, 401);
  const auto ripples = [&](int period, double bend, std::uint32_t seed) {
    const Cell cell =
        scatteredCell(fraction(x + bend * warp), fraction(y + bend * noise(x, y, 5, seed + 50)), period, seed);
    return 1.0 - smoothStep(0.0, 0.5, cell.second - cell.nearest);
  };
  const double wide = ripples(6, 0.07, 403);
  const double fine = ripples(11, 0.05, 407);
  Vec3 c = mix(Vec3{0.12, 0.40, 0.48}, Vec3{0.20, 0.54, 0.60}, std::clamp(0.5 + 0.9 * warp, 0.0, 1.0));
  c = mix(c, {0.46, 0.76, 0.78}, 0.34 * wide * wide + 0.22 * fine * fine);
  c = mix(c, {0.92, 0.98, 0.98}, 0.55 * smoothStep(0.55, 1.0, wide * fine));
  return {c, 0.3 * warp};
}

Paint grass(double x, double y) {
  const double patch = layeredNoise(x, y, 3, 4, 411);
  const double blades = noise(x, y, 64, 413) + 0.7 * noise(fraction(x + 0.3), y, 90, 415);
  Vec3 c = mix(Vec3{0.22, 0.34, 0.11}, Vec3{0.40, 0.48, 0.18}, std::clamp(0.5 + 0.5 * patch + 0.4 * blades, 0.0, 1.0));
  const Cell flower = scatteredCell(x, y, 14, 417);
  if (flower.nearest < 0.13 && hashUnit(flower.id, 3) < 0.30)
    c = hashUnit(flower.id, 4) < 0.5 ? Vec3{0.90, 0.86, 0.60} : Vec3{0.86, 0.84, 0.84};
  return {c, 0.6 * blades};
}

Paint leaves(double x, double y) {
  const Cell cell = scatteredCell(x, y, 18, 421);
  const Cell deep = scatteredCell(fraction(x + 0.37), fraction(y + 0.61), 11, 423);
  const double leaf = 1.0 - std::min(1.0, cell.nearest * 1.4);
  Vec3 c = mix(Vec3{0.13, 0.24, 0.08}, Vec3{0.30, 0.44, 0.16}, hashUnit(cell.id, 1)) * (0.5 + 0.8 * leaf);
  c = c * (0.6 + 0.55 * (1.0 - deep.nearest));
  return {c, 1.5 * leaf};
}

Paint earth(double x, double y) {
  const Cell pebble = scatteredCell(x, y, 24, 431);
  const double grain = layeredNoise(x, y, 8, 5, 433);
  Vec3 c = mix(Vec3{0.44, 0.33, 0.22}, Vec3{0.60, 0.50, 0.36}, hashUnit(pebble.id, 1)) * (1.0 + 0.25 * grain);
  return {c * (1.1 - 0.5 * pebble.nearest), 1.0 - pebble.nearest};
}

}  // namespace

std::vector<TextureRecipe> natureRecipes() {
  using enum TextureFile;
  return {
      {"water", 256, Jpeg, 0.2, water},
      {"grass", 256, Jpeg, 0.25, grass},
      {"leaves", 256, Jpeg, 0.4, leaves},
      {"earth", 256, Jpeg, 0.35, earth},
  };
}

}  // namespace ql::maker
