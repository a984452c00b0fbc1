#include "platform/software/Pool.h"

#include <algorithm>

namespace ql::software {

Pool::Pool(unsigned threads) {
  for (unsigned worker = 1; worker < std::max(threads, 1u); ++worker)
    workers_.emplace_back([this, worker](const std::stop_token& stop) { serve(stop, worker); });
}

Pool::~Pool() {
  for (std::jthread& worker : workers_) worker.request_stop();
  batch_.fetch_add(1, std::memory_order_release);
  batch_.notify_all();
}

void Pool::runAll(std::uint32_t count, Task task) {
  if (count <= 1 || workers_.empty()) {
    for (std::uint32_t i = 0; i < count; ++i) task.call(task.self, i, 0);
    return;
  }
  startAll(count, task);
  join();
}

void Pool::startAll(std::uint32_t count, Task task) {
  task_ = task;
  count_ = count;
  next_.store(0, std::memory_order_relaxed);
  busy_.store(static_cast<std::uint32_t>(workers_.size()), std::memory_order_relaxed);
  batch_.fetch_add(1, std::memory_order_release);
  batch_.notify_all();
}

void Pool::join() {
  work(0);
  for (std::uint32_t busy = busy_.load(std::memory_order_acquire); busy != 0;
       busy = busy_.load(std::memory_order_acquire))
    busy_.wait(busy, std::memory_order_acquire);
}

void Pool::work(unsigned worker) {
  for (;;) {
    const std::uint32_t index = next_.fetch_add(1, std::memory_order_relaxed);
    if (index >= count_) return;
    task_.call(task_.self, index, worker);
  }
}

void Pool::serve(const std::stop_token& stop, unsigned worker) {
  std::uint32_t seen = 0;
  for (;;) {
    batch_.wait(seen, std::memory_order_acquire);
    if (stop.stop_requested()) return;
    ++seen;  // every batch waits for every worker, so none is ever skipped
    work(worker);
    if (busy_.fetch_sub(1, std::memory_order_acq_rel) == 1) busy_.notify_one();
  }
}

}  // namespace ql::software
