#include "level/FaceBuilder.h"
#include "level/Q3Bsp.h"
#include "level/Visibility.h"
#include "support/TinyQ3Level.h"

#include <algorithm>
#include <random>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;

/// A street of rooms: the tiny level repeated, each room a cluster that sees its neighbours.
test::TinyQ3Level street(std::int32_t rooms) {
  test::TinyQ3Level tiny, out = tiny;
  out.faces.clear();
  out.leafFaces.clear();
  out.leaves = {tiny.leaves[0]};
  out.clusters = rooms;
  out.bytesPerCluster = (rooms + 7) / 8;
  out.visibility.assign(static_cast<std::size_t>(rooms) * static_cast<std::size_t>(out.bytesPerCluster), 0);
  for (std::int32_t room = 0; room < rooms; ++room) {
    level::Q3Leaf leaf = tiny.leaves[1];
    leaf.cluster = room;
    leaf.mins[0] += 256 * room;
    leaf.maxs[0] += 256 * room;
    leaf.firstLeafFace = static_cast<std::int32_t>(out.leafFaces.size());
    leaf.leafFaceCount = static_cast<std::int32_t>(tiny.faces.size());
    out.leaves.push_back(leaf);
    for (level::Q3Face face : tiny.faces) {
      out.leafFaces.push_back(static_cast<std::int32_t>(out.faces.size()));
      face.texture = room % 2;
      out.faces.push_back(face);
    }
    for (std::int32_t other = std::max(room - 4, 0); other < std::min(room + 5, rooms); ++other)
      out.visibility[static_cast<std::size_t>(room * out.bytesPerCluster + other / 8)] |=
          static_cast<std::uint8_t>(1U << other % 8);
  }
  return out;
}

level::LevelData dataOf(const level::Q3Bsp& file) {
  level::LevelData data;
  data.faces = level::buildFaces(file, 0).records;
  data.leafFaces = file.leafFaces;
  data.visibility = file.visibility;
  for (const level::Q3Leaf& leaf : file.leaves) {
    data.leaves.push_back({leaf.cluster, leaf.mins, leaf.maxs, leaf.firstLeafFace, leaf.leafFaceCount});
    data.leafSpheres.push_back(level::leafSphere(data.leaves.back()));
  }
  return data;
}

void parse(benchmark::State& state) {
  const std::vector<std::byte> file = street(static_cast<std::int32_t>(state.range(0))).bytes();
  if (level::parseQ3Bsp(file).repairs.count != 0) state.SkipWithError("the level is damaged");
  for (auto _ : state) benchmark::DoNotOptimize(level::parseQ3Bsp(file));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(file.size()));
}
BENCHMARK(parse)->RangeMultiplier(4)->Range(16, 1024);

void buildFaces(benchmark::State& state) {
  const std::vector<std::byte> file = street(256).bytes();
  const level::Q3Bsp parsed = level::parseQ3Bsp(file);
  std::size_t vertices = 0;
  for (auto _ : state) {
    const level::BuiltFaces built = level::buildFaces(parsed, static_cast<std::int32_t>(state.range(0)));
    if (built.crowdedFaces != 0) state.SkipWithError("faces were left out");
    vertices += built.vertices.size();
  }
  state.counters["triangles"] = benchmark::Counter(static_cast<double>(vertices / 3), benchmark::Counter::kIsRate);
}
BENCHMARK(buildFaces)->DenseRange(0, 2);

/// A frame in which the list of visible faces is rebuilt: its cost follows what is seen, not the level.
void rebuildVisibleFaces(benchmark::State& state) {
  const std::vector<std::byte> file = street(static_cast<std::int32_t>(state.range(0))).bytes();
  const level::LevelData data = dataOf(level::parseQ3Bsp(file));
  const std::array<math::Plane, 6> open{};
  level::VisibleFaces visible;
  level::View view{{}, {}, math::identity(), math::identity(), open, 10000, true};
  view.position = {64 - 256 * 8, 0, 64};
  for (auto _ : state) {
    view.ticks += 2001;
    visible.update(data, view);
  }
  if (visible.list().size() != 45) state.SkipWithError("nine rooms of five faces should be seen");
}
BENCHMARK(rebuildVisibleFaces)->RangeMultiplier(4)->Range(16, 4096);

/// The engine's own quicksort beside the library's, on as many faces.
void sortFaces(benchmark::State& state, bool library) {
  std::mt19937 random(1);
  std::vector<level::VisibleFace> faces;
  for (std::int32_t i = 0; i < 5000; ++i) faces.push_back({i, static_cast<std::int32_t>(random() % 60)});
  const auto byKey = [](const level::VisibleFace& a, const level::VisibleFace& b) { return a.key < b.key; };
  for (auto _ : state) {
    std::vector<level::VisibleFace> list = faces;
    if (library)
      std::sort(list.begin(), list.end(), byKey);
    else
      level::sortByKey(list);
    if (!std::is_sorted(list.begin(), list.end(), byKey)) state.SkipWithError("not sorted");
  }
}
BENCHMARK_CAPTURE(sortFaces, engine, false);
BENCHMARK_CAPTURE(sortFaces, library, true);

}  // namespace
