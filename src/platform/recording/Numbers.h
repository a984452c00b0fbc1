/// @file
/// Numbers and bytes in lines of text. For this folder's own sources only.
#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <type_traits>

namespace ql::recording {

/// An integer, or a float with the digits that identify it.
template <class T>
std::string digits(T value, int base = 10) {
  std::array<char, 72> text;
  std::to_chars_result end{};
  if constexpr (std::is_floating_point_v<T>)
    end = std::to_chars(text.data(), text.data() + text.size(), value);
  else
    end = std::to_chars(text.data(), text.data() + text.size(), value, base);
  return {text.data(), end.ptr};
}

/// "#" + the count of bytes + ":" + their FNV-1a hash of 64 bits: tells contents apart in a line of text.
inline std::string mark(std::span<const std::byte> bytes) {
  std::uint64_t h = 0xCBF29CE484222325u;
  for (const std::byte b : bytes) h = (h ^ std::to_integer<std::uint64_t>(b)) * 0x100000001B3u;
  std::string text(1, '#');
  return text.append(digits(bytes.size())).append(1, ':').append(digits(h, 16));
}

}  // namespace ql::recording
