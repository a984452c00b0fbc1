// Half-Life levels: what a load costs beside reading the file and decoding its textures, and what a frame costs.
//
//   bench_half_life [--level FILE.bsp] [benchmark options]
#include "Arguments.h"
#include "level/HlBsp.h"
#include "platform/device/Resources.h"
#include "platform/host/Files.h"
#include "platform/utility/Pixels.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

namespace {

namespace engine = Quasarlens3D;
using namespace ql;

/// The least that any loader does: the bytes, and each texture with its smaller levels.
void readAndDecode(benchmark::State& state, const std::string& name) {
  std::size_t texels = 0;
  for (auto _ : state) {
    texels = 0;
    const std::vector<std::byte> bytes = host::readFile(name);
    const level::HlBsp file = level::parseHlBsp(bytes);
    for (const level::HlTexture& texture : file.textures) {
      if (texture.offset == 0 || texture.header.levels[0] == 0) continue;
      images::Image image = level::decodeMipTexture(level::textureBytes(bytes, file, texture));
      const bool keyed = image.hasAlpha;
      texels += image.pixels.size();
      const std::uint32_t levels = device::fullLevelCount(image.width, image.height);
      benchmark::DoNotOptimize(utility::mipChain(std::move(image), levels, keyed));
    }
  }
  state.counters["texels"] = static_cast<double>(texels);
}

/// An engine on the software renderer.
struct Session {
  Session() {
    internals.SetClock([time = time] { return *time; });
    engine.SetEngineMode(640, 480, 32, engine::False);
    engine.Initialize(0);
    engine.Console(engine::False);
  }
  std::shared_ptr<std::uint32_t> time = std::make_shared<std::uint32_t>(10'000);
  engine::Quasarlens8 engine;
  engine::InternalObjects8 internals;
  engine::Scene8 scene;
  engine::Camera8 camera;
  engine::BSPTree8 level;
};

void load(benchmark::State& state, const std::string& name) {
  Session session;
  for (auto _ : state) session.level.Load(name);
}

/// Around from the middle of the world's first open leaf.
void frame(benchmark::State& state, const std::string& name) {
  Session session;
  session.level.Load(name);
  const std::vector<std::byte> bytes = host::readFile(name);
  const level::HlBsp file = level::parseHlBsp(bytes);
  engine::Vec3 eye{};
  for (const level::HlLeaf& leaf : file.leaves) {
    if (leaf.contents == level::kHlSolid || leaf.markSurfaceCount == 0) continue;
    const auto middle = [&](std::size_t axis) { return static_cast<float>(leaf.mins[axis] + leaf.maxs[axis]) / 2; };
    eye = {-middle(0), middle(2), -middle(1)};
    break;
  }
  constexpr float kAround[4][2] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
  std::size_t turn = 0;
  std::uint64_t triangles = 0, frames = 0;
  for (auto _ : state) {
    const float* way = kAround[turn++ % 4];
    session.camera.SetCamera(eye.x, eye.y, eye.z, eye.x + way[0], eye.y, eye.z + way[1]);
    *session.time += 2001;
    session.engine.Clear();
    session.level.Render();
    session.engine.RenderToScreen();
    session.internals.GetBackbuffer().Wait();
    triangles += session.internals.GetFrameStatistics().triangles;
    ++frames;
  }
  state.counters["triangles"] = static_cast<double>(triangles) / static_cast<double>(frames);
}

}  // namespace

int main(int argc, char** argv) {
  std::map<std::string, std::string, std::less<>> values{
      {"level", QL_SHARED_DATA_DIR "/hlbsp/towerclock/towerclock.bsp"}};
  if (!ql::bench::readArguments(argc, argv, values)) return 2;
  std::string name = std::filesystem::absolute(values["level"]).string();
  if (!std::filesystem::exists(name)) name = QL_ASSETS_DIR "/maps/cellar.bsp";
  const auto add = [&](const char* what, auto run) {
    benchmark::RegisterBenchmark(what, [run, name](benchmark::State& state) {
      run(state, name);
    })->Unit(benchmark::kMillisecond);
  };
  add("readAndDecode", readAndDecode);
  add("load", load);
  add("frame", frame);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
