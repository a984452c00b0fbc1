/// @file
/// How large a display wants texts and controls.
#pragma once

namespace ql::window {

/// 1 at 96 dots per inch, larger on denser displays, never smaller. What the user set counts before what the monitor
/// measures.
float displayScale(int display);

}  // namespace ql::window
