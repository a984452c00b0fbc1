#include "platform/window/HostWindow.h"

#include "platform/window/SdlWindow.h"
#include "platform/window/XErrors.h"
#include "platform/window/XPlace.h"

#include <string_view>
#include <utility>

#include <SDL.h>
#include <SDL_syswm.h>
#include <X11/Xlib.h>

namespace ql::window {
namespace {

::Display* connection(void* server) { return static_cast<::Display*>(server); }

bool existsOnServer(unsigned long number) {
  const std::unique_ptr<::Display, int (*)(::Display*)> server(XOpenDisplay(nullptr), &XCloseDisplay);
  XWindowAttributes attributes;
  return server && accepted(server.get(), [&] { XGetWindowAttributes(server.get(), number, &attributes); });
}

}  // namespace

std::shared_ptr<HostWindow> HostWindow::adopt(std::shared_ptr<SdlVideo> video, std::intptr_t handle) {
  if (std::string_view(SDL_GetCurrentVideoDriver()) != "x11") return nullptr;
  if (handle <= 0 || !existsOnServer(static_cast<unsigned long>(handle))) return nullptr;
  SDL_Window* window = nullptr;
  SDL_SysWMinfo info;
  SDL_VERSION(&info.version);
  const bool made = accepted(nullptr, [&] { window = SDL_CreateWindowFrom(reinterpret_cast<void*>(handle)); });
  if (window == nullptr) return nullptr;
  if (!made || !SDL_GetWindowWMInfo(window, &info) || info.subsystem != SDL_SYSWM_X11) {
    accepted(nullptr, [&] { SDL_DestroyWindow(window); });
    return nullptr;
  }
  // SDL hears about changes of its own windows only; for others it has to be asked for on its connection, whose
  // selection is apart from the host's.
  ::Display* server = info.info.x11.display;
  const unsigned long number = info.info.x11.window;
  accepted(server, [&] {
    XSelectInput(server, number,
                 StructureNotifyMask | ExposureMask | FocusChangeMask | KeyPressMask | KeyReleaseMask |
                     PropertyChangeMask | EnterWindowMask | LeaveWindowMask | PointerMotionMask);
  });
  return std::shared_ptr<HostWindow>(new HostWindow(std::move(video), window, server, number));
}

HostWindow::HostWindow(std::shared_ptr<SdlVideo> video, SDL_Window* window, void* server, unsigned long number)
    : video_(std::move(video)), window_(window), server_(server), number_(number) {
  video_->guard(server_);
  accepted(server_, [this] { visual_ = placeOnServer(window_).visual; });
}

HostWindow::~HostWindow() {
  accepted(server_, [this] { SDL_DestroyWindow(window_); });
}

device::Window::Size HostWindow::clientSize() const {
  if (gone_) return {};
  ::Window root = 0;
  int x = 0, y = 0;
  unsigned width = 0, height = 0, border = 0, depth = 0;
  gone_ = !accepted(
      server_, [&] { XGetGeometry(connection(server_), number_, &root, &x, &y, &width, &height, &border, &depth); });
  return gone_ ? Size{} : Size{width, height};
}

device::XWindow HostWindow::onServer() const {
  if (gone_) return {};
  return {static_cast<std::uint32_t>(number_), visual_};
}

void HostWindow::show(const device::Picture& picture) {
  const Size size = clientSize();
  if (gone_) return;
  gone_ = !accepted(server_, [&] {
    int width = 0, height = 0;
    SDL_GetWindowSize(window_, &width, &height);
    if (std::pair(size.width, size.height) !=
        std::pair(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)))
      SDL_PumpEvents();  // the host resized its window: SDL's copy of the size is older than the server's
    showPicture(window_, picture);
  });
}

}  // namespace ql::window
