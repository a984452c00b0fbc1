/// @file
/// The device settings that outlive the program.
#pragma once

#include "platform/device/Constants.h"
#include "platform/device/Display.h"
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

/// What the driver dialog chooses.
struct DriverChoice {
  std::int32_t adapter = 0;
  std::int32_t modeNumber = 1;  ///< index in the adapter's enumeration of modes
  std::int32_t deviceKind = 0;  ///< 0 hardware, 1 reference
  bool hardwareTransform = true;
  device::DisplayMode mode;  ///< all 0 until a mode is selected; not read back
};
DriverChoice readDriverChoice(const host::Settings& settings);
void storeDriverChoice(host::Settings& settings, const DriverChoice& choice);

}  // namespace ql::engine
