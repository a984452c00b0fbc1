/// @file
/// A picture beside the frame that is being drawn.
#pragma once

#include "engine/EngineContext.h"

#include <functional>
#include <utility>

namespace ql::engine {

/// Set while a render surface is drawn. What begins a frame or renews the device ends it first, so that a host that
/// fails in between (an exception, say) leaves nothing behind.
struct OpenTarget {
  std::function<void()> end;  ///< puts everything back; does not throw
};

inline void endOpenTarget(EngineContext& context) {
  if (const auto end = std::exchange(context.get<OpenTarget>().end, nullptr)) end();
}

}  // namespace ql::engine
