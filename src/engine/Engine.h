/// @file
/// The engine object's operations: device creation, the frame loop, settings, screenshots.
#pragma once

#include "engine/EngineContext.h"

#include <array>
#include <cstdint>
#include <string>

namespace ql::engine {

inline constexpr std::intptr_t kFullScreen = 0, kOwnWindow = -1;

/// Starts an engine in a context: the log's banner, the root object, the flags.
void startEngine(EngineContext& context);
/// Runs the release steps and gives up font, device, root object and windows, in order; errors are ignored.
void releaseEngine(EngineContext& context);

/// Creates the device in a host's window, full screen (0) or in the engine's own window (-1), and sets the defaults.
/// When the hardware device fails the reference device is tried; when that fails too a message box tells so.
/// @return whether there is a device; without one the context is as before any device was made
bool initialize(EngineContext& context, std::intptr_t windowHandle);
/// Rebuilds the device for the focus window's client size and tells those who keep something on it. It acts only on an
/// initialised, windowed device outside a frame whose window has a client area. @return whether it acted
bool resizeDevice(EngineContext& context);
/// Resets the device with unchanged parameters. @throws EngineError 91, device::DeviceError
void resetDevice(EngineContext& context);
/// The engine's own window, made on first use.
device::Window& internalWindow(EngineContext& context);
/// Stores the mode that the next initialize takes. @param bitsPerPixel 32, else 16 is meant
void setEngineMode(EngineContext& context, std::int32_t width, std::int32_t height, std::int32_t bitsPerPixel,
                   bool hardware, std::int16_t adapter);
/// Lets the user choose what the next initialize takes. @return whether the dialog was closed by OK; false, with a line
/// in the log, without a display @throws EngineError 5 when the stored adapter or device kind does not exist
bool showDriverDialog(EngineContext& context);
/// Whether the next initialize asks for hardware vertex processing.
void enableHardwareTransform(EngineContext& context, bool on);

/// Starts a frame: clears, draws the 2D background, loads the view, begins the scene.
/// @throws EngineError 91 before initialize, device::DeviceError
void clear(EngineContext& context);
/// Ends and shows a frame and advances the engine's time. @throws as clear
void renderToScreen(EngineContext& context);
/// Pumps messages once; waits a moment unless the tick counter exceeds a value (a point in time, not a duration), or
/// the value is 0. @return whether it does
bool pauseStep(EngineContext& context, std::int32_t tick);
/// Repeats pauseStep until it says so.
void pauseUntil(EngineContext& context, std::int32_t tick);
/// Fog off for what follows, when it is enabled.
void start2D(EngineContext& context);
/// Writes the back buffer as a 24-bit BMP file. @throws EngineError 91, device::DeviceError, host::FileFault
void screenShot(EngineContext& context, const std::string& fileName);

/// The planes of view × projection, normalised: left, right, top, bottom, near, far.
std::array<math::Plane, 6> frustumPlanes(const math::Mat4& view, const math::Mat4& projection);

}  // namespace ql::engine
