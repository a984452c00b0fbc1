#include "Tree.h"

#include <deque>

namespace ql::maker {

int Tree::leafAt(Vec3 p) const {
  if (nodes.empty()) return 0;
  int at = 0;
  while (at >= 0) {
    const TreeNode& node = nodes[static_cast<std::size_t>(at)];
    at = node.children[node.plane.side(p) >= 0.0 ? 0 : 1];
  }
  return ~at;
}

namespace {

std::array<Plane, 6> planesOf(const Bounds& box) {  // facing inwards
  return {Plane{{1, 0, 0}, box.mins.x},   Plane{{-1, 0, 0}, -box.maxs.x}, Plane{{0, 1, 0}, box.mins.y},
          Plane{{0, -1, 0}, -box.maxs.y}, Plane{{0, 0, 1}, box.mins.z},   Plane{{0, 0, -1}, -box.maxs.z}};
}

bool isAxial(const Plane& p) {
  return std::fabs(p.normal.x) == 1.0 || std::fabs(p.normal.y) == 1.0 || std::fabs(p.normal.z) == 1.0;
}

class Builder {
 public:
  explicit Builder(const Bounds& world) {
    tree_.world = world;
    for (const Plane& p : planesOf(world)) path_.push_back(p);
  }

  Tree build(std::vector<Cutter> cutters) {
    add(std::move(cutters));
    return std::move(tree_);
  }

 private:
  /// Splits as few faces as possible, and prefers planes that many faces lie on and that halve the rest.
  static Plane choose(const std::vector<Cutter>& cutters) {
    std::vector<Plane> tried;
    Plane best;
    double bestValue = -1e30;
    for (const Cutter& candidate : cutters) {
      const bool known = std::any_of(tried.begin(), tried.end(), [&](const Plane& p) {
        return samePlane(p, candidate.plane) || samePlane(p.flipped(), candidate.plane);
      });
      if (known) continue;
      tried.push_back(candidate.plane);
      double on = 0;
      double splits = 0;
      double front = 0;
      double back = 0;
      for (const Cutter& c : cutters) {
        double highest = -1e30;
        double lowest = 1e30;
        for (const Vec3& p : c.winding) {
          const double d = candidate.plane.side(p);
          highest = std::max(highest, d);
          lowest = std::min(lowest, d);
        }
        if (highest <= kOnPlane && lowest >= -kOnPlane)
          ++on;
        else if (lowest >= -kOnPlane)
          ++front;
        else if (highest <= kOnPlane)
          ++back;
        else
          ++splits;
      }
      const double value =
          5.0 * on - 8.0 * splits - 0.5 * std::fabs(front - back) + (isAxial(candidate.plane) ? 5.0 : 0.0);
      if (value > bestValue) {
        bestValue = value;
        best = candidate.plane;
      }
    }
    const Vec3 n = best.normal;  // planes along an axis point up it
    return isAxial(best) && n.x + n.y + n.z < 0.0 ? best.flipped() : best;
  }

  /// Adds the subtree for the volume in front of all planes of `path_`; returns a child reference.
  int add(std::vector<Cutter> cutters) {
    if (cutters.empty()) {
      TreeLeaf leaf;
      leaf.bounds = measure(leaf.middle);
      tree_.leaves.push_back(leaf);
      return ~static_cast<int>(tree_.leaves.size() - 1);
    }
    const std::size_t index = tree_.nodes.size();
    tree_.nodes.emplace_back();
    const Plane plane = choose(cutters);
    std::vector<Cutter> front;
    std::vector<Cutter> back;
    for (Cutter& c : cutters) {
      Split parts = split(c.winding, plane);
      if (!parts.front.empty()) front.push_back({c.plane, std::move(parts.front)});
      if (!parts.back.empty()) back.push_back({c.plane, std::move(parts.back)});
    }
    cutters.clear();
    Vec3 middle;
    const Bounds bounds = measure(middle);
    path_.push_back(plane);
    const int inFront = add(std::move(front));
    path_.back() = plane.flipped();
    const int behind = add(std::move(back));
    path_.pop_back();
    tree_.nodes[index] = {plane, {inFront, behind}, bounds};
    return static_cast<int>(index);
  }

  Bounds measure(Vec3& middle) const {
    Bounds box;
    Vec3 sum;
    double count = 0.0;
    for (std::size_t i = 0; i < path_.size(); ++i) {
      Winding w = windingOfPlane(path_[i]);
      for (std::size_t j = 0; j < path_.size() && !w.empty(); ++j)
        if (j != i) w = clipFront(w, path_[j], 0.001);
      for (const Vec3& p : w) {
        box.add(p);
        sum += p;
        count += 1.0;
      }
    }
    middle = sum * (1.0 / std::max(1.0, count));
    return box;
  }

