// Shows a file: turns it in a window, or writes a picture of it.
#include "Options.h"
#include "Show.h"
#include "walk/Failure.h"

#include <Quasarlens3D/Error.h>

#include <cstdint>
#include <exception>
#include <new>
#include <string>

#include <fmt/format.h>

int main(int argc, char** argv) {
  using walk::ExitCode;
  const auto fail = [](ExitCode code, const char* what) {
    fmt::print(stderr, "ql-view: {}\n", what);
    return static_cast<int>(code);
  };
  try {
    if (const auto options = view::parseOptions(argc, argv)) view::show(*options);
    return static_cast<int>(ExitCode::Success);
  } catch (const walk::Failure& failure) {
    if (failure.code == ExitCode::Usage) fmt::print(stderr, "See ql-view --help.\n");
    return fail(failure.code, failure.what());
  } catch (const Quasarlens3D::Error& error) {
    constexpr std::int32_t kOverflow = 6, kOutOfMemory = 7, kFileNotFound = 53;
    const bool limit = error.Number() == kOverflow || error.Number() == kOutOfMemory;
    // Codes of the device are given as hosts know them.
    const std::string number = error.Number() < 0 ? fmt::format("{:#X}", static_cast<std::uint32_t>(error.Number()))
                                                  : std::to_string(error.Number());
    return fail(error.Number() == kFileNotFound ? ExitCode::Unreadable
                : limit                         ? ExitCode::Limit
                                                : ExitCode::Malformed,
                fmt::format("the engine failed with number {}: {}", number, error.what()).c_str());
  } catch (const std::bad_alloc&) {
    return fail(ExitCode::Limit, "out of memory");
  } catch (const std::exception& error) {
    return fail(ExitCode::Unreadable, error.what());
  }
}
