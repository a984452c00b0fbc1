#include "platform/images/Image.h"
#include "support/PakFile.h"
#include "support/PictureFiles.h"
#include "support/RunProgram.h"
#include "support/SharedData.h"
#include "support/TemporaryFolder.h"
#include "support/ThreeDsFiles.h"
#include "support/TinyHlLevel.h"
#include "support/TinyQ3Level.h"
#include "support/XFiles.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ql::test {
namespace {

using nlohmann::json;

/// An upright square of two triangles in DXE form, facing -z.
constexpr char kSquare[] =
    "DXE\n2\n"
    "0\n0\n0\n0\n0\n-1\n0\n1\n0\n8\n0\n0\n0\n-1\n0\n0\n8\n8\n0\n0\n0\n-1\n1\n0\n"
    "0\n0\n0\n0\n0\n-1\n0\n1\n8\n8\n0\n0\n0\n-1\n1\n0\n8\n0\n0\n0\n0\n-1\n1\n1\n";

struct ViewProgram : testing::Test {
  ViewProgram() {
    save("box.3ds", Tiny3ds().bytes());
    save("tiny.x", tinyX(XKind::CompressedBinary));
    put("square.dxe", kSquare);
    save("red.bmp", bmpFile({.width = 4, .height = 2}, raw({0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255,
                                                            0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255})));
    save("maps/room.bsp", TinyQ3Level().bytes());
    put("note.txt", "nothing to be seen");
    put("cut.x", "xof 0303txt 0032\nMesh { 3; 0;0;0;");
    put("cut.qlo", "QLOF\xFF\xFF");
    put("name.qlm", "QLMESHBox");
    put("cut.3ds", std::string("MM\x20\0\0\0\x10\x41", 8));
    put("cut.dxe", "DXE\n9\n0\n");
    save("walls.wad", wadFile({{"stone", mipTexture("stone", 16, 40)}, {"{bars", mipTexture("{bars", 64, 255)}}));
    save("empty.wad", wadFile({}));
    put("cut.wad", "WAD3\x05");
  }
  static void save(const std::string& name, const std::vector<std::byte>& bytes) {
    put(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
  static ProgramRun view(const std::string& arguments) {
    return runProgram(std::string("env -u DISPLAY -u WAYLAND_DISPLAY " QL_VIEW " ") + arguments);
  }
  static images::Image picture(const std::string& name) {
    const std::string text = contents(name);
    return images::decode(bytesOf(text), name);
  }
  /// Pixels that are not as the upper left one: where something is drawn.
  static std::size_t drawn(const images::Image& image) {
    return static_cast<std::size_t>(
        std::count_if(image.pixels.begin(), image.pixels.end(), [&](auto pixel) { return pixel != image.pixels[0]; }));
  }
  TemporaryFolder folder;
};

TEST_F(ViewProgram, ExitCodesTellWhatWentWrong) {
  const struct {
    const char* arguments;
    int code;
  } cases[] = {{"--help", 0},
               {"--version", 0},
               {"", 2},
               {"square.dxe --bogus", 2},
               {"square.dxe --out a.png --size 10", 2},
               {"square.dxe --out a.png --size 20000x10", 6},
               {"square.dxe --out a.png --pitch 90", 2},
               {"square.dxe --out a.png --distance 0", 2},
               {"square.dxe --out - --frames 2", 2},
               {"square.dxe --out - --json -", 2},
               {"none.x --out a.png", 3},
               {"maps --out a.png", 3},
               {"square.dxe --out none/a.png", 3},
               {"square.dxe --out a.png --json none/a.json", 3},
               {"note.txt --out a.png", 4},
               {"cut.x --out a.png", 4},
               {"cut.qlo --out a.png", 4},
               {"cut.3ds --out a.png", 4},
               {"cut.dxe --out a.png", 4},
               {"name.qlm --out a.png", 4},
               {"square.dxe", 5},
               {"walls.wad --out a.png", 0},
               {"walls.wad --out a.png --page 2", 2},
               {"walls.wad --out a.png --page 0", 2},
               {"square.dxe --out a.png --textures", 2},
               {"maps/room.bsp --out a.png --textures", 4},
               {"empty.wad --out a.png", 4},
               {"cut.wad --out a.png", 4},
               {"walls.wad --out none/a.png", 3},
               {"walls.wad", 5}};
  for (const auto& c : cases) EXPECT_EQ(view(c.arguments).code, c.code) << c.arguments;
}

TEST_F(ViewProgram, ShowsEveryKindOfFile) {
  struct Case {
    const char* file;
    const char* kind;
    std::size_t triangles;
  };
  for (const Case& c : {Case{"box.3ds", "3ds", 3},
                        {"tiny.x", "x", 3},
                        {"square.dxe", "dxe", 2},
                        {"red.bmp", "picture", 2},
                        {QL_TEST_DATA "/mesh-v8.qlo", "qlof", 2},
                        {"maps/room.bsp", "level", 0}}) {
    SCOPED_TRACE(c.file);
    const ProgramRun run = view(std::string(c.file) + " --out a.png --size 80x60 --json -");
    ASSERT_EQ(run.code, 0) << run.output;
    const json facts = json::parse(run.output);
    EXPECT_EQ(facts["kind"], c.kind);
    EXPECT_EQ(facts["device"], "ref");
    if (c.triangles > 0) {
      EXPECT_EQ(facts["triangles"], c.triangles);
    }
    const images::Image image = picture("a.png");
    EXPECT_EQ(image.width, 80u);
    EXPECT_GT(drawn(image), 100u);
  }
  EXPECT_EQ(view("red.bmp --out - --size 80x60").output.substr(0, 4), "\x89PNG");
}

TEST_F(ViewProgram, StandsWhereItIsTold) {
  const auto pixels = [&](const std::string& options) {
    EXPECT_EQ(view("red.bmp --out a.png --size 160x120 " + options).code, 0) << options;
    return drawn(picture("a.png"));
  };
  // Twice as wide as high: it fills the width at distance 1.
  const std::size_t near = pixels("");
  EXPECT_NEAR(static_cast<double>(near), 160 * 80, 160 * 80 * 0.1);
  EXPECT_NEAR(static_cast<double>(pixels("--distance 2")), static_cast<double>(near) / 4,
              static_cast<double>(near) * 0.03);
  EXPECT_LT(pixels("--yaw 80 --distance 2"), near / 10) << "from the side";
  EXPECT_LT(pixels("--pitch 80 --distance 2"), near / 10) << "from above";

  EXPECT_EQ(view("red.bmp --out b.png --size 160x120 --yaw 180").code, 0);
  EXPECT_EQ(picture("b.png").pixels[60 * 160 + 80] & 0xFFFFFF, 0xFF0000u) << "and from behind";

  EXPECT_EQ(view("square.dxe --out turn.png --size 80x60 --frames 4").code, 0);
  std::set<std::string> different;
  for (const char* name : {"turn-000.png", "turn-001.png", "turn-002.png", "turn-003.png"})
    different.insert(contents(name));
  EXPECT_EQ(different.size(), 4u);
}

TEST_F(ViewProgram, ListsTexturesThatItDidNotFind) {
  json facts = json::parse(view("box.3ds --out a.png --json -").output);
  ASSERT_EQ(facts["missing"].size(), 1u);
  EXPECT_TRUE(facts["missing"][0].get<std::string>().ends_with("BRICK.BMP"));
  std::filesystem::copy("red.bmp", "brick.bmp");
  facts = json::parse(view("box.3ds --out a.png --json -").output);
  EXPECT_EQ(facts["missing"].size(), 0u);
  EXPECT_EQ(facts["bounds"]["mins"], (json{-4.0, 0.0, -4.0})) << "z is up in the file";
  facts = json::parse(view("box.3ds --out a.png --json - --up y").output);
  EXPECT_EQ(facts["bounds"]["maxs"], (json{4.0, 4.0, 4.0}));
  EXPECT_EQ(std::filesystem::exists("art"), false);
  facts = json::parse(view("tiny.x --out a.png --json -").output);
  EXPECT_TRUE(facts["missing"][0].get<std::string>().ends_with("art\\red.bmp"));
}

TEST_F(ViewProgram, TellsWhenAFileHasMoreThanAMeshHolds) {
  Tiny3ds file;
  file.faces = faces3ds(std::vector<std::array<std::uint16_t, 3>>(11000, {0, 1, 2}));
  save("large.3ds", file.bytes());
  const ProgramRun run = view("large.3ds --out a.png --size 80x60 --json -");
  EXPECT_EQ(run.code, 6);
  EXPECT_EQ(json::parse(run.output)["vertices"], 32766);
  EXPECT_GT(drawn(picture("a.png")), 100u) << "the picture shows what there is";
}

TEST_F(ViewProgram, HardwareAndReferenceShowTheSame) {
  if (view("box.3ds --device hal --out h.png --size 160x120").code == 5) GTEST_SKIP() << "no hardware device";
  ASSERT_EQ(view("box.3ds --device ref --out r.png --size 160x120").code, 0);
  const images::Image hal = picture("h.png"), ref = picture("r.png");
  ASSERT_EQ(hal.pixels.size(), ref.pixels.size());
  std::size_t far = 0;
  for (std::size_t i = 0; i < hal.pixels.size(); ++i)
    for (const int shift : {0, 8, 16})
      far +=
          std::abs(static_cast<int>(hal.pixels[i] >> shift & 255) - static_cast<int>(ref.pixels[i] >> shift & 255)) > 8
              ? 1u
              : 0u;
  EXPECT_LT(far, hal.pixels.size() / 50);
}

/// Sheets are cells of 144 x 174 below a line of 24, each with a picture of at most 128 x 128 at (8, 8).
std::uint32_t onSheet(const images::Image& sheet, std::uint32_t column, std::uint32_t row, std::uint32_t x,
                      std::uint32_t y) {
  return sheet.at(8 + column * 144 + x, 32 + row * 174 + y) & 0xFFFFFF;
}

TEST_F(ViewProgram, ShowsTheTexturesOfAPackageOnASheet) {
  const ProgramRun run = view("walls.wad --out a.png --size 320x240 --json -");
  ASSERT_EQ(run.code, 0) << run.output;
  const json facts = json::parse(run.output);
  EXPECT_EQ(facts["kind"], "package");
  EXPECT_EQ(facts["shown"], (json{{"stone", 16, 16}, {"{bars", 64, 64}}));
  const images::Image sheet = picture("a.png");
  ASSERT_EQ(sheet.width, 320u);
  for (const std::uint32_t at : {0u, 64u, 127u}) EXPECT_EQ(onSheet(sheet, 0, 0, at, at), 0x28D707u) << at;
  std::set<std::uint32_t> throughHoles;
  for (std::uint32_t x = 0; x < 128; ++x) throughHoles.insert(onSheet(sheet, 1, 0, x, 64));
  EXPECT_EQ(throughHoles.size(), 2u) << "a chequered ground";
  EXPECT_FALSE(throughHoles.contains(0x0000FF)) << "and not the key";
  const std::uint32_t background = sheet.at(319, 239);
  std::size_t ink = 0;
  for (std::uint32_t y = 130; y < 160; ++y)
    for (std::uint32_t x = 0; x < 128; ++x) ink += onSheet(sheet, 0, 0, x, y) != (background & 0xFFFFFF) ? 1 : 0;
  EXPECT_GT(ink, 60u) << "name and size";
}

TEST_F(ViewProgram, ASheetHasPages) {
  std::vector<std::pair<std::string, std::vector<std::byte>>> many;
  for (std::uint8_t i = 0; i < 7; ++i) {
    const std::string name{'t', static_cast<char>('0' + i)};
    many.emplace_back(name, mipTexture(name, 16, static_cast<std::uint8_t>(10 * i)));
  }
  save("many.wad", wadFile(many));
  for (const auto& [page, first, shown] : {std::tuple{1, 0u, 2u}, {2, 2u, 2u}, {4, 6u, 1u}}) {
    const json facts =
        json::parse(view("many.wad --out a.png --size 300x200 --json - --page " + std::to_string(page)).output);
    EXPECT_EQ(facts["pages"], 4);
    ASSERT_EQ(facts["shown"].size(), shown);
    EXPECT_EQ(facts["shown"][0][0], std::string({'t', static_cast<char>('0' + first)}));
    EXPECT_EQ(onSheet(picture("a.png"), 0, 0, 64, 64), (10 * first) << 16 | (255 - 10 * first) << 8 | 7);
  }
}

TEST_F(ViewProgram, WhatCannotBeReadIsShownAsSuch) {
  // The level holds two of its textures; the archive a picture, a damaged one and a text.
  save("maps/hall.bsp", TinyHlLevel().bytes());
  json facts = json::parse(view("maps/hall.bsp --textures --out a.png --json -").output);
  std::size_t carried = 0;
  for (const json& shown : facts["shown"]) carried += shown[1] != 0 ? 1 : 0;
  EXPECT_EQ(carried, 2u);
  EXPECT_EQ(facts["shown"].size(), 5u);
  put("some.pak", PakFile{{"pics/red.bmp", contents("red.bmp")}, {"pics/cut.bmp", "BM"}, {"note.txt", "no"}}.bytes);
  facts = json::parse(view("some.pak --out a.png --json -").output);
  EXPECT_EQ(facts["kind"], "archive");
  EXPECT_EQ(facts["shown"], (json{{"pics/red.bmp", 4, 2}, {"pics/cut.bmp", 0, 0}}));
}

TEST_F(ViewProgram, TurnsInAWindow) {
  if (std::getenv("QL_EXPECT_DISPLAY") == nullptr) GTEST_SKIP() << "no display";
  EXPECT_EQ(runProgram(QL_VIEW " box.3ds --device ref --size 160x120 --frames 20 --json a.json").code, 0);
  EXPECT_EQ(json::parse(contents("a.json"))["triangles"], 3);
  EXPECT_EQ(runProgram(QL_VIEW " walls.wad --device ref --size 160x120 --frames 5").code, 0);
}

TEST_F(ViewProgram, RealMeshesAreSeenFromEverySide) {
  QL_NEED_SHARED_DATA();
  for (const char* kind : {"3ds", "x"}) {
    for (const std::filesystem::path& path : sharedFiles(kind)) {
      if (path.extension() != ".x" && path.extension() != ".3ds" && path.extension() != ".3DS") continue;
      SCOPED_TRACE(path.filename());
      const int code = view(quoted(path.string()) + " --out side.png --size 120x90 --frames 4 --quiet").code;
      EXPECT_EQ(code, path.filename() == "apollo.3ds" ? 6 : 0);
      for (const char* name : {"side-000.png", "side-001.png", "side-002.png", "side-003.png"}) {
        const std::size_t seen = drawn(picture(name));
        EXPECT_GT(seen, 150u);
        EXPECT_LT(seen, 120u * 90 * 9 / 10) << "all of it is in view";
      }
    }
  }
}

}  // namespace
}  // namespace ql::test
