#include "RenderTest.h"
#include "render/CameraFollowing.h"

namespace ql::render {
namespace {

struct Following : test::RenderTest {};

TEST_F(Following, ChasesAtAShareOfTheDistance) {
  struct Case {
    const char* name;
    math::Vec3 end;
    bool exponential;
    float speed, fastest;
    std::int32_t elapsed;
    math::Vec3 position;
    float speedAfter;
  };
  for (const Case& row : {Case{"half the distance a second", {0, 0, 10}, true, 0.5f, 100, 1000, {0, 0, 5}, 5},
                          {"capped", {0, 0, 1000}, true, 0.5f, 100, 500, {0, 0, 50}, 100},
                          {"a plain speed", {0, 0, 10}, false, 3, 100, 1000, {0, 0, 3}, 3},
                          {"past its place", {0, 0, 1}, false, 50, 100, 1000, {0, 0, 50}, 50},
                          {"no speed", {0, 0, 10}, false, 0, 100, 1000, {}, 0},
                          {"backwards", {0, 0, 10}, false, -2, 100, 1000, {}, -2},
                          {"arrived", {0, 0, 0.00005f}, false, 3, 100, 1000, {}, 3},
                          {"a small rise is ignored", {0, 0.4f, 10}, false, 3, 100, 500, {0, 0, 1.5f}, 3},
                          {"nothing passed", {0, 0, 10}, false, 3, 100, 0, {}, 3}}) {
    context.cameraPosition = {};
    context.cameraLookAt = {9, 9, 9};
    context.elapsedMs = row.elapsed;
    float speed = row.speed;
    chase(context, math::identity(), {row.end, {1, 2, 3}, row.exponential, row.fastest}, speed);
    EXPECT_NEAR(math::length(math::subtract(context.cameraPosition, row.position)), 0, 1e-3) << row.name;
    EXPECT_FLOAT_EQ(speed, row.speedAfter) << row.name;
    const bool moves = row.speedAfter > 0 && row.end.z > 0.0001f;
    EXPECT_EQ(context.cameraLookAt.x, moves ? 1 : 9) << row.name;
  }
}

TEST_F(Following, SitsInTheSpaceOfAThingOrCirclesIt) {
  const math::Mat4 placed = math::multiply(math::rotationY(1.5707963f), math::translation(10, 0, 0));
  follow(context, placed, {10, 0, 0}, {0, 2, -5});
  EXPECT_NEAR(context.cameraPosition.x, 5, 1e-4);
  EXPECT_NEAR(context.cameraPosition.y, 2, 1e-4);
  EXPECT_EQ(context.cameraLookAt, (math::Vec3{10, 0, 0}));
  EXPECT_EQ(context.device->getTransform(device::Transform::View).m41, context.viewMatrix.m41);

  context.cameraPosition = {10, 0, -8};
  float distance = 0;
  circle(context, {10, 0, 0}, 1.5707963f, distance, 3);
  EXPECT_FLOAT_EQ(distance, 8);
  EXPECT_NEAR(context.cameraPosition.x, 10, 1e-4);
  EXPECT_NEAR(context.cameraPosition.y, 3, 1e-4);
  EXPECT_NEAR(context.cameraPosition.z, 8, 1e-4);
}

}  // namespace
}  // namespace ql::render
