#include "mesh/MeshIndex.h"

#include "mesh/RayIndex.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace ql::mesh {
namespace {

constexpr std::size_t kTestsPerRebuild = 8;  // of each mesh: what making a tree costs
constexpr float kSlack = 1e-5f;              // of what rounding may do, per unit of the coordinates
constexpr float kAngleSlack = 1e-6f;         // of the direction, per unit of its end points over their distance
constexpr float kLargestAngle = 0.01f;
constexpr float kOrthogonal = 1e-5f;
constexpr float kInfinity = std::numeric_limits<float>::infinity();

float largestOf(const math::Vec3& v) { return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)}); }
math::Vec3 absolute(const math::Vec3& v) { return {std::abs(v.x), std::abs(v.y), std::abs(v.z)}; }
math::Vec3 lower(const math::Vec3& a, const math::Vec3& b) {
  return {std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)};
}
math::Vec3 upper(const math::Vec3& a, const math::Vec3& b) {
  return {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)};
}

}  // namespace

void MeshIndex::change(std::int16_t slot) {
  const auto index = static_cast<std::size_t>(slot);
  if (index >= entries_.size()) entries_.resize(index + 1, {State::Unmet, {}});
  State& state = entries_[index].state;
  if (state != State::Changed && state != State::Boxless) loose_.push_back(slot);
  state = State::Changed;
}

MeshIndex::Entry MeshIndex::look(const MeshRecord& mesh) const {
  math::Vec3 low, high;  // in the mesh's space
  if (kind_ == Kind::Bounds) {
    if (!mesh.boundsValid) return {State::Boxless, {}};
    const math::Vec3 radius{mesh.sphereRadius, mesh.sphereRadius, mesh.sphereRadius};
    low = lower(lower(mesh.boxMin, mesh.boxMax), math::subtract(mesh.sphereCenter, radius));
    high = upper(upper(mesh.boxMin, mesh.boxMax), math::add(mesh.sphereCenter, radius));
  } else {
    const RayIndex::Box box = RayIndex::boxOf(mesh);
    if (mesh.usesSubsets || box.minimum.x > box.maximum.x) return {State::Unmet, {}};
    low = box.minimum;
    high = box.maximum;
  }

  // A place in the mesh's space is a place in the world, from the translation, times each row: with rows at right
  // angles, that is undone by row / its length squared.
  const math::Mat4& m = mesh.worldMatrix;
  const std::array<math::Vec3, 3> rows{{{m.m11, m.m12, m.m13}, {m.m21, m.m22, m.m23}, {m.m31, m.m32, m.m33}}};
  const math::Vec3 middle = math::midpoint(low, high), half = math::scale(math::subtract(high, low), 0.5f);
  const std::array<float, 3> at{middle.x, middle.y, middle.z}, reach{half.x, half.y, half.z};
  math::Vec3 center{m.m41, m.m42, m.m43}, size;
  for (std::size_t i = 0; i < 3; ++i) {
    const math::Vec3 &row = rows[i], &next = rows[(i + 1) % 3];
    const float square = math::dot(row, row), other = math::dot(next, next);
    if (!(square > 0) || !(std::abs(math::dot(row, next)) <= kOrthogonal * std::sqrt(square * other)))
      return {State::Boxless, {}};
    const math::Vec3 axis = math::scale(row, 1 / square);
    center = math::add(center, math::scale(axis, at[i]));
    size = math::add(size, absolute(math::scale(axis, reach[i])));
  }
  const float slack =
      kSlack * (largestOf(center) + 2 * largestOf(size) + std::abs(m.m41) + std::abs(m.m42) + std::abs(m.m43));
  size = math::add(size, {slack, slack, slack});
  const Box box{math::subtract(center, size), math::add(center, size)};
  if (!std::isfinite(largestOf(box.minimum)) || !std::isfinite(largestOf(box.maximum))) return {State::Boxless, {}};
  return {State::Boxed, box};
}

void MeshIndex::rebuild(engine::EngineContext& context) {
  std::vector<std::int16_t> boxed;
  loose_.clear();
  nodes_.clear();
  extent_ = 0;
  looseTests_ = 0;
  for (std::size_t slot = 1; slot < entries_.size(); ++slot) {
    Entry& entry = entries_[slot];
    if (entry.state == State::Changed) entry = look(meshRecord(context, static_cast<std::int32_t>(slot)));
    if (entry.state == State::Boxless) loose_.push_back(static_cast<std::int16_t>(slot));
    if (entry.state != State::Boxed) continue;
    boxed.push_back(static_cast<std::int16_t>(slot));
    extent_ = std::max({extent_, largestOf(entry.box.minimum), largestOf(entry.box.maximum)});
  }
  if (boxed.empty()) return;
  nodes_.reserve(boxed.size() * 2);
  nodes_.emplace_back();
  make(0, boxed);
}

