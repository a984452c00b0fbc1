/// @file
/// Writing records field by field, little-endian, without padding.
#pragma once

#include "engine/EngineError.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace ql::mesh {

/// The bytes of a file that is being written. Everything has the width of its type; texts are single bytes.
class RecordBytes {
 public:
  /// A number, or a record of numbers without padding.
  template <class T>
  RecordBytes& value(const T& value) {
    static_assert(std::is_trivially_copyable_v<T> && !std::is_same_v<T, bool>);
    return add(std::as_bytes(std::span(&value, 1)));
  }
  /// A 16-bit boolean: -1 or 0.
  RecordBytes& boolean(bool on) { return value(std::int16_t{on ? std::int16_t{-1} : std::int16_t{0}}); }
  /// Characters alone.
  RecordBytes& text(std::string_view characters) { return add(std::as_bytes(std::span(characters))); }
  /// A 16-bit length, then the characters. @throws engine::EngineError 6 above 65535 characters
  RecordBytes& string(std::string_view characters) {
    if (characters.size() > std::numeric_limits<std::uint16_t>::max())
      throw engine::EngineError(engine::kOverflow, "Overflow");
    return value(static_cast<std::uint16_t>(characters.size())).text(characters);
  }
  /// The head of a list, whose elements are to follow: one dimension, the number of elements, the index of the first.
  RecordBytes& list(std::size_t count, std::int32_t first) {
    return value(std::int16_t{1}).value(static_cast<std::int32_t>(count)).value(first);
  }
  /// The head of a list that never had an element.
  RecordBytes& noList() { return value(std::int16_t{0}); }
  /// Elements alone.
  template <class T>
  RecordBytes& elements(const std::vector<T>& items) {
    static_assert(std::is_trivially_copyable_v<T>);
    return add(std::as_bytes(std::span(items)));
  }

  std::size_t size() const { return bytes_.size(); }
  /// Writes over a number that was written before.
  void replace(std::size_t at, std::int32_t value) { std::memcpy(bytes_.data() + at, &value, sizeof value); }
  std::vector<std::byte> take() { return std::move(bytes_); }

 private:
  RecordBytes& add(std::span<const std::byte> more) {
    bytes_.insert(bytes_.end(), more.begin(), more.end());
    return *this;
  }
  static_assert(std::endian::native == std::endian::little);
  std::vector<std::byte> bytes_;
};

}  // namespace ql::mesh
