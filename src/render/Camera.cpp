#include "render/Camera.h"

#include <cmath>

namespace ql::render {
namespace {

constexpr math::Vec3 kUp{0, 1, 0};
constexpr double kHalfTurn = 3.141592653;                  // of rotations
constexpr double kHeadingHalfTurn = 3.141592;              // of headings
constexpr double kRadiansPerDegree = 0.01745328888888889;  // of directions in the ground plane
constexpr float kFrustumMargin = 30;                       // world units
constexpr float kPointRadius = 1;                          // world units

float rotationAngle(float degrees) { return static_cast<float>(degrees * kHalfTurn / 180); }

/// The view from position to look-at without roll; the next frame loads it.
void storeView(engine::EngineContext& context) {
  context.viewMatrix = math::lookAt(context.cameraPosition, context.cameraLookAt, kUp);
}

}  // namespace

void updateViewMatrix(engine::EngineContext& context) {
  storeView(context);
  if (context.cameraRoll != 0)
    context.viewMatrix =
        math::multiply(context.viewMatrix, math::rotationYawPitchRoll(0, 0, rotationAngle(context.cameraRoll)));
  if (context.device) context.device->setTransform(device::Transform::View, context.viewMatrix);
}

bool sphereInFrustum(engine::EngineContext& context, const math::Vec3& center, float radius) {
  if (!context.device) return false;
  const math::Vec3 placed = math::transformPoint(center, context.device->getTransform(device::Transform::World));
  for (const math::Plane& plane : context.frustumPlanes)
    if (math::distance(plane, placed) < -radius - kFrustumMargin) return false;
  return true;
}

float cameraHeading(const engine::EngineContext& context) {
  const math::Vec3 d = math::subtract(context.cameraLookAt, context.cameraPosition);
  if (d.z == 0) return 0;
  double angle = std::atan(static_cast<double>(d.x) / d.z);
  if (d.z < 0) angle += kHeadingHalfTurn;
  return static_cast<float>(angle * 180 / kHeadingHalfTurn);
}

void setCamera(engine::EngineContext& context, const math::Vec3& position, const math::Vec3& lookAt) {
  context.cameraPosition = position;
  context.cameraLookAt = lookAt;
  updateViewMatrix(context);
}

void setCameraPosition(engine::EngineContext& context, const math::Vec3& position) {
  setCamera(context, position, context.cameraLookAt);
}

void setCameraLookAt(engine::EngineContext& context, const math::Vec3& lookAt) {
  setCamera(context, context.cameraPosition, lookAt);
}

void setCameraRotation(engine::EngineContext& context, float degreesX, float degreesY) {
  const double x = degreesX * kRadiansPerDegree, y = degreesY * kRadiansPerDegree;
  const math::Vec3 direction{static_cast<float>(std::cos(x)), static_cast<float>(std::sin(y)),
                             static_cast<float>(std::sin(x))};
  setCameraLookAt(context, math::add(context.cameraPosition, direction));
}

void rotateAngles(engine::EngineContext& context, float x, float y, float z) {
  const math::Mat4 rotation = math::rotationYawPitchRoll(rotationAngle(y), rotationAngle(x), rotationAngle(z));
  const math::Vec3& p = context.cameraPosition;
  setCameraLookAt(context, math::transformPoint({0, 0, 1}, math::multiply(rotation, math::translation(p.x, p.y, p.z))));
}

void rotateCameraY(engine::EngineContext& context, float degreesPerSecond) {
  const float turned = degreesPerSecond * static_cast<float>(context.elapsedMs + 1) / 1000;
  setCameraRotation(context, 90 - cameraHeading(context) + turned, 0);
}

void moveForward(engine::EngineContext& context, float stepPerSecond, bool followGround, float eyeHeight) {
  const float step = stepPerSecond * static_cast<float>(context.elapsedMs) / 1000;
  const double angle = (90 - cameraHeading(context)) * kRadiansPerDegree;
  const math::Vec3 move{static_cast<float>(std::cos(angle) * step), 0, static_cast<float>(std::sin(angle) * step)};
  context.cameraLookAt = math::add(context.cameraLookAt, move);
  context.cameraPosition = math::add(context.cameraPosition, move);
  if (followGround && context.ground != nullptr) {
    const float ground = context.ground->height(context.cameraPosition.x, context.cameraPosition.z);
    const float rise = ground + eyeHeight - context.cameraPosition.y;
    context.cameraPosition.y += rise;
    context.cameraLookAt.y += rise;
  }
  storeView(context);
}

bool checkSphereVisibility(engine::EngineContext& context, const math::Vec3& center, float radius) {
  context.requireDevice().setTransform(device::Transform::World, context.worldMatrix);
  return sphereInFrustum(context, center, radius);
}

bool checkPointVisibility(engine::EngineContext& context, const math::Vec3& point) {
  return checkSphereVisibility(context, point, kPointRadius);
}

}  // namespace ql::render
