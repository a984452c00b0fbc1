/// @file
/// The light that falls on a point.
#pragma once

#include "Cells.h"

namespace ql::hl_maker {

/// Red, green, blue, 0 to 255 and beyond. @param normal of length 1
Point lightAt(const Cells& cells, const std::vector<Lamp>& lamps, const Point& at, const Point& normal);

}  // namespace ql::hl_maker
