#include "RenderTest.h"
#include "render/Camera.h"

#include <cmath>
#include <cstring>

namespace ql::render {
namespace {

struct Cameras : test::RenderTest {
  void expectNear(const math::Vec3& got, const math::Vec3& want, const std::string& what = "") {
    EXPECT_NEAR(got.x, want.x, 1e-3f) << what;
    EXPECT_NEAR(got.y, want.y, 1e-3f) << what;
    EXPECT_NEAR(got.z, want.z, 1e-3f) << what;
  }
  math::Mat4 loadedView() { return context.device->getTransform(device::Transform::View); }
};

TEST_F(Cameras, HeadingRunsFromZTowardsX) {
  struct Case {
    math::Vec3 lookAt;
    float heading;
  };
  for (const Case& row : {Case{{0, 0, 10}, 0},
                          {{10, 0, 0}, 0},
                          {{1, 5, 1}, 45},
                          {{-1, 0, 1}, -45},
                          {{-1, 0, -1}, 225.00001f},
                          {{1, 0, -1}, 135},
                          {{0, 0, -3}, 180},
                          {{0, 0, 0}, 0}}) {
    setCamera(context, {0, 0, 0}, row.lookAt);
    EXPECT_NEAR(cameraHeading(context), row.heading, 2e-5f) << row.lookAt.x << " " << row.lookAt.z;
  }
}

TEST_F(Cameras, MovesReachTheDeviceAtOnceOrWithTheNextFrame) {
  struct Case {
    const char* name;
    std::function<void()> move;
    bool atOnce;
  };
  context.elapsedMs = 50;
  const Case cases[] = {
      {"SetCamera",
       [&] {
         setCamera(context, {1, 2, 3}, {4, 5, 6});
       },
       true},
      {"SetCameraPosition",
       [&] {
         setCameraPosition(context, {1, 2, 4});
       },
       true},
      {"SetCameraLookAt",
       [&] {
         setCameraLookAt(context, {7, 8, 9});
       },
       true},
      {"SetCameraRotation", [&] { setCameraRotation(context, 30, 10); }, true},
      {"RotateAngles", [&] { rotateAngles(context, 10, 20, 0); }, true},
      {"RotateCameraY", [&] { rotateCameraY(context, 90); }, true},
      {"MoveForward", [&] { moveForward(context, 100, false, 10); }, false},
  };
  for (const Case& row : cases) {
    recorder.clear();
    row.move();
    EXPECT_EQ(recorder.calls().size(), row.atOnce ? 1u : 0u) << row.name;
    const math::Mat4 view = context.viewMatrix;
    // The eye lies at the origin of view space, the look-at point on its z axis.
    expectNear(math::transformPoint(context.cameraPosition, view), {0, 0, 0}, row.name);
    const math::Vec3 ahead = math::transformPoint(context.cameraLookAt, view);
    EXPECT_NEAR(std::hypot(ahead.x, ahead.y), 0, 1e-3) << row.name;
    EXPECT_GT(ahead.z, 0) << row.name;
    const math::Mat4 loaded = loadedView();
    EXPECT_EQ(std::memcmp(&view, &loaded, sizeof view) == 0, row.atOnce) << row.name;
    engine::clear(context);
    EXPECT_EQ(loadedView().m41, context.viewMatrix.m41) << row.name;
    context.device->endScene();
  }
}

TEST_F(Cameras, RotationTurnsTheLookAtPoint) {
  setCameraPosition(context, {10, 20, 30});
  struct Case {
    float x, y;
    math::Vec3 direction;
  };
  const float half = std::sqrt(0.5f);
  for (const Case& row :
       {Case{90, 0, {0, 0, 1}}, {0, 0, {1, 0, 0}}, {180, 30, {-1, 0.5f, 0}}, {45, -90, {half, -1, half}}}) {
    setCameraRotation(context, row.x, row.y);
    expectNear(math::subtract(context.cameraLookAt, context.cameraPosition), row.direction);
  }
  struct Angles {
    float x, y, z;
    math::Vec3 direction;
  };
  for (const Angles& row : {Angles{0, 0, 0, {0, 0, 1}},
                            {0, 90, 0, {1, 0, 0}},
                            {90, 0, 0, {0, -1, 0}},
                            {0, 0, 77, {0, 0, 1}},
                            {30, 90, 0, {std::sqrt(0.75f), -0.5f, 0}}}) {
    rotateAngles(context, row.x, row.y, row.z);
    expectNear(math::subtract(context.cameraLookAt, context.cameraPosition), row.direction);
  }
}

TEST_F(Cameras, RollTurnsAboutTheViewAxis) {
  context.cameraRoll = 90;
  setCamera(context, {5, 0, 0}, {5, 0, 10});
  // What stood above the camera now stands beside it.
  expectNear(math::transformPoint({5, 1, 10}, context.viewMatrix), {-1, 0, 10});
  expectNear(math::transformPoint({5, 1, 10}, loadedView()), {-1, 0, 10});
}

TEST_F(Cameras, TurningCountsOneMillisecondMoreAndLevelsTheView) {
  setCamera(context, {0, 7, 0}, {0, 9, 10});
  context.elapsedMs = 99;
  rotateCameraY(context, 100);  // 10 degrees from the x axis towards the z axis: the heading falls
  EXPECT_NEAR(cameraHeading(context), -10, 1e-3f);
  EXPECT_EQ(context.cameraLookAt.y, 7);
}

struct Hill : engine::GroundHeight {
  float height(float x, float z) const override { return x + 2 * z; }
};

TEST_F(Cameras, WalkingFollowsTheHeadingAndTheGround) {
  context.elapsedMs = 50;
  setCamera(context, {0, 3, 0}, {1, 2, 1});
  moveForward(context, 100, false, 10);
  const float half = 5 * std::sqrt(0.5f);
  expectNear(context.cameraPosition, {half, 3, half});
  expectNear(context.cameraLookAt, {half + 1, 2, half + 1});
  moveForward(context, -100, true, 10);
  expectNear(context.cameraPosition, {0, 3, 0}, "no ground, no rise");
  const Hill hill;
  context.ground = &hill;
  moveForward(context, 100, true, 10);
  expectNear(context.cameraPosition, {half, 3 * half + 10, half});
  expectNear(context.cameraLookAt, {half + 1, 3 * half + 9, half + 1}, "the slope of the view stays");
  context.elapsedMs = 0;
  const math::Vec3 before = context.cameraPosition;
  moveForward(context, 100, false, 10);
  EXPECT_EQ(context.cameraPosition, before);
}

TEST_F(Cameras, SpheresAreCulledBeyondAMarginOf30) {
  setCamera(context, {0, 0, 0}, {0, 0, 1});
  engine::clear(context);
  engine::renderToScreen(context);  // the planes of this view
  struct Case {
    int plane;
    float outside;  ///< distance of the centre outside that plane
    bool visible;
  };
  for (int plane = 0; plane < 6; ++plane)
    for (const auto& [outside, visible] : {std::pair{30.5f, true}, {31.5f, false}}) {
      const math::Plane& p = context.frustumPlanes[static_cast<std::size_t>(plane)];
      // From a point on the axis, on the plane, outwards.
      math::Vec3 on{0, 0, plane == 4 ? 1.0f : plane == 5 ? context.farPlane : 100.0f};
      on = math::subtract(on, math::scale({p.a, p.b, p.c}, math::distance(p, on) + outside));
      EXPECT_EQ(checkSphereVisibility(context, on, 1), visible) << plane << " " << outside;
      EXPECT_EQ(checkPointVisibility(context, on), visible) << plane << " " << outside;
    }
  // The device's world transform places the sphere.
  context.device->setTransform(device::Transform::World, math::translation(0, 0, -500));
  EXPECT_FALSE(sphereInFrustum(context, {0, 0, 100}, 1));
  EXPECT_TRUE(checkSphereVisibility(context, {0, 0, 100}, 1));
  EXPECT_TRUE(sphereInFrustum(context, {0, 0, 100}, 1)) << "the check put the transform back";
}

TEST_F(Cameras, DegenerateViewsDoNoHarm) {
  for (const auto& [position, lookAt] :
       {std::pair<math::Vec3, math::Vec3>{{1, 2, 3}, {1, 2, 3}}, {{0, 0, 0}, {0, 9, 0}}}) {
    setCamera(context, position, lookAt);
    moveForward(context, 10, false, 0);
    rotateCameraY(context, 0);
    setCamera(context, position, lookAt);
    engine::clear(context);
    engine::renderToScreen(context);
    for (const math::Plane& plane : context.frustumPlanes) EXPECT_TRUE(std::isfinite(plane.a + plane.d));
  }
}

TEST_F(Cameras, ValuesAreKeptWithoutADevice) {
  engine::EngineContext idle(machine.platform());
  setCamera(idle, {1, 2, 3}, {1, 2, 4});
  EXPECT_EQ(idle.viewMatrix.m43, -3);
  EXPECT_FALSE(sphereInFrustum(idle, {0, 0, 0}, 1));
  EXPECT_THROW(checkPointVisibility(idle, {0, 0, 0}), engine::EngineError);
}

}  // namespace
}  // namespace ql::render
