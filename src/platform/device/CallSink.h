/// @file
/// Watching the calls that reach a device.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <variant>

namespace ql::device {

/// One value of a call: a number, a float, a text, or raw bytes (matrices, vertices, pixels).
using CallValue = std::variant<std::int64_t, float, std::string_view, std::span<const std::byte>>;

/// Receives every call of a device, before it acts, with all its values in the order of its parameters. The values are
/// valid during the call only.
class CallSink {
 public:
  virtual ~CallSink() = default;
  virtual void call(std::string_view name, std::span<const CallValue> values) = 0;
};

}  // namespace ql::device
