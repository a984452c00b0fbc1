/// @file
/// Telling a sink of a call with its values. For this folder's own sources only.
#pragma once

#include "platform/device/CallSink.h"

#include <array>
#include <concepts>
#include <type_traits>

namespace ql::device {

/// Numbers and enumerators become integers, floats stay, everything else (matrices, lights, spans of bytes) is bytes.
template <class T>
CallValue callValue(const T& value) {
  if constexpr (std::is_same_v<T, float>)
    return value;
  else if constexpr (std::is_enum_v<T> || std::integral<T>)
    return static_cast<std::int64_t>(value);
  else if constexpr (std::is_convertible_v<T, std::span<const std::byte>>)
    return std::span<const std::byte>(value);
  else
    return std::as_bytes(std::span(&value, 1));
}

/// Tells the sink of a call; nothing is gathered when there is none.
template <class... Values>
void noteCall(CallSink* sink, std::string_view name, const Values&... given) {
  if (!sink) return;
  const std::array<CallValue, sizeof...(Values)> list{callValue(given)...};
  sink->call(name, list);
}

/// Tells it of an effect.
template <class... Values>
void noteEffect(CallSink* sink, std::string_view name, const Values&... given) {
  if (!sink) return;
  const std::array<CallValue, sizeof...(Values)> list{callValue(given)...};
  sink->effect(name, list);
}

}  // namespace ql::device
