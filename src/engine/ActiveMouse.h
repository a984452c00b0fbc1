/// @file
/// Where the mouse is, for those who draw or pick at it: the input engine stands above them.
#pragma once

#include <cstdint>
#include <functional>

namespace ql::engine {

struct MousePosition {
  std::int32_t x = 0, y = 0;  ///< pixels of the back buffer
};

/// context.get<ActiveMouse>(): the input engine sets the function, and empties it before it goes.
struct ActiveMouse {
  std::function<MousePosition()> position;  ///< empty: no input engine
};

}  // namespace ql::engine
