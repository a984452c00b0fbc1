/// @file
/// The camera.
#ifndef QUASARLENS3D_CAMERA8_H
#define QUASARLENS3D_CAMERA8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Mesh8.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>

namespace Quasarlens3D {

namespace Detail {
struct CameraObject;
}

/// A view onto the engine's one camera: every Camera8 reads and moves the same position and look-at point; only the
/// eye height is each object's own. The camera starts at (0, 0, 0) looking at (0, 0, 1). Positions are in world units,
/// y up; angles in degrees. What moves is scaled by Quasarlens8.TimeElapsed.
class QUASARLENS3D_API Camera8 : public Detail::Handle<Detail::CameraObject> {
 public:
  Camera8();
  Camera8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Places the camera and the point that it looks at. The two must differ. @throws Error 6 for numbers beyond a single
  void SetCamera(double PosX, double PosY, double PosZ, double LookAtX, double LookAtY, double LookAtZ);
  void SetCameraPosition(float x, float y, float z);
  void SetCameraLookAt(float x, float y, float z);
  /// Looks at position + (cos DegreesX, sin DegreesY, sin DegreesX): DegreesX turns from +x towards +z.
  void SetCameraRotation(float DegreesX, float DegreesY);
  /// Looks along +z turned by z about the z axis, then by x about the x axis, then by y about the y axis.
  void RotateAngles(float x, float y, float z);
  /// Rolls the camera about its view axis, from the next change of position or look-at point on.
  void SetCameraRool(float Degrees);
  /// Turns about the vertical axis from the current heading, and looks level.
  void RotateCameraY(float DegreesPerSecond);
  /// Walks along the heading; the look-at point moves along. The view follows at the next Clear.
  /// @param StepPerSecond world units; negative walks back
  /// @param FollowLandscapeAltitude keeps the eye height above the landscape; nothing without a landscape
  /// @param CheckCollide no effect
  void MoveForward(float StepPerSecond, Boolean FollowLandscapeAltitude = False, Boolean CheckCollide = False);
  /// The height above the landscape that this object's MoveForward keeps; 10 after creation.
  void SetPlayerEyeHeight(float height);

  /// Chases a mesh: moves towards a place and looks at a point, both in the mesh's own space. Nothing happens when it
  /// has arrived, or without a mesh. @param CameraSpeed world units per second; the speed used is written back
  /// @param ExponentialSpeed CameraSpeed is the share of the distance that is covered per second
  /// @param MaxCameraSpeed world units per second @param AvoidObject no effect
  void PurchaseFollowing(const Mesh8& MeshObject, const Vec3& RelativeEndPosition, const Vec3& LookAtInMesh,
                         ByRef<float> CameraSpeed, Boolean ExponentialSpeed = True, float MaxCameraSpeed = 100.0f,
                         Boolean AvoidObject = False);
  /// Sits at a place of a mesh's own space and looks at the mesh's position. @param WithCameraMove no effect
  /// @throws Error 91 for nothing (here and below)
  void SimpleFollowing(const Mesh8& MeshObject, const Vec3& RelativePosition, Boolean WithCameraMove = True);
  /// Sits on a circle about a mesh and looks at it; the view follows at the next Clear.
  /// @param AddMeshRotation adds the mesh's rotation about y to the angle
  /// @param DegreesAngle radians, from +x towards +z (the mesh's rotation is added as it is, in degrees)
  /// @param Distance world units; 0 becomes the current distance @param CameraRelativeAltitude above the mesh
  void RotateAroundMesh(const Mesh8& DestMesh, Boolean AddMeshRotation, float DegreesAngle, ByRef<float> Distance = 0,
                        float CameraRelativeAltitude = 0);
  void LookAtMesh(const Mesh8& Mesh);

  Vec3 GetCameraPosition() const;
  Vec3 GetCameraLookAt() const;
  /// Always 0.
  float GetCameraRotationX() const;
  /// Heading from +z towards +x: (-90, 90) looking to +z, (90, 270) looking to -z; 0 when the direction has no z.
  float GetCameraRotationY() const;
  /// The view matrix.
  Mat4 GetMatrix() const;
  /// Replaces the view matrix until the camera moves; the next Clear loads it.
  void SetMatrix(const Mat4& Matrix);

  /// Whether a point lies in the view of the last finished frame, with a margin of 31 world units.
  /// @throws Error 91 before Quasarlens8.Initialize
  Boolean CheckPointVisibility(double PointX, double PointY, double PointZ) const;
  /// Whether a sphere reaches into the view of the last finished frame, with a margin of 30 world units.
  /// @throws Error 91 before Quasarlens8.Initialize
  Boolean CheckSphereVisibility(double CenterX, double CenterY, double CenterZ, float Radius) const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
