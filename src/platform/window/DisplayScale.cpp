#include "platform/window/DisplayScale.h"

#include "platform/host/Files.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include <SDL.h>
// Xlib's macros spoil the names of others: last.
#include <X11/Xlib.h>

namespace ql::window {
namespace {

constexpr float kUsualDpi = 96, kLeastDpi = 48, kLargestScale = 4;  // a display that says less knows nothing
constexpr float kMillimetresPerInch = 25.4f;

struct XDpi {
  float set = 0;       ///< the resource Xft.dpi, which desktops keep; 0: none
  float measured = 0;  ///< from the size of the screen; 0: unknown
};

XDpi xDpi() {
  const char* driver = SDL_GetCurrentVideoDriver();
  if (driver == nullptr || std::strcmp(driver, "x11") != 0) return {};
  const std::unique_ptr<Display, decltype(&XCloseDisplay)> server(XOpenDisplay(nullptr), &XCloseDisplay);
  if (!server) return {};
  XDpi dpi;
  if (const char* value = XGetDefault(server.get(), "Xft", "dpi"))
    dpi.set = static_cast<float>(host::numberFromText(value));
  const int screen = DefaultScreen(server.get()), millimetres = DisplayHeightMM(server.get(), screen);
  if (millimetres > 0)
    dpi.measured =
        static_cast<float>(DisplayHeight(server.get(), screen)) * kMillimetresPerInch / static_cast<float>(millimetres);
  return dpi;
}

}  // namespace

float displayScale(int display) {
  const XDpi x = xDpi();
  float monitor = 0;
  if (SDL_GetDisplayDPI(display, &monitor, nullptr, nullptr) != 0) monitor = 0;
  for (const float dpi : {x.set, monitor, x.measured})
    if (dpi >= kLeastDpi) return std::clamp(dpi / kUsualDpi, 1.0f, kLargestScale);
  return 1;
}

}  // namespace ql::window
