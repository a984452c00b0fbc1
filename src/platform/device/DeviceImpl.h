/// @file
/// What a device holds. For the device's own sources only.
#pragma once

#include "platform/device/CallNote.h"
#include "platform/device/Device.h"
#include "platform/device/StateValues.h"
#include "platform/device/Watch.h"

#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace ql::device {

/// The colour target of the device; surfaces that hosts hold outlive it.
struct BackBuffer {
  std::shared_ptr<BackEnd> backEnd;
  std::shared_ptr<Watch> watch;
  TargetId id = TargetId::None;  ///< none after a reset or after the device's end
  std::uint32_t width = 0, height = 0;
  Format format = Format::Unknown;
  ~BackBuffer() { destroy(); }
  void destroy() {
    if (id != TargetId::None) backEnd->destroyTarget(id);
    id = TargetId::None;
  }
};

struct Device::Impl {
  std::shared_ptr<BackEnd> backEnd;
  DeviceType type = DeviceType::Reference;
  PresentParameters parameters;
  std::shared_ptr<Watch> watch = std::make_shared<Watch>();

  std::shared_ptr<BackBuffer> backBuffer;
  TargetId target = TargetId::None;  ///< where drawing goes
  std::uint32_t targetWidth = 0, targetHeight = 0;
  bool inScene = false;

  State state;         ///< what draws see: the meaningful values
  StateValues values;  ///< after the state that it looks at
  std::uint64_t stateVersion = 1;
  std::array<std::shared_ptr<Texture>, kStageStates> textures;
  std::uint32_t vertexFormat = 0, vertexBytes = 0;
  std::shared_ptr<VertexBuffer> stream;
  std::uint32_t streamStride = 0;
  Gamma gamma;

  Impl() : values(state) {}

  /// Tells the sink of a call; nothing is gathered when there is none.
  template <class... Values>
  void note(std::string_view name, const Values&... given) const {
    noteCall(watch->sink, name, given...);
  }

  /// Replaces a part of the state and counts a new version when its bytes differ.
  template <class T>
  requires std::is_trivially_copyable_v<T>
  void change(T& place, const T& value) {
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): any other bits are another state
    if (std::memcmp(&place, &value, sizeof(T)) == 0) return;
    place = value;
    ++stateVersion;
  }

  void makeBackBuffer(const PresentParameters& wanted);
  void directTo(TargetId id, std::uint32_t width, std::uint32_t height);
  TargetId keepTarget(TargetId id, const Watch::Target& made) const;
  void tellDevice(std::string_view effect, CallSink* to) const;
  void tellResources(CallSink& sink) const;
  void tellStates(CallSink& sink) const;
  void draw(PrimitiveType primitive, std::uint32_t primitiveCount, DrawPacket& packet);
};

[[noreturn]] inline void invalidCall(const std::string& description) {
  throw DeviceError(kErrorInvalidCall, description);
}

template <class T>
std::string number(T value) {
  if constexpr (std::is_enum_v<T>)
    return std::to_string(static_cast<std::underlying_type_t<T>>(value));
  else
    return std::to_string(value);
}

/// Fills in what parameters may leave open and checks the rest.
PresentParameters completeParameters(PresentParameters wanted);

/// Whether a rectangle is not empty and lies inside width × height.
inline bool inside(const PixelRect& rect, std::uint32_t width, std::uint32_t height) {
  return rect.width > 0 && rect.height > 0 && rect.x < width && rect.y < height && rect.width <= width - rect.x &&
         rect.height <= height - rect.y;
}

}  // namespace ql::device
