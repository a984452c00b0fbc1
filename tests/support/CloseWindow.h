/// @file
/// Closing another client's window. Link PkgConfig::XCB.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include <xcb/xcb.h>

namespace ql::test {

namespace detail {

struct Free {
  void operator()(void* reply) const { std::free(reply); }
};
template <class T>
using Reply = std::unique_ptr<T, Free>;

inline xcb_atom_t atom(xcb_connection_t* server, std::string_view name) {
  const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
      server, xcb_intern_atom(server, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

}  // namespace detail

/// Asks a top-level window to close, as a window manager does. A window that goes meanwhile is no fault: this has a
/// connection of its own, whose errors stay on it. @return whether there is one with that title
inline bool closeWindow(const std::string& title) {
  using namespace detail;
  const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> own(xcb_connect(nullptr, nullptr),
                                                                           xcb_disconnect);
  xcb_connection_t* server = own.get();
  if (xcb_connection_has_error(server) != 0) return false;
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
  const Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(server, xcb_query_tree(server, root), nullptr));
  if (!tree) return false;
  bool found = false;
  for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
    const xcb_window_t window = xcb_query_tree_children(tree.get())[i];
    const Reply<xcb_get_property_reply_t> name(xcb_get_property_reply(
        server, xcb_get_property(server, 0, window, XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY, 0, 256), nullptr));
    if (!name || std::string_view(static_cast<const char*>(xcb_get_property_value(name.get())),
                                  static_cast<std::size_t>(xcb_get_property_value_length(name.get()))) != title)
      continue;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(server, "WM_PROTOCOLS");
    event.data.data32[0] = atom(server, "WM_DELETE_WINDOW");
    xcb_send_event(server, 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&event));
    found = true;
  }
  // The answer to any question comes after what was asked before: the server has passed the messages on.
  const Reply<xcb_get_input_focus_reply_t> done(
      xcb_get_input_focus_reply(server, xcb_get_input_focus(server), nullptr));
  return found && done;
}

}  // namespace ql::test
