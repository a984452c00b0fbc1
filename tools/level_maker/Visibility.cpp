#include "Visibility.h"

#include "Parallel.h"

#include <numeric>

namespace ql::maker {
namespace {

constexpr double kSightEpsilon = 0.1;  // larger than the splitting tolerance: rounding must only ever show more

using Bits = std::vector<std::uint64_t>;

bool testBit(const Bits& bits, std::size_t i) { return (bits[i / 64] >> (i % 64) & 1U) != 0; }
void setBit(Bits& bits, std::size_t i) { bits[i / 64] |= std::uint64_t{1} << (i % 64); }

/// One direction through a portal.
struct Passage {
  Winding winding;
  Plane plane;  ///< faces into the leaf that the passage leads to
  std::size_t from = 0;
  std::size_t to = 0;
  Bits flood;  ///< passages that a connected search in front of this one reaches
  std::size_t floodCount = 0;
};

/// The part of `winding` in front of a plane; what lies within the tolerance of the plane counts as in front.
Winding keepFront(const Winding& winding, const Plane& plane) {
  bool front = false;
  for (const Vec3& p : winding) front |= plane.side(p) > kSightEpsilon;
  if (!front) return {};
  Plane relaxed = plane;
  relaxed.distance -= kSightEpsilon;
  return clipFront(winding, relaxed, 1e-4);
}

/// Narrows `target` to what can be seen through `source` and `pass`: clips it by every plane through an edge of
/// `source` and a corner of `pass` that has `source` behind it and `pass` in front.
Winding clipToSeparators(const Winding& source, const Winding& pass, Winding target, bool flip) {
  for (std::size_t i = 0; i < source.size(); ++i) {
    const Vec3 a = source[i];
    const Vec3 edge = source[(i + 1) % source.size()] - a;
    for (const Vec3& corner : pass) {
      Plane plane;
      plane.normal = cross(edge, corner - a);
      const double size = length(plane.normal);
      if (size < 0.01) continue;
      plane.normal = plane.normal * (1.0 / size);
      plane.distance = dot(plane.normal, corner);
      double lowest = 0.0;
      double highest = 0.0;
      for (const Vec3& p : source) {
        lowest = std::min(lowest, plane.side(p));
        highest = std::max(highest, plane.side(p));
      }
      if (lowest < -kSightEpsilon && highest > kSightEpsilon) continue;    // source lies on both sides
      if (lowest >= -kSightEpsilon && highest <= kSightEpsilon) continue;  // source lies in the plane
      if (highest > kSightEpsilon) plane = plane.flipped();
      bool separates = true;
      bool anyFront = false;
      for (const Vec3& p : pass) {
        separates &= plane.side(p) >= -kSightEpsilon;
        anyFront |= plane.side(p) > kSightEpsilon;
      }
      if (!separates || !anyFront) continue;
      target = keepFront(target, flip ? plane.flipped() : plane);
      if (target.empty()) return target;
    }
  }
  return target;
}

class Search {
 public:
  Search(std::span<const Passage> passages, std::span<const std::vector<std::size_t>> exits, std::uint64_t limit)
      : passages_(passages), exits_(exits), limit_(limit) {}

  /// Passages seen through passage `index`.
  Bits run(std::size_t index) {
    start_ = index;
    steps_ = 0;
    const Passage& p = passages_[index];
    seen_.assign(p.flood.size(), 0);
    if (follow(p.to, p.winding, {}, p.plane, p.flood)) return seen_;
    return p.flood;
  }

 private:
  /// Goes on through every exit of `leaf`. False when the step limit is reached.
  bool follow(std::size_t leaf, const Winding& source, const Winding& pass, const Plane& passPlane, const Bits& might) {
    const Plane& startPlane = passages_[start_].plane;
    for (const std::size_t exit : exits_[leaf]) {
      if (!testBit(might, exit)) continue;
      if (++steps_ > limit_) return false;
      const Passage& p = passages_[exit];
      Bits further(might.size());
      bool news = !testBit(seen_, exit);
      for (std::size_t i = 0; i < might.size(); ++i) {
        further[i] = might[i] & p.flood[i];
        news |= (further[i] & ~seen_[i]) != 0;
      }
      if (!news) continue;
      if (dot(p.plane.normal, passPlane.normal) < -0.9999 && std::fabs(p.plane.distance + passPlane.distance) < 0.01)
        continue;  // straight back
      Winding target = keepFront(p.winding, startPlane);
      if (target.empty()) continue;
      Winding narrowed = keepFront(source, p.plane.flipped());
      if (narrowed.empty()) continue;
      if (!pass.empty()) {
        target = keepFront(target, passPlane);
        if (target.empty()) continue;
        target = clipToSeparators(narrowed, pass, std::move(target), false);
        if (target.empty()) continue;
        target = clipToSeparators(pass, narrowed, std::move(target), true);
        if (target.empty()) continue;
      }
      setBit(seen_, exit);
      if (!follow(p.to, narrowed, target, p.plane, further)) return false;
    }
    return true;
  }

