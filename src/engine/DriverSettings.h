/// @file
/// The device settings that outlive the program.
#pragma once

#include "platform/device/Constants.h"
#include "platform/host/Settings.h"

#include <cstdint>

namespace ql::engine {

/// What initialize reads. The store holds texts; what is not a number counts as 0.
struct DriverSettings {
  device::DeviceType deviceType = device::DeviceType::Hardware;
  std::int32_t width = 0, height = 0;               ///< of the full-screen back buffer, pixels
  device::Format format = device::Format::Unknown;  ///< of the full-screen back buffer
  std::uint32_t adapter = 0;
  bool hardwareTransform = false;
};
DriverSettings readDriverSettings(const host::Settings& settings);

}  // namespace ql::engine
