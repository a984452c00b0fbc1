/// @file
/// Worker threads that carry out one batch of numbered tasks at a time.
#pragma once

#include <atomic>
#include <cstdint>
#include <stop_token>
#include <thread>
#include <vector>

namespace ql::software {

class Pool {
 public:
  /// @param threads including the caller of run; at least 1
  explicit Pool(unsigned threads);
  ~Pool();
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  unsigned threads() const { return static_cast<unsigned>(workers_.size()) + 1; }

  /// Calls task(index, worker) for every index below count, on all threads, and returns when all are done. Indices are
  /// handed out in ascending order; worker is 0 to threads() - 1. The task must not throw.
  template <class F>
  void run(std::uint32_t count, F&& task) {
    runAll(count, taskOf(task));
  }
  /// Lets the other threads begin; the caller has other things to do until it joins them. Nothing else runs meanwhile.
  /// @param task stays where it is until then
  template <class F>
  void start(std::uint32_t count, F& task) {
    startAll(count, taskOf(task));
  }
  /// Takes part in what was started, and returns when all of it is done.
  void join();

 private:
  /// A task that somebody else keeps.
  struct Task {
    void* self = nullptr;
    void (*call)(void* self, std::uint32_t index, unsigned worker) = nullptr;
  };
  template <class F>
  static Task taskOf(F& task) {
    return {&task, [](void* self, std::uint32_t index, unsigned worker) { (*static_cast<F*>(self))(index, worker); }};
  }
  void runAll(std::uint32_t count, Task task);
  void startAll(std::uint32_t count, Task task);
  void work(unsigned worker);
  void serve(const std::stop_token& stop, unsigned worker);

  Task task_;
  std::uint32_t count_ = 0;
  std::atomic<std::uint32_t> next_{0}, batch_{0}, busy_{0};
  std::vector<std::jthread> workers_;
};

}  // namespace ql::software
