/// @file
/// Fades, flashes, the display's gamma, and fog.
#pragma once

#include "engine/EngineContext.h"

#include <cstdint>

namespace ql::render {

enum class Fade : std::int16_t { In = 1, Out = 2 };

/// What runs; a fade and a flash never both.
struct EffectState {
  bool fadeActive = false;
  Fade fadeMode = Fade::In;
  float fadeSpeed = 0;     ///< milliseconds for the whole fade
  double fadeElapsed = 0;  ///< milliseconds so far

  bool flashActive = false;
  double flashElapsed = 0;  ///< milliseconds so far
  math::Color4 flashColor;
};

/// From black to the picture, or from the picture to black, starting with the next frame's end; a flash ends.
/// @param milliseconds for the whole fade; 0 or less: one frame
void startFade(engine::EngineContext& context, Fade mode, float milliseconds);
void stopFade(engine::EngineContext& context);
/// A colour that vanishes within half a second; a fade ends. Components 0 to 1.
/// @throws std::domain_error, std::overflow_error for components that cannot be packed
void startFlash(engine::EngineContext& context, float red, float green, float blue);
void stopFlash(engine::EngineContext& context);
/// Covers the picture with a colour now. @throws as startFlash; engine::EngineError 91 without a device,
/// device::DeviceError outside a frame
void drawVeil(engine::EngineContext& context, const math::Color4& color);
/// Advances what runs by the last frame's time, at most 200 ms (a longer time is shortened for all that reads it later
/// in the frame), and draws it over the picture.
void stepEffects(engine::EngineContext& context);

/// Scales what the display gives out: 1 leaves pictures (almost) as they are. @throws engine::EngineError 91 without a
/// device
void changeGamma(engine::EngineContext& context, float gamma);

struct Fog {
  bool enabled = false;
  math::Color4 color;
  float density = 0;
  float start = 1, end = 1000;  ///< world units
};
/// Linear fog by vertex; by pixel when it is volumetric. @throws engine::EngineError 91 without a device
void setFog(engine::EngineContext& context, const Fog& fog, bool volumetric);

}  // namespace ql::render
