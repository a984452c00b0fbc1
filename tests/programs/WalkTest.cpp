#include "support/RunProgram.h"
#include "support/TemporaryFolder.h"
#include "support/TinyQ3Level.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <tuple>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ql::test {
namespace {

constexpr char kWalk[] = QL_WALK;

class WalkProgram : public testing::Test {
 protected:
  WalkProgram() {
    put("maps/room.bsp", textOf(TinyQ3Level().bytes()));
    // From the middle of the western cluster, and from the eastern one.
    put("poses.json", R"([{"eye": [64, 60, 0], "look": [-64, 20, 0]}, {"eye": [-20, 60, 70], "look": [-60, 30, 0]}])");
    put("second.json", R"([{"eye": [-20, 60, 70], "look": [-60, 30, 0]}])");
    put("bad.json", R"([{"eye": [0, 1], "look": [0, 0, 1]}])");
    put("broken.json", "[{");
    put("note.bsp",
        "This is no level, whatever its name says. It is long enough to hold a header, though: "
        "a hundred and forty-four bytes are what the directory of such a file takes up in all.");
    put("short.bsp", textOf(TinyQ3Level().bytes()).substr(0, 300));
  }
  static std::string textOf(const std::vector<std::byte>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }
  static ProgramRun walk(const std::string& arguments) {
    return runProgram(std::string("env -u DISPLAY -u WAYLAND_DISPLAY ") + kWalk + " " + arguments);
  }

