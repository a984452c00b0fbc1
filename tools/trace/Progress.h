/// @file
/// A bar for what takes long.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

namespace ql::trace {

/// Shows how far a job is on standard error, when that is a terminal and the job takes over a second.
class Progress {
 public:
  Progress(std::string what, bool allowed) : what_(std::move(what)), active_(allowed && isatty(STDERR_FILENO) != 0) {}
  ~Progress() {
    if (shown_) fmt::print(stderr, "\r\x1b[K");
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void at(std::uint64_t done, std::uint64_t all) {
    using namespace std::chrono_literals;
    const Clock::time_point now = Clock::now();
    if (!active_ || now - start_ < 1s || now - last_ < 100ms) return;
    fmt::print(stderr, "\r{} {}/{}", what_, done, all);
    std::fflush(stderr);
    last_ = now;
    shown_ = true;
  }

 private:
  using Clock = std::chrono::steady_clock;
  std::string what_;
  bool active_, shown_ = false;
  Clock::time_point start_ = Clock::now(), last_ = start_;
};

}  // namespace ql::trace
