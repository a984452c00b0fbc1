#include "Noise.h"
#include "Numbers.h"
#include "Textures.h"

namespace ql::maker {
namespace {

/// A stone of a wall laid in courses.
struct Stone {
  std::uint32_t id = 0;
  double edge = 0.0;    ///< distance to the nearest border, in texture widths
  double across = 0.0;  ///< position inside the stone, 0 to 1
  double down = 0.0;
};

/// Courses of stones whose joints are offset from course to course; `uneven` varies their widths.
Stone stoneAt(double x, double y, int courses, int perCourse, double uneven, std::uint32_t seed) {
  const int course = static_cast<int>(y * courses);
  const double down = y * courses - course;
  double along = x * perCourse + 0.5 * (course % 2) + 0.23 * hashUnit(static_cast<std::uint32_t>(course), 3, seed);
  along -= std::floor(along / perCourse) * perCourse;
  const auto jointAt = [&](int i) {
    return i + uneven * (hashUnit(static_cast<std::uint32_t>((i + perCourse) % perCourse),
                                  static_cast<std::uint32_t>(course), seed + 5) -
                         0.5);
  };
  int stone = static_cast<int>(along);
  if (along < jointAt(stone))
    --stone;
  else if (along >= jointAt(stone + 1))
    ++stone;
  const double left = jointAt(stone);
  const double right = jointAt(stone + 1);
  Stone s;
  s.id = static_cast<std::uint32_t>(((stone + perCourse) % perCourse) * 31 + course * 977) + seed;
  s.across = (along - left) / (right - left);
  s.down = down;
  s.edge = std::min(std::min(along - left, right - along) / perCourse, std::min(down, 1.0 - down) / courses);
  return s;
}

Vec3 tinted(Vec3 colour, std::uint32_t id, double amount, Vec3 towards) {
  const Vec3 c = mix(colour, towards, 0.35 * hashUnit(id, 11));
  return c * (1.0 + amount * (hashUnit(id, 12) - 0.5));
}

Paint ashlar(double x, double y) {
  const Stone s = stoneAt(x, y, 4, 2, 0.3, 21);
  const double grain = layeredNoise(x, y, 16, 4, 31);
  const double wear = layeredNoise(x, y, 4, 4, 33);
  const double edge = s.edge + 0.0025 * noise(x, y, 24, 35);
  const double body = smoothStep(0.004, 0.014, edge);
  Vec3 c = tinted({0.80, 0.71, 0.55}, s.id, 0.18, {0.72, 0.66, 0.58});
  c = c * (1.0 + 0.16 * grain + 0.12 * wear);
  const double pit = smoothStep(0.42, 0.6, layeredNoise(x, y, 20, 2, 37));
  c = mix(c, c * 0.7, pit * 0.6);
  return {mix(Vec3{0.50, 0.44, 0.35}, c, body), body * 0.9 + 0.22 * grain - 0.3 * pit};
}

Paint rough(double x, double y) {
  const Stone t = y < 0.5 ? stoneAt(x, y, 2, 2, 0.35, 8) : stoneAt(x, y, 2, 1, 0.0, 8);
  const double swell = 1.0 - (2 * t.across - 1) * (2 * t.across - 1) * (2 * t.down - 1) * (2 * t.down - 1);
  const double grain = layeredNoise(x, y, 8, 5, 41);
  const double edge = t.edge + 0.006 * noise(x, y, 16, 43);
  const double body = smoothStep(0.006, 0.04, edge);
  Vec3 c = tinted({0.68, 0.58, 0.45}, t.id, 0.2, {0.58, 0.53, 0.46}) * (1.0 + 0.25 * grain);
  return {mix(Vec3{0.30, 0.26, 0.22}, c, smoothStep(0.004, 0.016, edge)), body * (1.0 + 0.3 * swell) + 0.6 * grain};
}

Paint brick(double x, double y) {
  const Stone s = stoneAt(x, y, 8, 4, 0.1, 51);
  const double grain = layeredNoise(x, y, 32, 3, 53);
  const double edge = s.edge + 0.0015 * noise(x, y, 48, 55);
  const double body = smoothStep(0.006, 0.014, edge);
  Vec3 c = tinted({0.62, 0.32, 0.21}, s.id, 0.45, {0.72, 0.48, 0.30}) * (1.0 + 0.25 * grain);
  const Vec3 mortar = Vec3{0.62, 0.57, 0.49} * (1.0 + 0.2 * grain);
  return {mix(mortar, c, body), body + 0.25 * grain};
}

Paint plaster(double x, double y) {
  const double cloud = layeredNoise(x, y, 3, 5, 61);
  const double grain = layeredNoise(x, y, 32, 3, 63);
  const double trowel = noise(x + 0.08 * noise(x, y, 5, 66), y, 9, 65);
  Vec3 c = mix(Vec3{0.84, 0.74, 0.56}, Vec3{0.76, 0.63, 0.45}, 0.5 + 0.7 * cloud);
  return {c * (1.0 + 0.05 * grain + 0.04 * trowel), 0.18 * grain + 0.25 * trowel};
}

Paint plasterRed(double x, double y) {
  const double cloud = layeredNoise(x, y, 3, 5, 161);
  const double grain = layeredNoise(x, y, 32, 3, 163);
  Vec3 c = mix(Vec3{0.62, 0.24, 0.17}, Vec3{0.50, 0.17, 0.13}, 0.5 + 0.8 * cloud);
  return {c * (1.0 + 0.07 * grain), 0.2 * grain};
}

Paint flags(double x, double y) {
  // Square slabs of two sizes, turned into each other's gaps.
  const double gx = x * 4;
  const double gy = y * 4;
  const int ix = static_cast<int>(gx);
  const int iy = static_cast<int>(gy);
  const bool large = ((ix / 2) + (iy / 2)) % 2 == 0;
  const double cell = large ? 2.0 : 1.0;
  const double lx = gx - std::floor(gx / cell) * cell;
  const double ly = gy - std::floor(gy / cell) * cell;
  const auto id = static_cast<std::uint32_t>(static_cast<int>(gx / cell) * 13 + static_cast<int>(gy / cell) * 101 +
                                             (large ? 7 : 0));
  const double edge = std::min({lx, ly, cell - lx, cell - ly}) / 4.0 + 0.002 * noise(x, y, 32, 71);
  const double body = smoothStep(0.003, 0.010, edge);
  const double grain = layeredNoise(x, y, 16, 4, 73);
  const double wear = layeredNoise(x, y, 4, 3, 75);
  Vec3 c = tinted(large ? Vec3{0.70, 0.65, 0.56} : Vec3{0.64, 0.56, 0.46}, id, 0.22, {0.60, 0.58, 0.55}) *
           (1.0 + 0.18 * grain + 0.1 * wear);
  return {mix(Vec3{0.36, 0.33, 0.26}, c, body), body + 0.25 * grain};
}

Paint mosaic(double x, double y) {
  // Eight-pointed stars of marble between crosses.
  double px = x * 2 - std::floor(x * 2) - 0.5;
  double py = y * 2 - std::floor(y * 2) - 0.5;
  const double ax = std::fabs(px);
  const double ay = std::fabs(py);
  const double square = std::max(ax, ay);
  const double diamond = (ax + ay) * 0.70710678;
  const double star = std::min(square, diamond);
  const double inner = std::max(square, diamond);
  const double grain = layeredNoise(x, y, 12, 4, 81);
  Vec3 c{0.82, 0.77, 0.68};
  double joint = std::fabs(star - 0.30);
  if (star < 0.30) {
    c = {0.24, 0.33, 0.36};
    joint = std::min(joint, std::fabs(inner - 0.22));
    if (inner < 0.22) {
      c = {0.70, 0.36, 0.24};
      joint = std::min(joint, std::fabs(inner - 0.10));
      if (inner < 0.10) c = {0.86, 0.74, 0.46};
    }
  } else if (std::min(0.5 - ax, 0.5 - ay) < 0.035) {
    c = {0.58, 0.47, 0.33};
  }
  joint = std::min(joint, std::fabs(std::min(0.5 - ax, 0.5 - ay) - 0.035));
  const double body = smoothStep(0.003, 0.010, joint);
  return {mix(Vec3{0.30, 0.27, 0.23}, c * (1.0 + 0.16 * grain), body), body + 0.1 * grain};
}

Paint smallTiles(double x, double y, int count, Vec3 a, Vec3 b, std::uint32_t seed) {
  const double gx = x * count;
  const double gy = y * count;
  const auto ix = static_cast<std::uint32_t>(gx);
  const auto iy = static_cast<std::uint32_t>(gy);
  const double lx = gx - std::floor(gx) - 0.5;
  const double ly = gy - std::floor(gy) - 0.5;
  const double edge = 0.5 - std::max(std::fabs(lx), std::fabs(ly));
  const double body = smoothStep(0.04, 0.12, edge);
  Vec3 c = mix(a, b, hashUnit(ix, iy, seed)) * (0.86 + 0.28 * hashUnit(ix, iy, seed + 1));
  c = c * (1.0 + 0.10 * (0.5 - ly) * 0.8);  // glaze
  return {mix(Vec3{0.66, 0.68, 0.64} * 0.8, c, body), body};
}

Paint tileBlue(double x, double y) { return smallTiles(x, y, 8, {0.16, 0.42, 0.56}, {0.24, 0.56, 0.62}, 91); }
Paint tileAqua(double x, double y) { return smallTiles(x, y, 16, {0.30, 0.66, 0.66}, {0.52, 0.80, 0.74}, 95); }
Paint tileBand(double x, double y) {
  const double px = x * 4 - std::floor(x * 4) - 0.5;
  const double py = y - 0.5;
  Paint p = smallTiles(x, y, 16, {0.88, 0.84, 0.74}, {0.92, 0.88, 0.80}, 99);
  const double wave = std::fabs(py - 0.16 * sine(2 * kPi * x * 4));
  const double diamond = std::fabs(px) + std::fabs(py);
  Vec3 c = p.colour;
  if (wave < 0.07) c = {0.14, 0.30, 0.52};
  if (diamond < 0.12) c = {0.76, 0.52, 0.18};
  if (std::fabs(py) > 0.40) c = {0.12, 0.26, 0.44};
  return {mix(Vec3{0.5, 0.5, 0.47}, c, smoothStep(0.3, 0.9, p.height)), p.height};
}

Paint marble(double x, double y) {
  const double warp = layeredNoise(x, y, 3, 5, 111);
  const double vein = std::fabs(noise(x + 0.12 * warp, y + 0.2 * warp, 4, 113));
  const double fine = std::fabs(noise(x + 0.1 * warp, y, 9, 115));
  Vec3 c = Vec3{0.88, 0.84, 0.78} * (1.0 + 0.08 * warp);
  c = mix(c, {0.66, 0.61, 0.56}, 0.5 * (1.0 - smoothStep(0.0, 0.07, vein)));
  c = mix(c, {0.78, 0.71, 0.62}, 0.35 * (1.0 - smoothStep(0.0, 0.06, fine)));
  return {c, 0.0};
}

Paint limestone(double x, double y) {
  const double cloud = layeredNoise(x, y, 3, 4, 171);
  const double grain = layeredNoise(x, y, 24, 4, 173);
  const double pit = smoothStep(0.40, 0.62, layeredNoise(x, y, 18, 3, 175));
  const Vec3 c = mix(Vec3{0.86, 0.79, 0.67}, Vec3{0.78, 0.70, 0.57}, 0.5 + 0.6 * cloud) * (1.0 + 0.09 * grain);
  return {mix(c, c * 0.72, pit * 0.5), 0.2 * grain - 0.3 * pit};
}

Paint marbleGreen(double x, double y) {
  const double warp = layeredNoise(x, y, 4, 5, 121);
  const double vein = std::fabs(noise(x + 0.15 * warp, y + 0.15 * warp, 5, 123));
  Vec3 c = mix(Vec3{0.12, 0.28, 0.22}, Vec3{0.20, 0.40, 0.30}, 0.5 + 0.7 * warp);
  c = mix(c, {0.62, 0.72, 0.62}, 0.6 * (1.0 - smoothStep(0.0, 0.05, vein)));
  return {c, 0.0};
}

Paint roofTiles(double x, double y) {
  constexpr int kRows = 6;
  constexpr int kColumns = 8;
  const int row = static_cast<int>(y * kRows);
  const double down = y * kRows - row;
  const double gx = x * kColumns;
  const int column = static_cast<int>(gx);
  const double lx = 2 * (gx - column) - 1;
  const auto id = static_cast<std::uint32_t>(row * 61 + column * 7);
  const double round = std::sqrt(std::max(0.0, 1.0 - lx * lx));
  const double lip = smoothStep(0.0, 0.10, 1.0 - down + 0.05 * noise(x, y, 16, 131) - 0.10 * round);
  const double grain = layeredNoise(x, y, 16, 4, 133);
  Vec3 c = tinted({0.70, 0.36, 0.22}, id, 0.4, {0.78, 0.52, 0.34}) * (1.0 + 0.25 * grain);
  const double shadow = 0.45 + 0.55 * round;
  return {c * shadow * (0.72 + 0.28 * down) * (0.55 + 0.45 * lip), 1.6 * round + 0.6 * down + 0.2 * grain};
}

}  // namespace

std::vector<TextureRecipe> masonryRecipes() {
  using enum TextureFile;
  return {
      {"stone", 512, Jpeg, 0.55, ashlar},
      {"rough", 256, Jpeg, 0.45, rough},
      {"brick", 256, Jpeg, 0.5, brick},
      {"plaster", 256, Jpeg, 0.5, plaster},
      {"plaster_red", 256, Jpeg, 0.4, plasterRed},
      {"flags", 512, Jpeg, 0.5, flags},
      {"mosaic", 256, Jpeg, 0.3, mosaic},
      {"tile_blue", 256, Jpeg, 0.3, tileBlue},
      {"tile_aqua", 256, Jpeg, 0.3, tileAqua},
      {"tile_band", 256, Jpeg, 0.3, tileBand},
      {"marble", 256, Jpeg, 0.0, marble},
      {"limestone", 256, Jpeg, 0.5, limestone},
      {"marble_green", 256, Jpeg, 0.0, marbleGreen},
      {"roof", 256, Jpeg, 0.35, roofTiles},
  };
}

}  // namespace ql::maker
