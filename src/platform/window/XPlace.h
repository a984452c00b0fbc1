/// @file
/// Windows as the X server knows them.
#pragma once

#include "platform/device/Display.h"

struct SDL_Window;

namespace ql::window {

/// The number of SDL's window and of its visual; none when the window system is no X server.
device::XWindow placeOnServer(SDL_Window* window);

}  // namespace ql::window