  TemporaryFolder folder_;
};

TEST_F(WalkProgram, ExitCodesTellWhatWentWrong) {
  const struct {
    const char* arguments;
    int code;
  } cases[] = {{"--help", 0},
               {"--version", 0},
               {"--bogus", 2},
               {"maps/room.bsp more", 2},
               {"maps/room.bsp --size 10", 2},
               {"maps/room.bsp --size 10x10x10", 2},
               {"maps/room.bsp --size 0x10", 2},
               {"maps/room.bsp --fov 180", 2},
               {"maps/room.bsp --device gpu", 2},
               {"maps/room.bsp --quiet --verbose", 2},
               {"maps/room.bsp --window --poses poses.json", 2},
               {"maps/none.bsp", 3},
               {"maps/room.bsp --base none", 3},
               {"maps/room.bsp --poses none.json", 3},
               {"maps/room.bsp --out poses.json/below", 3},
               {"note.bsp", 4},
               {"short.bsp", 4},
               {"maps/room.bsp --poses bad.json", 4},
               {"maps/room.bsp --poses broken.json", 4},
               {"maps/room.bsp --window", 5},
               {"maps/room.bsp --size 16385x16", 6}};
  for (const auto& row : cases) EXPECT_EQ(walk(row.arguments).code, row.code) << row.arguments;
}

TEST_F(WalkProgram, PosesGivePicturesThatDependOnNothingBefore) {
  ASSERT_EQ(walk("maps/room.bsp --poses poses.json --size 80x60 --device ref --out both").code, 0);
  ASSERT_EQ(walk("maps/room.bsp --poses second.json --size 80x60 --device ref --out one").code, 0);
  const std::string second = contents("both/pose-001.png");
  EXPECT_FALSE(second.empty());
  EXPECT_EQ(second, contents("one/pose-000.png"));
  EXPECT_NE(second, contents("both/pose-000.png"));
  EXPECT_TRUE(std::filesystem::exists("both/contact.png"));
}

TEST_F(WalkProgram, TheFirstPoseShowsTheSkyAsAllDo) {
  if (!std::filesystem::exists(QL_ASSETS_DIR "/maps/court.bsp")) GTEST_SKIP() << "no demo level";
  put("up.json", R"([{"eye": [0, 60, 400], "look": [0, 400, 300]}, {"eye": [0, 60, 400], "look": [0, 400, 300]}])");
  ASSERT_EQ(walk("--base " QL_ASSETS_DIR " --poses up.json --size 80x60 --device ref --out up").code, 0);
  const std::string first = contents("up/pose-000.png");
  EXPECT_GT(first.size(), 2000u) << "clouds";
  EXPECT_EQ(first, contents("up/pose-001.png"));
}

TEST_F(WalkProgram, TheReportCountsWhatEachFrameDrew) {
  const ProgramRun run = walk("maps/room.bsp --poses poses.json --size 80x60 --device ref --out out --json -");
  ASSERT_EQ(run.code, 0);
  const auto report = nlohmann::json::parse(run.output);
  EXPECT_EQ(report["level"], "maps/room.bsp");
  EXPECT_EQ(report["device"], "ref");
  EXPECT_EQ(report["size"], (std::vector{80, 60}));
  ASSERT_EQ(report["frames"].size(), 2u);
  EXPECT_EQ(report["frames"][0]["faces"], 2) << "from the west the eastern floor and the curve are not seen";
  EXPECT_EQ(report["frames"][1]["faces"], 4);
  EXPECT_GT(report["frames"][1]["triangles"], 4);
  EXPECT_GT(report["frames"][1]["draw_calls"], 4);
  for (const auto& frame : report["frames"]) {
    EXPECT_EQ(frame["culled"].get<int>() + frame["drawn"].get<int>(), frame["triangles"]);
    EXPECT_GT(frame["pixels"], 0);
    EXPECT_EQ(frame["tiles"], 2) << "80 x 60 pixels";
    for (const char* step : {"binning_ms", "tiles_ms"}) EXPECT_GT(frame[step], 0) << step;
    EXPECT_GE(frame["vertices_ms"], 0) << "of so few often less than can be told";
  }
  const double first = report["frames"][0]["ms"], second = report["frames"][1]["ms"];
  EXPECT_EQ(report["median_ms"], std::min(first, second));
  EXPECT_EQ(report["p95_ms"], std::max(first, second));
  EXPECT_GT(report["load_ms"], 0);
  EXPECT_GT(report["peak_bytes"], 1 << 20);

  const auto all = nlohmann::json::parse(
      walk("maps/room.bsp --poses poses.json --size 80x60 --device ref --out out --json - --no-pvs").output);
  EXPECT_EQ(all["frames"][0]["faces"], 4);
}

TEST_F(WalkProgram, WritesWhatEachThreadDoesWhen) {
  ASSERT_EQ(walk("maps/room.bsp --frames 4 --size 80x60 --device ref --no-pictures --stages stages.json").code, 0);
  std::map<std::string, int> counts;
  double before = 0;
  for (const auto& event : nlohmann::json::parse(contents("stages.json"))) {
    EXPECT_EQ(event["pid"], 1);
    const std::string name = event["name"];
    ++counts[name.substr(0, name.find(' '))];
    if (event["ph"] == "M") continue;
    EXPECT_EQ(event["ph"], "X");
    EXPECT_GE(event["dur"], 0);
    if (event["tid"] != 0) continue;
    EXPECT_GE(event["ts"], before) << "frames come one after another";
    before = event["ts"];
  }
  EXPECT_GE(counts["frame"], 4);
  EXPECT_GE(counts["thread_name"], 2);
  for (const char* step : {"vertices", "binning", "tiles"}) EXPECT_GE(counts[step], 4) << step;
  EXPECT_EQ(walk("maps/room.bsp --no-pictures --stages poses.json/below").code, 3);
}

TEST_F(WalkProgram, OverlayTellsTheReportsNumbers) {
  for (const char* size : {"640x480", "320x240"}) {
    const std::string arguments = std::string("maps/room.bsp --poses poses.json --device ref --size ") + size;
    ASSERT_EQ(walk(arguments + " --out with --overlay").code, 0);
    ASSERT_EQ(walk(arguments + " --out without").code, 0);
    EXPECT_TRUE(std::filesystem::exists("with/loading.png"));
    EXPECT_FALSE(std::filesystem::exists("without/loading.png"));
    EXPECT_NE(contents("with/pose-000.png"), contents("without/pose-000.png"));
    const auto frames = nlohmann::json::parse(contents("with/walk.json"))["frames"];
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_FALSE(nlohmann::json::parse(contents("without/walk.json"))["frames"][0].contains("overlay"));
    const std::string text = frames[1]["overlay"].dump();
    const auto& before = frames[0];
    for (const auto& [name, prefix, suffix] : {std::tuple("ms", "frame 0: ", " ms, "),
                                               {"vertices_ms", "vertices ", ", "},
                                               {"binning_ms", "binning ", ", "},
                                               {"tiles_ms", "tiles ", " ms"}}) {
      char number[32];
      std::snprintf(number, sizeof number, "%.3f", before[name].get<double>());
      EXPECT_NE(text.find(std::string(prefix) + number + suffix), std::string::npos) << name << ": " << text;
    }
    for (const auto& [name, unit] : {std::pair("faces", " faces"),
                                     {"triangles", " triangles"},
                                     {"draw_calls", " draw"},
                                     {"drawn", " drawn"},
                                     {"culled", " culled"},
                                     {"clipped", " clipped"},
                                     {"pixels", " pixels"},
                                     {"tiles", " tiles"}})
      EXPECT_NE(text.find(std::to_string(before[name].get<std::int64_t>()) + unit), std::string::npos) << text;
  }
}

TEST_F(WalkProgram, TheOverlayLeavesSmallPicturesTheirMiddle) {
  ASSERT_EQ(walk("maps/room.bsp --poses poses.json --size 64x40 --device ref --out with --overlay").code, 0);
  const auto frames = nlohmann::json::parse(contents("with/walk.json"))["frames"];
  ASSERT_EQ(frames[1]["overlay"].size(), 1u);
  EXPECT_EQ(frames[1]["overlay"][0].get<std::string>().rfind("frame 0: ", 0), 0u) << "the most important number";
}

TEST_F(WalkProgram, FliesALevelsOwnPathAndLeavesTheUsersSettingsAlone) {
  put("maps/room-path.json", contents("poses.json"));
  const std::string home = "env XDG_CONFIG_HOME=" + quoted(folder_.path() / "home") + " ";
  ASSERT_EQ(
      runProgram(home + kWalk + " maps/room.bsp --frames 9 --every 4 --size 40x30 --device ref --out flight").code, 0);
  for (const char* name : {"frame-0000.png", "frame-0004.png", "frame-0008.png", "contact.png", "walk.json"})
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path("flight") / name)) << name;
  EXPECT_FALSE(std::filesystem::exists("flight/frame-0001.png"));
  EXPECT_EQ(nlohmann::json::parse(contents("flight/walk.json"))["frames"].size(), 9u);
  EXPECT_FALSE(std::filesystem::exists("home/Quasarlens8"));
  // The flight starts at its first key.
  ASSERT_EQ(walk("maps/room.bsp --poses poses.json --size 40x30 --device ref --out poses").code, 0);
  EXPECT_EQ(contents("flight/frame-0000.png"), contents("poses/pose-000.png"));
  EXPECT_EQ(contents("flight/frame-0008.png"), contents("poses/pose-001.png"));
}

}  // namespace
}  // namespace ql::test
