#include "Textures.h"

#include "Numbers.h"

#include <array>

namespace ql::maker {

const std::vector<TextureRecipe>& textureRecipes() {
  static const std::vector<TextureRecipe> all = [] {
    std::vector<TextureRecipe> list;
    for (auto part : {masonryRecipes(), ornamentRecipes(), natureRecipes(), skyRecipes()})
      list.insert(list.end(), part.begin(), part.end());
    return list;
  }();
  return all;
}

const TextureRecipe* findRecipe(std::string_view name) {
  for (const TextureRecipe& r : textureRecipes())
    if (r.name == name) return &r;
  return nullptr;
}

Picture paintTexture(const TextureRecipe& recipe) {
  const int n = recipe.size;
  std::vector<Paint> paint(static_cast<std::size_t>(n * n));
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) paint[static_cast<std::size_t>(y * n + x)] = recipe.paint((x + 0.5) / n, (y + 0.5) / n);
  const auto heightAt = [&](int x, int y) {
    return paint[static_cast<std::size_t>(((y + n) % n) * n + (x + n) % n)].height;
  };
  Picture picture{n, n, std::vector<Rgba>(paint.size())};
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) {
      const Paint& p = paint[static_cast<std::size_t>(y * n + x)];
      double shade = 1.0;
      if (recipe.relief > 0.0) {
        // Light from the upper left (what rises towards the lower right faces it), and hollows darker than their
        // surroundings.
        const double rise = heightAt(x + 1, y + 1) - heightAt(x - 1, y - 1);
        const double around =
            0.25 * (heightAt(x + 3, y) + heightAt(x - 3, y) + heightAt(x, y + 3) + heightAt(x, y - 3));
        shade += recipe.relief * (std::clamp(rise, -0.6, 0.6) - 0.35 * std::clamp(around - p.height, -0.4, 0.8));
        shade = std::clamp(shade, 0.25, 1.6);
      }
      const auto byte = [&](double v) {
        return static_cast<std::uint8_t>(std::clamp(v * shade, 0.0, 1.0) * 255.0 + 0.5);
      };
      picture.pixels[static_cast<std::size_t>(y * n + x)] = {
          byte(p.colour.x), byte(p.colour.y), byte(p.colour.z),
          static_cast<std::uint8_t>(std::clamp(p.alpha, 0.0, 1.0) * 255.0 + 0.5)};
    }
  return picture;
}

Vec3 albedoOf(const Picture& picture) {
  std::array<double, 256> linear{};
  for (std::size_t i = 0; i < linear.size(); ++i) linear[i] = power(static_cast<double>(i) / 255.0, 2.0);
  Vec3 sum;
  for (const Rgba& p : picture.pixels) sum += {linear[p.r], linear[p.g], linear[p.b]};
  return sum * (1.0 / static_cast<double>(picture.pixels.size()));
}

}  // namespace ql::maker
