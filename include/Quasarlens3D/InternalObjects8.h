/// @file
/// The engine's inner objects, for hosts that need more than the classes offer.
#ifndef QUASARLENS3D_INTERNALOBJECTS8_H
#define QUASARLENS3D_INTERNALOBJECTS8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Texture8.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Quasarlens3D {

namespace Detail {
struct RootObject;
struct DeviceHandleObject;
struct UtilityObject;
struct DeviceTextureObject;
struct SurfaceHandleObject;
struct InternalsObject;
}  // namespace Detail

/// The root of the rendering devices.
class QUASARLENS3D_API Direct3DObject : public Detail::Handle<Detail::RootObject> {
 public:
  /// Nothing.
  Direct3DObject() noexcept;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

/// The rendering device.
class QUASARLENS3D_API DeviceObject : public Detail::Handle<Detail::DeviceHandleObject> {
 public:
  /// Nothing.
  DeviceObject() noexcept;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

/// The utility library.
class QUASARLENS3D_API D3DXObject : public Detail::Handle<Detail::UtilityObject> {
 public:
  /// Nothing.
  D3DXObject() noexcept;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

/// A texture of the device.
class QUASARLENS3D_API TextureObject : public Detail::Handle<Detail::DeviceTextureObject> {
 public:
  /// Nothing.
  TextureObject() noexcept;
  /// Size of its largest level, pixels. @throws Error 91 for nothing
  std::int32_t Width() const;
  std::int32_t Height() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

/// A picture of the device.
class QUASARLENS3D_API SurfaceObject : public Detail::Handle<Detail::SurfaceHandleObject> {
 public:
  /// Nothing.
  SurfaceObject() noexcept;
  /// Size in pixels. @throws Error 91 for nothing
  std::int32_t Width() const;
  std::int32_t Height() const;
  /// The format's number: 21 A8R8G8B8, 22 X8R8G8B8, 23 R5G6B5, ...
  std::int32_t Format() const;
  /// All pixels, rows from the top, each packed 0xAARRGGBB whatever the format (255 for a missing alpha). Reading the
  /// back buffer waits until what was drawn is finished. @throws Error 91 for nothing, or with the device's code
  std::vector<std::uint32_t> ReadPixels() const;
  /// Waits until what was drawn is finished, for those who measure time: a device may work on after RenderToScreen.
  /// @throws Error 91 for nothing, or with the device's code
  void Wait() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

/// Which device the engine draws with.
enum CONST_QL_DEVICEKIND : std::int32_t {
  QL_DEVICE_NONE = 0,  ///< before Quasarlens8.Initialize
  QL_DEVICE_HARDWARE = 1,
  QL_DEVICE_REFERENCE = 2  ///< the software renderer
};

/// What the last finished frame drew.
struct FrameStatistics {
  std::uint32_t faces = 0;      ///< of levels, each counted once
  std::uint64_t triangles = 0;  ///< handed to the device, all passes
  std::uint64_t drawCalls = 0;
  // What the reference device tells of its work; all 0 on the hardware device. Every triangle is either culled or
  // drawn.
  std::uint64_t trianglesCulled = 0;   ///< turned away, without area, or outside the view
  std::uint64_t trianglesClipped = 0;  ///< cut at the near or the far plane or far outside the picture
  std::uint64_t trianglesDrawn = 0;
  std::uint64_t pixelsShaded = 0;  ///< colours computed: pixels inside a primitive that passed the depth test
  std::uint64_t tilesTouched = 0;  ///< parts of 64 x 64 pixels that were drawn on or cleared, each time they were
  // Milliseconds of each stage, of all threads together.
  double verticesMs = 0;  ///< transforming and lighting
  double binningMs = 0;   ///< culling and clipping, and sorting triangles by tiles
  double tilesMs = 0;     ///< setting triangles up and drawing pixels
};

/// Access to the engine's inner objects. It has no state of its own; each call returns a new reference.
class QUASARLENS3D_API InternalObjects8 : public Detail::Handle<Detail::InternalsObject> {
 public:
  InternalObjects8();
  InternalObjects8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// The device's back buffer. @throws Error 91 before Quasarlens8.Initialize
  SurfaceObject GetBackbuffer() const;
  /// The utility library.
  D3DXObject GetD3DXLibrary() const;
  /// The device; nothing before Quasarlens8.Initialize.
  DeviceObject GetDevice3D() const;
  /// The root object; nothing without an engine object.
  Direct3DObject GetDirect3D() const;

  /// The device's texture behind a handle; nothing when the picture could not be loaded.
  /// @throws Error 91 for nothing, 9 for a handle whose index lies outside the table
  TextureObject GetTexture(const Texture8& Texture) const;
  /// CONST_QL_DEVICEKIND: the kind in use, which is the reference device where the hardware device failed.
  std::int32_t GetDeviceKind() const;
  /// What the last finished frame drew.
  FrameStatistics GetFrameStatistics() const;
  /// Replaces the tick counter that all timing and movement follows, for tests and replays.
  /// @param Ticks returns milliseconds, never less than before; it may wrap. Empty: the system's counter again
  void SetClock(std::function<std::uint32_t()> Ticks);
  /// Records what the user does from now on: keyboard, mouse, controllers, the clock and the window's size, each as the
  /// engine reads it, until StopSession or the engine's end. A session in progress is ended first. The same program
  /// does the same again when it replays the file.
  /// @param FileName is replaced when it exists. Frames are on disk as soon as they are shown
  /// @param Note a text of the host's own that SessionNote gives back, up to 65536 bytes
  /// @return False, with a line in the log, when the file cannot be written
  Boolean StartRecording(const std::string& FileName, const std::string& Note = "");
  /// Replays a recorded session from now on, instead of what the user does: the input engine and the clock follow the
  /// file, and so does the size of the engine's own window. A session in progress is ended first.
  /// @return False, with a line in the log, when the file cannot be read or is damaged
  Boolean StartReplay(const std::string& FileName);
  /// Whether all frames of the replay were shown. After them keys stay as they are; False without a replay.
  Boolean ReplayEnded() const;
  /// The text that the session being replayed was recorded with; empty without one.
  std::string SessionNote() const;
  /// Ends recording or replay. @return whether the file is whole; False when there is no session
  Boolean StopSession();
  /// Records every call of the rendering device from now on in a trace file, which `ql-trace` shows, compares and draws
  /// again on any device. The trace starts with all textures, vertices and states that the device has already, but
  /// knows nothing of a frame in progress: start before Quasarlens8.Initialize or between frames. It goes on over new
  /// devices until StopTrace or the engine's end; a trace in progress is finished first.
  /// @param FileName is replaced when it exists. Frames are on disk as soon as they are shown, so a program's crash
  /// leaves a trace of all frames before it
  /// @return False, with a line in the log, when the file cannot be written
  /// @throws Error 91 without an engine object
  Boolean StartTrace(const std::string& FileName);
  /// Finishes the trace. @return whether all of it was written; False when there is none
  Boolean StopTrace();
  /// Writes from the next finished frame on what every thread does when, in the JSON format of trace events that the
  /// trace viewers of browsers open: a row for the frames and one for each thread of the reference device. It goes on
  /// over new devices until StopStages or the engine's end; stages that are being written are finished first.
  /// @param FileName is replaced when it exists
  /// @return False, with a line in the log, when the file cannot be written
  /// @throws Error 91 without an engine object
  Boolean StartStages(const std::string& FileName);
  /// Finishes the file. @return whether all of it was written; False when there is none
  Boolean StopStages();

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
