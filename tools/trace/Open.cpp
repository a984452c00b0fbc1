#include "Open.h"

#include <fmt/format.h>

namespace ql::trace {

ExitCode codeOf(const host::FileFault& fault) {
  using host::Fault;
  switch (fault.id) {
    case Fault::Missing:
    case Fault::FolderMissing:
    case Fault::Unreadable:
      return ExitCode::Unreadable;
    case Fault::TooLarge:
      return ExitCode::Limit;
    default:
      return ExitCode::Malformed;
  }
}

recording::Trace openTrace(const std::filesystem::path& file) {
  try {
    return recording::Trace::open(file);
  } catch (const host::FileFault& fault) {
    throw Failure(codeOf(fault), fmt::format("{}: {}", file.string(), fault.what()));
  }
}

}  // namespace ql::trace
