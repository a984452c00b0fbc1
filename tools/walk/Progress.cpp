#include "Progress.h"

#include <cstdio>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

namespace walk {

Progress::Progress(std::string what, bool allowed)
    : what_(std::move(what)), active_(allowed && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (shown_) fmt::print(stderr, "\r\x1b[K");
}

void Progress::at(int done, int all) {
  using namespace std::chrono_literals;
  const Clock::time_point now = Clock::now();
  if (!active_ || now - start_ < 1s || now - last_ < 100ms) return;
  constexpr int kWidth = 30;
  const auto filled = static_cast<std::size_t>(kWidth * done / all);
  fmt::print(stderr, "\r{} [{}{}] {}/{}", what_, std::string(filled, '#'), std::string(kWidth - filled, ' '), done,
             all);
  std::fflush(stderr);
  last_ = now;
  shown_ = true;
}

}  // namespace walk
