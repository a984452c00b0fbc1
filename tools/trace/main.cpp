// Records, shows, replays and compares traces of device calls.
#include "Commands.h"
#include "Open.h"
#include "platform/device/DeviceError.h"

#include <exception>
#include <new>

#include <fmt/format.h>

namespace {

using namespace ql::trace;

ExitCode run(const Options& options) {
  switch (options.command) {
    case Command::Record:
      record(options);
    case Command::Show:
      return show(options);
    case Command::Replay:
      return replay(options);
    case Command::Compare:
      return compare(options);
    case Command::Diff:
      return diff(options);
  }
  return ExitCode::Usage;
}

}  // namespace

int main(int argc, char** argv) {
  const auto fail = [](ExitCode code, const char* what) {
    fmt::print(stderr, "ql-trace: {}\n", what);
    return static_cast<int>(code);
  };
  try {
    const auto options = parseOptions(argc, argv);
    return static_cast<int>(options ? run(*options) : ExitCode::Success);
  } catch (const Failure& failure) {
    if (failure.code == ExitCode::Usage) fmt::print(stderr, "See ql-trace --help.\n");
    return fail(failure.code, failure.what());
  } catch (const ql::host::FileFault& fault) {
    return fail(codeOf(fault), fault.what());
  } catch (const ql::device::DeviceError& error) {
    return fail(ExitCode::NoDevice, error.what());
  } catch (const std::bad_alloc&) {
    return fail(ExitCode::Limit, "out of memory");
  } catch (const std::exception& error) {
    return fail(ExitCode::Unreadable, error.what());
  }
}
