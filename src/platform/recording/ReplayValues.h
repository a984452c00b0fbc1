/// @file
/// The values of a recorded call, checked. For this folder's own sources only.
#pragma once

#include "platform/host/Fault.h"
#include "platform/recording/Trace.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace ql::recording {

/// Hands out the values of one record in order. @throws host::FileFault when one is missing, of another type or out of
/// range; the fault's position is the record's number
class ReplayValues {
 public:
  ReplayValues(TraceCursor& cursor, const TraceRecord& record) : cursor_(cursor), record_(record) {}

  std::uint32_t u32() { return integer<std::uint32_t>(); }
  std::int32_t i32() { return integer<std::int32_t>(); }
  bool boolean() { return u32() != 0; }
  template <class E>
  E code() {
    return static_cast<E>(u32());
  }
  float real() {
    const auto* value = std::get_if<float>(&next());
    if (!value) fault(host::Fault::BadEncoding, 0, 0);
    return *value;
  }
  std::span<const std::byte> bytes() {
    const TraceValue& value = next();
    if (!std::holds_alternative<BlobReference>(value) && !std::holds_alternative<std::span<const std::byte>>(value))
      fault(host::Fault::BadEncoding, 0, 0);
    return cursor_.bytes(value);
  }
  /// A structure that was recorded as its bytes.
  template <class T>
  T structure() {
    static_assert(std::is_trivially_copyable_v<T>);
    const auto from = bytes();
    if (from.size() != sizeof(T)) fault(host::Fault::BadSize, from.size(), sizeof(T));
    T out;
    std::memcpy(&out, from.data(), sizeof(T));
    return out;
  }
  template <class T>
  std::vector<T> table() {
    const auto from = bytes();
    if (from.size() % sizeof(T) != 0) fault(host::Fault::BadSize, from.size(), from.size() / sizeof(T) * sizeof(T));
    std::vector<T> out(from.size() / sizeof(T));
    if (!from.empty()) std::memcpy(out.data(), from.data(), from.size());
    return out;
  }
  [[noreturn]] void fault(host::Fault id, std::uint64_t got, std::uint64_t limit) const {
    throw host::FileFault(id, "value of the recorded call " + std::string(record_.name), record_.number, got, limit);
  }

 private:
  const TraceValue& next() {
    if (at_ == record_.values.size()) fault(host::Fault::Truncated, at_ + 1, at_);
    return record_.values[at_++];
  }
  template <class T>
  T integer() {
    const auto* value = std::get_if<std::int64_t>(&next());
    if (!value) fault(host::Fault::BadEncoding, 0, 0);
    if (*value < std::numeric_limits<T>::min() || *value > std::numeric_limits<T>::max())
      fault(host::Fault::BadSize, static_cast<std::uint64_t>(*value), std::numeric_limits<T>::max());
    return static_cast<T>(*value);
  }

  TraceCursor& cursor_;
  const TraceRecord& record_;
  std::size_t at_ = 0;
};

}  // namespace ql::recording
