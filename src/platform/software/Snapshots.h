/// @file
/// The states of draws that wait, each kept once.
#pragma once

#include "platform/software/Arena.h"
#include "platform/software/Pipeline.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ql::software {

/// Finds the pipeline that was made from a state before. A state that was changed and changed back, and states that
/// differ in what a draw doesn't read (lights without lighting), have one pipeline.
class Snapshots {
 public:
  /// The pipeline for what a draw reads; null when there is none yet: add makes it known then.
  /// @param white as makePipeline has it
  const Pipeline* find(const device::DrawPacket& packet,
                       const std::array<const TextureData*, device::kStages>& textures, bool white);
  /// Keeps the pipeline for what the last find looked for.
  void add(const Pipeline* pipeline);
  void clear();

 private:
  struct Entry {
    std::uint64_t hash = 0;
    std::span<const std::byte> key;
    const Pipeline* pipeline = nullptr;
  };
  static constexpr std::uint32_t kFree = 0xFFFFFFFF;
  void place(std::uint32_t entry);
  void grow();

  std::vector<std::byte> key_;  ///< of the last find
  std::uint64_t hash_ = 0;
  std::vector<Entry> entries_;
  std::vector<std::uint32_t> slots_;  ///< numbers of entries by their hashes; twice as many as entries at least
  Arena keys_;
};

}  // namespace ql::software
