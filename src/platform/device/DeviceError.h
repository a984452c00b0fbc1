/// @file
/// A failed device call.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace ql::device {

/// Carries the device's code (kErrorInvalidCall, ...) and what was wrong.
class DeviceError : public std::runtime_error {
 public:
  DeviceError(std::uint32_t errorCode, const std::string& description)
      : std::runtime_error(description), code(errorCode) {}
  std::uint32_t code;
};

}  // namespace ql::device
