/// @file
/// The engine object's operations: device creation, the frame loop, settings, screenshots.
#pragma once

#include "engine/EngineContext.h"

#include <cstdint>
#include <functional>
#include <string>

namespace ql::engine {

inline constexpr std::intptr_t kFullScreen = 0, kOwnWindow = -1;

/// Starts an engine in a context: the log's banner, the root object, the flags.
void startEngine(EngineContext& context);
/// Releases everything in order; errors are ignored.
void releaseEngine(EngineContext& context);

/// Creates the device in a host's window, full screen (0) or in the engine's own window (-1), and sets the defaults.
bool initialize(EngineContext& context, std::intptr_t windowHandle);
/// Rebuilds the device for the focus window's client size; false when it does not act.
bool resizeDevice(EngineContext& context);
void resetDevice(EngineContext& context);
void setEngineMode(EngineContext& context, std::int32_t width, std::int32_t height, std::int32_t bitsPerPixel,
                   bool hardware, std::int16_t adapter);
void enableHardwareTransform(EngineContext& context, bool on);

/// Starts a frame.
void clear(EngineContext& context);
/// Ends and shows a frame.
void renderToScreen(EngineContext& context);
/// Pumps messages until the tick counter exceeds a value.
void pauseUntil(EngineContext& context, std::int32_t tick);
/// Fog off for what follows, when it is enabled.
void start2D(EngineContext& context);
/// Writes the back buffer as a 24-bit BMP file.
void screenShot(EngineContext& context, const std::string& fileName);

/// The planes of view × projection, normalised: left, right, top, bottom, near, far.
std::array<math::Plane, 6> frustumPlanes(const math::Mat4& view, const math::Mat4& projection);

}  // namespace ql::engine
