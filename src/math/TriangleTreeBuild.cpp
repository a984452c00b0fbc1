#include "math/TriangleTree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <future>
#include <limits>
#include <memory>
#include <thread>

namespace ql::math {
namespace {

using Lanes [[gnu::vector_size(16)]] = float;
using Numbers [[gnu::vector_size(16)]] = std::int32_t;

/// Boxes reach this part of the largest coordinate beyond their triangles, and further around thin triangles, in whose
/// planes rounding moves a hit farther.
constexpr float kMarginPart = 1.0f / 16384, kThinnest = 1.0f / 256;
constexpr float kLargest = 1e18f;  // of a box's coordinates, so that areas are finite
/// Cuts are spatial down to this depth, then by halves, so that a hostile file's tree is never deep.
constexpr int kSpatialDepth = 40;
constexpr std::size_t kBins = 16;
/// As many triangles are handled by one thread.
constexpr std::size_t kAlone = 1 << 13;

Lanes lanes(const Vec3& v) { return Lanes{v.x, v.y, v.z, 0}; }
Lanes all(float value) { return Lanes{value, value, value, value}; }
Lanes least(Lanes a, Lanes b) { return a < b ? a : b; }
Lanes greatest(Lanes a, Lanes b) { return a > b ? a : b; }

struct Box {
  Lanes low, high;
  void add(const Box& other) { low = least(low, other.low), high = greatest(high, other.high); }
  Lanes middle() const { return low + high; }  // twice of it
  float area() const {
    const Lanes s = high - low;
    return s[0] * s[1] + s[1] * s[2] + s[2] * s[0];
  }
};

float largestOf(Lanes v) { return std::max({std::abs(v[0]), std::abs(v[1]), std::abs(v[2])}); }

constexpr float kInfinity = std::numeric_limits<float>::infinity();
const Box kEmpty{all(kInfinity), all(-kInfinity)};

/// Does both, on two threads when that is worth it and there are several.
template <class A, class B>
void both(std::size_t triangles, A&& a, B&& b) {
  if (triangles <= kAlone || std::thread::hardware_concurrency() < 2) return a(), b();
  auto other = std::async(std::ref(b));
  a();
  other.get();
}

struct Item {
  Box box;
  float thinness;       ///< how far the box reaches beyond the triangle, in margins
  std::int32_t number;  ///< negative: it is never met
};

/// A range of items that share a packet, or two parts.
struct Part {
  Box box;
  std::uint32_t first, count;
  std::uint32_t packets = 1;  ///< in all
  std::uint32_t second = 0;   ///< the place of the second part, while the first one follows; 0 when there are none
};

Item itemOf(const Triangle& triangle, std::size_t number) {
  const Lanes a = lanes(triangle[0]), b = lanes(triangle[1]), c = lanes(triangle[2]);
  Item item{{least(a, least(b, c)), greatest(a, greatest(b, c))}, 1, static_cast<std::int32_t>(number)};
  const Vec3 edge1 = subtract(triangle[1], triangle[0]), edge2 = subtract(triangle[2], triangle[0]);
  const Vec3 normal = cross(edge1, edge2);
  const float sines = dot(normal, normal) / (dot(edge1, edge1) * dot(edge2, edge2));
  item.thinness = sines > kThinnest * kThinnest ? 1 / std::sqrt(sines) : 1 / kThinnest;
  const bool finite = std::isfinite(dot(triangle[0], {0, 0, 0}) + dot(edge1, {0, 0, 0}) + dot(edge2, {0, 0, 0}));
  if (!finite || edge1 == Vec3{} || edge2 == Vec3{} || edge1 == edge2) item.number = -1;
  return item;
}

}  // namespace

/// Cuts the triangles in two again and again where the boxes' areas promise the fewest tests, then makes nodes of four
/// parts each.
struct TriangleTree::Builder {
  TriangleTree& tree;
  std::span<const Triangle> triangles;
  std::vector<Item> items{};
  std::unique_ptr<Part[]> parts{};

