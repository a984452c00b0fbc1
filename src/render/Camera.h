/// @file
/// The engine's one camera.
#pragma once

#include "engine/EngineContext.h"

#include <cstdint>

namespace ql::render {

/// Rebuilds the view matrix from position, look-at and roll, and loads it (stored only while there is no device).
void updateViewMatrix(engine::EngineContext& context);
/// Whether a sphere, placed by the device's world transform, reaches into the frustum of the previous frame, with a
/// margin of 30 world units. Errors count as not visible.
bool sphereInFrustum(engine::EngineContext& context, const math::Vec3& center, float radius);
/// Heading in degrees from +z towards +x; 0 when the camera looks along no or exactly along the x axis.
float cameraHeading(const engine::EngineContext& context);

void setCamera(engine::EngineContext& context, const math::Vec3& position, const math::Vec3& lookAt);
void setCameraPosition(engine::EngineContext& context, const math::Vec3& position);
void setCameraLookAt(engine::EngineContext& context, const math::Vec3& lookAt);
/// Look-at = position + (cos x, sin y, sin x); degrees.
void setCameraRotation(engine::EngineContext& context, float degreesX, float degreesY);
/// Turns to angles about the three axes, degrees, from looking along +z.
void rotateAngles(engine::EngineContext& context, float x, float y, float z);
/// Turns about the vertical axis by a speed over the last frame's time and levels the look direction.
void rotateCameraY(engine::EngineContext& context, float degreesPerSecond);
/// Walks along the heading; follows the ground at an eye height (world units) when there is ground. The next frame
/// loads the view.
void moveForward(engine::EngineContext& context, float stepPerSecond, bool followGround, float eyeHeight);
/// Whether a sphere in world coordinates reaches into the frustum; the device's world transform becomes the engine's.
/// @throws engine::EngineError 91 without a device
bool checkSphereVisibility(engine::EngineContext& context, const math::Vec3& center, float radius);
/// As checkSphereVisibility, with a sphere of radius 1.
bool checkPointVisibility(engine::EngineContext& context, const math::Vec3& point);

}  // namespace ql::render
