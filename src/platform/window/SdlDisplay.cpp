#include "platform/window/SdlDisplay.h"

#include "platform/dialog/FormWindow.h"
#include "platform/host/Files.h"
#include "platform/host/MessageBox.h"
#include "platform/window/DisplayScale.h"
#include "platform/window/HostWindow.h"
#include "platform/window/ModeList.h"
#include "platform/window/SdlWindow.h"

#include <utility>

#include <SDL.h>

namespace ql::window {

SdlDisplay::SdlDisplay(std::shared_ptr<SdlVideo> video) : video_(std::move(video)) {}

std::uint32_t SdlDisplay::adapterCount() const {
  const int count = SDL_GetNumVideoDisplays();
  return count > 0 ? static_cast<std::uint32_t>(count) : 0;
}

std::string SdlDisplay::adapterName(std::uint32_t adapter) const {
  const char* name = SDL_GetDisplayName(static_cast<int>(adapter));
  return name == nullptr ? "" : name;
}

device::DisplayMode SdlDisplay::desktopMode(std::uint32_t adapter) const {
  SDL_DisplayMode mode{};
  if (SDL_GetDesktopDisplayMode(static_cast<int>(adapter), &mode) != 0) return {};
  return {static_cast<std::uint32_t>(mode.w), static_cast<std::uint32_t>(mode.h),
          static_cast<std::uint32_t>(mode.refresh_rate),
          SDL_BITSPERPIXEL(mode.format) == 16 ? kFormatR5G6B5 : kFormatX8R8G8B8};
}

std::vector<device::DisplayMode> SdlDisplay::modes(std::uint32_t adapter) const {
  const device::DisplayMode desktop = desktopMode(adapter);
  std::vector<device::Window::Size> sizes{{desktop.width, desktop.height}};
  for (const device::Window::Size& size : standardSizes())
    if (size.width <= desktop.width && size.height <= desktop.height) sizes.push_back(size);
  const int index = static_cast<int>(adapter), count = SDL_GetNumDisplayModes(index);
  for (int i = 0; i < count; ++i) {
    SDL_DisplayMode mode{};
    if (SDL_GetDisplayMode(index, i, &mode) == 0)
      sizes.push_back({static_cast<std::uint32_t>(mode.w), static_cast<std::uint32_t>(mode.h)});
  }
  return modesOf(std::move(sizes), desktop.refreshRate);
}

std::shared_ptr<device::Window> SdlDisplay::createWindow() { return SdlWindow::create(video_); }
std::shared_ptr<device::Window> SdlDisplay::adoptWindow(std::intptr_t handle) {
  return HostWindow::adopt(video_, handle);
}

void SdlDisplay::messageBox(const std::string& title, const std::string& text) {
  if (SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_ERROR, host::toUtf8(title).c_str(), host::toUtf8(text).c_str(),
                               nullptr) != 0)
    host::messageToStandardError(title, text);
}

bool SdlDisplay::showForm(device::Form& form) { return dialog::showForm(form, displayScale(0), video_->hostUsesSdl()); }

}  // namespace ql::window
