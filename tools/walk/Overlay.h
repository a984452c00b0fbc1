/// @file
/// Numbers over the picture.
#pragma once

#include "Report.h"

#include <Quasarlens3D/Screen8.h>

#include <string>
#include <vector>

namespace walk {

/// A panel in the lower left with what the walk is about and what its last finished frame took, as the report has it.
/// In a small picture the letters are smaller, and the less important lines are left out.
class Overlay {
 public:
  Overlay();
  /// Draws it, inside a frame. @return its lines
  std::vector<std::string> draw(const Report& report);

 private:
  Quasarlens3D::Screen8 screen_;
};

}  // namespace walk
