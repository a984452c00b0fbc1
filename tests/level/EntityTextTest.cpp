#include "level/EntityText.h"

#include <gtest/gtest.h>

namespace ql::level {
namespace {

TEST(EntityText, FindsBlocks) {
  struct Case {
    const char* name;
    std::string_view text, block, rest;
  };
  for (const Case& c : {
           Case{"the first of two", R"({"a" "1" "n" "x"}{"a" "1"}!)", R"({"a" "1" "n" "x"})", R"({"a" "1"}!)"},
           Case{"after others", R"(x{"a" "2"} {"b" "1"} {"a" "1"} y)", R"({"a" "1"})", " y"},
           Case{"letter case counts", R"({"A" "1"}{"a" "1"})", R"({"a" "1"})", ""},
           Case{"exactly one blank", R"({"a"  "1"})", "", ""},
           Case{"never closed", R"({"a" "1")", "", ""},
           Case{"a brace that closes nothing", R"(}{"a" "1"})", R"({"a" "1"})", ""},
           Case{"empty", "", "", ""},
       }) {
    const EntityBlock found = findEntity("1", "a", c.text);
    EXPECT_EQ(found.block, c.block) << c.name;
    EXPECT_EQ(found.rest, c.rest) << c.name;
  }
}

TEST(EntityText, ReadsValues) {
  struct Case {
    const char* name;
    std::string_view block, value;
  };
  for (const Case& c : {
           Case{"plain", R"({"classname" "x" "origin" "1 2 3"})", "1 2 3"},
           Case{"more blanks before the value", "{\"origin\" \t\n \"1 2 3\"}", "1 2 3"},
           Case{"empty value", R"({"origin" "" "angle" "90"})", ""},
           Case{"absent", R"({"orig" "1"})", ""},
           Case{"cut after the key", R"({"origin")", ""},
           Case{"cut in the value", R"({"origin" "1 2)", ""},
       })
    EXPECT_EQ(entityValue(c.block, "origin"), c.value) << c.name;
}

TEST(EntityText, ReadsVectors) {
  struct Case {
    std::string_view text;
    math::Vec3 vector;
  };
  for (const Case& c :
       {Case{"1 2 3", {1, 2, 3}}, Case{"-576.500000 192 1e2", {-576.5f, 192, 100}}, Case{"7", {7, 0, 0}}, Case{"", {}},
        Case{"1  2", {1, 0, 2}}, Case{"x 5 y", {0, 5, 0}}, Case{"1e300 nan 2", {0, 0, 2}}})
    EXPECT_EQ(parseVector(c.text), c.vector) << c.text;
}

}  // namespace
}  // namespace ql::level
