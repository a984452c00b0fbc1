/// @file
/// Where the controls of a form stand.
#pragma once

#include "platform/device/Form.h"

#include <cstddef>
#include <vector>

namespace ql::dialog {

/// A rectangle of the window, pixels from its top left.
struct Box {
  int x = 0, y = 0, width = 0, height = 0;
};

struct FormLayout {
  int width = 0, height = 0;       ///< of the window's client area
  std::vector<Box> labels, lists;  ///< one each per list
  Box checkBox;
  std::vector<Box> buttons;
  int rowHeight = 0;  ///< of an entry in an open list

  /// Where the entries of an open list appear: below it, or above where there is more room. What doesn't fit scrolls.
  Box entries(std::size_t list, std::size_t count) const;
};

/// @param scale 1 at 96 dots per inch
FormLayout layOut(const device::FormContent& content, float scale);

}  // namespace ql::dialog
