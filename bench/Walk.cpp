// Levels through the public classes: from loading to the first finished picture, and a frame of every pose.
//
//   bench_walk [--base DIR --level maps/NAME.bsp --poses FILE [--fov DEGREES]] [benchmark options]
//
// Without --level it takes the demo level and, where they are, other levels of the test data from their player starts.
#include "Arguments.h"
#include "common/Options.h"
#include "common/Report.h"
#include "support/TemporaryFolder.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <unistd.h>

namespace {

namespace engine = Quasarlens3D;
namespace fs = std::filesystem;
using peers::Pose;
using peers::Size;

struct Walk {
  std::string base = {}, level = {};
  std::vector<Pose> poses = {};  ///< none: around from the level's player start
  float fieldOfView = 73.7398f;
  /// Whether its memory can be told: it is the only level of the process.
  bool alone = false;
  std::optional<double> grownBytes = {};  ///< what the first load and its first picture added to the process
};

std::vector<Pose> around(const engine::Vec3& start) {
  constexpr float kEyeHeight = 26, kFar = 100;
  const peers::Point eye{start.x, start.y + kEyeHeight, start.z};
  std::vector<Pose> poses;
  for (const auto& [x, z] : {std::pair{kFar, 0.0f}, {0.0f, kFar}, {-kFar, 0.0f}, {0.0f, -kFar}})
    poses.push_back({eye, {eye[0] + x, eye[1], eye[2] + z}});
  return poses;
}

/// An engine on the software renderer with a level; it loads when it is made.
class Session {
 public:
  Session(const Walk& walk, Size size) : folder_(fs::current_path()) {
    internals_.SetClock([time = time_] { return *time; });
    scene_.SetViewFrustum(walk.fieldOfView, 16384);
    engine_.SetEngineMode(size.width, size.height, 32, engine::False);
    engine_.Initialize(0);
    std::string base = walk.base;
    engine_.SetSearchDirectory(base);
    level_.SetCurvePrecision(engine::QL_CURVE_HIGH);
    engine_.Console(engine::False);
  }
  ~Session() { fs::current_path(folder_); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void load(const Walk& walk) {
    level_.Load(walk.level);
    poses = walk.poses.empty() ? around(level_.GetStartPlayerPosition()) : walk.poses;
  }
  /// Takes the pose's view, and lets the level take its visible set anew: the next frame does all the work.
  void prepare(const Pose& pose) {
    camera_.SetCamera(pose.eye[0], pose.eye[1], pose.eye[2], pose.look[0], pose.look[1], pose.look[2]);
    drawNothing();
    constexpr std::uint32_t kPastCache = 2001;  // milliseconds
    *time_ += kPastCache;
  }
  void drawNothing() {
    engine_.Clear();
    engine_.RenderToScreen();
  }
  void frame() {
    engine_.Clear();
    level_.Render();
    engine_.RenderToScreen();
  }
  engine::FrameStatistics statistics() const { return internals_.GetFrameStatistics(); }
  /// How many colours the picture has: an empty one has one.
  std::size_t colors() const {
    const std::vector<std::uint32_t> pixels = internals_.GetBackbuffer().ReadPixels();
    return std::set<std::uint32_t>(pixels.begin(), pixels.end()).size();
  }

  std::vector<Pose> poses;

 private:
  fs::path folder_;
  std::shared_ptr<std::uint32_t> time_ = std::make_shared<std::uint32_t>(10'000);
  engine::Quasarlens8 engine_;
  engine::InternalObjects8 internals_;
  engine::Scene8 scene_;
  engine::Camera8 camera_;
  engine::BSPTree8 level_;
};

constexpr std::size_t kFewestColors = 50;

/// Memory that the process holds now, bytes.
double residentBytes() {
  std::ifstream file("/proc/self/statm");
  double all = 0, resident = 0;
  file >> all >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

/// A new engine each time, since one engine keeps decoded pictures.
void load(benchmark::State& state, Walk& walk, Size size) {
  peers::Times times;
  std::size_t colors = 0;
  for (auto _ : state) {
    Session session(walk, size);
    session.drawNothing();
    const double before = residentBytes();
    const double ms = peers::milliseconds([&] {
      session.load(walk);
      session.prepare(session.poses.front());
      session.frame();
    });
    if (walk.alone && !walk.grownBytes) walk.grownBytes = residentBytes() - before;
    times.push_back(ms);
    state.SetIterationTime(ms / 1000);
    colors = session.colors();
  }
  if (colors < kFewestColors) state.SkipWithError("the picture is empty");
  state.counters["min_ms"] = peers::smallest(times);
  state.counters["median_ms"] = peers::median(times);
  if (walk.grownBytes) state.counters["grown_bytes"] = *walk.grownBytes;
}

void frames(benchmark::State& state, const Walk& walk, Size size) {
  Session session(walk, size);
  session.load(walk);
  const auto poses = static_cast<double>(session.poses.size());
  peers::Times times;
  double triangles = 0, draws = 0;
  for (auto _ : state) {
    double sum = triangles = draws = 0;
    for (const Pose& pose : session.poses) {
      session.prepare(pose);
      sum += peers::milliseconds([&] { session.frame(); });
      triangles += static_cast<double>(session.statistics().triangles);
      draws += static_cast<double>(session.statistics().drawCalls);
    }
    times.push_back(sum / poses);
    state.SetIterationTime(sum / 1000);
  }
  session.prepare(session.poses.front());
  session.frame();
  if (session.colors() < kFewestColors) state.SkipWithError("the picture is empty");
  state.counters["min_ms"] = peers::smallest(times);
  state.counters["median_ms"] = peers::median(times);
  state.counters["triangles"] = triangles / poses;
  state.counters["draw_calls"] = draws / poses;
}

std::vector<Walk> knownWalks() {
  std::vector<Walk> walks;
  const fs::path assets = QL_ASSETS_DIR;
  if (fs::exists(assets / "maps/court.bsp"))
    walks.push_back({.base = assets.string(),
                     .level = "maps/court.bsp",
                     .poses = peers::readPoses((assets / "maps/court-poses.json").string())});
  std::error_code absent;
  std::vector<Walk> others;
  for (const fs::directory_entry& entry :
       fs::recursive_directory_iterator(fs::path(QL_SHARED_DATA_DIR) / "q3bsp", absent))
    if (entry.path().extension() == ".bsp") {
      const fs::path base = fs::canonical(entry.path()).parent_path().parent_path();
      others.push_back({.base = base.string(), .level = fs::relative(entry.path(), base).string()});
    }
  std::sort(others.begin(), others.end(), [](const Walk& a, const Walk& b) { return a.level < b.level; });
  walks.insert(walks.end(), others.begin(), others.end());
  return walks;
}

}  // namespace

int main(int argc, char** argv) {
  std::map<std::string, std::string, std::less<>> options{{"base", ""}, {"level", ""}, {"poses", ""}, {"fov", ""}};
  if (!ql::bench::readArguments(argc, argv, options)) return 2;
  std::vector<Walk> walks;
  if (options["level"].empty()) {
    walks = knownWalks();
  } else {
    walks.push_back({.base = fs::absolute(options["base"]).string(), .level = options["level"], .alone = true});
    if (!options["poses"].empty()) walks[0].poses = peers::readPoses(options["poses"]);
    if (!options["fov"].empty()) walks[0].fieldOfView = std::stof(options["fov"]);
  }
  // Neither the user's settings nor the log of another engine.
  const fs::path current = fs::current_path();
  const ql::test::TemporaryFolder home;
  fs::current_path(current);  // for the files that the options name
  for (const char* variable : {"XDG_CONFIG_HOME", "XDG_STATE_HOME"}) setenv(variable, home.path().c_str(), 1);
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY"}) unsetenv(variable);
  for (Walk& walk : walks)
    for (const Size size : peers::kSizes) {
      const std::string what =
          fs::path(walk.level).stem().string() + "/" + std::to_string(size.width) + "x" + std::to_string(size.height);
      benchmark::RegisterBenchmark(("level-load/" + what).c_str(),
                                   [&walk, size](benchmark::State& state) { load(state, walk, size); })
          ->Unit(benchmark::kMillisecond)
          ->UseManualTime();
      benchmark::RegisterBenchmark(("level-frame/" + what).c_str(),
                                   [&walk, size](benchmark::State& state) { frames(state, walk, size); })
          ->Unit(benchmark::kMillisecond)
          ->UseManualTime();
    }
  benchmark::RunSpecifiedBenchmarks();
}
