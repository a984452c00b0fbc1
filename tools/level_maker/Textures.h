#pragma once

#include "Picture.h"
#include "Vec.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ql::maker {

/// What a texture's recipe says about one of its points: colour (as shown, 0 to 1), height of its relief and opacity.
struct Paint {
  Vec3 colour;
  double height = 0.0;
  double alpha = 1.0;
};

enum class TextureFile { Jpeg, Targa24, Targa32 };

/// How a texture is made: a function over [0, 1) x [0, 1), (0, 0) at the top left.
struct TextureRecipe {
  std::string_view name;
  int size;  ///< pixels each way, a power of two
  TextureFile file;
  double relief;  ///< how strongly heights shade the picture
  std::function<Paint(double x, double y)> paint;
};

/// All recipes that the project has.
const std::vector<TextureRecipe>& textureRecipes();
/// nullptr when there is none of that name.
const TextureRecipe* findRecipe(std::string_view name);

Picture paintTexture(const TextureRecipe& recipe);
/// Average colour as light that is given back (linear).
Vec3 albedoOf(const Picture& picture);

/// Parts of the list above.
std::vector<TextureRecipe> masonryRecipes();
std::vector<TextureRecipe> ornamentRecipes();
std::vector<TextureRecipe> natureRecipes();
std::vector<TextureRecipe> skyRecipes();

}  // namespace ql::maker
