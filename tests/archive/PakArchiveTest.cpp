#include "archive/PakArchive.h"
#include "platform/host/Fault.h"
#include "support/PakFile.h"
#include "support/SharedData.h"
#include "support/TemporaryFolder.h"

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ql::archive {
namespace {

namespace fs = std::filesystem;
using test::contents;
using test::put;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

const std::string kFailed = "PAK MANAGER : Error loading PAK files ";

class Archive : public testing::Test {
 protected:
  /// The messages logged since the last call.
  std::vector<std::string> logged() {
    std::istringstream text(contents(log_.path()));
    std::vector<std::string> messages;
    for (std::string line; std::getline(text, line);)
      messages.push_back(line.substr(line.find('|') + 2, line.size() - line.find('|') - 3));
    fs::remove(log_.path());
    return messages;
  }
  /// Opens an archive made of members and forgets the log lines of that.
  void openArchive(const test::PakFile& file) {
    put("data.pak", file.bytes);
    pak_.open("data.pak");
    ASSERT_TRUE(pak_.isOpen());
    logged();
  }
  std::string expanded(std::string name) {
    pak_.expand(name);
    return name;
  }

  test::TemporaryFolder folder_;
  test::TemporaryFolder elsewhere_;  // current, so that the log does not stand among the files
  diagnostics::Log log_{folder_.path() / "log.txt"};
  PakArchive pak_{log_};
};

TEST_F(Archive, OpensAndClosesWithItsLines) {
  put("game.pak", test::PakFile{{"a", "1"}, {"b", "2"}}.bytes);
  pak_.close();
  EXPECT_THAT(logged(), IsEmpty()) << "nothing was open";

  pak_.open("GAME.pak");
  EXPECT_TRUE(pak_.isOpen());
  EXPECT_THAT(logged(), ElementsAre("PAK MANAGER : Pak GAME.pak opened : 2 files listed"));
  pak_.open("game.pak");
  EXPECT_FALSE(pak_.isOpen()) << "a second archive is refused and the first one closed";
  EXPECT_THAT(logged(), ElementsAre(kFailed));
  pak_.open("game.pak");
  pak_.close();
  EXPECT_THAT(logged(), ElementsAre("PAK MANAGER : Pak game.pak opened : 2 files listed", "PAK MANAGER : Pak Closed."));

  put("cut.pak", "PACK");
  pak_.open("none.pak");
  pak_.open("cut.pak");
  EXPECT_FALSE(pak_.isOpen());
  EXPECT_THAT(logged(), ElementsAre(kFailed + "File not found", StartsWith(kFailed + "archive header past the end")));
}

TEST_F(Archive, CopiesAFileOutAndRemovesItAgain) {
  openArchive({{"textures/Wall.JPG", "pixels"}});
  EXPECT_EQ(expanded("TEXTURES/wall.jpg"), "Wall.JPG");
  EXPECT_EQ(contents("Wall.JPG"), "pixels");
  EXPECT_THAT(logged(), ElementsAre("Expand TEXTURES/wall.jpg from Pak file. STATE : OK",
                                    "Wall.JPG has been expanded from Pak File. STATE : OK"));
  pak_.deleteExpanded("wall.jpg");
  pak_.deleteExpanded("");
  EXPECT_TRUE(fs::exists("Wall.JPG")) << "only the exact name is removed";
  pak_.deleteExpanded("Wall.JPG");
  EXPECT_FALSE(fs::exists("Wall.JPG"));
  put("Wall.JPG", "the user's");
  pak_.deleteExpanded("Wall.JPG");
  EXPECT_TRUE(fs::exists("Wall.JPG")) << "the copy was removed already";
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(Archive, LeavesFilesOnDiskAlone) {
  openArchive({{"textures/Wall.JPG", "packed"}, {"other/wall.jpg", "another"}, {"noext", "n"}});
  put("textures/wall.jpg", "on disk");
  EXPECT_EQ(expanded("textures\\WALL.jpg"), "textures\\WALL.jpg");
  EXPECT_THAT(logged(), ElementsAre("Expand textures\\WALL.jpg from Pak file. STATE : OK"));
  pak_.deleteExpanded("textures\\WALL.jpg");
  EXPECT_TRUE(fs::exists("textures/wall.jpg"));

  put("WALL.jpg", "the user's");
  fs::create_symlink("/nowhere", "noext");
  EXPECT_EQ(expanded("other/wall.jpg"), "wall~1.jpg") << "a file of the bare name is not replaced";
  EXPECT_EQ(contents("wall~1.jpg"), "another");
  EXPECT_EQ(contents("WALL.jpg"), "the user's");
  EXPECT_EQ(expanded("other/wall.jpg"), "wall~1.jpg") << "its own copy is";
  pak_.deleteExpanded("wall~1.jpg");
  EXPECT_FALSE(fs::exists("wall~1.jpg"));
  EXPECT_EQ(expanded("NOEXT"), "noext~1") << "a link that leads nowhere is something, too";
  EXPECT_TRUE(fs::is_symlink("noext"));
}

TEST_F(Archive, RemovesTheCopyWhereItWasMade) {
  openArchive({{"a/x.txt", "packed"}});
  EXPECT_EQ(expanded("a/x.txt"), "x.txt");
  put("deeper/x.txt", "the user's");
  std::string path = "DEEPER";
  pak_.setSearchDirectory(path);
  EXPECT_EQ(path, "DEEPER\\");
  EXPECT_EQ(fs::current_path(), elsewhere_.path() / "deeper");
  pak_.deleteExpanded("x.txt");
  EXPECT_TRUE(fs::exists("x.txt"));
  EXPECT_FALSE(fs::exists("../x.txt"));

  for (std::string none : {"nowhere", "", "x.txt"})
    EXPECT_THROW(pak_.setSearchDirectory(none), host::FileFault) << none;
  std::string drive = "C:" + elsewhere_.path().string() + "\\";
  pak_.setSearchDirectory(drive);
  EXPECT_EQ(fs::current_path(), elsewhere_.path());
}

TEST_F(Archive, ReportsWhatItCannotExpand) {
  EXPECT_EQ(expanded("closed.txt"), "closed.txt");
  EXPECT_THAT(logged(), IsEmpty()) << "nothing happens without an archive";

  openArchive({{"known", "x"}});
  EXPECT_EQ(expanded("unknown"), "");
  EXPECT_THAT(logged(),
              ElementsAre("Expand unknown from Pak file. STATE : OK", "No found in PAK. STATE : ERROR (Level 2/5) "));
}

TEST_F(Archive, NeverWritesOutsideTheCurrentFolder) {
  struct Case {
    const char* name;     // in the archive and as requested
    const char* reached;  // what the caller's name becomes
    bool copied;
  };
  const Case kCases[] = {{"../../up.txt", "up.txt", true},
                         {"/etc/root.txt", "root.txt", true},
                         {"..\\back.txt", "back.txt", true},
                         {"c:/windows/drive.txt", "drive.txt", true},
                         {"maps/..", "..", false},
                         {"maps/.", ".", false},
                         {"c:relative.txt", "c:relative.txt", false},
                         {"maps/", "", false},
                         {"x/stream.txt:hidden", "stream.txt:hidden", false}};
  for (const Case& c : kCases) {
    openArchive({{c.name, "hostile"}});
    const fs::path up = fs::path("..") / "up.txt";
    EXPECT_EQ(expanded(c.name), c.reached) << c.name;
    EXPECT_EQ(fs::is_regular_file(c.reached), c.copied) << c.name;
    EXPECT_FALSE(fs::exists(up) || fs::exists("../../up.txt") || fs::exists("../back.txt"));
    const auto lines = logged();
    if (!c.copied) {
      EXPECT_THAT(lines, ElementsAre(std::string("Expand ") + c.name + " from Pak file. STATE : OK",
                                     std::string("File in PAK ") + c.reached +
                                         " has occured a error. STATE : ERROR (Level 2/5) ",
                                     "Error description :Path/File access error # Number 75"));
    }
    pak_.close();
    fs::remove("data.pak");
    logged();
  }
}

TEST_F(Archive, CopiesNothingOfAnEntryThatLeavesTheArchive) {
  struct Case {
    const char* name;
    std::size_t field;
    std::int32_t value;
  };
  for (const Case& c : {Case{"size past the end", 60, 1000},
                        {"largest size", 60, INT32_MAX},
                        {"negative size", 60, -1},
                        {"negative offset", 56, INT32_MIN},
                        {"offset past the end", 56, INT32_MAX}}) {
    test::PakFile file{{"maps/a.txt", "text"}};
    test::poke(file.bytes, file.directoryAt + c.field, c.value);
    openArchive(file);
    EXPECT_EQ(expanded("maps/a.txt"), "a.txt") << c.name;
    EXPECT_FALSE(fs::exists("a.txt")) << c.name;
    EXPECT_THAT(
        logged(),
        ElementsAre("Expand maps/a.txt from Pak file. STATE : OK",
                    "File in PAK a.txt has occured a error. STATE : ERROR (Level 2/5) ",
                    testing::MatchesRegex("Error description :maps/a.txt past the end of the file.* # Number 62")))
        << c.name;
    pak_.close();
  }
}

TEST_F(Archive, ExpandsEveryFileOfRealArchives) {
  QL_NEED_SHARED_DATA();
  for (const char* folder : {"pak", "hostile/pak/pak"})
    for (const auto& path : test::sharedFiles(folder)) {
      const std::string bytes = contents(path);
      pak_.open(path.string());
      if (!pak_.isOpen()) continue;
      for (const PakEntry& entry : pak_.directory().entries) {
        if (fs::exists(entry.name) || pak_.directory().find(entry.name) != &entry) continue;
        const std::string copy = expanded(entry.name);
        if (std::string(folder) == "pak") {
          EXPECT_EQ(contents(copy),
                    bytes.substr(static_cast<std::size_t>(entry.offset), static_cast<std::size_t>(entry.size)))
              << path << " " << entry.name;
        }
        pak_.deleteExpanded(copy);
      }
      pak_.close();
    }
  EXPECT_TRUE(fs::is_empty(elsewhere_.path()));
}

}  // namespace
}  // namespace ql::archive
