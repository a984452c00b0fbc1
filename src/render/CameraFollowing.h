/// @file
/// The camera following and circling things.
#pragma once

#include "engine/EngineContext.h"

namespace ql::render {

/// How a camera chases.
struct Chase {
  math::Vec3 relativeEnd, lookAtIn;  ///< in the followed thing's space: where the camera wants to be and to look
  bool exponential = true;           ///< the speed is a share of the distance per second, else world units per second
  float fastest = 100;               ///< world units per second
};
/// Moves the camera towards its place and looks at the thing; a step longer than the way passes it. Nothing happens
/// when it has arrived. @param speed the one used is written back
void chase(engine::EngineContext& context, const math::Mat4& matrix, const Chase& how, float& speed);
/// Puts the camera at a place of the thing's space, looking at its position.
void follow(engine::EngineContext& context, const math::Mat4& matrix, const math::Vec3& position,
            const math::Vec3& relative);
/// Puts the camera on a circle about a position; the next frame loads the view.
/// @param angle radians @param distance world units; 0: becomes the current one @param altitude above the position
void circle(engine::EngineContext& context, const math::Vec3& position, float angle, float& distance, float altitude);

}  // namespace ql::render
