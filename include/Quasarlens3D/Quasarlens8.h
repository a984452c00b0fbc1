/// @file
/// The engine object: device creation, the frame loop, timing, settings, archives and screenshots.
#ifndef QUASARLENS3D_QUASARLENS8_H
#define QUASARLENS3D_QUASARLENS8_H

#include <Quasarlens3D/Error.h>
#include <Quasarlens3D/Event.h>
#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct EngineObject;
}

/// The engine. Create it first; everything else works through it. There is one engine at a time: a new engine object
/// ends the one before it, whose objects then throw Error 91. When the last reference goes, the engine releases its
/// textures, materials, level and device.
///
/// A frame is: Clear, the host's drawing, RenderToScreen.
class QUASARLENS3D_API Quasarlens8 : public Detail::Handle<Detail::EngineObject> {
 public:
  /// Starts the engine: a new diagnostics log with its banner, and the adapters. No device yet: see Initialize.
  Quasarlens8();
  Quasarlens8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Whether long operations draw their progress on the screen. True after creation.
  Boolean Console() const;
  void Console(Boolean OnOff);
  /// Whether every RenderToScreen draws the frame rate at (10, 10). False after creation.
  Boolean DisplayFPS() const;
  void DisplayFPS(Boolean OnOff);

  /// Asks for hardware vertex processing; kept in the user's settings, in force from the next Initialize.
  void EnableHardwareTL(Boolean OnOff);
  /// Writes the back buffer's width and height in pixels and its format number (21: 32 bits, 22: 32 bits without
  /// alpha, 23: 16 bits). All 0 before Initialize.
  void GetVideoMode(ByRef<std::int32_t> width, ByRef<std::int32_t> height, ByRef<std::int32_t> Format) const;
  /// SetEngineMode with the hardware device on adapter 0, then Initialize(0).
  /// @param width,height pixels @param BPP 32 for a 32-bit back buffer, anything else for 16 bits
  void Init3DFullscreen(std::int32_t width, std::int32_t height, std::int32_t BPP);
  /// Initialize(formHandle).
  Boolean Init3DWindowedMode(std::intptr_t formHandle);
  /// Initialize(0): full screen with the stored settings.
  Boolean InitCurrentVideoMode();
  /// Creates the device and sets the engine's default matrices, viewport and states. Each step is logged. When the
  /// hardware device cannot be created the reference device takes its place; InternalObjects8.GetDeviceKind tells.
  /// Without a display the device draws on a hidden surface.
  /// @param hwnd 0: full screen with the stored settings; -1: in the engine's own window; else a window of the host's
  /// @return true when a device was created; after false a message was shown and Initialize may be called again
  Boolean Initialize(std::intptr_t hwnd = 0);
  /// Rebuilds the device for the window's current size and raises RestoreObjectsAfterResize. Acts on a windowed
  /// device outside a frame when the client area is not empty; otherwise returns false and changes nothing.
  /// @throws Error with the device's code
  Boolean ResizeDevice();
  /// Resets the device with unchanged parameters. @throws Error 91 before Initialize, or with the device's code
  void ResetDevice();
  /// Stores the video mode in the user's settings, in force from the next Initialize.
  /// @param width,height pixels @param BPP 32 for a 32-bit back buffer, anything else for 16 bits
  /// @param Hardware true for the hardware device, false for the reference device (the software renderer)
  /// @param Adapter from 0
  void SetEngineMode(std::int32_t width, std::int32_t height, std::int32_t BPP, Boolean Hardware,
                     std::int16_t Adapter = 0);

  /// Shows the driver dialog and waits until the user closes it: adapter, device kind, full-screen video mode and
  /// hardware vertex processing. OK stores the choice in the user's settings, in force from the next Initialize;
  /// everything else leaves them as they were. Logged.
  /// @return true when it was closed by OK; false, with a line in the log, when there is no display
  /// @throws Error 5 when the stored adapter or device kind does not exist on this machine
  Boolean ShowDriverDialog();

  /// Starts a frame: clears colour (Scene8.SetSceneBackGround) and depth, loads the view and begins the scene.
  /// @throws Error 91 before Initialize, or with the device's code
  void Clear();
  /// Ends a frame and shows it: draws the frame rate, measures time, presents, and takes the frustum planes that the
  /// next frame culls with. @throws Error 91 before Initialize, or with the device's code
  void RenderToScreen();
  /// Frames per second, counted over the last second.
  float GetFPS() const;
  /// Milliseconds that the last frame took; a gap over 200 ms (a stall, the first frame) counts as 50.
  std::int32_t TimeElapsed() const;
  /// The tick counter in milliseconds.
  std::int32_t TickCount() const;
  /// Handles window messages until the tick counter is greater than a value, once at least.
  /// @param milliseconds a value of TickCount, not a duration
  void Pause(std::int32_t milliseconds);
  /// Writes the back buffer as a 24-bit BMP file, replacing it.
  /// @throws Error 91 before Initialize; 75, 76 when the file cannot be written
  void ScreenShot(const std::string& file);
  /// The caption of the engine's own window.
  void SetWindowTitle(const std::string& Title);
  /// Switches fog off for 2D drawing that follows in this frame.
  void Start2D();

  /// Opens a PAK archive: from now on a file that is not on disk is taken from it. Failures are logged only; an
  /// archive that is open already is closed and the manager is then closed.
  void OpenPAKFile(const std::string& Filename);
  /// Closes the archive; nothing when none is open.
  void ClosePAKFile();
  /// Makes a folder the current one for relative file names. Both "/" and "\" separate; letter case is ignored where
  /// no folder has it as written; a drive letter is dropped.
  /// @param Path gets a "\" at its end when it has none @throws Error 76 when there is no such folder
  void SetSearchDirectory(ByRef<std::string> Path);

  /// Whether the user asked to close the device's window.
  Boolean CloseRequested() const;

  /// Raised by ResizeDevice after the device was rebuilt.
  Event<>& RestoreObjectsAfterResize() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
