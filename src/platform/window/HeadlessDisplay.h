/// @file
/// A display system for machines without one.
#pragma once

#include "platform/device/Display.h"

#include <memory>
#include <string>
#include <vector>

namespace ql::window {

/// One adapter with a desktop of 1024 × 768 and windows that nobody sees.
class HeadlessDisplay final : public device::Display {
 public:
  std::uint32_t adapterCount() const override { return 1; }
  std::string adapterName(std::uint32_t) const override { return "No display"; }
  std::vector<device::DisplayMode> modes(std::uint32_t adapter) const override;
  device::DisplayMode desktopMode(std::uint32_t adapter) const override;
  /// Its client area is 640 × 480 until setMode says otherwise.
  std::shared_ptr<device::Window> createWindow() override;
  /// Nothing: a host cannot have a window either.
  std::shared_ptr<device::Window> adoptWindow(std::intptr_t handle) override;
  void pump() override {}
  void messageBox(const std::string& title, const std::string& text) override;
};

}  // namespace ql::window
