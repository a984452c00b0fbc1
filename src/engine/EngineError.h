/// @file
/// Errors that reach the host, by number.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace ql::engine {

inline constexpr std::int32_t kInvalidArgument = 5, kOverflow = 6, kOutOfMemory = 7, kSubscript = 9,
                              kDivisionByZero = 11, kTypeMismatch = 13, kBadFileName = 52, kFileNotFound = 53,
                              kPastEnd = 62, kPathAccess = 75, kPathNotFound = 76, kNotSet = 91;

/// An error with its number; the public classes pass it on to the host.
class EngineError : public std::runtime_error {
 public:
  EngineError(std::int32_t errorNumber, const std::string& description)
      : std::runtime_error(description), number(errorNumber) {}
  std::int32_t number;
};

/// Number and description of any exception of the layers below: EngineError, FileFault, DeviceError, std::bad_alloc
/// (7), std::out_of_range (9), std::domain_error (11), std::overflow_error (6), others (5). Call it inside a catch
/// block.
EngineError currentError();

}  // namespace ql::engine
