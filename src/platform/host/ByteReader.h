/// @file
/// Bounds-checked, little-endian reading of a file in memory.
#pragma once

#include "platform/host/Fault.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ql::host {

static_assert(std::endian::native == std::endian::little, "records are copied as they stand in files");

/// Reads plain records from bytes; every read proves first that the bytes are there, before it allocates.
class ByteReader {
 public:
  explicit ByteReader(std::span<const std::byte> bytes) : bytes_(bytes) {}

  std::size_t size() const { return bytes_.size(); }
  std::span<const std::byte> bytes() const { return bytes_; }

  /// One record at an offset. @throws FileFault Truncated
  template <class T>
  T at(std::uint64_t offset, std::string_view what) const {
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memcpy(&value, range(offset, sizeof(T), what).data(), sizeof(T));
    return value;
  }

  /// count records from an offset. @throws FileFault Truncated
  template <class T>
  std::vector<T> table(std::uint64_t offset, std::uint64_t count, std::string_view what) const {
    static_assert(std::is_trivially_copyable_v<T>);
    if (offset > size() || count > (size() - offset) / sizeof(T))
      throwTruncated(offset, bytesOf(count, sizeof(T)), what);
    std::vector<T> out(count);
    if (count != 0) std::memcpy(out.data(), bytes_.data() + offset, count * sizeof(T));
    return out;
  }

  /// The bytes themselves. @throws FileFault Truncated
  std::span<const std::byte> range(std::uint64_t offset, std::uint64_t length, std::string_view what) const {
    if (offset > size() || length > size() - offset) throwTruncated(offset, length, what);
    return bytes_.subspan(offset, length);
  }

  /// Bytes of which those past the end of the file read as zero.
  void copyZeroFilled(std::uint64_t offset, std::span<std::byte> out) const;

 private:
  /// count × size for a message; saturates, since a hostile count must not wrap into a plausible number.
  static constexpr std::uint64_t bytesOf(std::uint64_t count, std::uint64_t size) {
    return count > ~std::uint64_t{0} / size ? ~std::uint64_t{0} : count * size;
  }
  [[noreturn]] void throwTruncated(std::uint64_t offset, std::uint64_t length, std::string_view what) const;
  std::span<const std::byte> bytes_;
};

/// The text of a fixed-size field, cut at its first NUL.
std::string_view fieldText(std::span<const char> field);

}  // namespace ql::host
