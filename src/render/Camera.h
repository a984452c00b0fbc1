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
/// Heading in degrees from +z towards +x.
float cameraHeading(const engine::EngineContext& context);

void setCamera(engine::EngineContext& context, const math::Vec3& position, const math::Vec3& lookAt);
/// Look-at = position + (cos x, sin y, sin x); degrees.
void setCameraRotation(engine::EngineContext& context, float degreesX, float degreesY);
/// Turns to angles about the three axes, degrees, from looking along +z.
void rotateAngles(engine::EngineContext& context, float x, float y, float z);
void rotateCameraY(engine::EngineContext& context, float degreesPerSecond);
/// Walks along the heading; follows the ground at an eye height when there is ground.
void moveForward(engine::EngineContext& context, float stepPerSecond, bool followGround, float eyeHeight);
bool checkSphereVisibility(engine::EngineContext& context, const math::Vec3& center, float radius);

}  // namespace ql::render
