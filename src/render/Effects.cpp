#include "render/Effects.h"

#include "platform/utility/StateGuard.h"
#include "render/Screen.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace ql::render {
namespace {

using device::RenderState;

constexpr std::int32_t kLongestStep = 200;  // milliseconds
constexpr double kFlashDuration = 500;      // milliseconds

/// Adds a frame's time. @return the part of the duration that has passed, 1 at its end
float advance(double& elapsed, double duration, std::int32_t milliseconds) {
  elapsed += milliseconds;
  return elapsed < duration ? static_cast<float>(elapsed / duration) : 1.0f;
}

}  // namespace

void startFade(engine::EngineContext& context, Fade mode, float milliseconds) {
  EffectState& state = context.get<EffectState>();
  state.fadeActive = true;
  state.fadeMode = mode;
  state.fadeSpeed = milliseconds;
  state.fadeElapsed = 0;
  state.flashActive = false;
}

void stopFade(engine::EngineContext& context) {
  EffectState& state = context.get<EffectState>();
  state.fadeActive = false;
  state.fadeElapsed = 0;
}

void startFlash(engine::EngineContext& context, float red, float green, float blue) {
  const math::Color4 color{red, green, blue, 0};
  (void)math::packColor(color);  // refuse here what would fail in the middle of a frame
  EffectState& state = context.get<EffectState>();
  state.fadeActive = false;
  state.flashActive = true;
  state.flashElapsed = 0;
  state.flashColor = color;
}

void stopFlash(engine::EngineContext& context) {
  EffectState& state = context.get<EffectState>();
  state.flashActive = false;
  state.flashElapsed = 0;
}

void drawVeil(engine::EngineContext& context, const math::Color4& color) {
  // The host knows nothing of this box, so that every state is put back.
  utility::StateGuard guard(context.requireDevice());
  guard.overlay(nullptr, device::Filter::Linear);
  guard.render(RenderState::Lighting, 0);
  guard.render(RenderState::AlphaBlendEnable, 0xFFFFFFFF);
  const device::PresentParameters& frame = context.presentParameters;
  const Corners whole{0, 0, static_cast<float>(frame.backBufferWidth), static_cast<float>(frame.backBufferHeight)};
  activeScreen(context).drawFilledBox(whole, math::packColor(color), true);
}

void stepEffects(engine::EngineContext& context) {
  EffectState& state = context.get<EffectState>();
  if (!state.fadeActive && !state.flashActive) return;
  context.elapsedMs = std::min(context.elapsedMs, kLongestStep);
  if (state.fadeActive) {
    const float progress = advance(state.fadeElapsed, state.fadeSpeed, context.elapsedMs);
    if (progress >= 1) state.fadeActive = false;
    drawVeil(context, {0, 0, 0, state.fadeMode == Fade::Out ? progress : 1 - progress});
  }
  if (state.flashActive) {
    const float progress = advance(state.flashElapsed, kFlashDuration, context.elapsedMs);
    if (progress >= 1) state.flashActive = false;
    const math::Color4& color = state.flashColor;
    drawVeil(context, {color.r, color.g, color.b, 1 - progress});
  }
}

void changeGamma(engine::EngineContext& context, float gamma) {
  device::Device& device = context.requireDevice();
  device::GammaRamp ramp = device.getGammaRamp();
  for (std::size_t i = 0; i < ramp.red.size(); ++i) {
    const double value = std::nearbyint(static_cast<double>(i) * gamma * 255);
    // Not a number gives black, as anything below it.
    const auto level = static_cast<std::uint16_t>(value > 0 ? std::min(value, 65535.0) : 0.0);
    ramp.red[i] = ramp.green[i] = ramp.blue[i] = level;
  }
  device.setGammaRamp(ramp);
}

void setFog(engine::EngineContext& context, const Fog& fog, bool volumetric) {
  device::Device& device = context.requireDevice();
  const math::Color4 opaque{fog.color.r, fog.color.g, fog.color.b, 1};
  const auto color = static_cast<std::uint32_t>(math::packColor(opaque));
  const auto mode = [](device::FogMode value) { return static_cast<std::uint32_t>(value); };
  device.setRenderState(RenderState::FogVertexMode, mode(volumetric ? device::FogMode::None : device::FogMode::Linear));
  if (volumetric) device.setRenderState(RenderState::FogTableMode, mode(device::FogMode::Linear));
  device.setRenderState(RenderState::FogEnable, fog.enabled ? 0xFFFFFFFF : 0);
  device.setRenderState(RenderState::FogColor, color);
  device.setRenderState(RenderState::FogStart, std::bit_cast<std::uint32_t>(fog.start));
  device.setRenderState(RenderState::FogEnd, std::bit_cast<std::uint32_t>(fog.end));
  device.setRenderState(RenderState::FogDensity, std::bit_cast<std::uint32_t>(fog.density));
  context.fogEnabled = fog.enabled;
}

}  // namespace ql::render
