#include "Noise.h"
#include "Numbers.h"
#include "Textures.h"

namespace ql::maker {
namespace {

double fraction(double v) { return v - std::floor(v); }

constexpr int kSize = 512;

/// Textures of shaders have 16 levels to a channel; grain of that size keeps the sky free of bands.
double grain(double x, double y) {
  constexpr double kLevel = 1.0 / 15;
  const auto texel = static_cast<std::uint32_t>(y * kSize) * kSize + static_cast<std::uint32_t>(x * kSize);
  return kLevel * (hashUnit(texel) - 0.5);
}

/// Clouds over haze. The sky's sphere shows the picture around the horizon or mirrored before the camera; both have the
/// horizon at half its height, so that either half clears towards its edge.
Paint clouds(double x, double y) {
  const double height = std::fabs(2 * y - 1);
  Vec3 c = mix(Vec3{0.70, 0.81, 0.90}, Vec3{0.22, 0.44, 0.76}, smoothStep(0.0, 0.85, height));
  const double warp = 0.05 * layeredNoise(x, y, 3, 3, 511);
  const double cx = fraction(x + warp + 1), cy = fraction(y + warp + 1);
  const double cover = layeredNoise(cx, cy, 5, 5, 513) + 0.3 * noise(x, y, 3, 517);
  const double thick = smoothStep(-0.1, 0.8, cover);
  const double shade = layeredNoise(fraction(cx + 0.008), fraction(cy + 0.008), 5, 4, 513);
  c = mix(c, mix(Vec3{0.97, 0.96, 0.94}, Vec3{0.78, 0.81, 0.86}, std::clamp(0.2 + shade, 0.0, 1.0) * thick),
          0.9 * thick);
  return {c + Vec3{1, 1, 1} * grain(x, y), 0, 1};
}

}  // namespace

std::vector<TextureRecipe> skyRecipes() { return {{"sky", kSize, TextureFile::Jpeg, 0.0, clouds}}; }

}  // namespace ql::maker
