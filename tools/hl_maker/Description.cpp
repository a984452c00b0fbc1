#include "Description.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace ql::hl_maker {
namespace {

constexpr double kCell = 16, kFarthest = 4096;

class Line {
 public:
  Line(const std::string& text, int number) : words_(text), number_(number) {}

  [[noreturn]] void fail(const std::string& what) const {
    throw DescriptionFault("line " + std::to_string(number_) + ": " + what);
  }
  std::string word() {
    std::string word;
    if (!(words_ >> word)) fail("something is missing at its end");
    return word;
  }
  double number() {
    const std::string text = word();
    std::size_t used = 0;
    double value = 0;
    try {
      value = std::stod(text, &used);
    } catch (const std::exception&) {
    }
    if (used != text.size() || !(std::abs(value) <= kFarthest)) fail("'" + text + "' is no number up to 4096");
    return value;
  }
  Point point() {
    const double x = number(), y = number();
    return {x, y, number()};
  }
  Box box(bool onGrid) {
    const Box box{point(), point()};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      if (box.low[axis] >= box.high[axis]) fail("a box without extent");
      for (const double v : {box.low[axis], box.high[axis]})
        if (onGrid && std::fmod(v, kCell) != 0) fail("not a multiple of 16");
    }
    return box;
  }
  Pairs pairs() {
    Pairs pairs;
    for (std::string word; words_ >> word;) {
      const std::size_t equals = word.find('=');
      if (equals == std::string::npos || word.find('"') != std::string::npos) fail("'" + word + "' is not KEY=VALUE");
      std::string value = word.substr(equals + 1);
      std::replace(value.begin(), value.end(), '_', ' ');
      // Names of classes keep theirs.
      if (word.substr(0, equals) == "classname") value = word.substr(equals + 1);
      pairs.emplace_back(word.substr(0, equals), value);
    }
    return pairs;
  }
  bool next(std::string& word) { return static_cast<bool>(words_ >> word); }

 private:
  std::istringstream words_;
  int number_;
};

}  // namespace

Description parseDescription(std::string_view text) {
  Description out;
  std::istringstream lines{std::string(text)};
  int number = 0;
  for (std::string raw; std::getline(lines, raw);) {
    Line line(raw.substr(0, raw.find('#')), ++number);
    std::string kind;
    if (!line.next(kind)) continue;
    if (kind == "open") {
      Dig& dig = out.digs.emplace_back(Dig{line.box(true), true, {}});
      for (std::string& texture : dig.textures) texture = line.word();
    } else if (kind == "fill") {
      Dig& dig = out.digs.emplace_back(Dig{line.box(true), false, {}});
      dig.textures[0] = line.word();
    } else if (kind == "model") {
      Model& model = out.models.emplace_back();
      model.texture = line.word();
      model.box = line.box(false);
      model.pairs = line.pairs();
    } else if (kind == "light") {
      Lamp& lamp = out.lamps.emplace_back();
      lamp.position = line.point();
      lamp.color = line.point();
      lamp.reach = line.number();
    } else if (kind == "entity") {
      out.entities.push_back(line.pairs());
    } else {
      line.fail("'" + kind + "' is nothing that a level has");
    }
    if (std::string rest; line.next(rest)) line.fail("'" + rest + "' is too much");
  }
  if (out.digs.empty()) throw DescriptionFault("a level without room");
  return out;
}

}  // namespace ql::hl_maker
