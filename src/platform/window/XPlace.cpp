#include "platform/window/XPlace.h"

#include <SDL.h>
#include <SDL_syswm.h>
#include <X11/Xlib.h>

namespace ql::window {

device::XWindow placeOnServer(SDL_Window* window) {
  SDL_SysWMinfo info;
  SDL_VERSION(&info.version);
  if (!SDL_GetWindowWMInfo(window, &info) || info.subsystem != SDL_SYSWM_X11) return {};
  XWindowAttributes attributes;
  if (XGetWindowAttributes(info.info.x11.display, info.info.x11.window, &attributes) == 0) return {};
  return {static_cast<std::uint32_t>(info.info.x11.window),
          static_cast<std::uint32_t>(XVisualIDFromVisual(attributes.visual))};
}

}  // namespace ql::window
