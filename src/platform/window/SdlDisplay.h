/// @file
/// The user's display through SDL.
#pragma once

#include "platform/device/Display.h"
#include "platform/window/SdlVideo.h"

#include <memory>
#include <string>
#include <vector>

namespace ql::window {

class SdlDisplay final : public device::Display {
 public:
  explicit SdlDisplay(std::shared_ptr<SdlVideo> video);
  std::uint32_t adapterCount() const override;
  std::string adapterName(std::uint32_t adapter) const override;
  /// The sizes of the monitor and all standard ones that fit the desktop.
  std::vector<device::DisplayMode> modes(std::uint32_t adapter) const override;
  device::DisplayMode desktopMode(std::uint32_t adapter) const override;
  std::shared_ptr<device::Window> createWindow() override;
  std::shared_ptr<device::Window> adoptWindow(std::intptr_t handle) override;
  void pump() override { video_->pump(); }
  void messageBox(const std::string& title, const std::string& text) override;
  bool showForm(device::Form& form) override;

 private:
  std::shared_ptr<SdlVideo> video_;
};

}  // namespace ql::window
