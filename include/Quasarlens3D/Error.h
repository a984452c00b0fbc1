/// @file
/// What a failed operation throws.
#ifndef QUASARLENS3D_ERROR_H
#define QUASARLENS3D_ERROR_H

#include <Quasarlens3D/Export.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace Quasarlens3D {

/// Numbers of the errors that operations throw. Errors of the rendering device carry the device's own code instead:
/// 0x8876086C invalid call, 0x88760866 not found, 0x8876086A not available, ...
enum CONST_QL_ERROR : std::int32_t {
  QL_ERROR_INVALID_ARGUMENT = 5,
  QL_ERROR_OVERFLOW = 6,
  QL_ERROR_OUT_OF_MEMORY = 7,
  QL_ERROR_SUBSCRIPT = 9,  ///< an index outside its table
  QL_ERROR_DIVISION_BY_ZERO = 11,
  QL_ERROR_TYPE_MISMATCH = 13,
  QL_ERROR_BAD_FILE_NAME = 52,
  QL_ERROR_FILE_NOT_FOUND = 53,
  QL_ERROR_PAST_END = 62,     ///< a file is shorter than it must be
  QL_ERROR_PATH_ACCESS = 75,  ///< a file or folder cannot be read or written
  QL_ERROR_PATH_NOT_FOUND = 76,
  QL_ERROR_NOT_SET = 91  ///< a handle that refers to nothing, or an engine that is not ready
};

/// A failed operation: its number and, through what(), its description.
class QUASARLENS3D_API Error : public std::runtime_error {
 public:
  Error(std::int32_t number, const std::string& description);
  Error(const Error&) = default;
  Error& operator=(const Error&) = default;
  ~Error() override;

  /// One of CONST_QL_ERROR or a device's code.
  std::int32_t Number() const noexcept { return number_; }

 private:
  std::int32_t number_;
};

}  // namespace Quasarlens3D

#endif
