// Breaking text into lines.
#include "platform/utility/Font.h"
#include "platform/utility/TextLayout.h"

#include <gtest/gtest.h>

using namespace ql::utility;

namespace {

TEST(TextLayout, BreaksLines) {
  // Every character is 10 wide, so the rectangle holds 5 of them.
  constexpr std::uint32_t kBreak = kTextWordBreak, kOne = kTextSingleLine;
  struct Row {
    std::u32string_view text;
    std::uint32_t format;
    std::vector<std::u32string_view> lines;
  };
  const Row rows[] = {
      {U"ab cd", kBreak, {U"ab cd"}},
      {U"ab cde", kBreak, {U"ab", U"cde"}},
      {U"abcdefgh", kBreak, {U"abcdefgh"}},
      {U"a abcdefgh b", kBreak, {U"a", U"abcdefgh", U"b"}},
      {U"ab    cdef", kBreak, {U"ab", U"cdef"}},
      {U"  abcd", kBreak, {U"  abcd"}},
      {U"ab cd ", kBreak, {U"ab cd "}},
      {U"ab\n\ncd ef", kBreak, {U"ab", U"", U"cd ef"}},
      {U"ab cdef", 0, {U"ab cdef"}},
      {U"a\r\nb\rc\nd\n", 0, {U"a", U"b", U"c", U"d", U""}},
      {U"a\n\rb", 0, {U"a", U"", U"b"}},
      {U"a\nb cdefg", kOne | kBreak, {U"a\nb cdefg"}},
      {U"", kBreak, {U""}},
  };
  const TextMetrics metrics{[](char32_t) { return 10; }, 7};
  for (const Row& row : rows) {
    std::vector<std::u32string_view> lines;
    std::int64_t y = 3;
    for (const TextLine& line : layOut(row.text, {2, 3, 52, 100}, row.format, metrics)) {
      lines.push_back(line.characters);
      EXPECT_EQ(line.width, static_cast<std::int64_t>(line.characters.size()) * 10);
      EXPECT_EQ(line.y, y);
      y += 7;
    }
    EXPECT_EQ(lines, row.lines);
  }
}

TEST(TextLayout, PairsStandCloserOrFurther) {
  const TextMetrics metrics{[](char32_t) { return 10; }, 7,
                            [](char32_t a, char32_t b) { return a == U'A' && b == U'V' ? -4
                                                                : a == U' '            ? 1
                                                                                       : 0; }};
  const auto lines = layOut(U"AVA V AVAV", {0, 0, 55, 100}, kTextWordBreak, metrics);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].characters, U"AVA V");
  EXPECT_EQ(lines[0].width, 47);
  EXPECT_EQ(lines[1].width, 32) << "the blank before it does not count";
}

}  // namespace
