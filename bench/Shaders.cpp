// Indexing a folder of shader scripts, and drawing a level with its shaders beside the same level without: then every
// surface has one picture and its light.
//
//   bench_shaders [--base DIR --level maps/NAME.bsp --poses FILE] [benchmark options]
//
// Without --level it draws the demo level. The scripts are those of the base folder.
#include "render/shaders/Shaders.h"

#include "Arguments.h"
#include "common/Options.h"
#include "common/Report.h"
#include "support/TemporaryFolder.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

namespace engine = Quasarlens3D;
namespace fs = std::filesystem;
using namespace ql;
using render::shaders::ScriptFiles;

constexpr int kFiles = 300, kShadersPerFile = 40;

/// Three megabytes in 300 files.
void putScripts() {
  for (int file = 0; file < kFiles; ++file) {
    std::string text;
    for (int i = 0; i < kShadersPerFile; ++i) {
      text += "textures/set" + std::to_string(file) + "/wall" + std::to_string(i) +
              "\r\n{\r\n\tsurfaceparm nomarks\r\n\t// light first\r\n\t{\r\n\t\tmap $lightmap\r\n\t\trgbGen "
              "identity\r\n\t}\r\n"
              "\t{\r\n\t\tmap textures/set/wall.tga\r\n\t\tblendFunc GL_DST_COLOR GL_ZERO\r\n\t\ttcMod scroll 0.1 "
              "1\r\n\t}\r\n}\r\n";
    }
    test::put("scripts/set" + std::to_string(file) + ".shader", text);
  }
}

void indexFolder(benchmark::State& state) {
  const test::TemporaryFolder folder;
  putScripts();
  for (auto _ : state) {
    ScriptFiles files;
    files.addFolder("scripts");
    if (files.shaderCount() != std::size_t{kFiles} * kShadersPerFile) state.SkipWithError("shaders are missing");
  }
}
BENCHMARK(indexFolder)->Unit(benchmark::kMillisecond);

struct Walk {
  std::string base, level;
  std::vector<peers::Pose> poses;
};

/// An engine on the software renderer with a level.
class Session {
 public:
  Session(const Walk& walk, peers::Size size, bool shaders) : folder_(fs::current_path()) {
    internals_.SetClock([time = time_] { return *time; });
    engine_.SetEngineMode(size.width, size.height, 32, engine::False);
    engine_.Initialize(0);
    engine_.Console(engine::False);
    std::string base = walk.base;
    engine_.SetSearchDirectory(base);
    if (shaders) level_.LoadShaderDirectory("scripts");
    level_.Load(walk.level);
    level_.SetParameters(engine::True, engine::True, engine::QL_BACK_CULL, shaders ? engine::True : engine::False);
    fs::current_path(folder_);
  }
  /// Milliseconds of a frame of a pose, its visible faces found anew.
  double frame(const peers::Pose& pose) {
    camera_.SetCamera(pose.eye[0], pose.eye[1], pose.eye[2], pose.look[0], pose.look[1], pose.look[2]);
    for (int i = 0; i < 2; ++i) {  // the frustum is that of the frame before
      engine_.Clear();
      engine_.RenderToScreen();
    }
    *time_ += 2001;
    return peers::milliseconds([&] {
      engine_.Clear();
      level_.Render();
      engine_.RenderToScreen();
      internals_.GetBackbuffer().Wait();
    });
  }
  engine::FrameStatistics statistics() const { return internals_.GetFrameStatistics(); }
  engine::Vec3 start() const { return level_.GetStartPlayerPosition(); }

 private:
  fs::path folder_;
  std::shared_ptr<std::uint32_t> time_ = std::make_shared<std::uint32_t>(10'000);
  engine::Quasarlens8 engine_;
  engine::InternalObjects8 internals_;
  engine::Scene8 scene_;
  engine::Camera8 camera_;
  engine::BSPTree8 level_;
};

/// What a level's poses cost at best, and what was drawn.
struct Cost {
  std::vector<double> ms;
  double pixels = 0, triangles = 0;
  double mean() const {
    double sum = 0;
    for (const double each : ms) sum += each;
    return sum / static_cast<double>(ms.size());
  }
  void add(Session& session, const std::vector<peers::Pose>& poses) {
    ms.resize(poses.size(), 1e9);
    pixels = triangles = 0;
    for (std::size_t i = 0; i < poses.size(); ++i) {
      ms[i] = std::min(ms[i], session.frame(poses[i]));
      pixels += static_cast<double>(session.statistics().pixelsShaded) / static_cast<double>(poses.size());
      triangles += static_cast<double>(session.statistics().triangles) / static_cast<double>(poses.size());
    }
  }
};

std::vector<peers::Pose> around(const engine::Vec3& at) {
  std::vector<peers::Pose> poses;
  for (const auto& [x, z] : {std::pair{1.0f, 0.0f}, {0.0f, 1.0f}, {-1.0f, 0.0f}, {0.0f, -1.0f}})
    poses.push_back({{at.x, at.y + 26, at.z}, {at.x + x, at.y + 26, at.z + z}});
  return poses;
}

/// The two by turns, so that what else the machine does meets both. A process has one engine at a time.
void drawLevel(benchmark::State& state, Walk walk, peers::Size size) {
  constexpr int kPasses = 2;
  Cost with, without;
  for (auto _ : state) {
    for (const bool shaders : {true, false}) {
      Session session(walk, size, shaders);
      if (walk.poses.empty()) walk.poses = around(session.start());
      for (int pass = 0; pass < kPasses; ++pass) (shaders ? with : without).add(session, walk.poses);
    }
    state.SetIterationTime(with.mean() / 1000);
  }
  if (with.pixels == 0 || without.pixels == 0) state.SkipWithError("nothing was drawn");
  const auto report = [&](const char* name, double value) { state.counters[name] = value; };
  report("with_ms", with.mean());
  report("without_ms", without.mean());
  report("ratio", with.mean() / without.mean());
  report("pixel_ratio", with.pixels / without.pixels);
  report("triangle_ratio", with.triangles / without.triangles);
  report("ratio_per_pixel", with.mean() / with.pixels / (without.mean() / without.pixels));
}

}  // namespace

int main(int argc, char** argv) {
  std::map<std::string, std::string, std::less<>> options{{"base", ""}, {"level", ""}, {"poses", ""}};
  if (!ql::bench::readArguments(argc, argv, options)) return 2;
  Walk walk{options["base"].empty() ? std::string() : fs::absolute(options["base"]).string(), options["level"], {}};
  if (walk.level.empty()) {
    const fs::path assets = QL_ASSETS_DIR;
    walk = {assets.string(), "maps/court.bsp", {}};
    options["poses"] = (assets / "maps/court-poses.json").string();
  }
  if (!options["poses"].empty()) walk.poses = peers::readPoses(options["poses"]);
  // Neither the user's settings nor the log of another engine.
  const fs::path current = fs::current_path();
  const ql::test::TemporaryFolder home;
  fs::current_path(current);
  for (const char* variable : {"XDG_CONFIG_HOME", "XDG_STATE_HOME"}) setenv(variable, home.path().c_str(), 1);
  for (const peers::Size size : peers::kSizes)
    benchmark::RegisterBenchmark(("level/" + fs::path(walk.level).stem().string() + '/' + std::to_string(size.width) +
                                  'x' + std::to_string(size.height))
                                     .c_str(),
                                 [walk, size](benchmark::State& state) { drawLevel(state, walk, size); })
        ->Iterations(3)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
