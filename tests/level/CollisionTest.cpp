#include "level/Collision.h"
#include "level/FaceBuilder.h"
#include "level/Q3Bsp.h"
#include "math/Ray.h"
#include "platform/host/Files.h"
#include "support/SharedData.h"
#include "support/TinyQ3Level.h"

#include <cmath>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ql::level {
namespace {

using math::Vec3;
using testing::ElementsAre;

/// A level's tables as its object has them, without a device.
LevelData dataOf(const Q3Bsp& file) {
  LevelData data;
  BuiltFaces built = buildFaces(file, 1);
  data.faces = std::move(built.records);
  for (const LevelVertex& vertex : built.vertices) data.positions.push_back({vertex.x, vertex.y, vertex.z});
  data.leafFaces = file.leafFaces;
  data.visibility = file.visibility;
  data.planes = file.planes;
  data.nodes = file.nodes;
  data.models = file.models;
  for (const Q3Leaf& leaf : file.leaves) {
    data.leaves.push_back(
        {leaf.cluster, leaf.mins, leaf.maxs, leaf.firstLeafFace, leaf.leafFaceCount, leaf.area == -1});
    data.leafSpheres.push_back(leafSphere(data.leaves.back()));
  }
  return data;
}

/// The rules as they are stated, with nothing clever about them.
namespace plain {

std::optional<FaceHit> firstHit(const LevelData& level, const VisibleFaces& visible, const Vec3& origin,
                                const Vec3& direction, float limit) {
  std::uint32_t triangle = 0;
  for (std::size_t face = 0; face < level.faces.size(); ++face) {
    for (std::uint32_t k = 0; k < level.faces[face].triangleCount; ++k, ++triangle) {
      if (!isCandidate(level, visible, face)) continue;
      const auto [a, b, c] = triangleCorners(level, level.faces[face], k);
      const math::TriangleHit hit = math::intersectTriangle(origin, direction, a, b, c);
      if (hit.hit && hit.t > 0 && hit.t < limit)
        return FaceHit{triangle, static_cast<std::uint32_t>(face), hit.t,
                       math::cross(math::subtract(b, a), math::subtract(c, a))};
    }
  }
  return std::nullopt;
}

std::optional<SphereHit> nearestHit(const LevelData& level, const std::vector<std::int32_t>& leaves, const Vec3& origin,
                                    const Vec3& direction, float limit) {
  float best = 9999;
  std::optional<SphereHit> found;
  for (const std::int32_t index : leaves) {
    const Leaf& leaf = level.leaves[static_cast<std::size_t>(index)];
    for (std::int32_t i = 0; i < leaf.leafFaceCount; ++i) {
      const FaceRecord& face =
          level.faces[static_cast<std::size_t>(level.leafFaces[static_cast<std::size_t>(leaf.firstLeafFace + i)])];
      for (std::uint32_t k = 0; k < face.triangleCount; ++k) {
        const auto [a, b, c] = triangleCorners(level, face, k);
        const math::TriangleHit hit = math::intersectTriangle(origin, direction, a, b, c);
        if (!hit.hit || hit.t < 0 || hit.t >= best || hit.t >= limit) continue;
        best = hit.t;
        found = SphereHit{hit.t, math::add(origin, math::scale(direction, hit.t)),
                          math::cross(math::subtract(b, a), math::subtract(c, a))};
      }
    }
  }
  return found;
}

bool solid(const LevelData& level, std::int32_t child) {
  return child < 0 && child != kNoChild && level.leaves[static_cast<std::size_t>(-(child + 1))].solid;
}
bool sees(const LevelData& level, const Vec3& start, const Vec3& end, std::int32_t child) {
  if (child < 0) return !solid(level, child);
  const Q3Node& node = level.nodes[static_cast<std::size_t>(child)];
  const Q3Plane& plane = level.planes[static_cast<std::size_t>(node.plane)];
  const auto [front, back] = node.children;
  const int a = static_cast<int>(classifyPoint(start, plane)), b = static_cast<int>(classifyPoint(end, plane));
  if (a == 3 && b == 3) return sees(level, start, end, front);
  if ((a == 1 && b == 2) || (a == 2 && b == 1)) {
    if (solid(level, back)) return false;
    const auto distance = [&](const Vec3& p) {
      return math::dot({plane.normal[0], plane.normal[1], plane.normal[2]}, p) - plane.distance;
    };
    const Vec3 middle = math::lerp(start, end, distance(start) / (distance(start) - distance(end)));
    const Vec3 &before = a == 1 ? start : end, &after = a == 1 ? end : start;
    if (front < 0) return sees(level, after, middle, back);
    return sees(level, before, middle, front) && sees(level, after, middle, back);
  }
  if (a != 1 && b != 1) return sees(level, start, end, back);
  return front < 0 || sees(level, start, end, front);
}

bool descend(const LevelData& level, const Vec3& position, float radius, bool passSolid, std::int32_t child,
             std::vector<std::int32_t>& touched) {
  if (child < 0) {
    if (solid(level, child)) return !passSolid;
    if (child != kNoChild) touched.push_back(-(child + 1));
    return false;
  }
  const Q3Node& node = level.nodes[static_cast<std::size_t>(child)];
  const Q3Plane& plane = level.planes[static_cast<std::size_t>(node.plane)];
  const bool front = classifyPoint(position, plane) != Side::Back;
  if (descend(level, position, radius, passSolid, node.children[front ? 0 : 1], touched)) return true;
  return radius > planeSpan(position, plane) &&
         descend(level, position, radius, passSolid, node.children[front ? 1 : 0], touched);
}

}  // namespace plain

TEST(Collision, ClassifiesPoints) {
  const Q3Plane plane{{0, 1, 0}, 10};
  EXPECT_EQ(classifyPoint({5, 10.0005f, 0}, plane), Side::On);
  EXPECT_EQ(classifyPoint({5, 9.9995f, 0}, plane), Side::On);
  EXPECT_EQ(classifyPoint({5, 10.01f, 0}, plane), Side::Front);
  EXPECT_EQ(classifyPoint({5, 9.99f, 0}, plane), Side::Back);
  EXPECT_FLOAT_EQ(planeSpan({0, 19, 0}, plane), 3);
  EXPECT_FLOAT_EQ(planeSpan({0, -6, 0}, plane), 4);
}

TEST(Collision, DescendsTheTreeWithASphere) {
  LevelData level = dataOf(parseQ3Bsp(test::TinyQ3Level().bytes()));  // leaf 1 is west of x = 0, leaf 2 east
  SphereDescent descent;
  struct Case {
    const char* name;
    float x, radius;
    std::vector<std::int32_t> touched;
  };
  for (const Case& c : {Case{"span 3 is less than 4", 9, 4, {2, 1}},
                        {"span 3 is not less than 3", 9, 3, {2}},
                        {"from the back", -9, 4, {1, 2}},
                        {"on the plane counts as in front", -0.0005f, 1, {2, 1}}}) {
    descendSphere(level, {c.x, 0, 50}, c.radius, false, descent);
    EXPECT_FALSE(descent.solid);
    EXPECT_EQ(descent.touched, c.touched) << c.name;
  }
  level.leaves[1].solid = true;
  descendSphere(level, {9, 0, 50}, 4, false, descent);
  EXPECT_TRUE(descent.solid);
  EXPECT_THAT(descent.touched, ElementsAre(2)) << "what was reached before the solid leaf";
  descendSphere(level, {-9, 0, 50}, 4, true, descent);
  EXPECT_FALSE(descent.solid) << "solid leaves pass";
  EXPECT_THAT(descent.touched, ElementsAre(2)) << "but are not noted";
  level.nodes[0].children[1] = kNoChild;
  descendSphere(level, {-9, 0, 50}, 4, false, descent);
  EXPECT_FALSE(descent.solid);
  level.nodes.clear();
  descendSphere(level, {-9, 0, 50}, 4, false, descent);
  EXPECT_TRUE(descent.touched.empty());
}

TEST(Collision, SeesAlongTheTree) {
  // x = 0 parts a back leaf from y = 0, which parts two leaves.
  LevelData level;
  level.planes = {{{1, 0, 0}, 0}, {{0, 1, 0}, 0}};
  level.nodes = {{0, {1, ~1}, {}, {}}, {1, {~2, ~3}, {}, {}}};
  level.leaves.resize(4);
  const auto seen = [&](const Vec3& start, const Vec3& end, std::int32_t node = 0) {
    const bool there = lineSight(level, start, end, node);
    EXPECT_EQ(there, plain::sees(level, start, end, node));
    return there;
  };
  EXPECT_TRUE(seen({-5, 5, 0}, {5, -5, 0}));
  level.leaves[1].solid = true;
  EXPECT_FALSE(seen({5, 5, 0}, {-5, 5, 0})) << "into the solid back";
  EXPECT_FALSE(seen({-5, 5, 0}, {5, 5, 0})) << "out of it";
  EXPECT_TRUE(seen({5, 5, 0}, {0.5f, -5, 0}));
  EXPECT_FALSE(seen({-5, 5, 0}, {-5, -5, 0})) << "wholly inside";
  EXPECT_TRUE(seen({0, 5, 0}, {0, -5, 0})) << "on the plane goes to the front";
  EXPECT_FALSE(seen({0, 5, 0}, {-1, 5, 0})) << "on it and behind it goes to the back";
  EXPECT_TRUE(seen({-5, 5, 0}, {-5, -5, 0}, 1)) << "from another node";
  level.leaves[1].solid = false;
  level.leaves[2].solid = true;
  EXPECT_TRUE(seen({5, 5, 0}, {5, 6, 0})) << "in front of a plane before a leaf nothing is solid";
  level.nodes[1].children[1] = kNoChild;
  EXPECT_TRUE(seen({5, -5, 0}, {5, -6, 0}));
}

TEST(Collision, TakesTheFirstFaceInOrderNotTheNearest) {
  const LevelData level = dataOf(parseQ3Bsp(test::TinyQ3Level().bytes()));
  FaceCollision collision;
  VisibleFaces visible;
  const auto face = [&](const Vec3& origin, const Vec3& direction, float limit) {
    const std::optional<FaceHit> found = collision.firstHit(level, visible, origin, direction, limit);
    return found ? static_cast<int>(found->face) : -1;
  };
  using Tiny = test::TinyQ3Level;
  // The level's space has x negated: west is at positive x. The ceiling at z = 128 covers both floors' z = 0.
  EXPECT_EQ(face({64, 0, 200}, {0, 0, -1}, 1000), Tiny::kWestFloor) << "behind the ceiling, but before it in order";
  EXPECT_EQ(face({64, 0, 200}, {0, 0, -1}, 100), Tiny::kCeiling) << "the floor is too far";
  EXPECT_EQ(face({64, 0, 200}, {0, 0, -1}, 72), -1) << "the limit itself is too far";
  EXPECT_EQ(face({64, 0, 0}, {0, 0, -1}, 100), -1) << "distance 0 is none";
  EXPECT_EQ(face({-112, 0, 100}, {0, 0, -1}, 1000), Tiny::kEastFloor) << "through the curve";
  EXPECT_EQ(face({500, 0, 100}, {0, 0, -1}, 1000), -1);
  EXPECT_EQ(face({64, 0, 200}, {0, 0, 0}, 1000), -1) << "no direction";
}

TEST(Collision, CountsFacesThatAreSeenOrBelongToBrushModels) {
  test::TinyQ3Level tiny;
  LevelData level = dataOf(parseQ3Bsp(tiny.bytes()));
  FaceCollision collision;
  VisibleFaces visible;
  const std::array<math::Plane, 6> open{};
  const auto floorsHit = [&] {
    std::string hits;
    for (const float x : {64.0f, -64.0f})
      hits += collision.firstHit(level, visible, {x, 90, 100}, {0, 0, -1}, 1000) ? '1' : '0';
    return hits;
  };
  EXPECT_EQ(floorsHit(), "11") << "nothing was rebuilt yet";
  View view{{64, 50, 0}, {65, 50, 0}, math::identity(), math::identity(), open, 10000, true};
  view.position = {64, 0, 50};  // west; with the identity as matrix, a point of the level's space
  visible.update(level, view);
  EXPECT_EQ(floorsHit(), "10") << "the east is not seen from the west";
  level.models.push_back({{}, {}, 0, 1, 0, 0});
  collision.reset();
  EXPECT_EQ(floorsHit(), "11") << "a textured face after the first of model 1";
  level.models[1].firstFace = test::TinyQ3Level::kEastFloor;
  collision.reset();
  EXPECT_EQ(floorsHit(), "10") << "the first itself is not after it";
  level.models[1].firstFace = 0;
  level.faces[test::TinyQ3Level::kEastFloor].texture = -1;
  collision.reset();
  EXPECT_EQ(floorsHit(), "10") << "no texture";
  view.usePvs = false;
  visible.update(level, view);
  EXPECT_EQ(floorsHit(), "11") << "the index follows the list";
}

/// Random points of a level, some on its own vertices and edges, where ties happen.
class Points {
 public:
  explicit Points(const LevelData& level) : level_(level) {
    for (const Vec3& p : level.positions) {
      low_ = {std::min(low_.x, p.x), std::min(low_.y, p.y), std::min(low_.z, p.z)};
      high_ = {std::max(high_.x, p.x), std::max(high_.y, p.y), std::max(high_.z, p.z)};
    }
  }
  float between(float low, float high) { return std::uniform_real_distribution<float>(low, high)(random_); }
  Vec3 next() {
    switch (random_() % 4) {
      case 0: {
        const Vec3& vertex = level_.positions[random_() % level_.positions.size()];
        return random_() % 2 == 0 ? vertex : math::add(vertex, {between(-40, 40), between(-40, 40), between(0, 60)});
      }
      default:
        return {between(low_.x, high_.x), between(low_.y, high_.y), between(low_.z, high_.z)};
    }
  }
  Vec3 direction() {
    switch (random_() % 4) {
      case 0:
        return {0, 0, -1};
      case 1:
        return math::normalize(math::subtract(next(), next()));
      default:
        return math::normalize(Vec3{between(-1, 1), between(-1, 1), between(-1, 1)});
    }
  }

