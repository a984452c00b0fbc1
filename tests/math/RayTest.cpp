#include "math/Ray.h"

#include <limits>

#include <gtest/gtest.h>

namespace ql::math {
namespace {

constexpr Vec3 kP0{0, 0, 0}, kP1{4, 0, 0}, kP2{0, 4, 0};

TEST(Triangles, AreHitFromBothSidesAndBehindTheOrigin) {
  struct Case {
    const char* name;
    Vec3 origin, direction;
    bool hit;
    float t, u, v;
  };
  const Case kCases[] = {{"from the front", {1, 2, -10}, {0, 0, 1}, true, 10, 0.25f, 0.5f},
                         {"from the back", {1, 2, 10}, {0, 0, -1}, true, 10, 0.25f, 0.5f},
                         {"behind the origin", {1, 2, 10}, {0, 0, 1}, true, -10, 0.25f, 0.5f},
                         {"t counts directions, not lengths", {1, 2, -10}, {0, 0, 4}, true, 2.5f, 0.25f, 0.5f},
                         {"first corner", {0, 0, -1}, {0, 0, 1}, true, 1, 0, 0},
                         {"second corner", {4, 0, -1}, {0, 0, 1}, true, 1, 1, 0},
                         {"third corner", {0, 4, -1}, {0, 0, 1}, true, 1, 0, 1},
                         {"on the long edge", {2, 2, -1}, {0, 0, 1}, true, 1, 0.5f, 0.5f},
                         {"past the long edge", {2.1f, 2, -1}, {0, 0, 1}, false, 0, 0, 0},
                         {"left of it", {-0.1f, 1, -1}, {0, 0, 1}, false, 0, 0, 0},
                         {"below it", {1, -0.1f, -1}, {0, 0, 1}, false, 0, 0, 0},
                         {"in its plane", {-1, 1, 0}, {1, 0, 0}, false, 0, 0, 0},
                         {"no direction", {1, 1, 0}, {0, 0, 0}, false, 0, 0, 0},
                         {"not a number", {std::numeric_limits<float>::quiet_NaN(), 1, -1}, {0, 0, 1}, false, 0, 0, 0}};
  for (const Case& c : kCases) {
    const TriangleHit hit = intersectTriangle(c.origin, c.direction, kP0, kP1, kP2);
    ASSERT_EQ(hit.hit, c.hit) << c.name;
    if (!c.hit) continue;
    EXPECT_FLOAT_EQ(hit.t, c.t) << c.name;
    EXPECT_FLOAT_EQ(hit.u, c.u) << c.name;
    EXPECT_FLOAT_EQ(hit.v, c.v) << c.name;
  }
  EXPECT_FALSE(intersectTriangle({1, 1, -1}, {0, 0, 1}, kP0, kP0, kP2).hit) << "a triangle without area";
}

TEST(Bounds, AreHitByRaysThatReachThem) {
  const Vec3 low{-1, -1, -1}, high{1, 1, 1};
  struct Case {
    const char* name;
    Vec3 origin, direction;
    bool box, sphere;  // of radius 1 about the origin
  };
  const Case kCases[] = {{"ahead", {0, 0, -5}, {0, 0, 1}, true, true},
                         {"behind", {0, 0, -5}, {0, 0, -1}, false, false},
                         {"from inside", {0.5f, 0, 0}, {1, 0, 0}, true, true},
                         {"inside without a direction", {0, 0, 0}, {0, 0, 0}, true, true},
                         {"outside without a direction", {0, 2, 0}, {0, 0, 0}, false, false},
                         {"along a face", {1, 0, -5}, {0, 0, 1}, true, true},
                         {"through a corner of the box only", {0.9f, 0.9f, -5}, {0, 0, 1}, true, false},
                         {"past both", {1.01f, 0, -5}, {0, 0, 1}, false, false},
                         {"slanted past", {-5, 0, -3}, {1, 0, 0.3f}, false, false},
                         {"slanted in", {-5, 0, -3}, {1, 0, 0.6f}, true, true}};
  for (const Case& c : kCases) {
    EXPECT_EQ(intersectBox(c.origin, c.direction, low, high), c.box) << c.name;
    EXPECT_EQ(intersectSphere(c.origin, c.direction, {}, 1), c.sphere) << c.name;
  }
}

}  // namespace
}  // namespace ql::math
