#include "Numbers.h"
#include "Winding.h"

#include <gtest/gtest.h>

namespace ql::maker {
namespace {

Winding square(double size) { return {{0, size, 0}, {size, size, 0}, {size, 0, 0}, {0, 0, 0}}; }  // seen from above

TEST(Winding, FacesTheSideItRunsClockwiseFrom) {
  for (const Vec3 n : {Vec3{0, 0, 1}, Vec3{0, 0, -1}, Vec3{1, 0, 0}, Vec3{0, -1, 0}, normalized({1, 2, 3})}) {
    const Winding w = windingOfPlane({n, 24.0}, 100.0);
    const Plane p = planeOfWinding(w);
    EXPECT_TRUE(samePlane(p, {n, 24.0})) << n.x << " " << n.y << " " << n.z;
    EXPECT_NEAR(areaOf(w), 40000.0, 1e-6);
  }
}

// One row per way a plane can meet a square of side 64.
struct Cut {
  const char* name;
  Plane plane;
  double front, back;  // areas
  bool onPlane;
};

TEST(Winding, SplitsIntoPartsThatAddUp) {
  const double root = std::sqrt(0.5);
  const Cut cuts[] = {
      {"through the middle", {{1, 0, 0}, 32}, 2048, 2048, false},
      {"along an edge, all in front", {{1, 0, 0}, 0}, 4096, 0, false},
      {"along an edge, all behind", {{1, 0, 0}, 64}, 0, 4096, false},
      {"a hair inside an edge", {{1, 0, 0}, 63.995}, 0, 4096, false},
      {"through two corners", {{root, root, 0}, 64 * root}, 2048, 2048, false},
      {"across a corner", {{root, root, 0}, 120 * root}, 32, 4064, false},
      {"the square's own plane", {{0, 0, 1}, 0}, 0, 0, true},
      {"a parallel plane", {{0, 0, 1}, -5}, 4096, 0, false},
  };
  for (const Cut& c : cuts) {
    const Split parts = split(square(64), c.plane);
    EXPECT_NEAR(areaOf(parts.front), c.front, 0.01) << c.name;
    EXPECT_NEAR(areaOf(parts.back), c.back, 0.01) << c.name;
    EXPECT_EQ(parts.onPlane, c.onPlane) << c.name;
  }
}

TEST(Winding, MergingUndoesCuts) {
  std::vector<Winding> pieces{square(64)};
  for (const Plane& p : {Plane{{1, 0, 0}, 20}, Plane{{0, 1, 0}, 30}, Plane{normalized({1, 1, 0}), 50}}) {
    std::vector<Winding> next;
    for (const Winding& w : pieces) {
      Split parts = split(w, p);
      for (Winding* part : {&parts.front, &parts.back})
        if (!part->empty()) next.push_back(*part);
    }
    pieces = next;
  }
  ASSERT_GT(pieces.size(), 4U);
  mergeAll(pieces, {0, 0, 1});
  double area = 0;
  for (const Winding& w : pieces) {
    area += areaOf(w);
    EXPECT_TRUE(samePlane(planeOfWinding(w), {{0, 0, 1}, 0}));
  }
  EXPECT_NEAR(area, 4096, 0.01);
  EXPECT_LE(pieces.size(), 3U);
}

TEST(Winding, DoesNotMergeIntoADent) {
  const Winding low{{0, 10, 0}, {20, 10, 0}, {20, 0, 0}, {0, 0, 0}};
  const Winding high{{0, 20, 0}, {10, 20, 0}, {10, 10, 0}, {0, 10, 0}};
  EXPECT_TRUE(merged(low, high, {0, 0, 1}).empty());
}

TEST(Winding, TrianglesCoverPolygonsWithPointsInLine) {
  // Corners that neighbours put into edges must not give triangles without area, nor be left out.
  const Winding crowded{{0, 64, 0}, {16, 64, 0}, {32, 64, 0}, {64, 64, 0}, {64, 40, 0},
                        {64, 8, 0}, {64, 0, 0},  {0, 0, 0},   {0, 20, 0}};
  const std::vector<int> indices = triangulated(crowded);
  ASSERT_EQ(indices.size(), 3 * (crowded.size() - 2));
  double area = 0;
  std::vector<bool> used(crowded.size());
  for (std::size_t i = 0; i < indices.size(); i += 3) {
    const Winding t{crowded[static_cast<std::size_t>(indices[i])], crowded[static_cast<std::size_t>(indices[i + 1])],
                    crowded[static_cast<std::size_t>(indices[i + 2])]};
    EXPECT_GT(areaOf(t), 1.0);
    EXPECT_GT(planeOfWinding(t).normal.z, 0.99) << "triangle " << i / 3 << " is turned over";
    area += areaOf(t);
    for (std::size_t k = 0; k < 3; ++k) used[static_cast<std::size_t>(indices[i + k])] = true;
  }
  EXPECT_NEAR(area, 4096, 0.01);
  EXPECT_EQ(std::count(used.begin(), used.end(), true), static_cast<long>(crowded.size()));
}

TEST(Numbers, AgreeWithTheLibrary) {
  for (int i = -400; i <= 400; ++i) {
    const double x = i * 0.173;
    EXPECT_NEAR(sine(x), std::sin(x), 1e-11) << x;
    EXPECT_NEAR(cosine(x), std::cos(x), 1e-11) << x;
    EXPECT_NEAR(angleOf(std::sin(x), std::cos(x)), std::atan2(std::sin(x), std::cos(x)), 1e-11) << x;
    EXPECT_NEAR(exponential(x / 8) / std::exp(x / 8), 1.0, 1e-11) << x;
    if (x > 0) {
      EXPECT_NEAR(power(x, 0.45), std::pow(x, 0.45), 1e-10) << x;
    }
  }
}

}  // namespace
}  // namespace ql::maker
