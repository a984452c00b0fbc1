/// @file
/// The X server's refusals, which end the process unless somebody takes them.
#pragma once

#include <functional>

namespace ql::window {

/// Does work with a window that may be gone. The X server answers late, and by default its refusal ends the process.
/// @param server the connection that the work uses; its answers are awaited when it is not null
/// @return whether the server accepted everything
bool accepted(void* server, const std::function<void()>& work);

}  // namespace ql::window