  Tree tree_;
  std::vector<Plane> path_;
};

}  // namespace

Tree buildTree(std::vector<Cutter> cutters, const Bounds& world) { return Builder(world).build(std::move(cutters)); }

namespace {

/// Cuts a winding that lies on no plane below `child` (or on one: then both sides are meant) into leaf pieces.
void sink(const Tree& tree, int child, const Winding& winding, const Plane* facing, std::vector<LeafPiece>& out) {
  if (winding.size() < 3) return;
  if (child < 0) {
    out.push_back({winding, ~child});
    return;
  }
  const TreeNode& node = tree.nodes[static_cast<std::size_t>(child)];
  Split parts = split(winding, node.plane);
  if (parts.onPlane) {
    const bool front = facing == nullptr || dot(facing->normal, node.plane.normal) > 0.0;
    sink(tree, node.children[front ? 0 : 1], winding, facing, out);
    return;
  }
  sink(tree, node.children[0], parts.front, facing, out);
  sink(tree, node.children[1], parts.back, facing, out);
}

void portalsBelow(const Tree& tree, int child, std::vector<Plane>& path, std::vector<Portal>& out) {
  if (child < 0) return;
  const TreeNode& node = tree.nodes[static_cast<std::size_t>(child)];
  Winding w = windingOfPlane(node.plane);
  for (const Plane& p : path)
    if (!w.empty()) w = clipFront(w, p);
  if (!w.empty()) {
    std::vector<LeafPiece> frontPieces;
    sink(tree, node.children[0], w, &node.plane, frontPieces);
    const Plane behind = node.plane.flipped();
    for (LeafPiece& piece : frontPieces) {
      std::vector<LeafPiece> both;
      sink(tree, node.children[1], piece.winding, &behind, both);
      for (LeafPiece& b : both)
        if (areaOf(b.winding) > 0.5) out.push_back({std::move(b.winding), node.plane, piece.leaf, b.leaf});
    }
  }
  path.push_back(node.plane);
  portalsBelow(tree, node.children[0], path, out);
  path.back() = node.plane.flipped();
  portalsBelow(tree, node.children[1], path, out);
  path.pop_back();
}

}  // namespace

std::vector<Portal> findPortals(const Tree& tree) {
  std::vector<Portal> portals;
  if (tree.nodes.empty()) return portals;
  std::vector<Plane> path;
  for (const Plane& p : planesOf(tree.world)) path.push_back(p);
  portalsBelow(tree, 0, path, portals);
  return portals;
}

std::vector<LeafPiece> distribute(const Tree& tree, const Winding& winding, const Plane& plane) {
  std::vector<LeafPiece> pieces;
  sink(tree, tree.nodes.empty() ? ~0 : 0, winding, &plane, pieces);
  return pieces;
}

std::vector<int> sealLeaves(Tree& tree, std::span<const Portal> portals, std::span<const Vec3> starts) {
  constexpr int kUnreached = -2;
  constexpr int kStart = -1;
  std::vector<std::vector<int>> next(tree.leaves.size());
  for (const Portal& p : portals) {
    next[static_cast<std::size_t>(p.front)].push_back(p.back);
    next[static_cast<std::size_t>(p.back)].push_back(p.front);
  }
  std::vector<int> from(tree.leaves.size(), kUnreached);
  std::deque<int> queue;
  for (const Vec3& start : starts) {
    const int leaf = tree.leafAt(start);
    if (tree.leaves[static_cast<std::size_t>(leaf)].solid || from[static_cast<std::size_t>(leaf)] != kUnreached)
      continue;
    from[static_cast<std::size_t>(leaf)] = kStart;
    queue.push_back(leaf);
  }
  while (!queue.empty()) {
    const int leaf = queue.front();
    queue.pop_front();
    const Bounds& box = tree.leaves[static_cast<std::size_t>(leaf)].bounds;
    for (int a = 0; a < 3; ++a) {
      if (box.mins[a] > tree.world.mins[a] + 0.5 && box.maxs[a] < tree.world.maxs[a] - 0.5) continue;
      std::vector<int> leak;
      for (int at = leaf; at >= 0; at = from[static_cast<std::size_t>(at)]) leak.insert(leak.begin(), at);
      return leak;
    }
    for (const int other : next[static_cast<std::size_t>(leaf)]) {
      if (tree.leaves[static_cast<std::size_t>(other)].solid || from[static_cast<std::size_t>(other)] != kUnreached)
        continue;
      from[static_cast<std::size_t>(other)] = leaf;
      queue.push_back(other);
    }
  }
  for (std::size_t i = 0; i < from.size(); ++i) tree.leaves[i].solid |= from[i] == kUnreached;
  return {};
}

}  // namespace ql::maker
