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

/// Numbers different keys in the order of their coming.
class Numbering {
 public:
  /// The key's number; that of a new one is the number of keys before it. Keys are bytes that are copied.
  std::uint32_t number(std::span<const std::byte> key);
  std::uint32_t size() const { return static_cast<std::uint32_t>(entries_.size()); }
  void clear();

 private:
  struct Entry {
    std::uint64_t hash = 0;
    std::span<const std::byte> key;
  };
  static constexpr std::uint32_t kFree = 0xFFFFFFFF;
  std::uint32_t find(std::span<const std::byte> key);
  void grow();

  std::vector<Entry> entries_;
  std::vector<std::uint32_t> slots_;  ///< numbers by their keys' hashes; at least twice as many as keys
  Arena keys_;
  std::array<std::uint32_t, 4> recent_{kFree, kFree, kFree, kFree};  ///< numbers asked for, the last one first
};

/// Finds the pipeline that was made from a state before. A state that was changed and changed back, and states that
/// differ in what a draw doesn't read (lights without lighting), have one pipeline.
class Snapshots {
 public:
  /// The place of the pipeline for what a draw reads; null in it when it is asked for the first time.
  /// @param white as makePipeline has it
  const Pipeline*& find(const device::DrawPacket& packet,
                        const std::array<const TextureData*, device::kStages>& textures, bool white);
  void clear();

 private:
  Numbering states_, kinds_;
  std::vector<const Pipeline*> pipelines_;  ///< by the numbers of their kinds
  std::vector<std::byte> key_;
  std::uint64_t version_ = 0;  ///< of the state that was asked for last, and its number
  std::uint32_t state_ = 0;
};

}  // namespace ql::software
