#include "platform/host/Files.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace ql::host {
namespace {

namespace fs = std::filesystem;
using test::bytesOf;
using test::contents;
using test::put;

class Files : public testing::Test {
 protected:
  test::TemporaryFolder folder_;
};

TEST_F(Files, AreFoundInAnySpelling) {
  put("Maps/Court.BSP", "");
  put("maps/deep/Wall.jpg", "");
  put("exact", "");
  put("EXACT", "");
  put("caf\xC3\xA9.tga", "");
  fs::create_directories("folder");
  fs::create_symlink("exact", "link");
  fs::create_symlink("nowhere", "dangling");
  const std::string absolute = folder_.path().string() + "/Maps/Court.BSP";

  struct Case {
    const char* name;
    std::string asked;
    std::string found;  // empty: nothing
  };
  const Case kCases[] = {
      {"as it stands", "Maps/Court.BSP", "Maps/Court.BSP"},
      {"other case and separator", "MAPS\\court.bsp", "Maps/Court.BSP"},
      {"the folder that has it, of two that differ in case", "MAPS/DEEP/WALL.JPG", "maps/deep/Wall.jpg"},
      {"a folder as written that lacks it", "Maps/deep/wall.jpg", "maps/deep/Wall.jpg"},
      {"exact before folded", "EXACT", "EXACT"},
      {"drive and root", "c:" + absolute, absolute},
      {"drive without root", "C:maps\\COURT.bsp", "Maps/Court.BSP"},
      {"doubled separators", "maps\\\\court.bsp", "Maps/Court.BSP"},
      {"up and down again", "folder/../MAPS/court.bsp", "folder/../Maps/Court.BSP"},
      {"old code page", "Caf\xE9.TGA", "caf\xC3\xA9.tga"},
      {"link", "LINK", "link"},
      {"link to nothing", "dangling", ""},
      {"folder", "FOLDER", ""},
      {"file used as a folder", "exact/x", ""},
      {"file with a separator after it", "Exact/", ""},
      {"empty", "", ""},
      {"drive alone", "c:", ""},
      {"NUL inside", std::string("exact\0.x", 8), ""},
      {"absent", "maps/none.bsp", ""}};
  for (const Case& c : kCases) {
    const auto found = findFile(c.asked);
    EXPECT_EQ(found ? found->string() : "", c.found) << c.name;
    EXPECT_EQ(fileExists(c.asked), !c.found.empty()) << c.name;
  }
  EXPECT_EQ(findFolder("MAPS\\DEEP\\").value_or("").string(), "maps/deep");
  EXPECT_FALSE(findFolder("exact"));
  EXPECT_FALSE(findFolder(""));
}

TEST_F(Files, AreReplacedWholeOrNotAtAll) {
  const auto write = [](const char* name, const std::string& text) { writeFile(name, bytesOf(text)); };
  write("new.txt", "one");
  EXPECT_EQ(contents("new.txt"), "one");
  write("NEW.TXT", "two");
  EXPECT_EQ(contents("new.txt"), "two") << "the existing spelling is reused";
  EXPECT_FALSE(fs::exists("NEW.TXT"));
  fs::create_directories("Out");
  write("d:out\\Shot.bmp", "x");
  EXPECT_TRUE(fs::exists("Out/Shot.bmp"));

  fs::create_symlink("new.txt", "link");
  write("link", "three");
  EXPECT_TRUE(fs::is_symlink("link"));
  EXPECT_EQ(contents("new.txt"), "three");

  const auto numberOf = [&](const char* name) {
    try {
      write(name, "x");
    } catch (const FileFault& fault) {
      return fault.number();
    }
    return 0;
  };
  EXPECT_EQ(numberOf("absent/file.txt"), 76);
  EXPECT_EQ(numberOf("out"), 75) << "a folder stands there";
  EXPECT_EQ(numberOf("out/"), 75);
  EXPECT_EQ(numberOf(""), 75);
  for (const auto& entry : fs::recursive_directory_iterator(folder_.path()))
    EXPECT_FALSE(entry.path().string().ends_with(".tmp")) << "left behind: " << entry.path();
}

TEST_F(Files, AreReadWithinALimit) {
  put("Data.bin", std::string("a\0b\r\n", 5));
  EXPECT_EQ(readFile("DATA.BIN", 5).size(), 5u);
  const auto faultOf = [](const char* name, std::uint64_t limit) -> std::optional<Fault> {
    try {
      readFile(name, limit);
    } catch (const FileFault& fault) {
      return fault.id;
    }
    return std::nullopt;
  };
  EXPECT_EQ(faultOf("data.bin", 4), Fault::TooLarge);
  EXPECT_EQ(faultOf("none.bin", 4), Fault::Missing);
  EXPECT_EQ(faultOf("/dev/zero", 4), Fault::Missing) << "a device never ends";
}

}  // namespace
}  // namespace ql::host
