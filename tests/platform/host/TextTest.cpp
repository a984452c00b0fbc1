#include "platform/host/Clock.h"
#include "platform/host/Files.h"

#include <gtest/gtest.h>

namespace ql::host {
namespace {

TEST(Text, BecomesUtf8) {
  struct Case {
    const char* name;
    std::string text, utf8;
  };
  const Case kCases[] = {{"ASCII", "abc", "abc"},
                         {"UTF-8 of two, three and four bytes", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80",
                          "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
                         {"code page", "caf\xE9", "caf\xC3\xA9"},
                         {"code page below Latin-1", "\x80 5", "\xE2\x82\xAC 5"},
                         {"cut sequence", "\xE2\x82", "\xC3\xA2\xE2\x80\x9A"},
                         {"overlong", "\xC0\xAF", "\xC3\x80\xC2\xAF"},
                         {"surrogate", "\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},
                         {"past the last character", "\xF4\x90\x80\x80", "\xC3\xB4\xC2\x90\xE2\x82\xAC\xE2\x82\xAC"}};
  for (const Case& c : kCases) EXPECT_EQ(toUtf8(c.text), c.utf8) << c.name;
}

TEST(Text, NumbersAreReadAsFarAsTheyGo) {
  struct Case {
    const char* text;
    double value;
  };
  for (const Case& c : {Case{"12", 12},
                        {" \t-0.5 8", -0.5},
                        {"+3e2x", 300},
                        {".25", 0.25},
                        {"1,5", 1},
                        {"5e", 5},
                        {"0x10", 0},
                        {"", 0},
                        {"-", 0},
                        {"abc", 0},
                        {"inf", 0},
                        {"-nan", 0},
                        {"--1", 0},
                        {"1e999", 0},
                        {"1e-999", 0}})
    EXPECT_EQ(numberFromText(c.text), c.value) << c.text;
}

TEST(Text, FoldsAsciiOnly) {
  EXPECT_EQ(foldCase("AZ[\xC9"), "az[\xC9");
  EXPECT_TRUE(equalIgnoringCase("Wall.JPG", "wALL.jpg"));
  EXPECT_FALSE(equalIgnoringCase("wall", "wall "));
  EXPECT_FALSE(equalIgnoringCase("@", "`"));
}

TEST(Clock, StartsAboveTenSecondsAndNeverRunsBack) {
  std::uint32_t last = systemTicks();
  EXPECT_GE(last, 10'000u);
  EXPECT_LT(last, 100'000u);
  for (int i = 0; i < 1000; ++i) {
    const std::uint32_t now = systemTicks();
    ASSERT_GE(now, last);
    last = now;
  }
}

}  // namespace
}  // namespace ql::host
