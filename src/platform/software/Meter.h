/// @file
/// How long the threads work on what.
#pragma once

#include "platform/device/Statistics.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <vector>

namespace ql::software {

class Meter {
 public:
  /// @param threads that work; each calls time with its own number, and nothing else meanwhile
  explicit Meter(unsigned threads) : workers_(threads) {}

  /// Calls some work and takes its time.
  template <class F>
  void time(unsigned thread, device::WorkStep step, F&& work) {
    const std::int64_t begin = now();
    work();
    add(thread, step, begin, now());
  }

  /// The same for work that alternates between two steps in small parts; the first one's is told as if it came first.
  /// @param work returns the nanoseconds that it spent on the first one
  template <class F>
  void time(unsigned thread, device::WorkStep first, device::WorkStep second, F&& work) {
    const std::int64_t begin = now();
    const std::int64_t change = begin + work();
    add(thread, first, begin, change);
    add(thread, second, change, now());
  }

  static std::int64_t now() {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
  }

  void keepSpans(bool on) {
    keeps_ = on;
    if (!on) takeSpans();
  }
  std::vector<device::WorkSpan> takeSpans() {
    std::vector<device::WorkSpan> out;
    for (Worker& worker : workers_) {
      out.insert(out.end(), worker.spans.begin(), worker.spans.end());
      worker.spans.clear();
    }
    return out;
  }
  /// Adds the time taken since the last call.
  void collect(device::Statistics& statistics) {
    for (Worker& worker : workers_)
      for (std::size_t i = 0; i < device::kWorkSteps; ++i) {
        statistics.nanoseconds[i] += static_cast<std::uint64_t>(worker.nanoseconds[i]);
        worker.nanoseconds[i] = 0;
      }
  }

 private:
  struct alignas(64) Worker {
    std::array<std::int64_t, device::kWorkSteps> nanoseconds{};
    std::vector<device::WorkSpan> spans;
  };
  void add(unsigned thread, device::WorkStep step, std::int64_t begin, std::int64_t end) {
    Worker& worker = workers_[thread];
    worker.nanoseconds[static_cast<std::size_t>(step)] += end - begin;
    if (!keeps_) return;
    // One tile after another is one span.
    constexpr std::int64_t kGap = 10'000;
    if (!worker.spans.empty() && worker.spans.back().step == step && begin - worker.spans.back().end < kGap)
      worker.spans.back().end = end;
    else
      worker.spans.push_back({step, thread, begin, end});
  }

  std::vector<Worker> workers_;
  bool keeps_ = false;
};

}  // namespace ql::software