  std::span<const Passage> passages_;
  std::span<const std::vector<std::size_t>> exits_;
  std::uint64_t limit_;
  std::uint64_t steps_ = 0;
  std::size_t start_ = 0;
  Bits seen_;
};

/// True when light could go straight through `a` and then `b`.
bool mightFollow(const Passage& a, const Passage& b) {
  const auto anyBeyond = [](const Winding& w, const Plane& p) {
    return std::any_of(w.begin(), w.end(), [&](Vec3 v) { return p.side(v) > kSightEpsilon; });
  };
  return anyBeyond(b.winding, a.plane) && anyBeyond(a.winding, b.plane.flipped());
}

void floodFrom(std::size_t index, std::vector<Passage>& passages, std::span<const std::vector<std::size_t>> exits) {
  Passage& start = passages[index];
  std::vector<std::size_t> open{start.to};
  std::vector<bool> entered(exits.size());
  entered[start.to] = true;
  while (!open.empty()) {
    const std::size_t leaf = open.back();
    open.pop_back();
    for (const std::size_t exit : exits[leaf]) {
      if (!mightFollow(start, passages[exit])) continue;
      if (!testBit(start.flood, exit)) ++start.floodCount;
      setBit(start.flood, exit);
      if (entered[passages[exit].to]) continue;
      entered[passages[exit].to] = true;
      open.push_back(passages[exit].to);
    }
  }
}

}  // namespace

std::vector<int> numberClusters(const Tree& tree) {
  std::vector<int> clusters;
  int next = 0;
  for (const TreeLeaf& leaf : tree.leaves) clusters.push_back(leaf.solid ? -1 : next++);
  return clusters;
}

Visibility computeVisibility(const Tree& tree, std::span<const Portal> portals, std::span<const int> clusterOfLeaf,
                             unsigned threads, std::uint64_t stepLimit) {
  std::vector<Passage> passages;
  std::vector<std::vector<std::size_t>> exits(tree.leaves.size());
  for (const Portal& portal : portals) {
    const auto front = static_cast<std::size_t>(portal.front);
    const auto back = static_cast<std::size_t>(portal.back);
    if (tree.leaves[front].solid || tree.leaves[back].solid) continue;
    exits[back].push_back(passages.size());
    passages.push_back({portal.winding, portal.plane, back, front, {}, 0});
    Winding turned(portal.winding.rbegin(), portal.winding.rend());
    exits[front].push_back(passages.size());
    passages.push_back({std::move(turned), portal.plane.flipped(), front, back, {}, 0});
  }
  for (Passage& p : passages) p.flood.assign(passages.size() / 64 + 1, 0);
  parallelFor(passages.size(), threads, [&](std::size_t i) { floodFrom(i, passages, exits); });
  std::vector<Bits> seen(passages.size());
  parallelFor(passages.size(), threads, [&](std::size_t i) { seen[i] = Search(passages, exits, stepLimit).run(i); });

  Visibility result;
  for (const int c : clusterOfLeaf) result.clusters = std::max(result.clusters, c + 1);
  result.bytesPerCluster = (result.clusters + 7) / 8;
  result.rows.assign(static_cast<std::size_t>(result.clusters * result.bytesPerCluster), 0);
  const auto mark = [&](std::size_t from, std::size_t to) {
    const int a = clusterOfLeaf[from];
    const int b = clusterOfLeaf[to];
    result.rows[static_cast<std::size_t>(a * result.bytesPerCluster + b / 8)] |=
        static_cast<std::uint8_t>(1U << (b % 8));
    result.rows[static_cast<std::size_t>(b * result.bytesPerCluster + a / 8)] |=
        static_cast<std::uint8_t>(1U << (a % 8));
  };
  for (std::size_t leaf = 0; leaf < exits.size(); ++leaf) {
    if (clusterOfLeaf[leaf] < 0) continue;
    mark(leaf, leaf);
    for (const std::size_t exit : exits[leaf]) {
      mark(leaf, passages[exit].to);
      for (std::size_t other = 0; other < passages.size(); ++other)
        if (testBit(seen[exit], other)) mark(leaf, passages[other].to);
    }
  }
  return result;
}

}  // namespace ql::maker
