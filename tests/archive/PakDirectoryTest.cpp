#include "archive/PakDirectory.h"
#include "platform/host/Fault.h"
#include "support/PakFile.h"
#include "support/SharedData.h"
#include "support/TemporaryFolder.h"

#include <optional>
#include <sstream>

#include <gtest/gtest.h>

namespace ql::archive {
namespace {

using host::Fault;
using test::poke;

test::PakFile tinyArchive() {
  return {{"readme.txt", "read me"}, {" maps/Court.bsp  ", "level"}, {"README.TXT", "second"}};
}

/// The directory of an archive, from memory and from a stream alike.
std::optional<PakDirectory> parse(const std::string& bytes, Fault* fault = nullptr) {
  std::istringstream stream(bytes);
  std::optional<PakDirectory> streamed, parsed;
  try {
    streamed = readPakDirectory(stream);
  } catch (const host::FileFault&) {
  }
  try {
    parsed = parsePakDirectory(test::bytesOf(bytes));
  } catch (const host::FileFault& caught) {
    if (fault != nullptr) *fault = caught.id;
  }
  EXPECT_EQ(streamed.has_value(), parsed.has_value());
  if (streamed && parsed) {
    EXPECT_EQ(streamed->fileCount, parsed->fileCount);
    EXPECT_EQ(streamed->entries.size(), parsed->entries.size());
    for (std::size_t i = 0; i < parsed->entries.size(); ++i)
      EXPECT_EQ(streamed->entries[i].name, parsed->entries[i].name);
  }
  return parsed;
}

TEST(PakDirectories, ListWhatTheHeaderDeclares) {
  const auto poked = [](std::size_t at, std::int32_t value) {
    std::string bytes = tinyArchive().bytes;
    poke(bytes, at, value);
    return bytes;
  };
  std::string full = tinyArchive().bytes;
  full.resize(tinyArchive().directoryAt + 4097 * 64);
  std::string beyond = full + std::string(64, 'x');  // the slot after the last one
  struct Case {
    const char* name;
    std::string bytes;
    std::int32_t fileCount;
    std::size_t entries;
  };
  const Case kCases[] = {{"as made", tinyArchive().bytes, 3, 3},
                         {"ten slots of which seven lie past the end", poked(8, 640), 10, 10},
                         {"length that is no multiple of an entry", poked(8, 100), 1, 1},
                         {"empty", poked(8, 0), 0, 0},
                         {"negative length", poked(8, -1), -1, 0},
                         {"more entries than there are slots", poked(8, INT32_MAX), INT32_MAX / 64, 4097},
                         {"directory past the end", poked(4, INT32_MAX), 3, 3},
                         {"any identifier", poked(0, 0), 3, 3},
                         {"unterminated name after the last slot", beyond, 3, 3}};
  for (const Case& c : kCases) {
    const auto directory = parse(c.bytes);
    ASSERT_TRUE(directory) << c.name;
    EXPECT_EQ(directory->fileCount, c.fileCount) << c.name;
    EXPECT_EQ(directory->entries.size(), c.entries) << c.name;
  }
}

TEST(PakDirectories, RefuseDamage) {
  const std::size_t at = tinyArchive().directoryAt;
  const auto unterminated = [&](std::size_t slot) {
    std::string bytes = tinyArchive().bytes;
    bytes.resize(std::max(bytes.size(), at + (slot + 1) * 64));
    bytes.replace(at + slot * 64, 56, std::string(56, 'x'));
    return bytes;
  };
  std::string negative = tinyArchive().bytes;
  poke(negative, 4, -1);
  struct Case {
    const char* name;
    std::string bytes;
    Fault fault;
  };
  const Case kCases[] = {
      {"no header", "", Fault::Truncated},
      {"cut header", std::string(11, 'P'), Fault::Truncated},
      {"directory before the file", negative, Fault::BadReference},
      {"unterminated name", unterminated(1), Fault::BadSize},
      {"unterminated name in the last slot, which is not listed", unterminated(4096), Fault::BadSize}};
  for (const Case& c : kCases) {
    Fault fault{};
    EXPECT_FALSE(parse(c.bytes, &fault)) << c.name;
    EXPECT_EQ(fault, c.fault) << c.name;
  }
}

TEST(PakDirectories, FindTheFirstOfANameInAnyCase) {
  const auto directory = parse(tinyArchive().bytes);
  ASSERT_TRUE(directory);
  const auto indexOf = [&](const char* name) {
    const PakEntry* entry = directory->find(name);
    return entry == nullptr ? -1 : entry - directory->entries.data();
  };
  EXPECT_EQ(indexOf("ReadMe.txt"), 0);
  EXPECT_EQ(indexOf("MAPS/court.BSP"), 1) << "blanks around stored names are trimmed";
  EXPECT_EQ(indexOf("maps/court.bsp "), -1) << "requests are not";
  EXPECT_EQ(indexOf("court.bsp"), -1);
  EXPECT_EQ(indexOf(""), -1);
}

TEST(PakDirectories, SurviveEveryPrefix) {
  const std::string good = tinyArchive().bytes;
  for (std::size_t n = 0; n < good.size(); ++n) {
    const std::string cut(good.data(), n);
    EXPECT_EQ(parse(cut).has_value(), n >= 12) << n;
  }
}

TEST(PakDirectories, AgreeWithOtherReadersOfRealArchives) {
  QL_NEED_SHARED_DATA();
  const auto listed = [](const char* name) {
    const auto directory = parse(test::contents(test::sharedData() / "pak" / name));
    return directory ? directory->fileCount : -1;
  };
  EXPECT_EQ(listed("idpak.pak"), 11);
  EXPECT_EQ(listed("made_aggressor.pak"), 47);
  EXPECT_EQ(listed("tb_id1_pak0.pak"), 3);
  for (const auto& path : test::sharedFiles("hostile/pak/pak")) parse(test::contents(path));
}

}  // namespace
}  // namespace ql::archive