/// Fills a node, halving its meshes along the longest side of their middles.
void MeshIndex::make(std::int32_t node, std::span<std::int16_t> slots) {
  const auto boxOf = [&](std::int16_t slot) -> const Box& { return entries_[static_cast<std::size_t>(slot)].box; };
  const auto middleOf = [&](std::int16_t slot) { return math::add(boxOf(slot).minimum, boxOf(slot).maximum); };
  Box box{{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}}, middles = box;
  for (const std::int16_t slot : slots) {
    box = {lower(box.minimum, boxOf(slot).minimum), upper(box.maximum, boxOf(slot).maximum)};
    middles = {lower(middles.minimum, middleOf(slot)), upper(middles.maximum, middleOf(slot))};
  }
  const auto index = static_cast<std::size_t>(node);
  nodes_[index].box = box;
  if (slots.size() == 1) {
    nodes_[index].slot = slots[0];
    return;
  }
  const math::Vec3 size = math::subtract(middles.maximum, middles.minimum);
  const auto along = size.x >= size.y && size.x >= size.z ? &math::Vec3::x
                     : size.y >= size.z                   ? &math::Vec3::y
                                                          : &math::Vec3::z;
  const std::size_t half = slots.size() / 2;
  std::nth_element(slots.begin(), slots.begin() + static_cast<std::ptrdiff_t>(half), slots.end(),
                   [&](std::int16_t a, std::int16_t b) { return middleOf(a).*along < middleOf(b).*along; });
  const auto child = static_cast<std::int32_t>(nodes_.size());
  nodes_[index].child = child;
  nodes_.resize(nodes_.size() + 2);
  make(child, slots.first(half));
  make(child + 1, slots.subspan(half));
}

void MeshIndex::search(const math::Vec3& origin, const math::Vec3& direction, float slack) {
  const auto meets = [&](const Box& box) {
    float enter = 0, leave = kInfinity;
    for (const auto axis : {&math::Vec3::x, &math::Vec3::y, &math::Vec3::z}) {
      const float low = box.minimum.*axis - slack - origin.*axis, high = box.maximum.*axis + slack - origin.*axis;
      if (direction.*axis == 0) {
        if (low > 0 || high < 0) return false;
        continue;
      }
      const float a = low / direction.*axis, b = high / direction.*axis;
      enter = std::max(enter, std::min(a, b));
      leave = std::min(leave, std::max(a, b));
    }
    return enter <= leave;
  };
  std::array<std::int32_t, 64> pending;  // halving 32767 meshes is done after 15 steps
  std::size_t count = 0;
  if (!nodes_.empty()) pending[count++] = 0;
  while (count > 0) {
    const Node& node = nodes_[static_cast<std::size_t>(pending[--count])];
    if (!meets(node.box)) continue;
    if (node.slot != 0) {
      if (entries_[static_cast<std::size_t>(node.slot)].state == State::Boxed) found_.push_back(node.slot);
      continue;
    }
    pending[count++] = node.child + 1;
    pending[count++] = node.child;
  }
}

std::span<const std::int16_t> MeshIndex::candidates(engine::EngineContext& context, const math::Vec3& origin,
                                                    const math::Vec3& end) {
  looseTests_ += loose_.size();
  if (looseTests_ > kTestsPerRebuild * entries_.size()) {
    const bool worthIt = std::ranges::any_of(
        loose_, [&](std::int16_t slot) { return entries_[static_cast<std::size_t>(slot)].state == State::Changed; });
    looseTests_ = 0;
    if (worthIt) rebuild(context);
  }
  found_ = loose_;
  const math::Vec3 way = math::subtract(end, origin);
  const float far = largestOf(origin) + largestOf(end) + extent_;
  const float angle = kAngleSlack * far / math::length(way);
  if (angle < kLargestAngle)
    search(origin, math::normalize(way), (kSlack + angle) * (largestOf(origin) + extent_));
  else  // the end points say little about the direction; all may be met
    for (std::size_t slot = 1; slot < entries_.size(); ++slot)
      if (entries_[slot].state == State::Boxed) found_.push_back(static_cast<std::int16_t>(slot));
  std::ranges::sort(found_);
  return found_;
}

}  // namespace ql::mesh
