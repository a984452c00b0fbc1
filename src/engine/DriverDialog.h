/// @file
/// The dialog in which the user chooses adapter, device kind and video mode.
#pragma once

#include "engine/DriverSettings.h"
#include "platform/device/Direct3D.h"
#include "platform/device/Form.h"
#include "platform/host/Settings.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ql::engine {

/// The dialog's state and rules. It lists what the adapters report, starts from the stored settings and stores the
/// choice when OK is pressed, and only then. It makes no device.
class DriverDialog final : public device::Form {
 public:
  DriverDialog(const device::Direct3D& direct3D, host::Settings& settings);

  const device::FormContent& content() const override { return content_; }
  /// @throws EngineError 5 when the stored adapter or device kind is not in its list
  void load() override;
  void select(std::size_t list, std::int32_t entry) override;
  void check(bool on) override;
  void press(std::size_t button) override;
  bool visible() const override { return visible_; }

  /// "OK" when the OK button closed the dialog, else empty.
  const std::string& tag() const { return tag_; }
  const DriverChoice& choice() const { return choice_; }

 private:
  void updateAdapter();
  void updateVideoModes();

  const device::Direct3D& direct3D_;
  host::Settings& settings_;
  device::FormContent content_;
  DriverChoice choice_;
  std::vector<device::DisplayMode> modes_;  ///< of the chosen adapter, by index in its enumeration
  std::vector<std::int32_t> listedModes_;   ///< index of each entry of the list
  std::string tag_;
  bool visible_ = true;
};

}  // namespace ql::engine
