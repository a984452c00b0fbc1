#include "engine/DriverDialog.h"

#include "engine/Engine.h"

#include <algorithm>
#include <exception>

namespace ql::engine {
namespace {

enum List : std::size_t { kAdapters, kDeviceKinds, kVideoModes };
enum Button : std::size_t { kOk, kCancel };
constexpr std::uint32_t kLeastWidth = 640, kLeastHeight = 400;  // of a mode that is listed

bool has32Bits(const device::DisplayMode& mode) {
  const auto format = static_cast<device::Format>(mode.format);
  return format == device::Format::R8G8B8 || format == device::Format::A8R8G8B8 || format == device::Format::X8R8G8B8;
}

std::string entryOf(const device::DisplayMode& mode) {
  return std::to_string(mode.width) + "x" + std::to_string(mode.height) + "x" + (has32Bits(mode) ? "32" : "16");
}

/// The text up to its first NUL.
std::string description(const std::string& identifier) { return identifier.c_str(); }

/// Every mode of an adapter; those that cannot be read stay 0.
std::vector<device::DisplayMode> enumerateModes(const device::Direct3D& direct3D, std::uint32_t adapter) {
  std::vector<device::DisplayMode> modes;
  try {
    modes.resize(direct3D.adapterModeCount(adapter));
  } catch (const std::exception&) {  // the list shows what could be read
  }
  for (std::uint32_t i = 0; i < modes.size(); ++i) {
    try {
      modes[i] = direct3D.enumAdapterModes(adapter, i);
    } catch (const std::exception&) {  // as above
    }
  }
  return modes;
}

}  // namespace

DriverDialog::DriverDialog(const device::Direct3D& direct3D, host::Settings& settings)
    : direct3D_(direct3D), settings_(settings) {
  content_.caption = "Quasarlens8 3D - 0.1 : Driver Dialog";
  content_.font = "Tahoma";
  content_.lists = {{"Adapter (3d card)", {}, -1}, {"Direct3D Device mode", {}, -1}, {"Video Modes", {}, -1}};
  content_.checkBox = "Use T&&L";
  content_.buttons = {"OK", "Cancel"};
  content_.acceptButton = kOk;
  content_.cancelButton = kCancel;
}

void DriverDialog::load() {
  choice_ = readDriverChoice(settings_);
  content_.checked = choice_.hardwareTransform;
  updateAdapter();
}

void DriverDialog::updateAdapter() {
  device::FormContent::List& adapters = content_.lists[kAdapters];
  adapters.entries.clear();
  for (std::uint32_t i = 0; i < direct3D_.adapterCount(); ++i)
    adapters.entries.push_back(description(direct3D_.adapterIdentifier(i)));
  select(kAdapters, choice_.adapter);
  content_.lists[kDeviceKinds].entries = {"HAL (Hardware)", "REF (Software)"};
  select(kDeviceKinds, choice_.deviceKind);
}

void DriverDialog::updateVideoModes() {
  modes_ = enumerateModes(direct3D_, static_cast<std::uint32_t>(choice_.adapter));
  device::FormContent::List& list = content_.lists[kVideoModes];
  list.entries.clear();
  list.selected = -1;
  listedModes_.clear();
  for (std::size_t i = 0; i < modes_.size(); ++i) {
    if (modes_[i].width < kLeastWidth || modes_[i].height < kLeastHeight) continue;
    list.entries.push_back(entryOf(modes_[i]));
    listedModes_.push_back(static_cast<std::int32_t>(i));
  }
  // By its number, since modes that are not listed may lie between those that are.
  const auto stored = std::find(listedModes_.begin(), listedModes_.end(), choice_.modeNumber);
  if (stored != listedModes_.end()) select(kVideoModes, static_cast<std::int32_t>(stored - listedModes_.begin()));
}

void DriverDialog::select(std::size_t list, std::int32_t entry) {
  device::FormContent::List& changed = content_.lists[list];
  const auto count = static_cast<std::int32_t>(changed.entries.size());
  if (entry < 0 || entry >= count)
    throw EngineError(kInvalidArgument, "Invalid argument: entry " + std::to_string(entry) + " of " +
                                            std::to_string(count) + " in \"" + changed.label + "\"");
  changed.selected = entry;
  switch (list) {
    case kAdapters:
      choice_.adapter = entry;
      updateVideoModes();
      break;
    case kDeviceKinds:
      choice_.deviceKind = entry;
      break;
    default:
      choice_.modeNumber = listedModes_[static_cast<std::size_t>(entry)];
      choice_.mode = modes_[static_cast<std::size_t>(choice_.modeNumber)];
  }
}

void DriverDialog::check(bool on) { content_.checked = choice_.hardwareTransform = on; }

void DriverDialog::press(std::size_t button) {
  if (button == kOk) {
    tag_ = "OK";
    storeDriverChoice(settings_, choice_);
  }
  visible_ = false;
}

bool showDriverDialog(EngineContext& context) {
  context.log.write("DEVICE INIT : Show Driver Dialog");
  DriverDialog dialog(*context.direct3D, context.settings);
  if (!context.platform.display->showForm(dialog)) {
    context.log.write("DEVICE INIT ERROR : There is no display that the driver dialog could be shown on");
    return false;
  }
  return dialog.tag() == "OK";
}

}  // namespace ql::engine
