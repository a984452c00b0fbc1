/// @file
/// The hardware device: a renderer on OpenGL 3.3.
#pragma once

#include "platform/device/Device.h"

#include <cstdint>
#include <memory>

namespace ql::opengl {

/// Makes a renderer with an OpenGL context of its own, which needs no display. What was current on the calling thread
/// stays current.
/// @param parameters a device window on an X server makes it prefer a driver that can draw in windows; where none can,
/// and in all other windows, pictures are read back and shown
/// @throws device::DeviceError not available: no driver of this machine offers OpenGL 3.3
std::shared_ptr<device::BackEnd> createBackEnd(const device::PresentParameters& parameters);

/// Counts of calls that reached the driver since the back end was made.
struct DriverCalls {
  std::uint64_t draws = 0;     ///< after merging
  std::uint64_t states = 0;    ///< changes of state, bindings included
  std::uint64_t programs = 0;  ///< shader programs that were built
  std::uint64_t pictures = 0;  ///< drawn into windows without being read back
};
/// @param backEnd one that createBackEnd made. Draws that wait to be merged are not counted yet
const DriverCalls& driverCalls(const device::BackEnd& backEnd);

}  // namespace ql::opengl
