#include "Noise.h"
#include "Numbers.h"
#include "Textures.h"

#include <array>

namespace ql::maker {
namespace {

double fraction(double v) { return v - std::floor(v); }

Paint wood(double x, double y, int boards, Vec3 light, Vec3 dark, std::uint32_t seed) {
  const double gx = x * boards;
  const auto board = static_cast<std::uint32_t>(gx);
  const double lx = gx - std::floor(gx);
  const double shift = hashUnit(board, seed);
  const double end = fraction(y + shift);  // one butt joint per board and repeat
  const double edge = std::min(std::min(lx, 1 - lx) / boards, std::min(end, 1 - end));
  const double warp = noise(x, y, 3, seed + 1);
  const double rings = noise(fraction(x + shift) + 0.02 * warp, fraction(y * 0.5 + shift), 32, seed + 2);
  const double fibre = noise(x, fraction(y * 0.25), 64, seed + 3);
  const double body = smoothStep(0.002, 0.008, edge);
  Vec3 c = mix(light, dark, std::clamp(0.45 + 0.5 * rings + 0.25 * fibre, 0.0, 1.0)) *
           (0.82 + 0.36 * hashUnit(board, seed + 4));
  return {mix(dark * 0.35, c, body), body + 0.15 * rings + 0.12 * fibre};
}

Paint planks(double x, double y) { return wood(x, y, 6, {0.74, 0.53, 0.33}, {0.52, 0.34, 0.20}, 211); }
Paint beam(double x, double y) { return wood(y, x, 2, {0.50, 0.34, 0.21}, {0.32, 0.20, 0.12}, 221); }

Paint oak(double x, double y) { return wood(x, y, 3, {0.66, 0.44, 0.26}, {0.44, 0.27, 0.15}, 225); }

Paint door(double x, double y) {
  Paint p = wood(x, y * 0.999, 5, {0.50, 0.32, 0.18}, {0.30, 0.18, 0.10}, 231);
  const bool strap = std::fabs(y - 0.18) < 0.035 || std::fabs(y - 0.5) < 0.035 || std::fabs(y - 0.82) < 0.035;
  const bool frame = x < 0.04 || x > 0.96 || y < 0.03 || y > 0.97;
  if (strap || frame) {
    const double grain = layeredNoise(x, y, 16, 3, 235);
    p = {Vec3{0.25, 0.24, 0.24} * (1.0 + 0.3 * grain), 1.6 + 0.2 * grain};
    if (strap) {
      const double lx = fraction(x * 8) - 0.5;
      const double ly = std::min({std::fabs(y - 0.18), std::fabs(y - 0.5), std::fabs(y - 0.82)}) * 8;
      const double nail = std::sqrt(lx * lx + ly * ly);
      if (nail < 0.22) p = {Vec3{0.46, 0.42, 0.36} * (1.3 - nail), 2.4 - 3 * nail};
    }
  }
  return p;
}

/// Value of a square meander (the Greek key) at a point of its cell.
bool keyPattern(double x, double y) {
  static constexpr std::array<std::string_view, 8> kCell{"########", "#.......", "#.#####.", "#.#...#.",
                                                         "#.#.#.#.", "#.#.###.", "#.#.....", "#.######"};
  const int column = std::min(7, static_cast<int>(x * 8));
  const int row = std::min(7, static_cast<int>(y * 8));
  return kCell[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] == '#';
}

Paint meander(double x, double y) {
  const double grain = layeredNoise(x, y, 12, 4, 241);
  const Vec3 ground{0.30, 0.14, 0.12};
  const Vec3 figure{0.86, 0.74, 0.46};
  if (y < 0.14 || y > 0.86) {
    const double line = std::min(y, 1 - y);
    const bool gold = line > 0.09;
    return {(gold ? Vec3{0.74, 0.58, 0.28} : Vec3{0.72, 0.66, 0.54}) * (1.0 + 0.15 * grain), gold ? 1.2 : 0.9};
  }
  const bool on = keyPattern(fraction(x * 4), (y - 0.14) / 0.72);
  return {(on ? figure : ground) * (1.0 + 0.15 * grain), on ? 1.0 : 0.4};
}

/// Mouldings one above the other: a row of leaves, beads and flat bands.
Paint cornice(double x, double y) {
  const double grain = layeredNoise(x, y, 16, 4, 251);
  double height = 0.0;
  if (y < 0.16) {
    height = 2.2 - 5.0 * std::fabs(y - 0.08);
  } else if (y < 0.5) {  // egg and dart
    const double lx = 2 * fraction(x * 8) - 1;
    const double ly = (y - 0.16) / 0.34 * 2 - 1;
    const double egg = lx * lx * 1.8 + ly * ly;
    height = egg < 0.85 ? 1.3 + 1.3 * std::sqrt(0.85 - egg) : 0.8 + 0.4 * smoothStep(0.85, 1.1, std::fabs(lx) + 0.2);
  } else if (y < 0.62) {
    const double lx = 2 * fraction(x * 16) - 1;
    const double ly = (y - 0.56) / 0.06;
    height = 0.7 + std::sqrt(std::max(0.0, 1.0 - lx * lx - ly * ly));
  } else if (y < 0.84) {
    height = 0.9;
  } else {
    height = 0.5 + 0.3 * smoothStep(0.84, 0.9, y);
  }
  return {Vec3{0.80, 0.73, 0.60} * (0.78 + 0.14 * height) * (1.0 + 0.12 * grain), height + 0.15 * grain};
}

Paint gold(double x, double y) {
  const double grain = layeredNoise(x, y, 8, 5, 261);
  const double stroke = noise(x, fraction(y * 0.2), 48, 263);
  Vec3 c = mix(Vec3{0.60, 0.42, 0.16}, Vec3{0.96, 0.80, 0.42}, std::clamp(0.5 + 0.5 * grain + 0.3 * stroke, 0.0, 1.0));
  const double band = std::fabs(fraction(y * 4) - 0.5);
  return {c * (0.85 + 0.3 * (1 - band * 2)), 0.3 * grain + 1.5 * (0.5 - band)};
}

Paint iron(double x, double y) {
  const double grain = layeredNoise(x, y, 12, 5, 271);
  const Cell hammer = scatteredCell(x, y, 12, 273);
  Vec3 c = mix(Vec3{0.20, 0.19, 0.19}, Vec3{0.36, 0.30, 0.26}, std::clamp(0.4 + grain, 0.0, 1.0));
  return {c, 0.3 * grain + 0.6 * hammer.nearest};
}

Paint copper(double x, double y) {
  const double gx = x * 4;
  const double lx = std::fabs(fraction(gx) - 0.5);
  const double seam = smoothStep(0.44, 0.47, lx);
  const double cloud = layeredNoise(x, y, 4, 5, 281);
  const double streak = noise(x, fraction(y * 0.25), 24, 283);
  Vec3 c = mix(Vec3{0.30, 0.54, 0.47}, Vec3{0.45, 0.66, 0.56}, std::clamp(0.5 + 0.6 * cloud + 0.35 * streak, 0.0, 1.0));
  c = mix(c, {0.40, 0.30, 0.20}, 0.6 * smoothStep(0.25, 0.6, layeredNoise(x, y, 6, 4, 285)));
  const double row = std::fabs(fraction(y * 2) - 0.5);
  const double lap = smoothStep(0.475, 0.49, row);
  return {c * (1.0 - 0.25 * lap), 1.4 * seam + 0.5 * lap + 0.2 * cloud};
}

/// The inside of the dome: deep panels with a gilded star on blue.
Paint coffer(double x, double y) {
  const double px = x - 0.5;
  const double py = y - 0.5;
  const double square = std::max(std::fabs(px), std::fabs(py));
  const double grain = layeredNoise(x, y, 8, 4, 291);
  if (square > 0.43) return {Vec3{0.84, 0.76, 0.62} * (1.0 + 0.1 * grain), 3.0};
  if (square > 0.40) return {Vec3{0.86, 0.66, 0.30} * (1.0 + 0.2 * grain), 3.2};
  if (square > 0.33) return {Vec3{0.76, 0.66, 0.52} * (1.0 + 0.1 * grain), 3.0 - 14 * (0.43 - square)};
  if (square > 0.31) return {Vec3{0.86, 0.66, 0.30}, 1.8};
  const double radius = std::sqrt(px * px + py * py);
  const double angle = angleOf(py, px);
  const double star = 0.20 * (0.45 + 0.55 * std::fabs(cosine(4 * angle)) * std::fabs(cosine(4 * angle)));
  if (radius < star) return {Vec3{0.94, 0.78, 0.40} * (1.1 - radius), 1.9 - 4 * radius};
  return {mix(Vec3{0.10, 0.18, 0.42}, Vec3{0.16, 0.28, 0.56}, 0.5 + grain), 1.0};
}

Paint carpet(double x, double y) {
  const double weave = 0.06 * sine(2 * kPi * 64 * x) * sine(2 * kPi * 64 * y);
  const double border = std::min({x, 1 - x, y, 1 - y});
  const double px = x - 0.5;
  const double py = y - 0.5;
  Vec3 c{0.52, 0.10, 0.10};
  const bool line = (border >= 0.02 && border < 0.05) || (border >= 0.13 && border < 0.155);
  if (border < 0.02)
    c = {0.78, 0.62, 0.36};
  else if (line)
    c = {0.10, 0.14, 0.28};
  else if (border < 0.13)
    c = fraction((x + y) * 12) < 0.5 ? Vec3{0.76, 0.58, 0.30} : Vec3{0.42, 0.08, 0.09};
  else {
    const double d = std::fabs(px) + std::fabs(py);
    const double flower = std::sqrt(px * px + py * py);
    const double petals = 0.15 + 0.05 * cosine(8 * angleOf(py, px));
    if (flower < 0.04)
      c = {0.86, 0.72, 0.42};
    else if (flower < petals)
      c = {0.14, 0.20, 0.38};
    else if (flower < petals + 0.02)
      c = {0.84, 0.68, 0.40};
    else if (d > 0.52)
      c = fraction(d * 24) < 0.4 ? Vec3{0.74, 0.56, 0.30} : Vec3{0.12, 0.16, 0.30};
    else if (fraction(x * 16) < 0.12 && fraction(y * 16) < 0.12)
      c = {0.80, 0.62, 0.34};
  }
  return {c * (1.0 + weave + 0.08 * layeredNoise(x, y, 16, 3, 301)), 0.0};
}

Paint books(double x, double y) {
  constexpr int kShelves = 4;
  const double gy = y * kShelves;
  const auto shelf = static_cast<std::uint32_t>(gy);
  const double ly = gy - std::floor(gy);
  if (ly > 0.90) return {Vec3{0.36, 0.22, 0.12} * (1.0 + 0.2 * noise(x, y, 32, 311)), 3.0};
  constexpr int kBooks = 14;
  double along = x * kBooks;
  auto book = static_cast<std::uint32_t>(along);
  const double lx = along - std::floor(along);
  const std::uint32_t id = shelf * 131 + book;
  const double top = 0.10 + 0.22 * hashUnit(id, 1);
  if (ly < top || hashUnit(id, 7) < 0.05) return {Vec3{0.07, 0.05, 0.04}, 0.0};
  static constexpr std::array<Vec3, 6> kCovers{Vec3{0.46, 0.13, 0.10}, Vec3{0.15, 0.24, 0.36}, Vec3{0.20, 0.32, 0.18},
                                               Vec3{0.50, 0.36, 0.16}, Vec3{0.30, 0.18, 0.30}, Vec3{0.58, 0.48, 0.34}};
  Vec3 c = kCovers[static_cast<std::size_t>(hashUnit(id, 2) * 6)] * (0.75 + 0.5 * hashUnit(id, 3));
  const double round = 1.0 - (2 * lx - 1) * (2 * lx - 1);
  const double label = top + 0.14;
  if (std::fabs(ly - label) < 0.025 || std::fabs(ly - 0.80) < 0.02) c = {0.78, 0.62, 0.30};
  return {c * (0.55 + 0.55 * round), 1.5 * round};
}

Paint banner(double x, double y) {
  const double fold = sine(2 * kPi * x * 3) * 0.10;
  const double px = x - 0.5;
  const double py = (y - 0.42) * 1.6;
  Vec3 c{0.46, 0.08, 0.10};
  const double border = std::min(x, 1 - x);
  if (border < 0.05 || y < 0.03) c = {0.82, 0.62, 0.26};
  const double radius = std::sqrt(px * px + py * py);
  const double rays = 0.22 + 0.07 * cosine(12 * angleOf(py, px));
  if (radius < rays) c = {0.88, 0.70, 0.32};
  if (radius < 0.13) c = {0.46, 0.08, 0.10};
  if (radius < 0.09) c = {0.92, 0.80, 0.50};
  if (y > 0.84 && std::fabs(fraction(x * 5) - 0.5) < 0.09) c = {0.82, 0.62, 0.26};
  return {c * (1.0 + fold + 0.05 * layeredNoise(x, y, 24, 3, 321)), 0.0};
}

/// The floor under the dome: rings of marble around a sun.
Paint medallion(double x, double y) {
  const double px = x - 0.5;
  const double py = y - 0.5;
  const double r = 2 * std::sqrt(px * px + py * py);
  const double angle = angleOf(py, px) / (2 * kPi) + 0.5;
  const double grain = layeredNoise(x, y, 12, 5, 331);
  const double warp = std::fabs(noise(x + 0.1 * grain, y, 8, 333));
  const Vec3 white{0.86, 0.82, 0.74};
  const Vec3 red{0.58, 0.26, 0.19};
  const Vec3 green{0.18, 0.32, 0.28};
  const Vec3 ochre{0.80, 0.62, 0.34};
  Vec3 c = white;
  double joint = 1.0;
  const auto ring = [&](double at) { joint = std::min(joint, std::fabs(r - at)); };
  const auto spokes = [&](int n, double shift) {
    joint = std::min(joint, std::fabs(fraction(angle * n + shift) - 0.5) / n * 6.0 * r);
  };
  if (r < 0.12) {
    c = ochre;
  } else if (r < 0.34) {
    const double tip = 0.12 + 0.22 * (1 - 2 * std::fabs(fraction(angle * 16) - 0.5));
    c = r < tip ? ochre : green;
    joint = std::min(joint, std::fabs(r - tip) * 0.5);
  } else if (r < 0.40) {
    c = white;
  } else if (r < 0.62) {
    const double f = fraction(angle * 24 + (r - 0.40) * 4);
    c = f < 0.5 ? red : white;
    joint = std::min(joint, std::min(std::fabs(f - 0.5), std::min(f, 1 - f)) / 24 * 6 * r);
  } else if (r < 0.68) {
    c = ochre;
    spokes(48, 0);
  } else if (r < 0.92) {
    const double f = fraction(angle * 32 - (r - 0.68) * 5);
    c = f < 0.5 ? green : white;
    joint = std::min(joint, std::min(std::fabs(f - 0.5), std::min(f, 1 - f)) / 32 * 6 * r);
  } else if (r < 0.98) {
    c = red;
    spokes(64, 0);
  } else {
    const double corner =
        std::sqrt((std::fabs(px) - 0.5) * (std::fabs(px) - 0.5) + (std::fabs(py) - 0.5) * (std::fabs(py) - 0.5));
    c = corner < 0.10 ? red : corner < 0.13 ? white : Vec3{0.70, 0.62, 0.50};
    joint = std::min({joint, std::fabs(corner - 0.10), std::fabs(corner - 0.13)});
  }
  for (const double at : {0.12, 0.34, 0.40, 0.62, 0.68, 0.92, 0.98}) ring(at);
  c = c * (1.0 + 0.14 * grain) * (1.0 - 0.15 * (1 - smoothStep(0.0, 0.05, warp)));
  const double body = smoothStep(0.002, 0.007, joint);
  return {mix(Vec3{0.26, 0.22, 0.18}, c, body), body};
}

/// Leaded panes that darken or lighten what is seen through them: half of full brightness leaves it as it is.
Paint glass(double x, double y) {
  const Cell cell = scatteredCell(x, y, 6, 341);
  const double lead = smoothStep(0.03, 0.07, cell.second - cell.nearest);
  static constexpr std::array<Vec3, 5> kGlass{Vec3{0.62, 0.50, 0.30}, Vec3{0.60, 0.36, 0.28}, Vec3{0.36, 0.46, 0.64},
                                              Vec3{0.58, 0.56, 0.50}, Vec3{0.40, 0.58, 0.44}};
  constexpr Vec3 kClear{0.58, 0.58, 0.56};
  const double px = x - 0.5;
  const double py = y - 0.5;
  const double radius = std::sqrt(px * px + py * py);
  Vec3 c = kGlass[static_cast<std::size_t>(hashUnit(cell.id, 5) * 5)];
  const double middle = 1.0 - smoothStep(0.345, 0.355, radius);
  c = mix(c, kClear, middle);
  const double ring = smoothStep(0.008, 0.016, std::fabs(radius - 0.35));
  const double frame = smoothStep(0.02, 0.03, std::min({x, 1 - x, y, 1 - y}));
  return {c * (0.94 + 0.1 * noise(x, y, 24, 345)) * (0.08 + 0.92 * std::max(lead, middle) * ring * frame), 0.0};
}

Paint lamp(double x, double y) {
  const double glow = 1.0 - 0.35 * std::fabs(y - 0.55) - 0.05 * noise(x, y, 8, 351);
  return {Vec3{1.0, 0.86, 0.56} * glow, 0.0, 1.0};
}

Paint lampBlue(double x, double y) {
  const double glow = 1.0 - 0.3 * std::fabs(y - 0.55) - 0.05 * noise(x, y, 8, 352);
  return {Vec3{0.62, 0.94, 1.0} * glow, 0.0, 1.0};
}

Paint flame(double x, double y, std::uint32_t seed) {
  const double sway = 0.12 * (1 - y) * noise(0.37, y, 4, seed);
  const double px = (x - 0.5 + sway) / (0.05 + 0.30 * smoothStep(0.0, 0.75, y) * (1.0 - smoothStep(0.85, 1.0, y)));
  const double body =
      std::clamp(1.0 - px * px + 0.35 * layeredNoise(x, y, 6, 3, seed), 0.0, 1.0) * smoothStep(0.04, 0.35, y);
  const Vec3 c = mix(mix(Vec3{0.5, 0.06, 0.0}, Vec3{1.0, 0.5, 0.08}, smoothStep(0.1, 0.5, body)), {1.0, 0.94, 0.62},
                     smoothStep(0.5, 0.95, body));
  return {c * smoothStep(0.02, 0.3, body), 0.0, smoothStep(0.02, 0.3, body)};
}

}  // namespace

std::vector<TextureRecipe> ornamentRecipes() {
  using enum TextureFile;
  return {
      {"planks", 256, Jpeg, 0.4, planks},
      {"beam", 256, Jpeg, 0.4, beam},
      {"oak", 256, Jpeg, 0.4, oak},
      {"door", 256, Jpeg, 0.3, door},
      {"meander", 256, Jpeg, 0.3, meander},
      {"cornice", 256, Jpeg, 0.3, cornice},
      {"gold", 128, Targa24, 0.4, gold},
      {"iron", 128, Targa24, 0.4, iron},
      {"copper", 256, Jpeg, 0.3, copper},
      {"coffer", 256, Jpeg, 0.14, coffer},
      {"carpet", 256, Jpeg, 0.0, carpet},
      {"books", 256, Targa24, 0.2, books},
      {"banner", 256, Targa24, 0.0, banner},
      {"medallion", 512, Jpeg, 0.25, medallion},
      {"glass", 256, Jpeg, 0.0, glass},
      {"lamp", 64, Targa32, 0.0, lamp},
      {"lamp_blue", 64, Targa32, 0.0, lampBlue},
      {"flame1", 128, Targa32, 0.0, [](double x, double y) { return flame(x, y, 361); }},
      {"flame2", 128, Targa32, 0.0, [](double x, double y) { return flame(x, y, 371); }},
      {"flame3", 128, Targa32, 0.0, [](double x, double y) { return flame(x, y, 381); }},
  };
}

}  // namespace ql::maker
