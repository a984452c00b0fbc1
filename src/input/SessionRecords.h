/// @file
/// The records of a session's file.
#pragma once

#include "platform/host/Fault.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace ql::input::records {

inline constexpr std::string_view kIdentifier = "QLINPUT\n";
inline constexpr std::uint32_t kVersion = 1;
inline constexpr std::size_t kMostControllers = 64, kLongestText = 255;

/// The first byte of each record. Numbers are variable-length (seven bits a byte, lowest first); signed ones are folded
/// (0, -1, 1, -2, ...).
enum class Tag : std::uint8_t {
  Ticks = 1,  ///< count; for each: signed step, further readings of the same value
  Keys,       ///< count; for each that changed: its code (it toggles)
  Mouse,      ///< signed steps of x, y, z; bits of the buttons
  Focus,      ///< 0 or 1
  Attached,   ///< id, five texts, kind, counts of axes, buttons, hats, whether it has motors
  Detached,   ///< id
  State,      ///< id; signed axes; bytes of the hats; bytes of eight buttons each
  Motors,     ///< id, kinds
  Sample,     ///< the devices were read: ends what changed
  Size,       ///< width, height
  Frame,      ///< a frame was presented
  End
};

inline void putNumber(std::string& out, std::uint64_t value) {
  for (; value >= 0x80; value >>= 7) out += static_cast<char>(value | 0x80);
  out += static_cast<char>(value);
}
inline void putSigned(std::string& out, std::int32_t value) {
  putNumber(out, (static_cast<std::uint32_t>(value) << 1) ^ (value < 0 ? 0xFFFFFFFFu : 0u));
}
inline void putTag(std::string& out, Tag tag) { out += static_cast<char>(tag); }
inline void putText(std::string& out, std::string_view text) {
  text = text.substr(0, kLongestText);
  putNumber(out, text.size());
  out += text;
}

/// Reads numbers and texts. @throws FileFault Truncated, BadEncoding, BadSize
class Cursor {
 public:
  Cursor(std::span<const std::byte> bytes, std::size_t at) : bytes_(bytes), at_(at) {}
  std::size_t at() const { return at_; }

  std::uint8_t byte(std::string_view what) {
    if (at_ >= bytes_.size()) fail(host::Fault::Truncated, what, 1, 0);
    return static_cast<std::uint8_t>(bytes_[at_++]);
  }
  std::uint64_t number(std::string_view what) {
    std::uint64_t value = 0;
    for (unsigned shift = 0;; shift += 7) {
      const std::uint8_t next = byte(what);
      if (shift == 63 && next > 1) fail(host::Fault::BadEncoding, what, next, 1);
      value |= std::uint64_t{next & 0x7Fu} << shift;
      if (next < 0x80) return value;
    }
  }
  /// At most a limit.
  std::uint32_t number(std::string_view what, std::uint32_t limit) {
    const std::uint64_t value = number(what);
    if (value > limit) fail(host::Fault::BadSize, what, value, limit);
    return static_cast<std::uint32_t>(value);
  }
  std::int32_t signedNumber(std::string_view what) {
    const std::uint32_t folded = number(what, 0xFFFFFFFF);
    return static_cast<std::int32_t>((folded >> 1) ^ ((folded & 1) != 0 ? 0xFFFFFFFFu : 0u));
  }
  /// A number of things of which each takes some bytes at least.
  std::size_t count(std::string_view what, std::size_t bytesEach) {
    const std::uint64_t value = number(what);
    const std::size_t left = (bytes_.size() - at_) / bytesEach;
    if (value > left) fail(host::Fault::Truncated, what, value, left);
    return static_cast<std::size_t>(value);
  }
  std::string text(std::string_view what, std::uint32_t limit = kLongestText) {
    const std::uint32_t length = number(what, limit);
    if (length > bytes_.size() - at_) fail(host::Fault::Truncated, what, length, bytes_.size() - at_);
    std::string out(length, '\0');
    for (char& c : out) c = static_cast<char>(bytes_[at_++]);
    return out;
  }
  [[noreturn]] void fail(host::Fault fault, std::string_view what, std::uint64_t got, std::uint64_t limit) const {
    throw host::FileFault(fault, "session " + std::string(what), at_, got, limit);
  }

 private:
  std::span<const std::byte> bytes_;
  std::size_t at_;
};

}  // namespace ql::input::records
