/// @file
/// The tables that registries keep their records in.
#pragma once

#include "engine/EngineError.h"

#include <cstdint>
#include <vector>

namespace ql::engine {

/// Records addressed by a 16-bit index from 0 to count; slot 0 exists. How a slot is chosen is each registry's own
/// rule.
template <class T>
class SlotTable {
 public:
  SlotTable() : slots_(1) {}
  std::int16_t count() const { return static_cast<std::int16_t>(slots_.size() - 1); }
  /// @throws EngineError 9 outside 0 to count
  T& at(std::int32_t index) {
    check(index);
    return slots_[static_cast<std::size_t>(index)];
  }
  const T& at(std::int32_t index) const {
    check(index);
    return slots_[static_cast<std::size_t>(index)];
  }
  /// Adds a slot and returns its index. @throws EngineError 6 beyond 32767
  std::int16_t grow() {
    if (slots_.size() > 32767) throw EngineError(kOverflow, "Overflow");
    slots_.emplace_back();
    return count();
  }
  /// The first index from 1 that satisfies a condition, 0 when none does.
  template <class Predicate>
  std::int16_t find(Predicate&& predicate) const {
    for (std::size_t i = 1; i < slots_.size(); ++i)
      if (predicate(slots_[i])) return static_cast<std::int16_t>(i);
    return 0;
  }
  void clear() { slots_.assign(1, T{}); }

 private:
  void check(std::int32_t index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= slots_.size())
      throw EngineError(kSubscript, "Subscript out of range");
  }
  std::vector<T> slots_;
};

}  // namespace ql::engine
