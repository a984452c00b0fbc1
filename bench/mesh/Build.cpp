// Building meshes. Adding vertices one by one is timed against filling the same lists in one go, solid letters against
// tessellating their outlines alone.
#include "mesh/Build.h"

#include "engine/Engine.h"
#include "platform/fonts/FontFace.h"
#include "platform/utility/Shapes.h"
#include "platform/utility/Tessellate.h"
#include "platform/utility/TextMesh.h"
#include "support/TestPlatform.h"

#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;

constexpr std::string_view kText = "The quick brown fox & 8 lazy dogs";

math::NormalVertex vertexOf(std::int64_t i) {
  const auto x = static_cast<float>(i % 181), y = static_cast<float>(i / 181);
  return {x, y, x * y, 0, 0, 1, x, y, x, y};
}

struct Machine {
  test::TestMachine machine;
  engine::EngineContext context{machine.platform()};
  std::shared_ptr<mesh::MeshHandle> handle = mesh::allocateMesh(context);

  mesh::MeshRecord& record() { return mesh::meshRecord(context, handle->slot); }
  void build(std::int64_t vertices) {
    handle.reset();
    handle = mesh::allocateMesh(context);
    for (std::int64_t i = 0; i < vertices; ++i) mesh::addVertex(context, *handle, vertexOf(i), -1);
  }
};

/// The time per vertex must not depend on their number.
void addVertices(benchmark::State& state) {
  Machine machine;
  machine.build(state.range(0));
  if (machine.record().normalVertices[100].x != vertexOf(100).x || machine.record().groups[1].count != state.range(0))
    return state.SkipWithError("a vertex is not where it belongs");
  for (auto _ : state) machine.build(state.range(0));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(addVertices)->Arg(1000)->Arg(8000)->Arg(32000);

/// The same two lists and numbers, made in one go.
void fillLists(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<math::NormalVertex> normal;
    std::vector<math::ColorVertex> colored;
    std::vector<std::int16_t> numbers;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      const math::NormalVertex v = normal.emplace_back(vertexOf(i));
      colored.push_back({v.x, v.y, v.z, -1, 0, v.tu, v.tv, v.tu1, v.tv1});
      numbers.push_back(static_cast<std::int16_t>(i));
    }
    benchmark::DoNotOptimize(normal.data());
    benchmark::DoNotOptimize(colored.data());
    benchmark::DoNotOptimize(numbers.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(fillLists)->Arg(32000);

void computeNormals(benchmark::State& state) {
  Machine machine;
  machine.build(32766);
  mesh::computeNormals(machine.context, *machine.handle);
  for (auto _ : state) mesh::computeNormals(machine.context, *machine.handle);
  state.SetItemsProcessed(state.iterations() * 32766 / 3);
}
BENCHMARK(computeNormals);

void smoothNormals(benchmark::State& state) {
  const auto teapot = utility::createTeapot();
  for (auto _ : state) teapot->computeNormals();
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(teapot->triangleCount()));
}
BENCHMARK(smoothNormals);

void computeBounds(benchmark::State& state) {
  Machine machine;
  machine.build(32000);
  for (auto _ : state) mesh::computeBounds(machine.context, *machine.handle);
  state.SetItemsProcessed(state.iterations() * 32000);
}
BENCHMARK(computeBounds);

void solidLetters(benchmark::State& state) {
  std::size_t triangles = 0;
  for (auto _ : state) triangles = utility::createText({}, kText, 1, 40)->triangleCount();
  state.counters["triangles"] = static_cast<double>(triangles);
}
BENCHMARK(solidLetters)->Unit(benchmark::kMillisecond);

/// What of it the outlines and the tessellator take.
void lettersAreas(benchmark::State& state) {
  const fonts::FontFace face({.points = 75});
  std::size_t triangles = 0;
  for (auto _ : state) {
    triangles = 0;
    for (const char32_t c : fonts::characters(kText))
      triangles += utility::areaInside(face.outline(c, 0.1f)).triangles.size() / 3;
  }
  state.counters["triangles"] = static_cast<double>(triangles);
}
BENCHMARK(lettersAreas)->Unit(benchmark::kMillisecond);

void teapot(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(utility::createTeapot());
}
BENCHMARK(teapot)->Unit(benchmark::kMillisecond);

}  // namespace