 private:
  const LevelData& level_;
  std::mt19937 random_{7};
  Vec3 low_{1e9f, 1e9f, 1e9f}, high_{-1e9f, -1e9f, -1e9f};
};

void compareRays(const LevelData& level, const VisibleFaces& visible, int rays) {
  Points points(level);
  FaceCollision collision;
  int hits = 0;
  for (int i = 0; i < rays; ++i) {
    const Vec3 origin = points.next(), direction = points.direction();
    const float limit = i % 3 == 0 ? 30.0f : i % 3 == 1 ? 300.0f : 10000.0f;
    const auto expected = plain::firstHit(level, visible, origin, direction, limit);
    const auto got = collision.firstHit(level, visible, origin, direction, limit);
    ASSERT_EQ(got.has_value(), expected.has_value()) << i;
    if (!got) continue;
    ++hits;
    ASSERT_EQ(got->triangle, expected->triangle) << i << " at " << expected->distance << " and " << got->distance;
    ASSERT_EQ(got->face, expected->face);
    ASSERT_EQ(got->distance, expected->distance);
    ASSERT_EQ(got->normal, expected->normal);
  }
  EXPECT_GT(hits, 0);
}

void compareTree(const LevelData& level, int queries) {
  Points points(level);
  FaceCollision collision;
  SphereDescent descent;
  int seen = 0, solid = 0, met = 0;
  for (int i = 0; i < queries; ++i) {
    const Vec3 start = points.next(), end = points.next();
    const bool free = lineSight(level, start, end, 0);
    ASSERT_EQ(free, plain::sees(level, start, end, 0)) << i;
    seen += free;
    const float radius = std::array{0.0f, 1.0f, 8.0f, 40.0f}[static_cast<std::size_t>(i % 4)];
    std::vector<std::int32_t> touched;
    const Vec3 local = points.next(), position{-local.x, local.y, local.z};
    const bool blocked = plain::descend(level, position, radius, i % 3 == 0, 0, touched);
    descendSphere(level, position, radius, i % 3 == 0, descent);
    ASSERT_EQ(descent.solid, blocked) << i;
    ASSERT_EQ(descent.touched, touched) << i;
    solid += blocked;
    const Vec3 direction = points.direction();
    const auto expected = plain::nearestHit(level, touched, local, direction, radius * 4);
    const auto got = collision.nearestHit(level, descent.touched, local, direction, radius * 4);
    ASSERT_EQ(got.has_value(), expected.has_value()) << i;
    if (!got) continue;
    ++met;
    ASSERT_EQ(got->distance, expected->distance);
    ASSERT_EQ(got->normal, expected->normal) << "the first of equally near ones";
  }
  EXPECT_GT(met, 0);
  EXPECT_GT(seen + solid, 0);
}

TEST(Collision, AnswersAsTheScanInRealLevels) {
  QL_NEED_SHARED_DATA();
  int levels = 0;
  for (const auto& path : test::sharedFiles("q3bsp")) {
    if (path.extension() != ".bsp") continue;
    SCOPED_TRACE(path);
    const Q3Bsp file = parseQ3Bsp(host::readFile(path.string()));
    const LevelData level = dataOf(file);
    VisibleFaces all;
    ASSERT_NO_FATAL_FAILURE(compareRays(level, all, 1500));
    VisibleFaces seen;
    const std::array<math::Plane, 6> open{};
    const Leaf& leaf = level.leaves[level.leaves.size() / 2];
    View view{{}, {1, 2, 3}, math::identity(), math::identity(), open, 10000, true};
    view.position = {-0.5f * static_cast<float>(leaf.mins[0] + leaf.maxs[0]),
                     0.5f * static_cast<float>(leaf.mins[1] + leaf.maxs[1]),
                     0.5f * static_cast<float>(leaf.mins[2] + leaf.maxs[2])};
    seen.update(level, view);
    ASSERT_NO_FATAL_FAILURE(compareRays(level, seen, 700));
    ASSERT_NO_FATAL_FAILURE(compareTree(level, 3000));
    ++levels;
  }
  EXPECT_GE(levels, 5);
}

}  // namespace
}  // namespace ql::level
