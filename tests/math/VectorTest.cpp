#include "math/SineTable.h"
#include "math/Vector.h"

#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

namespace ql::math {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(PackColor, RoundsHalvesToEvenAndRefusesWhatIsTooBright) {
  struct Case {
    const char* name;
    Color4 color;
    std::uint32_t packed;
  };
  const Case kCases[] = {{"opaque red", {1, 0, 0, 1}, 0xFFFF0000},
                         {"half up to the even neighbour", {1, 1, 1, 0.5f}, 0x80FFFFFF},
                         {"half down to the even neighbour", {0, 0, 2.5f / 255, 0}, 0x00000002},
                         {"order of the channels", {1.0f / 255, 2.0f / 255, 3.0f / 255, 4.0f / 255}, 0x04010203},
                         {"just too bright", {1.01f, 0, 0, 1}, 0},
                         {"rounds down to 255", {1.0019f, 0, 0, 1}, 0xFFFF0000},
                         {"too opaque", {1, 1, 1, 2}, 0},
                         {"negative counts as 0", {-0.5f, 1, -1000, 1}, 0xFF00FF00},
                         {"too bright and negative", {-1, 2, 0, 0}, 0}};
  for (const Case& c : kCases) EXPECT_EQ(static_cast<std::uint32_t>(packColor(c.color)), c.packed) << c.name;
  EXPECT_THROW(packColor({kNan, 0, 0, 0}), std::domain_error);
  for (const float huge : {1e8f, -1e8f, kInfinity, -kInfinity})
    EXPECT_THROW(packColor({0, 0, 0, huge}), std::overflow_error) << huge;
  for (const std::uint32_t argb : {0u, 0x12345678u, 0xFFFEFDFCu})
    EXPECT_EQ(static_cast<std::uint32_t>(packColor(unpackColor(argb))), argb);
}

TEST(Vectors, DegenerateOnesStayFinite) {
  EXPECT_EQ(normalize(Vec3{}), Vec3{});
  EXPECT_EQ(length({3, 4, 0}), 5);
  EXPECT_EQ(cross({1, 0, 0}, {0, 1, 0}), (Vec3{0, 0, 1}));
  EXPECT_EQ(largest({-3, -1, -2}), -1);
  const Plane flat = normalize(Plane{0, 0, 0, 5});
  EXPECT_EQ(flat.d, 0);
  const Plane plane = normalize(Plane{0, 2, 0, -6});
  EXPECT_EQ(distance(plane, {9, 5, 9}), 2);
}

TEST(SineTables, ReadTheNearestQuarterDegree) {
  const SineTable table;
  EXPECT_EQ(table.cosine(0), 1);
  EXPECT_NEAR(table.cosine(90), 4.63268e-5, 1e-9) << "built with 3.1415, not with pi";
  EXPECT_NEAR(table.sine(360), -1.853072e-4, 1e-9);
  EXPECT_EQ(table.cosine(0.1f), table.cosine(0));
  EXPECT_EQ(table.cosine(0.125f), table.cosine(0)) << "half to even";
  EXPECT_EQ(table.cosine(0.375f), table.cosine(0.5f)) << "half to even";
  EXPECT_NE(table.cosine(0.375f), table.cosine(0.25f));
  EXPECT_EQ(table.sine(-0.125f), table.sine(0));
  EXPECT_EQ(table.sine(360.125f), table.sine(360));
  for (const float outside : {-1.0f, -0.13f, 360.2f, 361.0f, 1e30f, -kInfinity, kNan})
    EXPECT_THROW(table.sine(outside), std::out_of_range) << outside;
}

TEST(Angles, HeadingsGrowFromZTowardsX) {
  struct Case {
    float vx, vz;
    double degrees;
  };
  for (const Case& c : {Case{1, 1, 45}, Case{-1, 1, -45}, Case{0, 1, 0}, Case{1, -1, 134.9947}, Case{0, -1, 179.9947},
                        Case{-1, -1, 224.9947}, Case{1e38f, 1e-10f, 90}})
    EXPECT_NEAR(directionToAngle(c.vx, c.vz), c.degrees, 1e-4) << c.vx << ", " << c.vz;
  EXPECT_THROW(directionToAngle(1, 0), std::domain_error);
  EXPECT_THROW(directionToAngle(0, -0.0f), std::domain_error);
  EXPECT_NEAR(radiansToDegrees(degreesToRadians(77)), 77, 1e-5);
  EXPECT_FLOAT_EQ(degreesToRadians(180), 3.141592653f);
}

}  // namespace
}  // namespace ql::math
