/// @file
/// Doing again what a trace recorded.
#pragma once

#include "platform/device/Direct3D.h"
#include "platform/recording/Trace.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace ql::recording {

/// A frame's picture: rows from the top, each pixel 0xAARRGGBB.
struct FramePicture {
  std::uint32_t width = 0, height = 0;
  std::vector<std::uint32_t> pixels;
};

/// Performs a trace, which must outlive it, on a device of its own, without a window.
class Replayer {
 public:
  struct Limits {
    std::uint64_t resourceBytes = std::uint64_t{4} << 30;  ///< of textures, buffers and targets at a time
  };
  struct Counts {
    std::uint64_t calls = 0;    ///< performed
    std::uint64_t refused = 0;  ///< that the device did not accept, as it may have been when they were recorded
    std::uint64_t unknown = 0;  ///< of names that mean nothing here; they are passed over
  };
  /// @param type what the device says it is; the back end is what draws
  Replayer(const Trace& trace, device::DeviceType type, device::BackEndFactory makeBackEnd, const Limits& limits);
  Replayer(const Trace& trace, device::DeviceType type, device::BackEndFactory makeBackEnd)
      : Replayer(trace, type, std::move(makeBackEnd), Limits()) {}
  ~Replayer();
  Replayer(const Replayer&) = delete;
  Replayer& operator=(const Replayer&) = delete;

  /// Performs calls up to the next Present and with it; whatever follows the last one when there is none.
  /// @return whether there was a Present
  /// @throws host::FileFault for values that no call has, TooLarge beyond the limits; device::DeviceError when no
  /// device can be made
  bool nextFrame();
  /// The back buffer as it is now; empty before there is a device.
  FramePicture picture() const;
  const Counts& counts() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ql::recording
