#include "platform/host/Settings.h"
#include "support/TemporaryFolder.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace ql::host {
namespace {

class SettingsStore : public testing::Test {
 protected:
  void SetUp() override { setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1); }
  test::TemporaryFolder folder_;
};

TEST_F(SettingsStore, OutlivesTheProcess) {
  const std::string awkward = " a=b;[c]\\n\r\nd ";
  {
    Settings settings("App", "Driver");
    EXPECT_EQ(settings.get("Width", "640"), "640");
    settings.set("Width", "1024");
    settings.set("Width", "1280");
    settings.set("[odd] = key\n", awkward);
    settings.set("Empty", "");
  }
  const Settings again("App", "Driver");
  EXPECT_EQ(again.get("Width", "640"), "1280");
  EXPECT_EQ(again.get("[odd] = key\n", ""), awkward);
  EXPECT_EQ(again.get("Empty", "fallback"), "");
  EXPECT_EQ(Settings("App", "Other").get("Width", "640"), "640");
}

TEST_F(SettingsStore, KeepsValuesWhenTheHomeCannotBeWritten) {
  test::put("App", "a file where the folder should be");
  Settings settings("App", "Driver");
  settings.set("Width", "1024");
  EXPECT_EQ(settings.get("Width", "640"), "1024");
}

TEST_F(SettingsStore, ReadsWhatAPersonWrote) {
  test::put("App/Driver.ini", "; comment\r\n\r\n[Driver]\r\nWidth=800\r\nno value\r\n=no key\r\nLast=1");
  const Settings settings("App", "Driver");
  EXPECT_EQ(settings.get("Width", ""), "800");
  EXPECT_EQ(settings.get("Last", ""), "1");
  EXPECT_EQ(settings.get("no value", "fallback"), "");
}

}  // namespace
}  // namespace ql::host
