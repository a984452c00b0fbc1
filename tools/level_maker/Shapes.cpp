#include "Shapes.h"

#include "Numbers.h"

namespace ql::maker {

Placement Placement::after(const Placement& inner) const {
  Placement result;
  for (std::size_t i = 0; i < 3; ++i) result.columns[i] = direction(inner.columns[i]);
  result.offset = point(inner.offset);
  return result;
}

bool finishBrush(Brush& brush) {
  brush.bounds = {};
  for (BrushSide& side : brush.sides) {
    side.winding = windingOfPlane(side.plane);
    for (const BrushSide& other : brush.sides) {
      if (&other == &side || side.winding.empty()) continue;
      Split parts = split(side.winding, other.plane);
      side.winding = std::move(parts.back);
    }
    for (Vec3& p : side.winding) {
      for (int a = 0; a < 3; ++a)  // whole and half units are what descriptions mean
        if (std::fabs(p[a] * 2.0 - std::floor(p[a] * 2.0 + 0.5)) < 1e-4) p[a] = std::floor(p[a] * 2.0 + 0.5) / 2.0;
      brush.bounds.add(p);
    }
  }
  std::erase_if(brush.sides, [](const BrushSide& s) { return s.winding.size() < 3 || areaOf(s.winding) < 0.01; });
  return brush.sides.size() >= 4 && brush.bounds.maxs.x < 60000 && brush.bounds.mins.x > -60000;
}

Brush boxBrush(Vec3 mins, Vec3 maxs, std::span<const int, 6> materials) {
  Brush brush;
  for (int i = 0; i < 6; ++i) {
    Plane plane;
    const int axis = i / 2;
    plane.normal[axis] = i % 2 == 0 ? 1.0 : -1.0;
    plane.distance = i % 2 == 0 ? maxs[axis] : -mins[axis];
    brush.sides.push_back({plane, materials[static_cast<std::size_t>(i)], {}});
  }
  return brush;
}

Brush wedgeBrush(Vec3 mins, Vec3 maxs, int high, double low, int side, int top) {
  const std::array<int, 6> materials{side, side, side, side, top, side};
  Brush brush = boxBrush(mins, maxs, materials);
  const int axis = high / 2;
  const double run = maxs[axis] - mins[axis];
  const double rise = maxs.z - mins.z - low;
  Plane& roof = brush.sides[4].plane;
  roof.normal = {0, 0, run};
  roof.normal[axis] = high % 2 == 0 ? -rise : rise;
  roof.normal = normalized(roof.normal);
  Vec3 top_ = maxs;
  top_[axis] = high % 2 == 0 ? maxs[axis] : mins[axis];
  roof.distance = dot(roof.normal, top_);
  return brush;
}

Brush prismBrush(int axis, double from, double to, std::vector<std::pair<double, double>> outline, int side, int caps) {
  const int first = axis == 0 ? 1 : 0;
  const int second = axis == 2 ? 1 : 2;
  double area = 0.0;
  for (std::size_t i = 0; i < outline.size(); ++i) {
    const auto& a = outline[i];
    const auto& b = outline[(i + 1) % outline.size()];
    area += a.first * b.second - b.first * a.second;
  }
  if (area < 0.0) std::reverse(outline.begin(), outline.end());
  Brush brush;
  for (std::size_t i = 0; i < outline.size(); ++i) {
    const auto& a = outline[i];
    const auto& b = outline[(i + 1) % outline.size()];
    Plane plane;
    plane.normal[first] = b.second - a.second;
    plane.normal[second] = a.first - b.first;
    plane.normal = normalized(plane.normal);
    Vec3 p;
    p[first] = a.first;
    p[second] = a.second;
    plane.distance = dot(plane.normal, p);
    for (const auto& c : outline) {
      Vec3 q;
      q[first] = c.first;
      q[second] = c.second;
      if (plane.side(q) > 0.05) return {};
    }
    brush.sides.push_back({plane, side, {}});
  }
  for (const double end : {from, to}) {
    Plane plane;
    plane.normal[axis] = end == to ? 1.0 : -1.0;
    plane.distance = end * plane.normal[axis];
    brush.sides.push_back({plane, caps, {}});
  }
  return brush;
}

void place(Brush& brush, const Placement& placement) {
  for (BrushSide& s : brush.sides) {
    const Vec3 on = placement.point(s.plane.normal * s.plane.distance);
    s.plane.normal = placement.direction(s.plane.normal);
    s.plane.distance = dot(s.plane.normal, on);
  }
}

void place(Patch& patch, const Placement& placement) {
  for (ControlPoint& p : patch.points) p.position = placement.point(p.position);
  if (!placement.mirrors()) return;
  for (int row = 0; row < patch.height; ++row)
    std::reverse(patch.points.begin() + row * patch.width, patch.points.begin() + (row + 1) * patch.width);
}

void place(Mesh& mesh, const Placement& placement) {
  for (ControlPoint& p : mesh.points) p.position = placement.point(p.position);
  if (!placement.mirrors()) return;
  for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) std::swap(mesh.indices[i + 1], mesh.indices[i + 2]);
}

