#include "Failure.h"
#include "Options.h"
#include "Walk.h"

#include <Quasarlens3D/Error.h>

#include <exception>
#include <new>

#include <fmt/format.h>

int main(int argc, char** argv) {
  using namespace walk;
  const auto fail = [](ExitCode code, const char* what) {
    fmt::print(stderr, "ql-walk: {}\n", what);
    return static_cast<int>(code);
  };
  try {
    if (const auto options = parseOptions(argc, argv)) run(*options);
    return static_cast<int>(ExitCode::Success);
  } catch (const Failure& failure) {
    if (failure.code == ExitCode::Usage) fmt::print(stderr, "See ql-walk --help.\n");
    return fail(failure.code, failure.what());
  } catch (const Quasarlens3D::Error& error) {
    fmt::print(stderr, "ql-walk: the engine failed with number {}: {}\n", error.Number(), error.what());
    return static_cast<int>(error.Number() == Quasarlens3D::QL_ERROR_OUT_OF_MEMORY ? ExitCode::Limit
                                                                                   : ExitCode::Malformed);
  } catch (const std::bad_alloc&) {
    return fail(ExitCode::Limit, "out of memory");
  } catch (const std::exception& error) {
    return fail(ExitCode::Unreadable, error.what());
  }
}
