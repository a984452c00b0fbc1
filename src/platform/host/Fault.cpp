#include "platform/host/Fault.h"

#include <cstdio>
#include <utility>

namespace ql::host {
namespace {

std::string textOf(Fault id, const std::string& what, std::uint64_t offset, std::uint64_t got, std::uint64_t limit) {
  char position[32];
  std::snprintf(position, sizeof position, " at 0x%llx", static_cast<unsigned long long>(offset));
  const std::string at = position, found = std::to_string(got), allowed = std::to_string(limit);
  switch (id) {
    case Fault::Missing:
      return "File not found";
    case Fault::FolderMissing:
      return "Path not found";
    case Fault::Unreadable:
      return "Path/File access error";
    case Fault::Truncated:
      return what + " past the end of the file" + at + ": " + found + " bytes, the file has " + allowed;
    case Fault::BadIdentifier:
      return what + " is not the expected one" + at + ": " + found + ", expected " + allowed;
    case Fault::BadVersion:
      return what + " of an unknown version" + at + ": " + found + ", expected " + allowed;
    case Fault::BadSize:
      return what + " of an impossible size" + at + ": " + found + ", the limit is " + allowed;
    case Fault::BadReference:
      return what + " out of range" + at + ": " + found + ", the file has " + allowed;
    case Fault::BadEncoding:
      return what + " does not decode" + at;
    case Fault::Unsupported:
      return what + " is of a kind that is not supported" + at + ": " + found;
    case Fault::TooLarge:
      return what + " too large: " + found + ", the limit is " + allowed;
  }
  return what;
}

}  // namespace

FileFault::FileFault(Fault faultId, const std::string& what, std::uint64_t at, std::uint64_t gotValue,
                     std::uint64_t limitValue)
    : id(faultId),
      offset(at),
      got(gotValue),
      limit(limitValue),
      text_(textOf(faultId, what, at, gotValue, limitValue)) {}

int FileFault::number() const {
  switch (id) {
    case Fault::Missing:
      return 53;
    case Fault::FolderMissing:
      return 76;
    case Fault::Unreadable:
      return 75;
    case Fault::Truncated:
      return 62;
    default:
      return 5;
  }
}

}  // namespace ql::host