namespace {

/// Turns the patch around (columns reversed) when its front does not face `towards` at its middle.
void face(Patch& patch, Vec3 towards, bool awayFromPoint = false) {
  const int c = patch.width / 2;
  const int r = patch.height / 2;
  const Vec3 across = patch.at(c + 1, r).position - patch.at(c - 1, r).position;
  const Vec3 along = patch.at(c, r + 1).position - patch.at(c, r - 1).position;
  const Vec3 want = awayFromPoint ? patch.at(c, r).position - towards : towards;
  if (dot(cross(across, along), want) >= 0.0) return;
  for (int row = 0; row < patch.height; ++row)
    std::reverse(patch.points.begin() + row * patch.width, patch.points.begin() + (row + 1) * patch.width);
}

}  // namespace

Patch revolved(int axis, Vec3 centre, std::span<const std::pair<double, double>> profile, int pieces, bool inside,
               int material) {
  const int first = (axis + 1) % 3;
  const int second = (axis + 2) % 3;
  Patch patch;
  patch.material = material;
  patch.width = 2 * pieces + 1;
  patch.height = static_cast<int>(profile.size());
  const double half = kPi / pieces;
  const double outer = 1.0 / cosine(half);
  for (const auto& [along, radius] : profile) {
    for (int i = 0; i < patch.width; ++i) {
      const double angle = half * ((i % (2 * pieces)) + 0.0);
      const double r = i % 2 == 1 ? radius * outer : radius;
      Vec3 p = centre;
      // A whole turn in eighths lands exactly on the axes and diagonals, so that neighbouring shapes meet.
      const double angleFromDiagonal = angle + (pieces == 8 ? 0.0 : kPi / 4.0);
      p[first] += r * cosine(angleFromDiagonal);
      p[second] += r * sine(angleFromDiagonal);
      p[axis] += along;
      patch.points.push_back({p, 0, 0});
    }
  }
  // Columns run around counterclockwise seen against the axis; with rows running along the axis the front is the
  // outside.
  const bool upwards = profile.back().first > profile.front().first || (profile.back().first == profile.front().first &&
                                                                        profile.back().second < profile.front().second);
  if (upwards == inside)
    for (int row = 0; row < patch.height; ++row)
      std::reverse(patch.points.begin() + row * patch.width, patch.points.begin() + (row + 1) * patch.width);
  return patch;
}

namespace {

/// The nine control points of a half circle (stretched to `rise`), from the left springing point over the top to the
/// right one; (across, height).
std::array<std::pair<double, double>, 9> halfCircle(double radius, double rise) {
  std::array<std::pair<double, double>, 9> points;
  for (int i = 0; i < 9; ++i) {
    const double angle = kPi - kPi / 8.0 * i;
    const double r = i % 2 == 1 ? 1.0 / cosine(kPi / 8.0) : 1.0;
    points[static_cast<std::size_t>(i)] = {radius * r * cosine(angle), rise * r * sine(angle)};
  }
  points[0] = {-radius, 0.0};
  points[4] = {0.0, rise};
  points[8] = {radius, 0.0};
  return points;
}

Vec3 archPoint(const ArchShape& s, double along, double across, double height) {
  return s.axis == 0 ? Vec3{along, s.middle + across, s.spring + height}
                     : Vec3{s.middle + across, along, s.spring + height};
}

Vec3 endNormal(const ArchShape& s, bool atEnd) {
  Vec3 n;
  n[s.axis] = atEnd ? 1.0 : -1.0;
  return n;
}

}  // namespace

Patch archSoffit(const ArchShape& shape, int material) {
  Patch patch;
  patch.material = material;
  patch.width = 9;
  patch.height = 3;
  const auto curve = halfCircle(shape.radius, shape.rise);
  for (int row = 0; row < 3; ++row)
    for (const auto& [across, height] : curve)
      patch.points.push_back(
          {archPoint(shape, mix({shape.from, 0, 0}, {shape.to, 0, 0}, row / 2.0).x, across, height), 0, 0});
  face(patch, {0, 0, -1});
  return patch;
}

std::array<Patch, 2> archSpandrels(const ArchShape& shape, bool atEnd, int material) {
  const auto curve = halfCircle(shape.radius, shape.rise);
  const double along = atEnd ? shape.to : shape.from;
  std::array<Patch, 2> result;
  for (int half = 0; half < 2; ++half) {
    Patch& patch = result[static_cast<std::size_t>(half)];
    patch.material = material;
    patch.width = 5;
    patch.height = 3;
    const double corner = half == 0 ? -shape.radius : shape.radius;
    // The outer row follows the rectangle: up the side, then along the top, so that no piece folds over.
    const std::array<std::pair<double, double>, 5> outer{
        {{corner, 0}, {corner, shape.rise / 2}, {corner, shape.rise}, {corner / 2, shape.rise}, {0, shape.rise}}};
    for (int row = 0; row < 3; ++row) {
      for (std::size_t i = 0; i < 5; ++i) {
        const auto& inner = curve[half == 0 ? i : 8 - i];
        const double t = row / 2.0;
        patch.points.push_back({archPoint(shape, along, inner.first * (1 - t) + outer[i].first * t,
                                          inner.second * (1 - t) + outer[i].second * t),
                                0, 0});
      }
    }
    face(patch, endNormal(shape, atEnd));
  }
  return result;
}

