#include "platform/host/Clock.h"

#include <chrono>

namespace ql::host {
namespace {

const std::chrono::steady_clock::time_point kStart = std::chrono::steady_clock::now();

// Movement counts from the tick of the previous frame, which is 0 before the first: the counter starts well above it.
constexpr std::uint32_t kFirstTick = 10'000;

}  // namespace

std::uint32_t systemTicks() {
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - kStart);
  return kFirstTick + static_cast<std::uint32_t>(elapsed.count());
}

}  // namespace ql::host
