/// @file
/// A form as a modal window.
#pragma once

#include "platform/device/Form.h"

namespace ql::dialog {

/// Shows a form in a window of its own, on the first display, until the form hides itself. SDL's video part runs
/// already.
/// @param wantedScale 1 at 96 dots per inch; less is taken where the form would not fit the display, but at least 1
/// @param keepOtherEvents events of other windows are put back into SDL's queue afterwards, for a host that uses SDL
/// @return false when the window system refuses; what the form throws passes through
bool showForm(device::Form& form, float wantedScale, bool keepOtherEvents);

}  // namespace ql::dialog