Patch archBand(const ArchShape& shape, bool atEnd, double width, int material) {
  const auto inner = halfCircle(shape.radius, shape.rise);
  const auto outer = halfCircle(shape.radius + width, shape.rise + width);
  Patch patch;
  patch.material = material;
  patch.width = 9;
  patch.height = 3;
  for (int row = 0; row < 3; ++row)
    for (std::size_t i = 0; i < 9; ++i) {
      const double t = row / 2.0;
      const double out = row == 1 ? 2.5 : 0.0;  // a little belly, so that it catches light
      patch.points.push_back(
          {archPoint(shape, (atEnd ? shape.to + out : shape.from - out), inner[i].first * (1 - t) + outer[i].first * t,
                     inner[i].second * (1 - t) + outer[i].second * t),
           0, 0});
    }
  face(patch, endNormal(shape, atEnd));
  return patch;
}

Patch squareRing(Vec3 centre, double radius, double halfWidth, bool down, int material) {
  Patch patch;
  patch.material = material;
  patch.width = 17;
  patch.height = 3;
  const double outer = 1.0 / cosine(kPi / 8.0);
  for (int row = 0; row < 3; ++row) {
    for (int i = 0; i < 17; ++i) {
      const double angle = kPi / 8.0 * (i % 16);
      const double r = i % 2 == 1 ? radius * outer : radius;
      const Vec3 circle{r * cosine(angle), r * sine(angle), 0};
      const double reach = std::max(std::fabs(cosine(angle)), std::fabs(sine(angle)));
      const Vec3 square{halfWidth * cosine(angle) / reach, halfWidth * sine(angle) / reach, 0};
      patch.points.push_back({centre + mix(circle, square, row / 2.0), 0, 0});
    }
  }
  face(patch, {0, 0, down ? -1.0 : 1.0});
  return patch;
}

Mesh gem(Vec3 centre, double radius, double height, int material) {
  Mesh mesh;
  mesh.material = material;
  mesh.points.push_back({centre + Vec3{0, 0, -height / 2}, 0.5, 1.0});
  mesh.points.push_back({centre + Vec3{0, 0, height / 2}, 0.5, 0.0});
  for (int i = 0; i < 8; ++i)
    mesh.points.push_back(
        {centre + Vec3{radius * cosine(kPi / 4 * i), radius * sine(kPi / 4 * i), -height * 0.1}, i / 8.0, 0.6});
  for (int i = 0; i < 8; ++i) {
    const int a = 2 + i;
    const int b = 2 + (i + 1) % 8;
    mesh.indices.insert(mesh.indices.end(), {1, b, a, 0, a, b});
  }
  return mesh;
}

void measurePatch(Patch& patch, const Material& material) {
  // Average length of the control polygon up to each column and row.
  std::vector<double> across(static_cast<std::size_t>(patch.width));
  std::vector<double> along(static_cast<std::size_t>(patch.height));
  for (int c = 1; c < patch.width; ++c) {
    double longest = 0.0;
    for (int r = 0; r < patch.height; ++r)
      longest = std::max(longest, length(patch.at(c, r).position - patch.at(c - 1, r).position));
    across[static_cast<std::size_t>(c)] = across[static_cast<std::size_t>(c - 1)] + longest;
  }
  for (int r = 1; r < patch.height; ++r) {
    double sum = 0.0;
    for (int c = 0; c < patch.width; ++c) sum += length(patch.at(c, r).position - patch.at(c, r - 1).position);
    along[static_cast<std::size_t>(r)] = along[static_cast<std::size_t>(r - 1)] + sum / patch.width;
  }
  // Whole repeats across, so that closed shapes have no seam.
  const double repeatsAcross =
      material.mapping == Mapping::Fit ? 1.0 : std::max(1.0, std::floor(across.back() / material.width + 0.5));
  double repeatsAlong = material.mapping == Mapping::World ? along.back() / material.height : 1.0;
  if (repeatsAlong > 2.0) repeatsAlong = std::floor(repeatsAlong + 0.5);  // no cut figures at the ends
  const bool rowsRise = patch.at(0, patch.height - 1).position.z > patch.at(0, 0).position.z + 0.01;
  for (int r = 0; r < patch.height; ++r)
    for (int c = 0; c < patch.width; ++c) {
      ControlPoint& p = patch.at(c, r);
      p.u = across.back() > 0 ? across[static_cast<std::size_t>(c)] / across.back() * repeatsAcross : 0.0;
      p.v = along.back() > 0 ? along[static_cast<std::size_t>(r)] / along.back() * repeatsAlong : 0.0;
      if (rowsRise) p.v = repeatsAlong - p.v;
    }
}

}  // namespace ql::maker
