// Half-Life levels: what a load costs beside reading the files and decoding their textures, and what a frame costs
// beside one of a Quake 3 level.
//
//   bench_half_life [--level FILE.bsp] [--package FILE.wad] [--quake FILE.bsp] [benchmark options]
//
// A Quake 3 level's textures are looked for in the folder above its own.
#include "Arguments.h"
#include "level/HlBsp.h"
#include "platform/device/Resources.h"
#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"
#include "platform/utility/Pixels.h"
#include "support/TemporaryFolder.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

namespace engine = Quasarlens3D;
using namespace ql;

template <class Work>
double milliseconds(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

struct Files {
  std::string level, package, quake;
};

/// The least that any loader does: the bytes, and each texture with its smaller levels in the format that the engine's
/// textures have. @return bytes of the textures
std::size_t readAndDecode(const Files& names) {
  const std::vector<std::byte> bytes = host::readFile(names.level);
  const level::HlBsp file = level::parseHlBsp(bytes);
  std::vector<std::byte> package;
  std::vector<level::WadEntry> entries;
  if (!names.package.empty()) entries = level::parseWad3(package = host::readFile(names.package));
  std::vector<std::vector<std::byte>> made;
  std::size_t size = 0;
  for (const level::HlTexture& texture : file.textures) {
    std::span<const std::byte> source;
    if (const level::WadEntry* entry = level::findWadEntry(entries, host::fieldText(texture.header.name)))
      source = std::span(package).subspan(entry->offset, entry->size);
    else if (texture.offset != 0 && texture.header.levels[0] != 0)
      source = level::textureBytes(bytes, file, texture);
    else
      continue;
    images::Image image = level::decodeMipTexture(source);
    const bool keyed = image.hasAlpha;
    const std::uint32_t levels = device::fullLevelCount(image.width, image.height);
    for (const images::Image& each : utility::mipChain(std::move(image), levels, keyed)) {
      made.push_back(utility::pixelsFromImage(each, keyed ? device::Format::A8R8G8B8 : device::Format::R5G6B5));
      size += made.back().size();
    }
  }
  benchmark::DoNotOptimize(made);
  return size;
}

struct Size {
  std::int32_t width = 0, height = 0;
};

/// An engine on the software renderer.
struct Session {
  explicit Session(Size size) {
    internals.SetClock([time = time] { return *time; });
    engine.SetEngineMode(size.width, size.height, 32, engine::False);
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

/// By turns with the least work, so that what else the machine does meets both.
void load(benchmark::State& state, const Files& names) {
  Session session({640, 480});
  if (!names.package.empty()) session.level.OpenPackWAD(names.package);
  double least = 1e9, fastest = 1e9;
  std::size_t bytes = 0;
  for (auto _ : state) {
    least = std::min(least, milliseconds([&] { bytes = readAndDecode(names); }));
    const double ms = milliseconds([&] { session.level.Load(names.level); });
    fastest = std::min(fastest, ms);
    state.SetIterationTime(ms / 1000);
  }
  if (bytes == 0) state.SkipWithError("no texture was decoded");
  state.counters["least_ms"] = fastest;
  state.counters["read_and_decode_ms"] = least;
  state.counters["ratio"] = fastest / least;
  state.counters["texture_bytes"] = static_cast<double>(bytes);
}

/// The middle of the first open leaf of a Half-Life level's world.
engine::Vec3 middleOfWorld(const std::string& name) {
  const std::vector<std::byte> bytes = host::readFile(name);
  for (const level::HlLeaf& leaf : level::parseHlBsp(bytes).leaves) {
    if (leaf.contents == level::kHlSolid || leaf.markSurfaceCount == 0) continue;
    const auto middle = [&](std::size_t axis) { return static_cast<float>(leaf.mins[axis] + leaf.maxs[axis]) / 2; };
    return {-middle(0), middle(2), -middle(1)};
  }
  return {};
}

/// Around, with the visible faces found anew each time. Small pictures have few pixels: what they take is the cost of
/// the faces.
void frame(benchmark::State& state, const Files& names, bool quake, Size size) {
  const std::filesystem::path before = std::filesystem::current_path();
  Session session(size);
  engine::Vec3 eye{};
  if (quake) {
    std::filesystem::current_path(std::filesystem::path(names.quake).parent_path().parent_path());
    session.level.Load(names.quake);
    eye = session.level.GetStartPlayerPosition();
    eye.y += 26;
  } else {
    if (!names.package.empty()) session.level.OpenPackWAD(names.package);
    session.level.Load(names.level);
    eye = middleOfWorld(names.level);
  }
  constexpr float kAround[4][2] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
  std::size_t turn = 0;
  double frames = 0, triangles = 0, pixels = 0, draws = 0, fastest = 1e9, round = 0;
  for (auto _ : state) {
    const float* way = kAround[turn % 4];
    session.camera.SetCamera(eye.x, eye.y, eye.z, eye.x + way[0], eye.y, eye.z + way[1]);
    *session.time += 2001;
    const double ms = milliseconds([&] {
      session.engine.Clear();
      session.level.Render();
      session.engine.RenderToScreen();
      session.internals.GetBackbuffer().Wait();
    });
    state.SetIterationTime(ms / 1000);
    round += ms;
    if (++turn % 4 == 0) fastest = std::min(fastest, std::exchange(round, 0) / 4);
    const engine::FrameStatistics done = session.internals.GetFrameStatistics();
    triangles += static_cast<double>(done.triangles);
    pixels += static_cast<double>(done.pixelsShaded);
    draws += static_cast<double>(done.drawCalls);
    ++frames;
  }
  if (pixels == 0 || triangles == 0) state.SkipWithError("nothing was drawn");
  if (turn < 4) fastest = round / frames;
  state.counters["least_ms"] = fastest;
  state.counters["triangles"] = triangles / frames;
  state.counters["draws"] = draws / frames;
  state.counters["pixels"] = pixels / frames;
  state.counters["ns_per_triangle"] = fastest * 1e6 / (triangles / frames);
  std::filesystem::current_path(before);
}

}  // namespace

int main(int argc, char** argv) {
  std::map<std::string, std::string, std::less<>> values{
      {"level", QL_SHARED_DATA_DIR "/hlbsp/towerclock/towerclock.bsp"},
      {"package", ""},
      {"quake", QL_ASSETS_DIR "/maps/court.bsp"}};
  if (!ql::bench::readArguments(argc, argv, values)) return 2;
  const auto absolute = [](const std::string& name) {
    return name.empty() ? name : std::filesystem::absolute(name).string();
  };
  Files names{absolute(values["level"]), absolute(values["package"]), absolute(values["quake"])};
  if (!std::filesystem::exists(names.level))
    names = {QL_ASSETS_DIR "/maps/cellar.bsp", QL_ASSETS_DIR "/maps/cellar.wad", names.quake};
  // Neither the user's settings nor the log of another engine.
  const ql::test::TemporaryFolder home;
  for (const char* variable : {"XDG_CONFIG_HOME", "XDG_STATE_HOME"}) setenv(variable, home.path().c_str(), 1);
  const auto add = [&](const std::string& what, auto run) {
    benchmark::RegisterBenchmark(what.c_str(), run)->Unit(benchmark::kMillisecond)->UseManualTime();
  };
  add("load", [&](benchmark::State& state) { load(state, names); });
  for (const Size size : {Size{640, 480}, {64, 48}})
    for (const bool quake : {false, true}) {
      if (quake && !std::filesystem::exists(names.quake)) continue;
      add(std::string(quake ? "frame/quake/" : "frame/half-life/") + std::to_string(size.width) + "x" +
              std::to_string(size.height),
          [&names, quake, size](benchmark::State& state) { frame(state, names, quake, size); });
    }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
