// The project's own level: what its programs rely on.
#include "RayTree.h"
#include "TestLevels.h"
#include "Textures.h"

#include <fstream>
#include <random>

#include <gtest/gtest.h>

namespace ql::maker::test {
namespace {

const MadeLevel& court() {
  static const MadeLevel made = [] {
    std::ifstream file(QL_COURT_DESCRIPTION, std::ios::binary);
    return structureOf(std::string(std::istreambuf_iterator<char>(file), {}));
  }();
  return made;
}

/// The sides of all structural brushes, or of all brushes.
RayTree flatWorld(bool detail) {
  std::vector<Triangle> triangles;
  for (const Brush& brush : court().level.brushes) {
    if (brush.detail && !detail) continue;
    for (const BrushSide& side : brush.sides) {
      const std::vector<int> indices = triangulated(side.winding);
      for (std::size_t i = 0; i < indices.size(); i += 3) {
        Triangle t;
        for (std::size_t c = 0; c < 3; ++c) t.corners[c] = side.winding[static_cast<std::size_t>(indices[i + c])];
        triangles.push_back(t);
      }
    }
  }
  return RayTree(std::move(triangles));
}

TEST(Court, StaysWithinItsMeans) {
  std::size_t polygons = 0;
  for (const Surface& s : court().surfaces) polygons += groupOf(court().level, s) == 0 ? s.pieces.size() : 0;
  EXPECT_GT(polygons, 250U);
  EXPECT_LT(polygons + court().level.patches.size(), 1000U)
      << "more faces drawn alone than a level of this size should need";
  EXPECT_LT(court().visibility.clusters, 120);
  for (const Material& m : court().level.materials) EXPECT_NE(findRecipe(m.texture), nullptr) << m.texture;
}

TEST(Court, LeafBoxesDoNotOverlap) {
  // The camera's leaf is the first one whose box holds it, so boxes of open leaves may share borders only.
  const auto& leaves = court().tree.leaves;
  for (std::size_t a = 0; a < leaves.size(); ++a)
    for (std::size_t b = a + 1; b < leaves.size(); ++b) {
      if (leaves[a].solid || leaves[b].solid) continue;
      EXPECT_FALSE(leaves[a].bounds.touches(leaves[b].bounds, -0.5)) << a << " and " << b;
    }
}

TEST(Court, VisibilityHidesOnlyWhatIsHidden) {
  const RayTree structure = flatWorld(false);
  std::vector<std::size_t> open;
  for (std::size_t i = 0; i < court().tree.leaves.size(); ++i)
    if (!court().tree.leaves[i].solid) open.push_back(i);
  std::mt19937 random(7);
  const auto pointIn = [&](std::size_t leaf) {
    const Bounds& b = court().tree.leaves[leaf].bounds;
    Vec3 p;
    for (int a = 0; a < 3; ++a)
      p[a] = b.mins[a] + (b.maxs[a] - b.mins[a]) * (static_cast<double>(random()) / 4294967296.0);
    return p;
  };
  int hidden = 0;
  for (int i = 0; i < 60000; ++i) {
    const std::size_t from = open[random() % open.size()];
    const std::size_t to = open[random() % open.size()];
    if (court().visibility.sees(court().clusterOfLeaf[from], court().clusterOfLeaf[to])) continue;
    const Vec3 a = pointIn(from);
    const Vec3 b = pointIn(to);
    ASSERT_FALSE(structure.free(a, normalized(b - a), length(b - a))) << "leaf " << from << " sees leaf " << to;
    ++hidden;
  }
  EXPECT_GT(hidden, 10000);
}

TEST(Court, CameraFliesThroughOpenings) {
  const std::vector<Pose>& keys = court().level.pathKeys;
  ASSERT_GE(keys.size(), 12U);
  const RayTree world = flatWorld(true);
  const std::size_t n = keys.size();
  Vec3 before = keys[0].eye;
  for (std::size_t i = 0; i < n; ++i) {
    const Vec3 p0 = keys[(i + n - 1) % n].eye;
    const Vec3 p1 = keys[i].eye;
    const Vec3 p2 = keys[(i + 1) % n].eye;
    const Vec3 p3 = keys[(i + 2) % n].eye;
    for (int k = 1; k <= 24; ++k) {
      const double t = k / 24.0;
      const Vec3 at = (p1 * 2 + (p2 - p0) * t + (p0 * 2 - p1 * 5 + p2 * 4 - p3) * (t * t) +
                       (p1 * 3 - p0 - p2 * 3 + p3) * (t * t * t)) *
                      0.5;
      if (length(at - before) < 0.01) continue;
      EXPECT_TRUE(world.free(before, normalized(at - before), length(at - before)))
          << "after key " << i << " at " << at.x << " " << at.y << " " << at.z;
      before = at;
    }
    EXPECT_GT(length(keys[i].look - keys[i].eye), 1.0);
  }
}

TEST(Court, StillPosesStandInTheOpen) {
  EXPECT_GE(court().level.poses.size(), 8U);
  for (const Pose& pose : court().level.poses) {
    EXPECT_FALSE(court().tree.leaves[static_cast<std::size_t>(court().tree.leafAt(pose.eye))].solid);
    for (const Brush& brush : court().level.brushes)
      EXPECT_FALSE(brush.contains(pose.eye, -4.0)) << pose.eye.x << " " << pose.eye.y << " " << pose.eye.z;
  }
}

}  // namespace
}  // namespace ql::maker::test
