/// @file
/// What the tests of the public classes share.
#pragma once

#include "support/TemporaryFolder.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <cstdint>
#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace ql::test {

using namespace Quasarlens3D;

/// The number of the Error that an operation throws; 0 when it throws none.
template <class Operation>
std::int32_t errorOf(Operation&& operation) {
  try {
    operation();
  } catch (const Error& error) {
    return error.Number();
  }
  return 0;
}

/// The diagnostics log as it is now.
inline std::string engineLog() {
  return contents(std::filesystem::path(std::getenv("XDG_STATE_HOME")) / "Quasarlens8" / "debug8.txt");
}

/// Makes an engine with a device of the reference kind in a folder of its own; time is the test's.
class EngineTest : public testing::Test {
 protected:
  void start(std::int32_t width = 64, std::int32_t height = 48) {
    internals.SetClock([time = time] { return *time; });
    engine.SetEngineMode(width, height, 32, False);
    ASSERT_TRUE(engine.InitCurrentVideoMode());
  }

  TemporaryFolder folder;
  std::shared_ptr<std::uint32_t> time = std::make_shared<std::uint32_t>(10'000);
  Quasarlens8 engine;
  InternalObjects8 internals;
};

}  // namespace ql::test
