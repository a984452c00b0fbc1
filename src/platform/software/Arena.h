/// @file
/// Memory for what lives until the next flush.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

namespace ql::software {

/// Hands out bytes and takes all back at once. What it once had from the system it keeps and hands out again, so that
/// frames like the ones before allocate nothing.
class Arena {
 public:
  /// Uninitialised; aligned for every vertex.
  std::byte* allocate(std::size_t bytes) {
    constexpr std::size_t kAlign = alignof(std::max_align_t), kChunk = std::size_t{1} << 20;
    used_ = (used_ + kAlign - 1) / kAlign * kAlign;
    while (current_ < chunks_.size() && chunks_[current_].size < used_ + bytes) {
      ++current_;
      used_ = 0;
    }
    if (current_ == chunks_.size()) {
      const std::size_t size = std::max(bytes, kChunk);
      chunks_.push_back({std::make_unique_for_overwrite<std::byte[]>(size), size});
      used_ = 0;
    }
    std::byte* out = chunks_[current_].memory.get() + used_;
    used_ += bytes;
    return out;
  }
  /// Bytes right behind some that were handed out; null when others lie there or there is no room.
  /// @param end of those
  std::byte* extend(const std::byte* end, std::size_t bytes) {
    if (current_ == chunks_.size() || chunks_[current_].size < used_ + bytes) return nullptr;
    std::byte* out = chunks_[current_].memory.get() + used_;
    if (out != end) return nullptr;
    used_ += bytes;
    return out;
  }
  void reset() { current_ = used_ = 0; }

 private:
  struct Chunk {
    std::unique_ptr<std::byte[]> memory;
    std::size_t size = 0;
  };
  std::vector<Chunk> chunks_;
  std::size_t current_ = 0, used_ = 0;
};

}  // namespace ql::software
