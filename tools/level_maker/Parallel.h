#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace ql::maker {

/// Calls work(0) ... work(count - 1), each once, from several threads. Each call may write only what belongs to its own
/// index, so that results do not depend on the number of threads.
inline void parallelFor(std::size_t count, unsigned threads, const std::function<void(std::size_t)>& work) {
  std::atomic<std::size_t> next{0};
  const auto worker = [&] {
    for (std::size_t i = next++; i < count; i = next++) work(i);
  };
  std::vector<std::jthread> pool;
  for (unsigned t = 1; t < threads; ++t) pool.emplace_back(worker);
  worker();
}

}  // namespace ql::maker
