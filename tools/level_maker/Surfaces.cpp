#include "Surfaces.h"

#include <cstdint>
#include <map>

namespace ql::maker {
namespace {

/// The pieces of a face that lie outside a brush. `loses`: the face gives way where the brush has a face on the same
/// plane that looks the same way.
std::vector<Winding> outsideOf(const Winding& winding, const Plane& plane, const Brush& brush, bool loses) {
  std::vector<Winding> outside;
  Winding rest = winding;
  for (const BrushSide& side : brush.sides) {
    if (samePlane(side.plane, plane)) {
      if (!loses) return {winding};
      continue;
    }
    if (samePlane(side.plane.flipped(), plane)) continue;
    Split parts = split(rest, side.plane);
    if (parts.onPlane) return {winding};
    if (areaOf(parts.front) > 0.05) outside.push_back(std::move(parts.front));
    rest = std::move(parts.back);
    if (areaOf(rest) < 0.05) return {winding};
  }
  return outside;
}

bool sharesFace(const Brush& brush, const Plane& plane) {
  return std::any_of(brush.sides.begin(), brush.sides.end(),
                     [&](const BrushSide& s) { return samePlane(s.plane, plane); });
}

template <class Cuts>  // Cuts(cutter): 0 leaves faces alone, 1 removes only pieces it covers whole, 2 cuts
std::vector<Surface> cutSurfaces(const Level& level, bool structureOnly, Cuts cuts) {
  std::vector<Surface> surfaces;
  for (std::size_t b = 0; b < level.brushes.size(); ++b) {
    const Brush& brush = level.brushes[b];
    if (structureOnly && brush.detail) continue;
    for (const BrushSide& side : brush.sides) {
      Surface surface{static_cast<int>(b), side.plane, side.material, side.winding, {side.winding}};
      std::vector<Winding> open{side.winding};  // what no brush covers, also of pieces that are left whole
      const Bounds box = boundsOf(side.winding);
      for (std::size_t o = 0; o < level.brushes.size() && !surface.pieces.empty(); ++o) {
        const Brush& other = level.brushes[o];
        if (o == b || !other.bounds.touches(box, 0.01) || (other.liquid && !brush.liquid)) continue;
        if (other.detail && !brush.detail && other.liquid) continue;
        int how = cuts(other);
        if (how == 1 && sharesFace(other, side.plane)) how = 2;
        if (how == 0) continue;
        // Of two faces on one plane the structure's gives way to detail's, otherwise the earlier one to the later.
        const bool loses = brush.detail == other.detail ? o > b : other.detail;
        const auto cut = [&](std::vector<Winding>& pieces, bool wholeOnly) {
          std::vector<Winding> kept;
          for (const Winding& piece : pieces) {
            std::vector<Winding> outside = outsideOf(piece, side.plane, other, loses);
            if (wholeOnly && !outside.empty()) outside = {piece};
            kept.insert(kept.end(), std::make_move_iterator(outside.begin()), std::make_move_iterator(outside.end()));
          }
          pieces = std::move(kept);
        };
        cut(surface.pieces, how == 1);
        cut(open, false);
      }
      mergeAll(surface.pieces, side.plane.normal);
      if (!surface.pieces.empty() && !open.empty()) surfaces.push_back(std::move(surface));
    }
  }
  return surfaces;
}

}  // namespace

std::vector<Surface> structureSurfaces(const Level& level) {
  return cutSurfaces(level, true, [](const Brush& other) { return other.detail ? 0 : 2; });
}

std::vector<Surface> visibleSurfaces(const Level& level) {
  return cutSurfaces(level, false, [](const Brush& other) { return other.detail ? 1 : 2; });
}

void dropOutside(std::vector<Surface>& surfaces, const Tree& tree) {
  for (Surface& surface : surfaces) {
    std::vector<Winding> kept;
    for (const Winding& piece : surface.pieces) {
      std::vector<LeafPiece> parts = distribute(tree, piece, surface.plane);
      const auto isInside = [&](const LeafPiece& p) { return !tree.leaves[static_cast<std::size_t>(p.leaf)].solid; };
      if (std::all_of(parts.begin(), parts.end(), isInside)) {
        kept.push_back(piece);
        continue;
      }
      std::vector<Winding> inside;
      for (LeafPiece& part : parts)
        if (isInside(part) && areaOf(part.winding) > 0.05) inside.push_back(std::move(part.winding));
      mergeAll(inside, surface.plane.normal);
      kept.insert(kept.end(), inside.begin(), inside.end());
    }
    surface.pieces = std::move(kept);
  }
  std::erase_if(surfaces, [](const Surface& s) { return s.pieces.empty(); });
}

void closeCracks(std::vector<Surface>& surfaces) {
  constexpr double kCell = 64.0;
  const auto cellOf = [](double v) { return static_cast<int>(std::floor(v / kCell)); };
  std::map<std::array<int, 3>, std::vector<Vec3>> cells;
  for (const Surface& surface : surfaces)
    for (const Winding& piece : surface.pieces)
      for (const Vec3& p : piece) {
        auto& cell = cells[{cellOf(p.x), cellOf(p.y), cellOf(p.z)}];
        if (std::none_of(cell.begin(), cell.end(), [&](const Vec3& q) { return length(p - q) < 0.02; }))
          cell.push_back(p);
      }
  const auto pointsInside = [&](Vec3 a, Vec3 b) {  // corners strictly between a and b, in order
    std::vector<std::pair<double, Vec3>> found;
    const double whole = length(b - a);
    const Vec3 direction = (b - a) * (1.0 / whole);
    Bounds box;
    box.add(a);
    box.add(b);
    for (int x = cellOf(box.mins.x - 0.1); x <= cellOf(box.maxs.x + 0.1); ++x)
      for (int y = cellOf(box.mins.y - 0.1); y <= cellOf(box.maxs.y + 0.1); ++y)
        for (int z = cellOf(box.mins.z - 0.1); z <= cellOf(box.maxs.z + 0.1); ++z) {
          const auto cell = cells.find({x, y, z});
          if (cell == cells.end()) continue;
          for (const Vec3& p : cell->second) {
            const double along = dot(p - a, direction);
            if (along < 0.05 || along > whole - 0.05 || length(p - (a + direction * along)) > 0.02) continue;
            found.emplace_back(along, p);
          }
        }
    std::sort(found.begin(), found.end(), [](const auto& l, const auto& r) { return l.first < r.first; });
    return found;
  };
  for (Surface& surface : surfaces)
    for (Winding& piece : surface.pieces) {
      Winding closed;
      for (std::size_t i = 0; i < piece.size(); ++i) {
        const Vec3 a = piece[i];
        const Vec3 b = piece[(i + 1) % piece.size()];
        if (length(b - a) < 0.02) continue;
        closed.push_back(a);
        if (length(b - a) > 4000.0) continue;  // only the far sky has such edges
        for (const auto& [along, p] : pointsInside(a, b))
          if (length(p - closed.back()) > 0.02) closed.push_back(p);
      }
      piece = std::move(closed);
    }
}

int groupOf(const Level& level, const Surface& surface) {
  constexpr double kCell = 320.0;
  constexpr double kLargest = 400.0;
  constexpr int kCells = 64;  // along an axis; the middle of the level is the middle cell
  const Material& material = level.materials[static_cast<std::size_t>(surface.material)];
  const Brush& brush = level.brushes[static_cast<std::size_t>(surface.brush)];
  const Bounds box = boundsOf(surface.whole);
  if (!brush.detail || !material.lit || length(box.maxs - box.mins) > kLargest) return 0;
  const Vec3 middle = (brush.bounds.mins + brush.bounds.maxs) * 0.5;
  int group = surface.material + 1;
  for (int axis = 0; axis < 2; ++axis)
    group = group * kCells +
            std::clamp(static_cast<int>(std::floor(middle[axis] / kCell + 0.5)) + kCells / 2, 0, kCells - 1);
  return group;
}

SurfaceAxes axesOf(Vec3 normal) {
  if (std::fabs(normal.z) > 0.99) return {{normal.z > 0 ? 1.0 : -1.0, 0, 0}, {0, -1, 0}};
  const Vec3 across = normalized(cross({0, 0, 1}, normal));
  return {across, cross(across, normal)};
}

std::pair<double, double> textureAt(const Surface& surface, const Material& material, Vec3 p) {
  const SurfaceAxes axes = axesOf(surface.plane.normal);
  double u = dot(p, axes.across) / material.width;
  double v = dot(p, axes.down) / material.height;
  if (material.mapping == Mapping::World) return {u, v};
  double lowU = 1e30;
  double highU = -1e30;
  double lowV = 1e30;
  double highV = -1e30;
  for (const Vec3& corner : surface.whole) {
    lowU = std::min(lowU, dot(corner, axes.across));
    highU = std::max(highU, dot(corner, axes.across));
    lowV = std::min(lowV, dot(corner, axes.down));
    highV = std::max(highV, dot(corner, axes.down));
  }
  v = (dot(p, axes.down) - lowV) / (highV - lowV);
  if (material.mapping == Mapping::Fit) u = (dot(p, axes.across) - lowU) / (highU - lowU);
  return {u, v};
}

}  // namespace ql::maker
