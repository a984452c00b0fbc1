/// @file
/// What can be wrong with a file, as data: an id with its numbers; the text is derived from them.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

namespace ql::host {

/// The kinds of damage that readers report.
enum class Fault : std::uint8_t {
  Missing,        ///< no such file
  FolderMissing,  ///< no such folder
  Unreadable,     ///< the file exists but cannot be opened or read
  Truncated,      ///< bytes that the file promises are not there
  BadIdentifier,  ///< the file is of another kind
  BadVersion,     ///< a version that the reader does not know
  BadSize,        ///< a length, width or count out of range
  BadReference,   ///< an index that points outside its table
  BadEncoding,    ///< compressed data that does not decode
  Unsupported,    ///< a valid file of a kind that the engine does not use
  TooLarge,       ///< more than the reader accepts
};

/// A fault in a file: what, where, what was found and what was allowed.
class FileFault : public std::exception {
 public:
  /// @param what a short name of the damaged thing ("node child", "vertex lump")
  /// @param offset position in the file, bytes @param got,limit the numbers that disagree
  FileFault(Fault id, const std::string& what, std::uint64_t offset = 0, std::uint64_t got = 0,
            std::uint64_t limit = 0);
  const char* what() const noexcept override { return text_.c_str(); }

  Fault id;
  std::uint64_t offset, got, limit;
  /// The number that a log line or an error carries: 53 missing, 76 folder missing, 75 unreadable, 62 past the end, 5
  /// otherwise.
  int number() const;

 private:
  std::string text_;
};

}  // namespace ql::host
