/// @file
/// Closing another client's window. Xlib's macros spoil the names of others: include this last, and link x11.
#pragma once

#include <string>

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#undef Bool
#undef None
#undef Status

namespace ql::test {

/// Asks a top-level window to close, as a window manager does. @return whether there is one with that title
inline bool closeWindow(const std::string& title) {
  ::Display* server = XOpenDisplay(nullptr);
  if (server == nullptr) return false;
  // A window may go between being listed and being asked; that must not end the test, as Xlib's own handler would.
  XSetErrorHandler([](::Display*, XErrorEvent*) { return 0; });
  ::Window root = 0, parent = 0, *children = nullptr;
  unsigned count = 0;
  XQueryTree(server, DefaultRootWindow(server), &root, &parent, &children, &count);
  bool found = false;
  for (unsigned i = 0; i < count; ++i) {
    char* name = nullptr;
    if (XFetchName(server, children[i], &name) == 0) continue;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = children[i];
    event.xclient.message_type = XInternAtom(server, "WM_PROTOCOLS", 0);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(server, "WM_DELETE_WINDOW", 0));
    if (title == name) found |= XSendEvent(server, children[i], 0, NoEventMask, &event) != 0;
    XFree(name);
  }
  if (children != nullptr) XFree(children);
  XCloseDisplay(server);
  return found;
}

}  // namespace ql::test
