#include "RayTree.h"
#include "TestLevels.h"

#include <random>

#include <gtest/gtest.h>

namespace ql::maker::test {
namespace {

bool inSolid(const Level& level, Vec3 p) {
  return std::any_of(level.brushes.begin(), level.brushes.end(),
                     [&](const Brush& b) { return !b.detail && b.contains(p); });
}

Vec3 randomPoint(std::mt19937& random, const Bounds& box) {
  const auto unit = [&] { return static_cast<double>(random()) / 4294967296.0; };
  const Vec3 size = box.maxs - box.mins;
  return box.mins + Vec3{size.x * unit(), size.y * unit(), size.z * unit()};
}

TEST(Tree, LeavesAgreeWithTheBrushes) {
  const MadeLevel made = structureOf(twoRooms());
  std::mt19937 random(5);
  const Bounds inside{{-10, -10, -10}, {666, 266, 138}};
  int open = 0;
  for (int i = 0; i < 20000; ++i) {
    const Vec3 p = randomPoint(random, inside);
    const TreeLeaf& leaf = made.tree.leaves[static_cast<std::size_t>(made.tree.leafAt(p))];
    if (inSolid(made.level, p)) {
      EXPECT_TRUE(leaf.solid) << p.x << " " << p.y << " " << p.z;
    }
    if (leaf.solid) continue;
    ++open;
    for (int a = 0; a < 3; ++a) {
      EXPECT_GE(p[a], leaf.bounds.mins[a] - 0.001);
      EXPECT_LE(p[a], leaf.bounds.maxs[a] + 0.001);
    }
  }
  EXPECT_GT(open, 8000);
}

TEST(Tree, ReportsLeaks) {
  EXPECT_NO_THROW(structureOf(oneRoom()));
  const auto changed = [](std::string_view from, std::string_view to) {
    const std::string text = oneRoom();
    const std::size_t at = text.find(from);
    std::string result(text, 0, at);
    return result.append(to).append(text, at + from.size());
  };
  EXPECT_THROW(structureOf(changed("box   0 256 -16  256 272 176 wall", "# no north wall")), LeakFault);
  EXPECT_THROW(structureOf(changed("info_player_start", "info_nobody")), LeakFault);
  EXPECT_THROW(structureOf(changed("origin 40 128 40", "origin 40 128 -8")), LeakFault);
}

TEST(Surfaces, CloseTheRoomWithoutHiddenParts) {
  const MadeLevel made = structureOf(oneRoom());
  double floor = 0;
  for (const Surface& s : made.surfaces) {
    for (const Winding& w : s.pieces) {
      const Vec3 above = centreOf(w) + s.plane.normal * 0.5;
      EXPECT_FALSE(inSolid(made.level, above))
          << "a face looks into a solid at " << above.x << " " << above.y << " " << above.z;
      EXPECT_GT(areaOf(w), 0.0);
      EXPECT_TRUE(samePlane(planeOfWinding(w), s.plane));
    }
    if (s.plane.normal.z == 1.0 && s.plane.distance == 0.0)
      for (const Winding& w : s.pieces) floor += areaOf(w);
    EXPECT_FALSE(s.plane.normal.z == -1.0 && s.plane.distance == 0.0) << "the underside of the detail box shows";
  }
  EXPECT_NEAR(floor, 256.0 * 256.0, 1.0);
}

TEST(Surfaces, SidesThatNeighboursHideTogetherAreLeftOut) {
  // The eastern side of the first box is behind two others; of the second pair one is too low.
  const auto easternSides = [](double secondHeight) {
    const MadeLevel made =
        structureOf(twoRooms("box 40 40 0 100 100 16 wall detail\nbox 100 20 0 140 70 16 wall detail\n"
                             "box 100 70 0 140 120 " +
                             std::to_string(secondHeight) + " wall detail\n"));
    return std::count_if(made.surfaces.begin(), made.surfaces.end(), [](const Surface& s) {
      return samePlane(s.plane, {{1, 0, 0}, 100});
    });
  };
  EXPECT_EQ(easternSides(16), 0);
  EXPECT_EQ(easternSides(8), 1);
}

TEST(Surfaces, NeighboursShareTheirEdgePoints) {
  const MadeLevel made =
      structureOf(twoRooms("box 100 0 0 140 40 40 wall detail\nbox 140 0 0 180 24 24 wall detail\n"));
  for (const Surface& a : made.surfaces)
    for (const Winding& edge : a.pieces)
      for (std::size_t i = 0; i < edge.size(); ++i) {
        const Vec3 from = edge[i];
        const Vec3 to = edge[(i + 1) % edge.size()];
        const double size = length(to - from);
        for (const Surface& b : made.surfaces)
          for (const Winding& w : b.pieces)
            for (const Vec3& p : w) {
              const double along = dot(p - from, to - from) / size;
              if (along < 0.1 || along > size - 0.1) continue;
              EXPECT_GT(length(p - (from + (to - from) * (along / size))), 0.02)
                  << "a corner stands inside an edge at " << p.x << " " << p.y << " " << p.z;
            }
      }
}

/// Points that see each other through open space must lie in clusters that see each other.
TEST(Visibility, NeverHidesWhatCanBeSeen) {
  for (const std::string& text :
       {twoRooms(), twoRooms("box 150 60 0 166 200 128 wall\nbox 500 0 0 516 180 100 wall\n")}) {
    const MadeLevel made = structureOf(text);
    std::vector<Triangle> triangles;
    for (const Brush& brush : made.level.brushes)
      for (const BrushSide& side : brush.sides) {
        const std::vector<int> indices = triangulated(side.winding);
        for (std::size_t i = 0; i < indices.size(); i += 3) {
          Triangle t;
          for (std::size_t c = 0; c < 3; ++c) t.corners[c] = side.winding[static_cast<std::size_t>(indices[i + c])];
          triangles.push_back(t);
        }
      }
    const RayTree rays(triangles);
    std::mt19937 random(11);
    const Bounds inside{{0, 0, 0}, {656, 256, 128}};
    int seen = 0;
    for (int i = 0; i < 200000; ++i) {
      const Vec3 a = randomPoint(random, inside);
      const Vec3 b = randomPoint(random, inside);
      const int ca = made.clusterOfLeaf[static_cast<std::size_t>(made.tree.leafAt(a))];
      const int cb = made.clusterOfLeaf[static_cast<std::size_t>(made.tree.leafAt(b))];
      if (ca < 0 || cb < 0 || made.visibility.sees(ca, cb)) continue;
      ASSERT_FALSE(rays.free(a, normalized(b - a), length(b - a)))
          << "cluster " << ca << " sees " << cb << " but the lump says no";
      ++seen;
    }
    EXPECT_GT(seen, 1000) << "nothing is hidden, the test proves nothing";
  }
}

TEST(Visibility, HidesTheOtherRoom) {
  const MadeLevel made = structureOf(twoRooms());
  const auto clusterAt = [&](Vec3 p) { return made.clusterOfLeaf[static_cast<std::size_t>(made.tree.leafAt(p))]; };
  const int first = clusterAt({40, 200, 100});
  const int second = clusterAt({600, 60, 100});
  ASSERT_GE(first, 0);
  ASSERT_GE(second, 0);
  EXPECT_FALSE(made.visibility.sees(first, second));
  EXPECT_TRUE(made.visibility.sees(first, first));
  for (int a = 0; a < made.visibility.clusters; ++a)
    for (int b = 0; b < made.visibility.clusters; ++b)
      EXPECT_EQ(made.visibility.sees(a, b), made.visibility.sees(b, a));
}

TEST(RayTree, FindsWhatAScanFinds) {
  std::mt19937 random(3);
  const Bounds box{{0, 0, 0}, {100, 100, 100}};
  std::vector<Triangle> triangles(300);
  for (Triangle& t : triangles) {
    const Vec3 at = randomPoint(random, box);
    for (Vec3& c : t.corners) c = at + randomPoint(random, {{-9, -9, -9}, {9, 9, 9}});
  }
  const RayTree tree(triangles);
  int hits = 0;
  for (int i = 0; i < 3000; ++i) {
    const Vec3 from = randomPoint(random, box);
    const Vec3 direction = i % 7 == 0 ? Vec3{0, 0, 1} : normalized(randomPoint(random, box) - from);
    double nearest = 1e9;
    for (const Triangle& t : triangles) {
      const RayTree single({t});
      if (const auto hit = single.nearest(from, direction)) nearest = std::min(nearest, hit->distance);
    }
    const auto hit = tree.nearest(from, direction);
    ASSERT_EQ(hit.has_value(), nearest < 1e9) << i;
    EXPECT_EQ(tree.free(from, direction), !hit.has_value());
    if (!hit) continue;
    EXPECT_DOUBLE_EQ(hit->distance, nearest);
    ++hits;
  }
  EXPECT_GT(hits, 500);
}

}  // namespace
}  // namespace ql::maker::test
