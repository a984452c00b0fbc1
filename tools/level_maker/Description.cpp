#include "Description.h"

#include "DescriptionLines.h"
#include "Numbers.h"
#include "Shapes.h"

#include <functional>

namespace ql::maker {
namespace {

constexpr std::size_t kMostItems = 20000;  // brushes, patches, lights ... of a description altogether
constexpr int kMostNested = 24;

/// Carries out the statements of one description.
class Reader {
 public:
  explicit Reader(std::string_view text) : statements_(readStatements(text)) {}

  Level read() {
    for (std::size_t i = 0; i < statements_.size(); ++i)  // definitions may stand after their uses
      if (statements_[i].command == "define") {
        if (!statements_[i].opensBlock) throw DescriptionFault(statements_[i].line, "define needs a block");
        definitions_[statements_[i].word(0)] = i;
      }
    run(0, statements_.size(), {}, 0);
    if (level_.brushes.empty()) throw DescriptionFault(1, "the description has no brushes");
    return std::move(level_);
  }

 private:
  using Command = void (Reader::*)(const Statement&, const Placement&);

  void run(std::size_t from, std::size_t to, const Placement& placement, int depth) {
    if (depth > kMostNested) throw DescriptionFault(statements_[from].line, "blocks use each other too deeply");
    for (std::size_t i = from; i < to; ++i) {
      const Statement& s = statements_[i];
      if (++steps_ > 50 * kMostItems || itemCount() > kMostItems)
        throw DescriptionFault(s.line, "the description makes too many things");
      if (s.command == "define") {
        i = s.blockEnd;
      } else if (s.opensBlock) {
        block(s, i, placement, depth);
        i = s.blockEnd;
      } else if (s.command == "use") {
        const auto found = definitions_.find(s.word(0));
        if (found == definitions_.end()) throw DescriptionFault(s.line, "nothing is defined as \"" + s.words[0] + "\"");
        Placement inner = quarterTurns(static_cast<int>(s.option("turn", 0.0)));
        inner.offset = s.vector(1);
        run(found->second + 1, statements_[found->second].blockEnd, placement.after(inner), depth + 1);
      } else if (s.command != "}") {
        single(s, placement);
      }
    }
  }

  static Placement quarterTurns(int turns) {
    constexpr Placement kQuarter{{Vec3{0, 1, 0}, Vec3{-1, 0, 0}, Vec3{0, 0, 1}}, {}};
    Placement p;
    for (int i = 0; i < (turns & 3); ++i) p = kQuarter.after(p);
    return p;
  }

  void block(const Statement& s, std::size_t index, const Placement& placement, int depth) {
    const auto body = [&](const Placement& inner) { run(index + 1, s.blockEnd, placement.after(inner), depth + 1); };
    if (s.command == "repeat") {
      const double count = s.number(0);
      if (!(count >= 1 && count <= 1000)) throw DescriptionFault(s.line, "repeat needs a count from 1 to 1000");
      Placement inner;
      for (int i = 0; i < static_cast<int>(count); ++i) {
        inner.offset = s.vector(1) * i;
        body(inner);
      }
    } else if (s.command == "mirror") {
      body({});
      const int axis = s.word(0) == "x" ? 0 : s.word(0) == "y" ? 1 : -1;
      if (axis < 0) throw DescriptionFault(s.line, "mirror needs x or y");
      Placement inner;
      inner.columns[static_cast<std::size_t>(axis)][axis] = -1.0;
      body(inner);
    } else if (s.command == "shift") {
      Placement inner;
      inner.offset = s.vector(0);
      body(inner);
    } else if (s.command == "turn") {
      body(quarterTurns(static_cast<int>(s.number(0))));
    } else if (s.command == "entity") {
      entity(index, placement);
    } else {
      throw DescriptionFault(s.line, "\"" + s.command + "\" does not take a block");
    }
  }

