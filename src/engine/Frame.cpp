#include "engine/Engine.h"
#include "engine/OpenTarget.h"

#include <chrono>
#include <cmath>
#include <string>
#include <thread>

namespace ql::engine {
namespace {

constexpr std::uint32_t kLongestStep = 200, kStepAfterGap = 50;  // milliseconds
constexpr std::uint32_t kFpsPeriod = 1000;                       // milliseconds
constexpr std::uint32_t kFpsColor = 0xFFFF0000;
constexpr math::Rect kFpsPlace{10, 10, 0, 0};

void drawFps(EngineContext& context) {
  if (!context.systemFont) return;
  const std::string text = std::to_string(std::lround(context.framesPerSecond)) + " FPS";
  context.systemFont->drawText(context.requireDevice(), text, kFpsPlace, 0, kFpsColor);
}

/// The time base of all movement. The tick counter may wrap: differences are unsigned.
void updateFrameCounter(EngineContext& context) {
  const std::uint32_t now = context.ticks();
  ++context.frameCount;
  const std::uint32_t elapsed = now - static_cast<std::uint32_t>(context.lastTick);
  context.elapsedMs = static_cast<std::int32_t>(elapsed > kLongestStep ? kStepAfterGap : elapsed);
  context.lastTick = static_cast<std::int32_t>(now);
  if (now - static_cast<std::uint32_t>(context.lastFpsTick) > kFpsPeriod) {
    context.lastFpsTick = static_cast<std::int32_t>(now);
    context.framesPerSecond = static_cast<float>(context.frameCount);
    context.frameCount = 0;
  }
  if (context.displayFps) drawFps(context);
}

void countWork(EngineContext& context) {
  const device::Statistics& total = context.device->backEnd()->statistics();
  context.statistics = {.faces = context.facesThisFrame, .work = total - context.countedWork};
  context.countedWork = total;
  context.facesThisFrame = 0;
}

void switchFog(EngineContext& context, bool on) {
  if (context.fogEnabled) context.requireDevice().setRenderState(device::RenderState::FogEnable, on ? 1 : 0);
}

}  // namespace

void clear(EngineContext& context) {
  device::Device& device = context.requireDevice();
  endOpenTarget(context);
  device.clear({}, device::kClearTarget | device::kClearDepth, static_cast<std::uint32_t>(context.backgroundColor),
               1.0f, 0);
  if (context.drawBackground) context.drawBackground();
  device.setTransform(device::Transform::View, context.viewMatrix);
  device.beginScene();
  context.inFrame = true;
}

void renderToScreen(EngineContext& context) {
  device::Device& device = context.requireDevice();
  endOpenTarget(context);
  switchFog(context, false);
  updateFrameCounter(context);
  context.frameSteps.run(FrameStage::Effects);
  context.frameSteps.run(FrameStage::Cursor);
  device.endScene();
  context.inFrame = false;
  device.present();
  countWork(context);
  context.frameSteps.run(FrameStage::Input);
  switchFog(context, true);
  context.frustumPlanes = frustumPlanes(context.viewMatrix, context.projectionMatrix);
  context.frameSteps.run(FrameStage::EndOfFrame);
}

void start2D(EngineContext& context) { switchFog(context, false); }

bool pauseStep(EngineContext& context, std::int32_t tick) {
  context.platform.display->pump();
  if (tick == 0 || static_cast<std::int32_t>(context.ticks() - static_cast<std::uint32_t>(tick)) > 0) return true;
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return false;
}

void pauseUntil(EngineContext& context, std::int32_t tick) {
  while (!pauseStep(context, tick)) {
  }
}

std::array<math::Plane, 6> frustumPlanes(const math::Mat4& view, const math::Mat4& projection) {
  const math::Mat4 m = math::multiply(view, projection);
  return {math::normalize(math::Plane{m.m14 + m.m11, m.m24 + m.m21, m.m34 + m.m31, m.m44 + m.m41}),   // left
          math::normalize(math::Plane{m.m14 - m.m11, m.m24 - m.m21, m.m34 - m.m31, m.m44 - m.m41}),   // right
          math::normalize(math::Plane{m.m14 - m.m12, m.m24 - m.m22, m.m34 - m.m32, m.m44 - m.m42}),   // top
          math::normalize(math::Plane{m.m14 + m.m12, m.m24 + m.m22, m.m34 + m.m32, m.m44 + m.m42}),   // bottom
          math::normalize(math::Plane{m.m14 + m.m13, m.m24 + m.m23, m.m34 + m.m33, m.m44 + m.m43}),   // near
          math::normalize(math::Plane{m.m14 - m.m13, m.m24 - m.m23, m.m34 - m.m33, m.m44 - m.m43})};  // far
}

}  // namespace ql::engine
