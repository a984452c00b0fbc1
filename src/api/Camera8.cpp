#include "api/Guard.h"
#include "api/Meshes.h"
#include "api/Numbers.h"
#include "render/Camera.h"
#include "render/CameraFollowing.h"

#include <Quasarlens3D/Camera8.h>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using api::toSingle;
using Detail::CameraObject;

namespace {

const mesh::MeshRecord& recordOf(CameraObject& self, const Mesh8& mesh) {
  return mesh::meshRecord(*self.context, api::handleOf(mesh).slot);
}

}  // namespace

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

void Camera8::PurchaseFollowing(const Mesh8& MeshObject, const Vec3& RelativeEndPosition, const Vec3& LookAtInMesh,
                                ByRef<float> CameraSpeed, Boolean ExponentialSpeed, float MaxCameraSpeed,
                                Boolean /*AvoidObject*/) {
  call(*this, [&](CameraObject& self) {
    const auto& mesh = api::Access::pointer(MeshObject);
    if (!mesh || mesh->context != self.context) return;
    render::chase(*self.context, recordOf(self, MeshObject).worldMatrix,
                  {RelativeEndPosition, LookAtInMesh, ExponentialSpeed, MaxCameraSpeed}, *CameraSpeed);
  });
}
void Camera8::SimpleFollowing(const Mesh8& MeshObject, const Vec3& RelativePosition, Boolean /*WithCameraMove*/) {
  call(*this, [&](CameraObject& self) {
    const mesh::MeshRecord& mesh = recordOf(self, MeshObject);
    render::follow(*self.context, mesh.worldMatrix, mesh.position, RelativePosition);
  });
}
void Camera8::RotateAroundMesh(const Mesh8& DestMesh, Boolean AddMeshRotation, float DegreesAngle,
                               ByRef<float> Distance, float CameraRelativeAltitude) {
  call(*this, [&](CameraObject& self) {
    const mesh::MeshRecord& mesh = recordOf(self, DestMesh);
    const float angle = DegreesAngle + (AddMeshRotation ? mesh.rotation.y : 0);
    render::circle(*self.context, mesh.position, angle, *Distance, CameraRelativeAltitude);
  });
}
void Camera8::LookAtMesh(const Mesh8& Mesh) {
  call(*this, [&](CameraObject& self) { render::setCameraLookAt(*self.context, recordOf(self, Mesh).position); });
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