  void single(const Statement& s, const Placement& placement) {
    static const std::map<std::string_view, Command> kCommands{
        {"level", &Reader::level},       {"sun", &Reader::sun},   {"sky", &Reader::sky},
        {"material", &Reader::material}, {"box", &Reader::box},   {"wedge", &Reader::wedge},
        {"prism", &Reader::prism},       {"gem", &Reader::gemOf}, {"revolve", &Reader::revolve},
        {"arch", &Reader::arch},         {"ring", &Reader::ring}, {"sheet", &Reader::sheet},
        {"light", &Reader::light},       {"key", &Reader::key},   {"pose", &Reader::pose},
    };
    const auto found = kCommands.find(s.command);
    if (found == kCommands.end()) throw DescriptionFault(s.line, "unknown command \"" + s.command + "\"");
    (this->*found->second)(s, placement);
  }

  std::size_t itemCount() const {
    return level_.brushes.size() + level_.patches.size() + level_.meshes.size() + level_.lights.size() +
           level_.entities.size() + level_.pathKeys.size();
  }

  int materialNamed(const std::string& name, const Statement& s) const {
    for (std::size_t i = 0; i < level_.materials.size(); ++i)
      if (level_.materials[i].name == name) return static_cast<int>(i);
    throw DescriptionFault(s.line, "no material is called \"" + name + "\"");
  }
  int materialOption(const std::string& key, int fallback, const Statement& s) const {
    const std::string name = s.option(key, std::string());
    return name.empty() ? fallback : materialNamed(name, s);
  }
  const Material& materialAt(int index) const { return level_.materials[static_cast<std::size_t>(index)]; }

  void level(const Statement& s, const Placement&) {
    level_.name = s.word(0);
    if (level_.name.find_first_of("/\\.") != std::string::npos || level_.name.size() > 24)
      throw DescriptionFault(s.line, "not a name for a level");
    level_.density = std::max(1.0, s.option("density", level_.density));
    level_.exposure = s.option("exposure", level_.exposure);
  }

  void sun(const Statement& s, const Placement&) {
    level_.sun.direction = normalized(s.vectorOption("to", {0, 0, 1}));
    level_.sun.colour = s.vectorOption("colour", {1, 1, 1});
    level_.sun.radius = s.option("radius", 0.02);
  }

  void sky(const Statement& s, const Placement&) {
    level_.skyLight.zenith = s.vectorOption("zenith", level_.skyLight.zenith);
    level_.skyLight.horizon = s.vectorOption("horizon", level_.skyLight.horizon);
  }

