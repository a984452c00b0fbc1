#include "render/CameraFollowing.h"

#include "render/Camera.h"

#include <algorithm>
#include <cmath>

namespace ql::render {
namespace {

constexpr float kArrived = 0.0001f;  // world units

}  // namespace

void chase(engine::EngineContext& context, const math::Mat4& matrix, const Chase& how, float& speed) {
  math::Vec3 way = math::subtract(math::transformPoint(how.relativeEnd, matrix), context.cameraPosition);
  const float distance = math::length(way);
  if (how.exponential) speed *= distance;
  speed = std::min(speed, how.fastest);
  if (!(speed > 0) || !(distance >= kArrived)) return;
  const float seconds = static_cast<float>(context.elapsedMs) / 1000;
  if (std::abs(way.y) < seconds) way.y = 0;
  const math::Vec3 step = math::scale(math::normalize(way), speed * seconds);
  setCamera(context, math::add(context.cameraPosition, step), math::transformPoint(how.lookAtIn, matrix));
}

void follow(engine::EngineContext& context, const math::Mat4& matrix, const math::Vec3& position,
            const math::Vec3& relative) {
  setCamera(context, math::transformPoint(relative, matrix), position);
}

void circle(engine::EngineContext& context, const math::Vec3& position, float angle, float& distance, float altitude) {
  if (distance == 0) distance = math::length(math::subtract(position, context.cameraPosition));
  context.cameraLookAt = position;
  context.cameraPosition = math::add(position, {distance * std::cos(angle), altitude, distance * std::sin(angle)});
  context.viewMatrix = math::lookAt(context.cameraPosition, context.cameraLookAt, {0, 1, 0});
}

}  // namespace ql::render
