// Loading mesh files into the engine, against another reader of the same files where it is installed: to its own scene,
// without any of its further steps. Files made here are large; the shared ones are real.
#include "platform/host/Files.h"

#include "engine/Engine.h"
#include "mesh/LoadThreeDs.h"
#include "mesh/LoadXFile.h"
#include "mesh/MeshFile.h"
#include "platform/utility/SubsetMesh.h"
#include "render/Subsystems.h"
#include "support/SharedData.h"
#include "support/TemporaryFolder.h"
#include "support/TestPlatform.h"
#include "support/ThreeDsFiles.h"
#include "support/XFiles.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#ifdef QL_HAVE_ASSIMP
#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#endif

namespace {

using namespace ql;

constexpr std::uint32_t kSide = 72;  // of the grid of squares that made files hold, two triangles each

/// A grid of hills as a 3D Studio file.
std::vector<std::byte> hills3ds() {
  std::vector<float> positions, coordinates;
  std::vector<std::array<std::uint16_t, 3>> faces;
  for (std::uint32_t i = 0; i < (kSide + 1) * (kSide + 1); ++i) {
    const auto x = static_cast<float>(i % (kSide + 1)), y = static_cast<float>(i / (kSide + 1));
    positions.insert(positions.end(), {x, y, x * y * 0.01F});
    coordinates.insert(coordinates.end(), {x / kSide, y / kSide});
  }
  for (std::uint32_t i = 0; i < kSide * kSide; ++i) {
    const auto at = static_cast<std::uint16_t>(i / kSide * (kSide + 1) + i % kSide);
    const auto below = static_cast<std::uint16_t>(at + kSide + 1);
    faces.push_back({at, static_cast<std::uint16_t>(at + 1), below});
    faces.push_back({static_cast<std::uint16_t>(at + 1), static_cast<std::uint16_t>(below + 1), below});
  }
  using test::chunk3ds;
  const std::vector<std::byte> object = chunk3ds(
      0x4100, {chunk3ds(0x4110, {test::floats3ds(3, positions)}), chunk3ds(0x4140, {test::floats3ds(2, coordinates)}),
               chunk3ds(0x4120, {test::faces3ds(faces)})});
  return chunk3ds(0x4D4D, {chunk3ds(0x3D3D, {chunk3ds(0x4000, {test::zeroEnded("Hills"), object})})});
}

/// The same as an X file. Text is written with all the separators that its templates ask for.
std::vector<std::byte> hillsX(bool binary) {
  test::XWriter out(binary);
  const auto last = [](std::uint32_t i, std::uint32_t count) { return i + 1 == count ? ";;\n" : ";,\n"; };
  constexpr std::uint32_t kCorners = (kSide + 1) * (kSide + 1), kSquares = kSide * kSide;
  if (!binary) out.raw("\nMesh Hills {\n" + std::to_string(kCorners) + ";\n");
  if (binary) out.open("Mesh", "Hills").ints({kCorners});
  for (std::uint32_t i = 0; i < kCorners; ++i) {
    const auto x = static_cast<float>(i % (kSide + 1)), y = static_cast<float>(i / (kSide + 1));
    const float height = x * y * 0.0123456F;
    if (binary) {
      out.reals({x, height, y});
    } else {
      out.raw(std::to_string(x) + ";" + std::to_string(height) + ";" + std::to_string(y) + last(i, kCorners));
    }
  }
  binary ? out.ints({kSquares * 2}) : out.raw(std::to_string(kSquares * 2) + ";\n");
  for (std::uint32_t i = 0; i < kSquares * 2; ++i) {
    const std::uint32_t at = i / 2 / kSide * (kSide + 1) + i / 2 % kSide, below = at + kSide + 1;
    const std::array<std::uint32_t, 3> corners =
        i % 2 == 0 ? std::array{at, at + 1, below} : std::array{at + 1, below + 1, below};
    if (binary) {
      out.ints({3, corners[0], corners[1], corners[2]});
    } else {
      out.raw("3;" + std::to_string(corners[0]) + "," + std::to_string(corners[1]) + "," + std::to_string(corners[2]) +
              last(i, kSquares * 2));
    }
  }
  binary ? out.close() : out.raw("}\n");
  const std::vector<std::byte> body = out.take();
  return test::xFile(binary ? test::XKind::Binary : test::XKind::Text, body);
}

struct Machine {
  test::TestMachine machine;
  engine::EngineContext context{machine.platform()};
  std::shared_ptr<mesh::MeshHandle> handle;
  Machine() {
    engine::startEngine(context);
    render::startSubsystems(context);
  }
  /// Loads a file into a new mesh. @return its triangles
  std::size_t load(std::string file) {
    handle = mesh::allocateMesh(context);
    mesh::MeshRecord& record = mesh::meshRecord(context, handle->slot);
    if (host::foldCase(std::filesystem::path(file).extension().string()) == ".3ds") {
      mesh::loadThreeDs(context, *handle, file);
      return static_cast<std::size_t>(record.vertexCount) / 3;
    }
    mesh::loadXFile(context, *handle, file);
    return record.subsets->triangleCount();
  }
};

void ours(benchmark::State& state, const std::string& file, std::size_t triangles) {
  // Materials are never freed, and there is room for 32767: now and then a new engine goes on.
  constexpr std::size_t kLoadsPerEngine = 1000;
  auto machine = std::make_unique<Machine>();
  std::size_t loads = 0;
  try {
    if (machine->load(file) != triangles) return state.SkipWithError("not all triangles were loaded");
    for (auto _ : state) {
      if (++loads % kLoadsPerEngine == 0) {
        state.PauseTiming();
        machine.reset();
        machine = std::make_unique<Machine>();
        state.ResumeTiming();
      }
      benchmark::DoNotOptimize(machine->load(file));
    }
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
  }
}

#ifdef QL_HAVE_ASSIMP
std::size_t theirTriangles(const aiScene* scene) {
  std::size_t count = 0;
  for (unsigned m = 0; scene != nullptr && m < scene->mNumMeshes; ++m) count += scene->mMeshes[m]->mNumFaces;
  return count;
}

void theirs(benchmark::State& state, const std::string& file, std::size_t triangles) {
  {
    Assimp::Importer importer;
    if (theirTriangles(importer.ReadFile(file, 0)) < triangles)
      return state.SkipWithError("not all triangles were loaded");
  }
  for (auto _ : state) {
    Assimp::Importer importer;
    benchmark::DoNotOptimize(importer.ReadFile(file, 0));
  }
}
#endif

void add(const std::filesystem::path& path, std::size_t triangles) {
  const std::string file = path.string(), name = path.filename().string();
  benchmark::RegisterBenchmark(("ours/" + name).c_str(), ours, file, triangles)->Unit(benchmark::kMicrosecond);
#ifdef QL_HAVE_ASSIMP
  benchmark::RegisterBenchmark(("assimp/" + name).c_str(), theirs, file, triangles)->Unit(benchmark::kMicrosecond);
#endif
}

/// Chunk files, written and read.
void chunks(benchmark::State& state, const std::string& file) {
  Machine machine;
  machine.load(file);
  const std::shared_ptr<mesh::MeshHandle> source = machine.handle;
  for (auto _ : state) {
    mesh::saveChunks(machine.context, *source, "bench.qlo", false);
    machine.handle = mesh::allocateMesh(machine.context);
    mesh::loadChunks(machine.context, *machine.handle, "bench.qlo");
  }
  if (mesh::meshRecord(machine.context, machine.handle->slot).vertexCount !=
      mesh::meshRecord(machine.context, source->slot).vertexCount)
    state.SkipWithError("the mesh came back with fewer vertices");
}

}  // namespace

int main(int argc, char** argv) {
  const test::TemporaryFolder folder;
  const auto made = [&](const char* name, const std::vector<std::byte>& bytes) {
    host::replaceFile(folder.path() / name, bytes);
    add(folder.path() / name, std::size_t{kSide} * kSide * 2);
  };
  made("hills.3ds", hills3ds());
  made("hills-text.x", hillsX(false));
  made("hills-binary.x", hillsX(true));
  if (test::haveSharedData()) {
    add(test::sharedData() / "3ds/celestia/marsodyssey.3ds", 6859);
    add(test::sharedData() / "3ds/assimp/fels.3ds", 768);
    add(test::sharedData() / "x/assimp/anim_test.x", 840);
    add(test::sharedData() / "x/assimp/test_cube_compressed.x", 12);
    add(test::sharedData() / "x/dxsamples/CloudBox/skysphere.x", 760);
  }
  benchmark::RegisterBenchmark("chunks/hills", chunks, (folder.path() / "hills.3ds").string())
      ->Unit(benchmark::kMicrosecond);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
