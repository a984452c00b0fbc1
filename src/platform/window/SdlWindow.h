/// @file
/// Windows on the user's display.
#pragma once

#include "platform/device/Display.h"
#include "platform/window/SdlVideo.h"

#include <memory>
#include <string>

struct SDL_Window;
union SDL_Event;

namespace ql::window {

/// Copies a picture into a window, scaled to its client area.
void showPicture(SDL_Window* window, const device::Picture& picture);

/// The engine's own window; it appears with the first picture.
class SdlWindow final : public device::Window {
 public:
  /// Nothing when the window system refuses.
  static std::shared_ptr<SdlWindow> create(std::shared_ptr<SdlVideo> video);
  ~SdlWindow() override;
  SdlWindow(const SdlWindow&) = delete;
  SdlWindow& operator=(const SdlWindow&) = delete;

  Size clientSize() const override;
  bool visible() const override;
  void show(const device::Picture& picture) override;
  device::XWindow onServer() const override { return place_; }
  void appear() override;
  void pump() override { video_->pump(); }
  void setTitle(const std::string& title) override;
  bool closeRequested() const override { return closeRequested_; }
  void setMode(bool fullScreen, Size size) override;

 private:
  SdlWindow(std::shared_ptr<SdlVideo> video, SDL_Window* window);
  static int watch(void* self, SDL_Event* event);
  void applyMode();

  std::shared_ptr<SdlVideo> video_;
  SDL_Window* window_;
  device::XWindow place_;
  bool shown_ = false, fullScreen_ = false, closeRequested_ = false;
  Size size_;
};

}  // namespace ql::window
