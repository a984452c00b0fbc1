/// @file
/// A window that belongs to the host program.
#pragma once

#include "platform/device/Display.h"
#include "platform/window/SdlVideo.h"

#include <cstdint>
#include <memory>
#include <string>

struct SDL_Window;

namespace ql::window {

/// Shows pictures in a window of the host's. The host may resize or destroy it at any time; a window that is gone has
/// no size and shows nothing. Title and mode stay the host's business.
class HostWindow final : public device::Window {
 public:
  /// @param handle the window's number on the X server. Nothing when there is no such window.
  static std::shared_ptr<HostWindow> adopt(std::shared_ptr<SdlVideo> video, std::intptr_t handle);
  ~HostWindow() override;
  HostWindow(const HostWindow&) = delete;
  HostWindow& operator=(const HostWindow&) = delete;

  Size clientSize() const override;
  bool visible() const override { return !gone_; }
  void show(const device::Picture& picture) override;
  device::XWindow onServer() const override;
  void pump() override { video_->pump(); }
  void setTitle(const std::string&) override {}
  bool closeRequested() const override { return false; }
  void setMode(bool, Size) override {}

 private:
  HostWindow(std::shared_ptr<SdlVideo> video, SDL_Window* window, void* server, unsigned long number);

  std::shared_ptr<SdlVideo> video_;
  SDL_Window* window_;
  void* server_;          ///< SDL's connection to the X server
  unsigned long number_;  ///< of the window there
  std::uint32_t visual_ = 0;
  mutable bool gone_ = false;
};

}  // namespace ql::window
