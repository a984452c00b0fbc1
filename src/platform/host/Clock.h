/// @file
/// The millisecond tick counter that all movement follows.
#pragma once

#include <cstdint>
#include <functional>

namespace ql::host {

/// A source of ticks in milliseconds. It may wrap; differences are taken unsigned.
using TickSource = std::function<std::uint32_t()>;

/// Monotonic milliseconds since the process started, plus 10,000.
std::uint32_t systemTicks();

}  // namespace ql::host
