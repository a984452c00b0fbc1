// The tests draw on hidden surfaces wherever they run, and keep out of the user's home.
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

namespace {

struct Headless : testing::Environment {
  void SetUp() override {
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    const std::string home = (std::filesystem::temp_directory_path() / "ql-test-home").string();
    setenv("XDG_STATE_HOME", home.c_str(), 0);
    setenv("XDG_CONFIG_HOME", home.c_str(), 0);
  }
};
const testing::Environment* const kHeadless = testing::AddGlobalTestEnvironment(new Headless);

}  // namespace
