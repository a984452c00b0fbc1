#include "platform/window/XErrors.h"

#include <atomic>

#include <X11/Xlib.h>

namespace ql::window {
namespace {

std::atomic<bool> refused{false};
int noteRefusal(::Display*, XErrorEvent*) {
  refused = true;
  return 0;
}

}  // namespace

bool accepted(void* server, const std::function<void()>& work) {
  refused = false;
  const XErrorHandler before = XSetErrorHandler(&noteRefusal);
  work();
  if (server != nullptr) XSync(static_cast<::Display*>(server), 0);
  XSetErrorHandler(before);
  return !refused;
}

}  // namespace ql::window
