#include "api/Guard.h"
#include "api/Numbers.h"
#include "render/Camera.h"

#include <Quasarlens3D/Camera8.h>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using api::toSingle;
using Detail::CameraObject;

Camera8::Camera8() : Handle(api::create<CameraObject>()) {}
Camera8::Camera8(std::nullptr_t) noexcept : Handle(nullptr) {}

void Camera8::SetCamera(double PosX, double PosY, double PosZ, double LookAtX, double LookAtY, double LookAtZ) {
  call(*this, [&](CameraObject& self) {
    render::setCamera(*self.context, {toSingle(PosX), toSingle(PosY), toSingle(PosZ)},
                      {toSingle(LookAtX), toSingle(LookAtY), toSingle(LookAtZ)});
  });
}
void Camera8::SetCameraPosition(float x, float y, float z) {
  call(*this, [&](CameraObject& self) { render::setCameraPosition(*self.context, {x, y, z}); });
}
void Camera8::SetCameraLookAt(float x, float y, float z) {
  call(*this, [&](CameraObject& self) { render::setCameraLookAt(*self.context, {x, y, z}); });
}
void Camera8::SetCameraRotation(float DegreesX, float DegreesY) {
  call(*this, [&](CameraObject& self) { render::setCameraRotation(*self.context, DegreesX, DegreesY); });
}
void Camera8::RotateAngles(float x, float y, float z) {
  call(*this, [&](CameraObject& self) { render::rotateAngles(*self.context, x, y, z); });
}
void Camera8::SetCameraRool(float Degrees) {
  call(*this, [&](CameraObject& self) { self.context->cameraRoll = Degrees; });
}
void Camera8::RotateCameraY(float DegreesPerSecond) {
  call(*this, [&](CameraObject& self) { render::rotateCameraY(*self.context, DegreesPerSecond); });
}
void Camera8::MoveForward(float StepPerSecond, Boolean FollowLandscapeAltitude, Boolean /*CheckCollide*/) {
  call(*this, [&](CameraObject& self) {
    render::moveForward(*self.context, StepPerSecond, FollowLandscapeAltitude, self.eyeHeight);
  });
}
void Camera8::SetPlayerEyeHeight(float height) {
  call(*this, [&](CameraObject& self) { self.eyeHeight = height; });
}

Vec3 Camera8::GetCameraPosition() const {
  return call(*this, [](CameraObject& self) { return self.context->cameraPosition; });
}
Vec3 Camera8::GetCameraLookAt() const {
  return call(*this, [](CameraObject& self) { return self.context->cameraLookAt; });
}
float Camera8::GetCameraRotationX() const {
  return call(*this, [](CameraObject&) { return 0.0f; });
}
float Camera8::GetCameraRotationY() const {
  return call(*this, [](CameraObject& self) { return render::cameraHeading(*self.context); });
}
Mat4 Camera8::GetMatrix() const {
  return call(*this, [](CameraObject& self) { return self.context->viewMatrix; });
}
void Camera8::SetMatrix(const Mat4& Matrix) {
  call(*this, [&](CameraObject& self) { self.context->viewMatrix = Matrix; });
}

Boolean Camera8::CheckPointVisibility(double PointX, double PointY, double PointZ) const {
  return call(*this, [&](CameraObject& self) {
    return render::checkPointVisibility(*self.context, {toSingle(PointX), toSingle(PointY), toSingle(PointZ)});
  });
}
Boolean Camera8::CheckSphereVisibility(double CenterX, double CenterY, double CenterZ, float Radius) const {
  return call(*this, [&](CameraObject& self) {
    return render::checkSphereVisibility(*self.context, {toSingle(CenterX), toSingle(CenterY), toSingle(CenterZ)},
                                         Radius);
  });
}

}  // namespace Quasarlens3D
