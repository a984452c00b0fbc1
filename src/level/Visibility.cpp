#include "level/Visibility.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <utility>

namespace ql::level {
namespace {

constexpr std::uint32_t kRebuildAfter = 2000;  // milliseconds
constexpr float kTurnLimit = 0.7f;             // cosine of the turn that forces a rebuild
constexpr float kFrustumMargin = 30;           // world units that a sphere may lie outside and still counts as visible

bool sphereVisible(const LeafSphere& sphere, const View& view) {
  const math::Vec3 center = math::transformPoint(sphere.center, view.world);
  return std::none_of(view.frustum.begin(), view.frustum.end(), [&](const math::Plane& plane) {
    return math::distance(plane, center) < -sphere.radius - kFrustumMargin;
  });
}

/// Faces of the box included. @param at file coordinates
bool boxHolds(const Leaf& leaf, const std::array<float, 3>& at) {
  for (std::size_t axis = 0; axis < 3; ++axis)
    if (!(static_cast<float>(leaf.mins[axis]) <= at[axis] && at[axis] <= static_cast<float>(leaf.maxs[axis])))
      return false;
  return true;
}

/// The frustum's planes in the file's space.
std::array<math::Plane, 6> frustumInFile(const View& view) {
  const math::Mat4& m = view.world;
  std::array<math::Plane, 6> out;
  std::ranges::transform(view.frustum, out.begin(), [&](const math::Plane& p) {
    return math::Plane{-(p.a * m.m11 + p.b * m.m12 + p.c * m.m13), p.a * m.m21 + p.b * m.m22 + p.c * m.m23,
                       p.a * m.m31 + p.b * m.m32 + p.c * m.m33, p.a * m.m41 + p.b * m.m42 + p.c * m.m43 + p.d};
  });
  return out;
}

/// Whether a leaf's box has a corner on the inner side of each plane.
bool boxVisible(const Leaf& leaf, const std::array<math::Plane, 6>& planes) {
  return std::ranges::all_of(planes, [&](const math::Plane& plane) {
    const auto most = [&](float slope, std::size_t axis) {
      return slope * static_cast<float>(slope < 0 ? leaf.mins[axis] : leaf.maxs[axis]);
    };
    return most(plane.a, 0) + most(plane.b, 1) + most(plane.c, 2) + plane.d >= 0;
  });
}

/// Rearranges low..high around its middle key and returns the two parts that are left to sort: low..j and i..high.
std::pair<std::ptrdiff_t, std::ptrdiff_t> partition(std::vector<VisibleFace>& faces, std::ptrdiff_t low,
                                                    std::ptrdiff_t high) {
  const auto at = [&](std::ptrdiff_t i) -> VisibleFace& { return faces[static_cast<std::size_t>(i)]; };
  const std::int32_t pivot = at((low + high) / 2).key;
  std::ptrdiff_t i = low, j = high;
  while (i <= j) {
    while (at(i).key < pivot) ++i;
    while (at(j).key > pivot) --j;
    if (i <= j) std::swap(at(i++), at(j--));
  }
  return {j, i};
}

}  // namespace

math::Vec3 toLevelSpace(const math::Vec3& point, const math::Mat4& m) {
  const math::Vec3 p = math::subtract(point, {m.m41, m.m42, m.m43});
  return {p.x * m.m11 + p.y * m.m12 + p.z * m.m13, p.x * m.m21 + p.y * m.m22 + p.z * m.m23,
          p.x * m.m31 + p.y * m.m32 + p.z * m.m33};
}

std::int32_t findLeaf(const LevelData& level, const math::Mat4& levelMatrix, const math::Vec3& point) {
  const math::Vec3 local = toLevelSpace(point, levelMatrix);
  const math::Vec3 p{-local.x, local.y, local.z};
  if (level.nodes.empty()) return -1;
  std::int32_t child = 0;
  while (child >= 0) {
    const Q3Node& node = level.nodes[static_cast<std::size_t>(child)];
    const Q3Plane& plane = level.planes[static_cast<std::size_t>(node.plane)];
    const float distance = math::dot({plane.normal[0], plane.normal[1], plane.normal[2]}, p) - plane.distance;
    child = node.children[distance >= 0 ? 0 : 1];
  }
  if (child == kNoChild) return -1;
  return boxHolds(level.leaves[static_cast<std::size_t>(~child)], {p.x, p.y, p.z}) ? ~child : -1;
}

std::vector<std::uint8_t> unpackVisibility(const LevelData& level, std::int32_t leaf) {
  const std::int32_t offset = level.visibilityOffsets[static_cast<std::size_t>(leaf)];
  if (offset < 0) return {};
  const std::vector<std::byte>& packed = level.packedVisibility;
  std::vector<std::uint8_t> visible(level.leaves.size() - 1, 0);
  std::size_t at = static_cast<std::size_t>(offset);
  for (std::size_t next = 0; next < visible.size() && at < packed.size();) {
    const auto bits = std::to_integer<unsigned>(packed[at++]);
    if (bits == 0) {
      if (at < packed.size()) next += 8 * std::to_integer<std::size_t>(packed[at++]);
      continue;
    }
    for (std::size_t bit = 0; bit < 8 && next + bit < visible.size(); ++bit)
      visible[next + bit] = static_cast<std::uint8_t>(bits >> bit & 1);
    next += 8;
  }
  return visible;
}

std::int32_t findCluster(const LevelData& level, const math::Mat4& levelMatrix, const math::Vec3& point) {
  const math::Vec3 p = toLevelSpace(point, levelMatrix);
  const std::array<float, 3> at{-p.x, p.y, p.z};
  for (std::size_t i = 1; i < level.leaves.size(); ++i) {
    if (boxHolds(level.leaves[i], at)) return level.leaves[i].cluster;
  }
  return 0;
}

void sortByKey(std::vector<VisibleFace>& faces) {
  // The two parts of a partition do not touch each other, so that the order of sorting them does not show: the larger
  // one waits on the stack, which therefore stays logarithmic.
  struct Part {
    std::ptrdiff_t low, high;
  };
  std::vector<Part> waiting{{0, static_cast<std::ptrdiff_t>(faces.size()) - 1}};
  // A level made to defeat the middle pivot would take quadratic time. Far beyond what any other level needs, the rest
  // is sorted in another way.
  std::uint64_t work = 64 * faces.size() * (static_cast<std::uint64_t>(std::bit_width(faces.size())) + 1);
  while (!waiting.empty()) {
    auto [low, high] = waiting.back();
    waiting.pop_back();
    while (low < high) {
      const auto length = static_cast<std::uint64_t>(high - low + 1);
      if (length > work) {
        std::stable_sort(faces.begin() + low, faces.begin() + high + 1,
                         [](const VisibleFace& a, const VisibleFace& b) { return a.key < b.key; });
        break;
      }
      work -= length;
      const auto [j, i] = partition(faces, low, high);
      if (j - low < high - i) {
        waiting.push_back({i, high});
        high = j;
      } else {
        waiting.push_back({low, j});
        low = i;
      }
    }
  }
}

std::uint32_t VisibleFaces::nextVersion() {
  static std::atomic<std::uint32_t> last{0};
  return ++last;
}

void VisibleFaces::reset() { *this = VisibleFaces(); }

void VisibleFaces::update(const LevelData& level, const View& view) {
  const math::Vec3 direction = math::normalize(math::subtract(view.lookAt, view.position));
  const bool clusterChanged = view.position != lastPosition_ && enterCluster(level, view);
  if (!view.usePvs) {
    if (!holdsAll_) listAll(level);
    return;
  }
  const bool turned = std::abs(math::dot(direction, lastDirection_)) < kTurnLimit;
  if (!clusterChanged && !turned && view.ticks - lastRebuild_ <= kRebuildAfter) return;
  lastDirection_ = direction;
  rebuild(level, view);
  lastRebuild_ = view.ticks;
}

/// Notes the camera's place; true when it is in another cluster than before, whose row is then decoded.
bool VisibleFaces::enterCluster(const LevelData& level, const View& view) {
  lastPosition_ = view.position;
  const std::int32_t found = level.isHalfLife ? findLeaf(level, view.levelMatrix, view.position)
                                              : findCluster(level, view.levelMatrix, view.position);
  if (found == -1 || found == cluster_) return false;
  cluster_ = found;
  if (level.isHalfLife) {
    clusterVisible_ = unpackVisibility(level, found);
    return true;
  }
  const Q3Visibility& visibility = level.visibility;
  if (found < 0 || found >= visibility.clusterCount) return true;
  const std::size_t row = static_cast<std::size_t>(found) * static_cast<std::size_t>(visibility.bytesPerCluster);
  clusterVisible_.resize(static_cast<std::size_t>(visibility.clusterCount));
  for (std::size_t c = 0; c < clusterVisible_.size(); ++c)
    clusterVisible_[c] =
        std::to_integer<std::uint8_t>(visibility.rows[row + c / 8]) & static_cast<std::uint8_t>(1U << c % 8);
  return true;
}

bool VisibleFaces::clusterVisible(std::int32_t cluster) const {
  return cluster >= 0 && (clusterVisible_.empty() || clusterVisible_[static_cast<std::size_t>(cluster)] != 0);
}

void VisibleFaces::listAll(const LevelData& level) {
  list_.clear();
  // Brush models of Half-Life levels are drawn by themselves.
  std::vector<bool> apart(level.faces.size(), false);
  for (const BrushModel& model : level.brushModels)
    std::fill_n(apart.begin() + static_cast<std::ptrdiff_t>(model.firstFace), model.faceCount, true);
  for (std::size_t i = 0; i < level.faces.size(); ++i)
    if (!apart[i]) list_.push_back({static_cast<std::int32_t>(i), level.faces[i].key});
  sortByKey(list_);
  marks_.clear();
  version_ = nextVersion();
  holdsAll_ = true;
}

void VisibleFaces::rebuild(const LevelData& level, const View& view) {
  marks_.assign(level.faces.size(), 0);
  version_ = nextVersion();
  list_.clear();
  holdsAll_ = false;
  const std::array<math::Plane, 6> frustum = frustumInFile(view);
  for (std::size_t i = 1; i < level.leaves.size(); ++i) {
    const Leaf& leaf = level.leaves[i];
    if (leaf.leafFaceCount == 0 || !clusterVisible(leaf.cluster)) continue;
    if (!(level.isHalfLife ? boxVisible(leaf, frustum) : sphereVisible(level.leafSpheres[i], view))) continue;
    const auto first = static_cast<std::size_t>(leaf.firstLeafFace);
    for (std::size_t k = first; k < first + static_cast<std::size_t>(leaf.leafFaceCount); ++k) {
      const std::int32_t face = level.leafFaces[k];
      if (std::exchange(marks_[static_cast<std::size_t>(face)], std::uint8_t{1}) == 0)
        list_.push_back({face, level.faces[static_cast<std::size_t>(face)].key});
    }
  }
  sortByKey(list_);
}

}  // namespace ql::level
