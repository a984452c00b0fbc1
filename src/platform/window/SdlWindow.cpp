#include "platform/window/SdlWindow.h"

#include "platform/host/Files.h"
#include "platform/window/XPlace.h"

#include <algorithm>
#include <utility>

#include <SDL.h>

namespace ql::window {
namespace {

constexpr device::Window::Size kFirstSize{640, 480};
constexpr std::uint32_t kLargestSize = 16384;

using Surface = std::unique_ptr<SDL_Surface, decltype(&SDL_FreeSurface)>;

int pixels(std::uint32_t size) { return static_cast<int>(std::clamp(size, 1u, kLargestSize)); }

}  // namespace

void showPicture(SDL_Window* window, const device::Picture& picture) {
  if (picture.pixels == nullptr || picture.width == 0 || picture.height == 0) return;
  SDL_Surface* target = SDL_GetWindowSurface(window);
  if (target == nullptr) return;
  // SDL asks for writable pixels, but a surface that is only copied from is never written.
  const Surface source(
      SDL_CreateRGBSurfaceWithFormatFrom(const_cast<std::uint32_t*>(picture.pixels), static_cast<int>(picture.width),
                                         static_cast<int>(picture.height), 32, static_cast<int>(picture.pitch * 4),
                                         SDL_PIXELFORMAT_RGB888),
      &SDL_FreeSurface);
  if (!source) return;
  const bool sameSize = source->w == target->w && source->h == target->h;
  if (sameSize) {
    SDL_BlitSurface(source.get(), nullptr, target, nullptr);
  } else if (target->format->format != source->format->format ||
             SDL_SoftStretchLinear(source.get(), nullptr, target, nullptr) != 0) {
    SDL_BlitScaled(source.get(), nullptr, target, nullptr);
  }
  SDL_UpdateWindowSurface(window);
}

std::shared_ptr<SdlWindow> SdlWindow::create(std::shared_ptr<SdlVideo> video) {
  SDL_Window* window = SDL_CreateWindow("", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, pixels(kFirstSize.width),
                                        pixels(kFirstSize.height), SDL_WINDOW_HIDDEN | SDL_WINDOW_RESIZABLE);
  if (window == nullptr) return nullptr;
  return std::shared_ptr<SdlWindow>(new SdlWindow(std::move(video), window));
}

SdlWindow::SdlWindow(std::shared_ptr<SdlVideo> video, SDL_Window* window)
    : video_(std::move(video)), window_(window), place_(placeOnServer(window)), size_(kFirstSize) {
  SDL_AddEventWatch(&SdlWindow::watch, this);
}

SdlWindow::~SdlWindow() {
  SDL_DelEventWatch(&SdlWindow::watch, this);
  SDL_DestroyWindow(window_);
}

int SdlWindow::watch(void* self, SDL_Event* event) {
  auto& window = *static_cast<SdlWindow*>(self);
  if (event->type == SDL_WINDOWEVENT && event->window.event == SDL_WINDOWEVENT_CLOSE &&
      event->window.windowID == SDL_GetWindowID(window.window_))
    window.closeRequested_ = true;
  return 0;
}

device::Window::Size SdlWindow::clientSize() const {
  int width = 0, height = 0;
  SDL_GetWindowSize(window_, &width, &height);
  if (SDL_Rect desktop;
      !shown_ && fullScreen_ && SDL_GetDisplayBounds(SDL_GetWindowDisplayIndex(window_), &desktop) == 0) {
    width = desktop.w;
    height = desktop.h;
  }
  return {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
}

bool SdlWindow::visible() const { return (SDL_GetWindowFlags(window_) & SDL_WINDOW_MINIMIZED) == 0; }

void SdlWindow::setTitle(const std::string& title) { SDL_SetWindowTitle(window_, host::toUtf8(title).c_str()); }

void SdlWindow::setMode(bool fullScreen, Size size) {
  const bool changed = fullScreen != fullScreen_;
  fullScreen_ = fullScreen;
  size_ = size;
  // A hidden window takes its size at once, so that clientSize tells it; it covers the desktop only when it appears.
  if (!fullScreen && !shown_) SDL_SetWindowSize(window_, pixels(size.width), pixels(size.height));
  if (shown_ && (changed || !fullScreen)) applyMode();
}

void SdlWindow::applyMode() {
  SDL_Rect desktop;
  if (fullScreen_ && SDL_GetDisplayBounds(SDL_GetWindowDisplayIndex(window_), &desktop) == 0) {
    // Asking for full screen needs a window manager; without one the window covers the desktop by its own size.
    SDL_SetWindowBordered(window_, SDL_FALSE);
    SDL_SetWindowPosition(window_, desktop.x, desktop.y);
    SDL_SetWindowSize(window_, desktop.w, desktop.h);
    SDL_SetWindowFullscreen(window_, SDL_WINDOW_FULLSCREEN_DESKTOP);
  } else {
    const bool leaves = (SDL_GetWindowFlags(window_) & SDL_WINDOW_FULLSCREEN) != 0;
    SDL_SetWindowFullscreen(window_, 0);
    SDL_SetWindowBordered(window_, SDL_TRUE);
    SDL_SetWindowSize(window_, pixels(size_.width), pixels(size_.height));
    if (leaves) SDL_SetWindowPosition(window_, SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED);
  }
  video_->pump();
}

void SdlWindow::appear() {
  if (shown_ || !visible()) return;
  shown_ = true;
  SDL_ShowWindow(window_);
  applyMode();
}

void SdlWindow::show(const device::Picture& picture) {
  if (!visible()) return;
  appear();
  showPicture(window_, picture);
}

}  // namespace ql::window
