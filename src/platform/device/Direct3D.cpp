#include "platform/device/Direct3D.h"

#include "platform/device/DeviceImpl.h"

#include <utility>

namespace ql::device {

Direct3D::Direct3D(std::shared_ptr<Display> display, std::map<DeviceType, BackEndFactory> factories)
    : display_(std::move(display)), factories_(std::move(factories)) {}

void Direct3D::requireAdapter(std::uint32_t adapter) const {
  if (adapter >= display_->adapterCount())
    invalidCall("no adapter " + number(adapter) + ", there are " + number(display_->adapterCount()));
}

std::uint32_t Direct3D::adapterCount() const { return display_->adapterCount(); }

std::string Direct3D::adapterIdentifier(std::uint32_t adapter) const {
  requireAdapter(adapter);
  return display_->adapterName(adapter);
}

std::uint32_t Direct3D::adapterModeCount(std::uint32_t adapter) const {
  requireAdapter(adapter);
  return static_cast<std::uint32_t>(display_->modes(adapter).size());
}

DisplayMode Direct3D::enumAdapterModes(std::uint32_t adapter, std::uint32_t mode) const {
  requireAdapter(adapter);
  const std::vector<DisplayMode> modes = display_->modes(adapter);
  if (mode >= modes.size()) invalidCall("display mode " + number(mode) + " of " + number(modes.size()));
  return modes[mode];
}

DisplayMode Direct3D::getAdapterDisplayMode(std::uint32_t adapter) const {
  requireAdapter(adapter);
  return display_->desktopMode(adapter);
}

bool Direct3D::checkDeviceFormat(std::uint32_t adapter, DeviceType type, Format adapterFormat, std::uint32_t usage,
                                 ResourceType resource, Format checkFormat) const {
  noteCall(sink_, "CheckDeviceFormat", adapter, type, adapterFormat, usage, resource, checkFormat);
  requireAdapter(adapter);
  if (!isTargetFormat(adapterFormat)) return false;
  if (resource != ResourceType::Surface && resource != ResourceType::Texture) return false;
  switch (usage) {
    case 0:
      return isTextureFormat(checkFormat);
    case kUsageRenderTarget:
      return isTargetFormat(checkFormat);
    case kUsageDepthStencil:
      return resource == ResourceType::Surface && isDepthFormat(checkFormat);
    default:
      return false;
  }
}

std::shared_ptr<BackEnd> Direct3D::makeBackEnd(DeviceType type, const PresentParameters& parameters) const {
  const auto factory = factories_.find(type);
  std::shared_ptr<BackEnd> made =
      factory == factories_.end() || !factory->second ? nullptr : factory->second(parameters);
  if (!made) throw DeviceError(kErrorNotAvailable, "no device of type " + number(type) + " on this machine");
  return made;
}

Capabilities Direct3D::getDeviceCaps(std::uint32_t adapter, DeviceType type) const {
  noteCall(sink_, "GetDeviceCaps", adapter, type);
  requireAdapter(adapter);
  auto known = capabilities_.find(type);
  if (known == capabilities_.end()) known = capabilities_.emplace(type, makeBackEnd(type, {})->capabilities()).first;
  return known->second;
}

std::shared_ptr<Device> Direct3D::createDevice(std::uint32_t adapter, DeviceType type,
                                               const std::shared_ptr<Window>& focusWindow, std::uint32_t behaviourFlags,
                                               const PresentParameters& parameters) {
  noteCall(sink_, "CreateDevice", adapter, type, behaviourFlags, parameters.backBufferWidth,
           parameters.backBufferHeight, parameters.backBufferFormat, parameters.backBufferCount,
           parameters.multiSampleType, parameters.swapEffect, parameters.windowed, parameters.enableAutoDepthStencil,
           parameters.autoDepthStencilFormat);
  requireAdapter(adapter);
  PresentParameters wanted = parameters;
  if (!wanted.deviceWindow) wanted.deviceWindow = focusWindow;
  if (wanted.windowed) {
    const auto desktop = static_cast<Format>(display_->desktopMode(adapter).format);
    if (wanted.backBufferFormat == Format::Unknown) wanted.backBufferFormat = desktop;
    if (wanted.backBufferFormat != desktop)
      invalidCall("format " + number(wanted.backBufferFormat) + " in a window on a desktop of format " +
                  number(desktop));
  }
  wanted = completeParameters(wanted);
  const bool software = (behaviourFlags & kCreateSoftwareVertexProcessing) != 0;
  const bool hardware = (behaviourFlags & kCreateHardwareVertexProcessing) != 0;
  if (software == hardware) invalidCall("not exactly one kind of vertex processing in " + number(behaviourFlags));

  // The window takes its shape first: some back ends make their surfaces for it.
  if (wanted.deviceWindow)
    wanted.deviceWindow->setMode(!wanted.windowed, {wanted.backBufferWidth, wanted.backBufferHeight});
  std::shared_ptr<BackEnd> backEnd = makeBackEnd(type, wanted);
  if (hardware && !(backEnd->capabilities().deviceFlags & kCapsHardwareTransformLight))
    invalidCall("no hardware vertex processing on this device");
  auto device = std::make_shared<Device>(std::move(backEnd), type, wanted);
  if (sink_) {
    device->describe(*sink_);
    device->setCallSink(sink_);
  }
  return device;
}

}  // namespace ql::device