  void material(const Statement& s, const Placement&) {
    Material m;
    m.name = s.word(0);
    m.texture = s.word(1);
    if (m.texture.size() > 40 ||
        m.texture.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_") != std::string::npos)
      throw DescriptionFault(s.line, "not a texture name: " + m.texture);
    const std::vector<double> size = s.list("size");
    if (!size.empty()) {
      m.width = size.front();
      m.height = size.back();
    }
    if (!(m.width >= 1 && m.height >= 1)) throw DescriptionFault(s.line, "a material's size is at least 1");
    m.density = s.option("density", 0.0);
    const std::string map = s.option("map", "world");
    m.mapping = map == "fit" ? Mapping::Fit : map == "height" ? Mapping::FitHeight : Mapping::World;
    m.sky = s.flag("sky");
    m.liquid = s.flag("liquid");
    m.lit = !s.flag("unlit") && !m.sky;
    level_.materials.push_back(m);
  }

  void addBrush(Brush brush, const Statement& s, const Placement& placement, bool detail) {
    if (brush.sides.empty()) throw DescriptionFault(s.line, "the outline is not convex");
    place(brush, placement);
    brush.detail = detail;
    for (const BrushSide& side : brush.sides) brush.liquid |= materialAt(side.material).liquid;
    if (!finishBrush(brush)) throw DescriptionFault(s.line, "the brush has no volume");
    level_.brushes.push_back(std::move(brush));
  }

  static void checkCorners(const Statement& s) {
    for (std::size_t a = 0; a < 3; ++a)
      if (!(s.number(a) < s.number(a + 3)))
        throw DescriptionFault(s.line, "the second corner must be above the first on every axis");
  }

  void box(const Statement& s, const Placement& placement) {
    checkCorners(s);
    const int all = materialNamed(s.word(6), s);
    const int sides = materialOption("sides", all, s);
    const std::array<int, 6> materials{materialOption("east", sides, s),  materialOption("west", sides, s),
                                       materialOption("north", sides, s), materialOption("south", sides, s),
                                       materialOption("top", all, s),     materialOption("bottom", all, s)};
    addBrush(boxBrush(s.vector(0), s.vector(3), materials), s, placement, s.flag("detail"));
  }

  void wedge(const Statement& s, const Placement& placement) {
    checkCorners(s);
    const int side = materialNamed(s.word(6), s);
    const std::string high = s.option("high", "+x");
    const int index = high == "+x" ? 0 : high == "-x" ? 1 : high == "+y" ? 2 : high == "-y" ? 3 : -1;
    if (index < 0) throw DescriptionFault(s.line, "high is one of +x -x +y -y");
    addBrush(wedgeBrush(s.vector(0), s.vector(3), index, s.option("low", 0.0), side, materialOption("top", side, s)), s,
             placement, true);
  }

  void prism(const Statement& s, const Placement& placement) {
    const std::string axis = s.option("axis", "z");
    std::vector<std::pair<double, double>> outline;
    for (std::size_t i = 3; i < s.words.size(); ++i) {
      const std::vector<double> point = numberList(s.words[i], s.line);
      if (point.size() != 2) throw DescriptionFault(s.line, "outline points are pairs of numbers");
      outline.emplace_back(point[0], point[1]);
    }
    if (outline.size() < 3 || outline.size() > 32) throw DescriptionFault(s.line, "an outline has 3 to 32 points");
    const int side = materialNamed(s.word(2), s);
    addBrush(prismBrush(axis == "x"   ? 0
                        : axis == "y" ? 1
                                      : 2,
                        s.number(0), s.number(1), std::move(outline), side, materialOption("caps", side, s)),
             s, placement, true);
  }

  void addPatch(Patch patch, const Placement& placement) {
    measurePatch(patch, materialAt(patch.material));
    place(patch, placement);
    level_.patches.push_back(std::move(patch));
  }

  void gemOf(const Statement& s, const Placement& placement) {
    Mesh mesh = gem(s.vector(0), s.number(3), s.number(4), materialNamed(s.word(5), s));
    place(mesh, placement);
    level_.meshes.push_back(std::move(mesh));
  }

  void revolve(const Statement& s, const Placement& placement) {
    const std::string axis = s.option("axis", "z");
    std::vector<std::pair<double, double>> profile;
    for (std::size_t i = 4; i < s.words.size(); ++i) {
      if (s.words[i] == "inside") continue;
      const std::vector<double> point = numberList(s.words[i], s.line);
      if (point.size() != 2 || point[1] < 0)
        throw DescriptionFault(s.line, "profile points are pairs: position, radius");
      profile.emplace_back(point[0], point[1]);
    }
    if (profile.size() < 3 || profile.size() > 31 || profile.size() % 2 == 0)
      throw DescriptionFault(s.line, "a profile has an odd count of points from 3 to 31");
    const double pieces = s.option("pieces", 6.0);
    if (!(pieces >= 3 && pieces <= 15)) throw DescriptionFault(s.line, "pieces are 3 to 15");
    addPatch(revolved(axis == "x"   ? 0
                      : axis == "y" ? 1
                                    : 2,
                      s.vector(0), profile, static_cast<int>(pieces), s.flag("inside"), materialNamed(s.word(3), s)),
             placement);
  }

  /// Flat patches on a wall take the wall's own mapping, so that courses of stone run on.
  void addWallPatch(Patch patch, const Placement& placement) {
    const Material& m = materialAt(patch.material);
    place(patch, placement);
    const Vec3 across = patch.at(patch.width - 1, 0).position - patch.at(0, 0).position;
    const bool alongX = std::fabs(across.x) > std::fabs(across.y);
    const int c = patch.width / 2;
    const Vec3 facing = cross(patch.at(c + 1, 1).position - patch.at(c - 1, 1).position,
                              patch.at(c, 2).position - patch.at(c, 0).position);
    const double sign = alongX ? (facing.y < 0 ? 1.0 : -1.0) : (facing.x > 0 ? 1.0 : -1.0);
    for (ControlPoint& p : patch.points) {
      p.u = sign * (alongX ? p.position.x : p.position.y) / m.width;
      p.v = -p.position.z / m.height;
    }
    level_.patches.push_back(std::move(patch));
  }

  void arch(const Statement& s, const Placement& placement) {
    ArchShape shape;
    shape.axis = s.option("axis", "y") == "x" ? 0 : 1;
    shape.from = s.number(0);
    shape.to = s.number(1);
    shape.middle = s.number(2);
    shape.spring = s.number(3);
    shape.radius = s.number(4);
    if (!(shape.from < shape.to && shape.radius > 0))
      throw DescriptionFault(s.line, "an arch needs from below to and a radius");
    shape.rise = s.option("rise", shape.radius);
    const int material = materialNamed(s.word(5), s);
    addPatch(archSoffit(shape, materialOption("soffit", material, s)), placement);
    const std::string ends = s.option("ends", "both");
    const double band = s.option("bandwidth", 0.0);
    for (const bool atEnd : {false, true}) {
      if (ends != "both" && ends != (atEnd ? "end" : "start")) continue;
      for (Patch& p : archSpandrels(shape, atEnd, material)) addWallPatch(std::move(p), placement);
      if (band > 0) addPatch(archBand(shape, atEnd, band, materialOption("band", material, s)), placement);
    }
  }

  void ring(const Statement& s, const Placement& placement) {
    Patch patch = squareRing(s.vector(0), s.number(3), s.number(4), s.flag("down"), materialNamed(s.word(5), s));
    const Material& m = materialAt(patch.material);
    place(patch, placement);
    for (ControlPoint& p : patch.points) {
      p.u = p.position.x / m.width;
      p.v = -p.position.y / m.height;
    }
    level_.patches.push_back(std::move(patch));
  }

  /// A cloth between four corners, bulging by `sag` in its middle; seen from the side from which the corners run
  /// clockwise.
  void sheet(const Statement& s, const Placement& placement) {
    Patch patch;
    patch.material = materialNamed(s.word(12), s);
    const std::array<Vec3, 4> corners{s.vector(0), s.vector(3), s.vector(6),
                                      s.vector(9)};  // top left, top right, bottom right, bottom left
    const Vec3 sag = s.vectorOption("sag", {});
    for (int row = 0; row < 3; ++row)
      for (int column = 0; column < 3; ++column) {
        const double u = column / 2.0;
        const double v = 1.0 - row / 2.0;
        Vec3 p = mix(mix(corners[0], corners[1], u), mix(corners[3], corners[2], u), v);
        if (row == 1) p += sag * (column == 1 ? -1.0 : 1.0);
        patch.points.push_back({p, u, v});
      }
    place(patch, placement);
    level_.patches.push_back(std::move(patch));
  }

  void light(const Statement& s, const Placement& placement) {
    Light light;
    light.origin = placement.point(s.vector(0));
    light.colour = s.vectorOption("colour", {1, 1, 1});
    light.power = s.option("power", 100.0);
    light.radius = s.option("radius", 6.0);
    level_.lights.push_back(light);
  }

  void key(const Statement& s, const Placement& placement) {
    level_.pathKeys.push_back({placement.point(s.vector(0)), placement.point(s.vector(3))});
  }
  void pose(const Statement& s, const Placement& placement) {
    level_.poses.push_back({placement.point(s.vector(0)), placement.point(s.vector(3))});
  }

  void entity(std::size_t index, const Placement& placement) {
    Entity entity;
    for (std::size_t i = index + 1; i < statements_[index].blockEnd; ++i) {
      const Statement& s = statements_[i];
      std::string value;
      if (s.command == "origin") {
        const Vec3 at = placement.point(s.vector(0));
        for (int a = 0; a < 3; ++a) {
          if (a > 0) value += ' ';
          value += std::to_string(static_cast<long>(std::floor(at[a] + 0.5)));
        }
      } else {
        for (const std::string& w : s.words) {
          if (!value.empty()) value += ' ';
          value += w;
        }
      }
      if ((s.command + value).find('"') != std::string::npos)
        throw DescriptionFault(s.line, "entity text cannot hold quotes");
      entity.emplace_back(s.command, value);
    }
    level_.entities.push_back(std::move(entity));
  }

  std::vector<Statement> statements_;
  std::map<std::string, std::size_t> definitions_;
  std::size_t steps_ = 0;
  Level level_;
};

}  // namespace

Level parseDescription(std::string_view text) { return Reader(text).read(); }

}  // namespace ql::maker
