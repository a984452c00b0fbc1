// ql-trace as a user runs it, over a session recorded through the public classes by ql-walk.
#include "support/RunProgram.h"
#include "support/TemporaryFolder.h"
#include "support/TinyQ3Level.h"

#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ql::test {
namespace {

class TraceProgram : public testing::Test {
 protected:
  TraceProgram() {
    const std::vector<std::byte> level = TinyQ3Level().bytes();
    put("maps/room.bsp", {reinterpret_cast<const char*>(level.data()), level.size()});
    put("poses.json", R"([{"eye": [64, 60, 0], "look": [-64, 20, 0]}, {"eye": [-20, 60, 70], "look": [-60, 30, 0]}])");
    put("moved.json", R"([{"eye": [64, 60, 0], "look": [-64, 20, 0]}, {"eye": [-20, 60, 71], "look": [-60, 30, 0]}])");
    put("note.qltrace", "This is no trace, whatever its name says.");
  }
  static ProgramRun trace(const std::string& arguments) {
    return runProgram(std::string("env -u DISPLAY -u WAYLAND_DISPLAY ") + QL_TRACE + " " + arguments);
  }
  static void record(const std::string& name, const std::string& poses) {
    ASSERT_EQ(trace("record " + name + " maps/room.bsp --size 80x60 --poses " + poses).code, 0);
  }
  TemporaryFolder folder_;
};

TEST_F(TraceProgram, ExitCodesTellWhatWentWrong) {
  record("a.qltrace", "poses.json");
  const struct {
    const char* arguments;
    int code;
  } cases[] = {{"--help", 0},
               {"--version", 0},
               {"show --help", 0},
               {"record --help", 0},
               {"", 2},
               {"frobnicate", 2},
               {"show", 2},
               {"show a.qltrace --bogus", 2},
               {"show a.qltrace --frames 3-1", 2},
               {"show a.qltrace --frames x", 2},
               {"compare a.qltrace", 2},
               {"replay a.qltrace --device gpu", 2},
               {"replay a.qltrace --device ref,hal", 2},
               {"diff a.qltrace --device ref", 2},
               {"diff a.qltrace --tolerance 256", 2},
               {"record", 2},
               {"record --out", 2},
               {"record b.qltrace maps/room.bsp --bogus", 2},
               {"record none/b.qltrace maps/room.bsp", 3},
               {"record b.qltrace maps/none.bsp", 3},
               {"show none.qltrace", 3},
               {"replay a.qltrace --out poses.json/below", 3},
               {"compare a.qltrace none.qltrace", 3},
               {"show note.qltrace", 4}};
  for (const auto& row : cases) EXPECT_EQ(trace(row.arguments).code, row.code) << row.arguments;
}

TEST_F(TraceProgram, ReplayDrawsThePicturesOfTheSession) {
  record("a.qltrace", "poses.json");
  ASSERT_EQ(runProgram(std::string(QL_WALK) + " maps/room.bsp --size 80x60 --poses poses.json --out walk").code, 0);
  // Before each pose the walk draws an empty frame.
  const ProgramRun run = trace("replay a.qltrace --out replay --frames 1- --every 2 --json -");
  ASSERT_EQ(run.code, 0);
  const auto report = nlohmann::json::parse(run.output);
  EXPECT_TRUE(report["complete"]);
  ASSERT_EQ(report["frames"].size(), 2u);
  EXPECT_EQ(report["frames"][1]["picture"], "frame-0003.png");
  EXPECT_EQ(report["counts"]["refused"], 0);
  EXPECT_EQ(report["counts"]["unknown"], 0);
  EXPECT_FALSE(contents("walk/pose-000.png").empty());
  EXPECT_EQ(contents("replay/frame-0001.png"), contents("walk/pose-000.png"));
  EXPECT_EQ(contents("replay/frame-0003.png"), contents("walk/pose-001.png"));
}

TEST_F(TraceProgram, CompareTellsTheFirstDifference) {
  record("a.qltrace", "poses.json");
  record("b.qltrace", "poses.json");
  record("c.qltrace", "moved.json");
  EXPECT_EQ(trace("compare a.qltrace b.qltrace").code, 0);
  const ProgramRun run = trace("compare a.qltrace c.qltrace");
  EXPECT_EQ(run.code, 1);
  EXPECT_TRUE(run.output.starts_with("frame 2, record ")) << run.output;
  EXPECT_NE(run.output.find("< SetTransform(view, ["), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("> SetTransform(view, ["), std::string::npos) << run.output;
  // One that was cut off ends after a whole frame.
  put("cut.qltrace", contents("a.qltrace").substr(0, contents("a.qltrace").size() - 40));
  const ProgramRun shorter = trace("compare a.qltrace cut.qltrace");
  EXPECT_EQ(shorter.code, 1);
  EXPECT_NE(shorter.output.find("> (the end)"), std::string::npos) << shorter.output;
}

TEST_F(TraceProgram, ShowPrintsWhatIsAskedFor) {
  record("a.qltrace", "poses.json");
  EXPECT_EQ(trace("show a.qltrace --quiet --frames 1-2 --name Present --name BeginScene").output,
            "frame 1\n  BeginScene()\n  Present()\nframe 2\n  BeginScene()\n  Present()\n");
  const std::string first = trace("show a.qltrace --frames 0 --name DeviceCreated").output;
  EXPECT_TRUE(first.starts_with("# version 1, 4 frames, ")) << first;
  EXPECT_NE(first.find("  -> DeviceCreated(2, 80, 60, "), std::string::npos) << first;
}

TEST_F(TraceProgram, DiffMeasuresTwoDevices) {
  record("a.qltrace", "poses.json");
  const ProgramRun same = trace("diff a.qltrace --device ref,ref --tolerance 0 --maximum 0 --out same --json -");
  ASSERT_EQ(same.code, 0);
  EXPECT_EQ(nlohmann::json::parse(same.output)["maximum"], 0);
  EXPECT_EQ(contents("same/frame-0001-a-ref.png"), contents("same/frame-0001-b-ref.png"));
  EXPECT_TRUE(std::filesystem::exists("same/frame-0003-difference.png"));
  const ProgramRun both = trace("diff a.qltrace --out both --json -");
  if (both.code == 5) GTEST_SKIP() << "no OpenGL 3.3 on this machine";
  ASSERT_EQ(both.code, 0) << both.output;
  const auto report = nlohmann::json::parse(both.output);
  EXPECT_LT(report["mean"], 1);
  EXPECT_EQ(trace("diff a.qltrace --out both --quiet --tolerance 0 --maximum 0").code, report["maximum"] == 0 ? 0 : 1);
}

}  // namespace
}  // namespace ql::test