  void run() {
    items.resize(triangles.size());
    fill(0, items.size());
    std::erase_if(items, [](const Item& item) { return item.number < 0; });
    if (items.empty()) return;
    for (const Item& item : items)
      tree.extent_ = std::max({tree.extent_, largestOf(item.box.low), largestOf(item.box.high)});
    Box box = kEmpty, middles = kEmpty;
    for (Item& item : items) {
      const float margin = tree.extent_ * kMarginPart * item.thinness;
      item.box.low = greatest(item.box.low - margin, all(-kLargest));
      item.box.high = least(item.box.high + margin, all(kLargest));
      box.add(item.box);
      middles.add({item.box.middle(), item.box.middle()});
    }
    parts = std::make_unique_for_overwrite<Part[]>(items.size() * 2);
    divide(parts[0] = {box, 0, static_cast<std::uint32_t>(items.size())}, middles, 0);
    tree.packetCount_ = parts[0].packets;
    tree.packets_ = std::make_unique_for_overwrite<Packet[]>(tree.packetCount_);
    pack(parts[0], 0);
    tree.nodes_.reserve(tree.packetCount_ / 2 + 1);
    make(parts[0], 0);
    tree.updateLowest();
  }

  void fill(std::size_t first, std::size_t last) {
    const std::size_t half = first + (last - first) / 2;
    if (last - first > kAlone)
      return both(
          last - first, [&] { fill(first, half); }, [&] { fill(half, last); });
    for (std::size_t i = first; i < last; ++i) items[i] = itemOf(triangles[i], i);
  }

  /// Where to cut a part.
  struct Plane {
    std::size_t axis = 0, bin = 0;  ///< bin 0: nowhere
    float cost = kInfinity;
  };
  struct Bins {
    std::size_t used;  ///< few for few triangles, which have few places to cut
    Lanes low, scale;
    std::array<std::array<Box, kBins>, 3> boxes;
    std::array<std::array<std::uint32_t, kBins>, 3> counts;

