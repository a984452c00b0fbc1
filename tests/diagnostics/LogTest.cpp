#include "diagnostics/Log.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ql::diagnostics {
namespace {

using testing::MatchesRegex;

const std::string kBanner =
    "###################################################\r\n"
    "#           Quasarlens 8 Log file                 #\r\n"
    "###################################################\r\n"
    "\r\n"
    "    Engine started at [0-9][0-9]-[0-9][0-9]-20[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9]\r\n"
    "\r\n";
const std::string kStamp = "[0-9][0-9]-[0-9][0-9]-20[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9] . ";

class LogFile : public testing::Test {
 protected:
  test::TemporaryFolder folder_;
};

TEST_F(LogFile, HasABannerAndOneLinePerMessage) {
  Log log(folder_.path() / "made" / "on" / "demand" / "debug8.txt");
  log.write("before the banner");
  log.start();
  log.write("DEVICE INIT : Set RenderStates");
  log.write("");
  log.write("two\nlines \xE9");
  log.writeError("failed ", "File not found", 53);
  // The engine of a second log writes into the same file while this one lives: nothing is held open.
  Log(log.path()).write("another");
  EXPECT_THAT(test::contents(log.path()),
              MatchesRegex(kBanner + kStamp + "DEVICE INIT : Set RenderStates\r\n" + kStamp + "\r\n" + kStamp +
                           "two\nlines \xE9\r\n" + kStamp + "failed \r\n" + kStamp +
                           "Error description :File not found # Number 53\r\n" + kStamp + "another\r\n"));
  log.start();
  EXPECT_THAT(test::contents(log.path()), MatchesRegex(kBanner));
}

TEST_F(LogFile, IsLostSilentlyWhereItCannotBeWritten) {
  test::put("file", "");
  for (const char* path : {"file/debug8.txt", "/proc/none/debug8.txt", ""}) {
    Log log{std::filesystem::path(path)};
    EXPECT_NO_THROW(log.start()) << path;
    EXPECT_NO_THROW(log.write("lost")) << path;
  }
}

TEST_F(LogFile, StandsInTheUsersStateFolder) {
  setenv("XDG_STATE_HOME", "/state", 1);
  EXPECT_EQ(Log::defaultPath(), "/state/Quasarlens8/debug8.txt");
  setenv("XDG_STATE_HOME", "relative", 1);
  setenv("HOME", "/home/someone", 1);
  EXPECT_EQ(Log::defaultPath(), "/home/someone/.local/state/Quasarlens8/debug8.txt");
}

}  // namespace
}  // namespace ql::diagnostics
