/// @file
/// The root object: adapters, their modes, what they support, and the making of devices.
#pragma once

#include "platform/device/Device.h"
#include "platform/device/Display.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ql::device {

/// Makes the back end of one device type. It may throw DeviceError (not available) when the machine has none.
using BackEndFactory = std::function<std::shared_ptr<BackEnd>(const PresentParameters&)>;

class Direct3D {
 public:
  Direct3D(std::shared_ptr<Display> display, std::map<DeviceType, BackEndFactory> factories);

  const std::shared_ptr<Display>& display() const { return display_; }
  std::uint32_t adapterCount() const;
  /// @throws DeviceError invalid call: no such adapter (all operations below)
  std::string adapterIdentifier(std::uint32_t adapter) const;
  std::uint32_t adapterModeCount(std::uint32_t adapter) const;
  DisplayMode enumAdapterModes(std::uint32_t adapter, std::uint32_t mode) const;
  DisplayMode getAdapterDisplayMode(std::uint32_t adapter) const;
  /// Whether resources of checkFormat can be used so; the answer is the same for both device types.
  bool checkDeviceFormat(std::uint32_t adapter, DeviceType type, Format adapterFormat, std::uint32_t usage,
                         ResourceType resource, Format checkFormat) const;
  /// @throws DeviceError not available: no back end of this type on this machine
  Capabilities getDeviceCaps(std::uint32_t adapter, DeviceType type) const;
  /// @throws DeviceError not available or invalid call (a size outside 1 to 16384, an unknown format)
  std::shared_ptr<Device> createDevice(std::uint32_t adapter, DeviceType type,
                                       const std::shared_ptr<Window>& focusWindow, std::uint32_t behaviourFlags,
                                       const PresentParameters& parameters);
  /// Watches the calls of this object and of every device made from now on.
  void setCallSink(CallSink* sink) { sink_ = sink; }

 private:
  std::shared_ptr<Display> display_;
  std::map<DeviceType, BackEndFactory> factories_;
  mutable std::map<DeviceType, Capabilities> capabilities_;  ///< that were asked for: a back end is costly to make
  CallSink* sink_ = nullptr;

  void requireAdapter(std::uint32_t adapter) const;
  std::shared_ptr<BackEnd> makeBackEnd(DeviceType type, const PresentParameters& parameters) const;
};

}  // namespace ql::device
