/// @file
/// Error codes of input devices.
#pragma once

#include "engine/EngineError.h"

#include <cstdint>
#include <string>

namespace ql::input {

inline constexpr std::uint32_t kDeviceNotRegistered = 0x80040154, kDeviceFull = 0x80040201;

inline engine::EngineError deviceError(std::uint32_t code, const std::string& description) {
  return {static_cast<std::int32_t>(code), description};
}

}  // namespace ql::input
