/// @file
/// Where the mouse pointer stands.
#pragma once

#include <cstdint>

namespace ql::engine {

/// The pointer's place, for whoever draws by it (hover buttons, the cursor): context.get<PointerState>(). The input
/// engine writes it whenever it samples the mouse or moves it; without an input engine it stays unknown.
struct PointerState {
  std::int32_t x = 0, y = 0;  ///< pixels of the back buffer, clamped to it
  bool known = false;         ///< an input engine keeps it up to date
};

}  // namespace ql::engine
