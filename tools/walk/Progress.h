/// @file
/// A bar for what takes long.
#pragma once

#include <chrono>
#include <string>

namespace walk {

/// Shows how far a job is on standard error, when that is a terminal and the job takes over a second.
class Progress {
 public:
  Progress(std::string what, bool allowed);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  void at(int done, int all);

 private:
  using Clock = std::chrono::steady_clock;
  std::string what_;
  bool active_, shown_ = false;
  Clock::time_point start_ = Clock::now(), last_ = start_;
};

}  // namespace walk
