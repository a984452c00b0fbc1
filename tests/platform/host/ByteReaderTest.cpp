#include "platform/host/ByteReader.h"

#include <limits>

#include <gtest/gtest.h>

namespace ql::host {
namespace {

constexpr std::uint64_t kHuge = std::numeric_limits<std::uint64_t>::max();

TEST(ByteReader, ProvesThatTheBytesAreThere) {
  std::vector<std::byte> bytes(16);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::byte>(i);
  const ByteReader reader(bytes);

  EXPECT_EQ(reader.at<std::uint32_t>(12, "word"), 0x0F0E0D0Cu);
  EXPECT_EQ(reader.table<std::uint16_t>(2, 7, "words").back(), 0x0F0Eu);
  EXPECT_TRUE(reader.table<std::uint64_t>(16, 0, "nothing at the end").empty());
  for (const std::uint64_t offset : {std::uint64_t{13}, std::uint64_t{17}, kHuge, kHuge - 3})
    EXPECT_THROW(reader.at<std::uint32_t>(offset, "word"), FileFault) << offset;
  struct Case {
    std::uint64_t offset, count;
  };
  // The last two products wrap to a small number in 64 bits.
  for (const Case& c : {Case{0, 5}, {13, 1}, {17, 0}, {0, kHuge}, {0, kHuge / 4 + 1}, {4, kHuge / 4 + 2}})
    EXPECT_THROW(reader.table<std::uint32_t>(c.offset, c.count, "words"), FileFault) << c.offset << ", " << c.count;
  EXPECT_THROW(reader.range(8, kHuge - 4, "range"), FileFault);

  std::byte four[4];
  const auto zeroFilled = [&](std::uint64_t offset) {
    reader.copyZeroFilled(offset, four);
    return std::to_integer<int>(four[0]) * 100 + std::to_integer<int>(four[3]);
  };
  EXPECT_EQ(zeroFilled(12), 1215);
  EXPECT_EQ(zeroFilled(14), 1400);
  EXPECT_EQ(zeroFilled(16), 0);
  EXPECT_EQ(zeroFilled(kHuge), 0);
}

TEST(ByteReader, FaultsSayWhatIsWrongAndWhere) {
  EXPECT_STREQ(FileFault(Fault::BadReference, "node child", 0x1A40, 70000, 412).what(),
               "node child out of range at 0x1a40: 70000, the file has 412");
  EXPECT_STREQ(FileFault(Fault::Missing, "court.bsp").what(), "File not found");
  const std::vector<std::byte> bytes(8);
  try {
    ByteReader(bytes).table<std::uint64_t>(4, kHuge / 2, "vertex lump");
    FAIL();
  } catch (const FileFault& fault) {
    EXPECT_EQ(fault.number(), 62);
    EXPECT_EQ(fault.got, kHuge) << "the size in the message does not wrap";
    EXPECT_EQ(fault.limit, 8u);
  }
}

TEST(ByteReader, FieldsEndAtTheirFirstNul) {
  EXPECT_EQ(fieldText(std::span<const char>("ab\0cd", 5)), "ab");
  EXPECT_EQ(fieldText(std::span<const char>("abcde", 5)), "abcde");
  EXPECT_EQ(fieldText({}), "");
}

}  // namespace
}  // namespace ql::host
