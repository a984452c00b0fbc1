/// @file
/// A level in words: boxes that are dug out of the solid, boxes that are filled again, things, lights.
///
///   open X Y Z  X Y Z  WALL FLOOR CEILING    digs a box out; its faces show these textures
///   fill X Y Z  X Y Z  TEXTURE               fills a box; faces of it show this texture
///   model TEXTURE  X Y Z  X Y Z  KEY=VALUE...  a box that an entity places
///   light X Y Z  R G B  REACH                colour 0 to 255, units
///   entity KEY=VALUE...
///
/// Coordinates are the file's; of open and fill they are multiples of 16. Later lines win. "#" starts a comment; blanks
/// in values are written as "_".
#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ql::hl_maker {

using Point = std::array<double, 3>;
struct Box {
  Point low{}, high{};
};
struct Dig {
  Box box;
  bool open = true;
  std::array<std::string, 3> textures;  ///< wall, floor, ceiling; a fill has one
};
using Pairs = std::vector<std::pair<std::string, std::string>>;
struct Model {
  std::string texture;
  Box box;
  Pairs pairs;
};
struct Lamp {
  Point position{}, color{};  ///< colour 0 to 255
  double reach = 0;
};
struct Description {
  std::vector<Dig> digs;
  std::vector<Model> models;
  std::vector<Lamp> lamps;
  std::vector<Pairs> entities;
};

struct DescriptionFault : std::runtime_error {
  using std::runtime_error::runtime_error;
};
/// @throws DescriptionFault with the line's number
Description parseDescription(std::string_view text);

}  // namespace ql::hl_maker
