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

/// Receives what happens on a device, in order. The values are valid during the call only.
class CallSink {
 public:
  virtual ~CallSink() = default;
  /// Every call of a device, before it acts, with all its values in the order of its parameters.
  virtual void call(std::string_view name, std::span<const CallValue> values) = 0;
  /// What calls did to devices and their resources, after they did it and by whatever way it came about: with the
  /// calls, all that is needed to do the same on another device.
  ///
  /// DeviceCreated, DeviceReset   (type, width, height, format of the back buffer)
  /// TextureCreated               (id, width, height, levels, format, is a render target)
  /// TextureWritten               (id, level, its pixels in its format)
  /// BufferCreated, BufferWritten (id, bytes, vertex format), (id, offset, bytes)
  /// TargetCreated                (id, width, height, format)
  /// TextureTargetCreated         (id, id of the texture, level)
  /// TargetWritten                (id, x, y, width, height, pixels); id 0 is the back buffer
  /// TextureDestroyed, BufferDestroyed, TargetDestroyed (id)
  virtual void effect(std::string_view /*name*/, std::span<const CallValue> /*values*/) {}
};

}  // namespace ql::device
