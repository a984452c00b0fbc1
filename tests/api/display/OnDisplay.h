/// @file
/// An engine whose windows can be seen.
#pragma once

#include "support/Hands.h"
#include "support/TemporaryFolder.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace ql::test {

using namespace Quasarlens3D;

class OnDisplay : public testing::Test {
 protected:
  void SetUp() override {
    if (Hands::present()) return;
    ASSERT_EQ(std::getenv("QL_EXPECT_DISPLAY"), nullptr) << "the X server did not start";
    GTEST_SKIP() << "skipped: no X server, or no xdotool";
  }
  /// The diagnostics log as it is now.
  static std::string log() {
    return contents(std::filesystem::path(std::getenv("XDG_STATE_HOME")) / "Quasarlens8" / "debug8.txt");
  }
  static std::string size(const Quasarlens8& engine) {
    std::int32_t width = 0, height = 0, format = 0;
    engine.GetVideoMode(width, height, format);
    return std::to_string(width) + "x" + std::to_string(height) + " " + std::to_string(format);
  }

  TemporaryFolder folder;
  Quasarlens8 engine;
  InternalObjects8 internals;
};

}  // namespace ql::test