    Bins(const Box& middles, std::size_t triangles) : used(std::min(triangles, kBins)), low(middles.low) {
      const Lanes size = middles.high - middles.low;
      scale = size > 0 ? all(static_cast<float>(used) * 0.9999f) / size : all(0);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        std::fill_n(boxes[axis].begin(), used, kEmpty);
        std::fill_n(counts[axis].begin(), used, 0u);
      }
    }
    Numbers of(const Item& item) const { return __builtin_convertvector((item.box.middle() - low) * scale, Numbers); }
    void add(const Item& item) {
      const Numbers at = of(item);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        const auto bin = static_cast<std::size_t>(at[axis]);
        boxes[axis][bin].add(item.box);
        ++counts[axis][bin];
      }
    }
    /// What testing a side costs: its packets, as often as rays meet its box.
    static float cost(const Box& box, std::uint32_t count) {
      const std::size_t packets = (count + kWide - 1) / kWide;
      return box.area() * static_cast<float>(packets);
    }
    Plane cheapest() const {
      Plane best;
      for (std::size_t axis = 0; axis < 3; ++axis) {
        if (!(scale[axis] > 0)) continue;
        std::array<float, kBins> above;
        Box box = kEmpty;
        std::uint32_t count = 0;
        for (std::size_t bin = used; bin-- > 1;) {
          box.add(boxes[axis][bin]);
          count += counts[axis][bin];
          above[bin] = count == 0 ? kInfinity : cost(box, count);
        }
        box = kEmpty;
        count = 0;
        for (std::size_t bin = 1; bin < used; ++bin) {
          box.add(boxes[axis][bin - 1]);
          count += counts[axis][bin - 1];
          if (count == 0) continue;
          if (const float sum = cost(box, count) + above[bin]; sum < best.cost) best = {axis, bin, sum};
        }
      }
      return best;
    }
  };

  /// The two parts of a part.
  Part& firstOf(Part& part) const { return *(&part + 1); }
  Part& secondOf(const Part& part) const { return parts[part.second]; }

  /// Cuts a part that is too large for a packet in two, and so on. @param middles the box of the middles
  void divide(Part& part, const Box& middles, int depth) {
    if (part.count <= kWide) return;
    const std::span<Item> range = std::span(items).subspan(part.first, part.count);
    std::array<Box, 2> box{kEmpty, kEmpty}, middle = box;
    const auto include = [&](std::size_t side, const Item& item) {
      box[side].add(item.box);
      middle[side].add({item.box.middle(), item.box.middle()});
    };
    std::size_t front = 0;
    Plane plane;
    if (depth < kSpatialDepth) {
      Bins bins(middles, range.size());
      for (const Item& item : range) bins.add(item);
      plane = bins.cheapest();
      const auto isSecond = [&](const Item& item) {
        return bins.of(item)[plane.axis] >= static_cast<std::int32_t>(plane.bin);
      };
      for (std::size_t back = plane.bin == 0 ? 0 : range.size(); front < back;) {
        for (; front < back && !isSecond(range[front]); ++front) include(0, range[front]);
        for (; front < back && isSecond(range[back - 1]); --back) include(1, range[back - 1]);
        if (front < back) std::swap(range[front], range[back - 1]);
      }
    }
    if (plane.bin == 0) {
      const Lanes size = middles.high - middles.low;
      const std::size_t axis = size[0] >= size[1] && size[0] >= size[2] ? 0 : size[1] >= size[2] ? 1 : 2;
      front = range.size() / 2;
      std::nth_element(range.begin(), range.begin() + static_cast<std::ptrdiff_t>(front), range.end(),
                       [axis](const Item& a, const Item& b) {
                         const float x = a.box.middle()[axis], y = b.box.middle()[axis];
                         return x != y ? x < y : a.number < b.number;
                       });
      for (std::size_t i = 0; i < range.size(); ++i) include(i >= front, range[i]);
    }
    const auto count = static_cast<std::uint32_t>(front);
    // Two parts of n triangles never need more than 2 n - 1 places.
    part.second = static_cast<std::uint32_t>(&part - parts.get()) + 2 * count;
    Part &first = firstOf(part) = {box[0], part.first, count},
         &second = secondOf(part) = {box[1], part.first + count, part.count - count};
    both(
        part.count, [&] { divide(first, middle[0], depth + 1); }, [&] { divide(second, middle[1], depth + 1); });
    part.packets = first.packets + second.packets;
  }

  /// Fills the packets of a part, from a number on.
  void pack(Part& part, std::uint32_t number) {
    if (part.second != 0)
      return both(
          part.count, [&] { pack(firstOf(part), number); },
          [&] { pack(secondOf(part), number + firstOf(part).packets); });
    Packet packet{};
    packet.number = Numbers{} + kNone;
    for (std::size_t lane = 0; lane < part.count; ++lane) {
      packet.number[lane] = items[part.first + lane].number;
      const Triangle& triangle = triangles[static_cast<std::size_t>(packet.number[lane])];
      const auto put = [lane](Lanes(&to)[3], const Vec3& v) {
        to[0][lane] = v.x, to[1][lane] = v.y, to[2][lane] = v.z;
      };
      put(packet.corner, triangle[0]);
      put(packet.edge1, subtract(triangle[1], triangle[0]));
      put(packet.edge2, subtract(triangle[2], triangle[0]));
    }
    tree.packets_[number] = packet;
  }

  /// @param packets the number of its first packet @return the number of a new node
  std::int32_t make(Part& above, std::uint32_t packets) {
    struct Child {
      Part* part;
      std::uint32_t packets;
    };
    std::array<Child, kWide> children{Child{&above, packets}};
    std::size_t count = 1;
    // The parts that rays meet most often are opened, as long as there is room.
    while (count < kWide) {
      Child* largest = nullptr;
      for (Child& child : std::span(children).first(count))
        if (child.part->second != 0 && (largest == nullptr || child.part->box.area() > largest->part->box.area()))
          largest = &child;
      if (largest == nullptr) break;
      Part &first = firstOf(*largest->part), &second = secondOf(*largest->part);
      children[count++] = {&second, largest->packets + first.packets};
      largest->part = &first;
    }
    const std::size_t number = tree.nodes_.size();
    tree.nodes_.emplace_back();
    Node node;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      node.bounds[axis] = kEmpty.low;
      node.bounds[axis + 3] = kEmpty.high;
    }
    for (std::size_t lane = 0; lane < count; ++lane) {
      const auto& [part, first] = children[lane];
      for (std::size_t axis = 0; axis < 3; ++axis) {
        node.bounds[axis][lane] = part->box.low[axis];
        node.bounds[axis + 3][lane] = part->box.high[axis];
      }
      node.children[lane] = {part->second == 0 ? ~static_cast<std::int32_t>(first) : make(*part, first), 0};
    }
    tree.nodes_[number] = node;
    return static_cast<std::int32_t>(number);
  }
};

TriangleTree::TriangleTree(std::span<const Triangle> triangles) { Builder{*this, triangles}.run(); }

}  // namespace ql::math
