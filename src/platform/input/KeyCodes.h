/// @file
/// Scan codes of keys.
#pragma once

#include <cstdint>

namespace ql::input {

/// The scan code of a key at a place of the keyboard, whatever is printed on it; 0 when it has none.
/// @param scancode SDL's number of the place
std::uint8_t keyCode(std::uint32_t scancode);

/// Three keys that have codes of their own on a Japanese keyboard.
inline constexpr std::uint8_t kCircumflex = 144, kAt = 145, kColon = 146;

}  // namespace ql::input
