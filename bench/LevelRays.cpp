// Rays and spheres against a level, one thread: from points of its open leaves in random directions, or given ones.
//
//   bench_level_rays [--level maps/NAME.bsp] [--rays FILE] [benchmark options]
//
// A file of rays holds single floats: origin and direction of each, file coordinates. Bullet, where it is installed,
// casts the rays of DetectCollision/10000 to their nearest hits and sweeps spheres.
#include "Arguments.h"
#include "level/Collision.h"
#include "level/FaceBuilder.h"
#include "level/Q3Bsp.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>
#include <span>

#include <benchmark/benchmark.h>

#ifdef QL_HAVE_BULLET
#include "Bullet.h"
#endif

namespace {

using namespace ql;
using math::Vec3;

struct Ray {
  Vec3 origin, direction;  ///< in the level's space
};

level::LevelData load(const std::string& name) {
  const std::vector<std::byte> bytes = host::readFile(name);
  const level::Q3Bsp file = level::parseQ3Bsp(bytes);
  level::LevelData data;
  level::BuiltFaces built = level::buildFaces(file, 2);
  data.faces = std::move(built.records);
  for (const level::LevelVertex& vertex : built.vertices) data.positions.push_back({vertex.x, vertex.y, vertex.z});
  data.leafFaces = file.leafFaces;
  data.planes = file.planes;
  data.nodes = file.nodes;
  data.models = file.models;
  for (const level::Q3Leaf& leaf : file.leaves)
    data.leaves.push_back(
        {leaf.cluster, leaf.mins, leaf.maxs, leaf.firstLeafFace, leaf.leafFaceCount, leaf.area == -1});
  return data;
}

std::vector<Ray> raysIn(const level::LevelData& data) {
  constexpr std::size_t kRays = 1 << 14;
  std::mt19937 random(1);
  std::uniform_real_distribution<float> part(0, 1);
  std::vector<const level::Leaf*> open;
  for (const level::Leaf& leaf : data.leaves)
    if (leaf.cluster >= 0 && leaf.leafFaceCount > 0) open.push_back(&leaf);
  std::vector<Ray> rays;
  while (rays.size() < kRays && !open.empty()) {
    const level::Leaf& leaf = *open[random() % open.size()];
    const auto inside = [&](std::size_t axis) {
      return static_cast<float>(leaf.mins[axis]) + static_cast<float>(leaf.maxs[axis] - leaf.mins[axis]) * part(random);
    };
    const float x = inside(0), y = inside(1), z = inside(2);
    const float dx = part(random) - 0.5f, dy = part(random) - 0.5f, dz = part(random) - 0.5f;
    rays.push_back({{-x, y, z}, math::normalize(Vec3{dx, dy, dz})});
  }
  return rays;
}

std::vector<Ray> readRays(const std::string& name) {
  const std::vector<std::byte> bytes = host::readFile(name);
  std::vector<Ray> rays(std::min(bytes.size() / sizeof(Ray), std::size_t{1} << 15));
  std::memcpy(rays.data(), bytes.data(), rays.size() * sizeof(Ray));
  for (Ray& ray : rays) ray.origin.x = -ray.origin.x, ray.direction.x = -ray.direction.x;
  return rays;
}

struct Case {
  level::LevelData data;
  std::vector<Ray> rays;
  level::FaceCollision collision;
  level::VisibleFaces visible;
};

void finish(benchmark::State& state, std::size_t rays, std::size_t hits) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(rays));
  state.counters["hit"] = static_cast<double>(hits) / static_cast<double>(rays);
}

/// @param limit as the collision precision @param down straight down, as for altitudes
void firstHit(benchmark::State& state, Case& level, float limit, bool down) {
  std::size_t hits = 0;
  for (auto _ : state) {
    hits = 0;
    for (const Ray& ray : level.rays)
      hits +=
          level.collision.firstHit(level.data, level.visible, ray.origin, down ? Vec3{0, 0, -1} : ray.direction, limit)
              .has_value();
  }
  finish(state, level.rays.size(), hits);
}

void lineSight(benchmark::State& state, Case& level) {
  std::size_t free = 0;
  for (auto _ : state) {
    free = 0;
    for (const Ray& ray : level.rays) {
      const Vec3 end = math::add(ray.origin, math::scale(ray.direction, 20000));
      free += level::lineSight(level.data, {-ray.origin.x, ray.origin.y, ray.origin.z}, {-end.x, end.y, end.z}, 0);
    }
  }
  finish(state, level.rays.size(), level.rays.size() - free);
}

void moveSphere(benchmark::State& state, Case& level, float radius) {
  std::size_t hits = 0;
  level::SphereDescent descent;
  for (auto _ : state) {
    hits = 0;
    for (const Ray& ray : level.rays) {
      const Vec3 end = math::add(ray.origin, math::scale(ray.direction, radius));
      level::descendSphere(level.data, {-end.x, end.y, end.z}, radius, false, descent);
      const auto hit = level.collision.nearestHit(level.data, descent.touched, ray.origin, ray.direction, radius);
      hits += hit.has_value() || descent.solid;
    }
  }
  finish(state, level.rays.size(), hits);
}

void makeIndex(benchmark::State& state, Case& level) {
  for (auto _ : state) {
    level.collision.reset();
    benchmark::DoNotOptimize(level.collision.firstHit(level.data, level.visible, {}, {0, 0, -1}, 1));
  }
}

#ifdef QL_HAVE_BULLET
std::vector<Vec3> cornersOf(const level::LevelData& data) {
  std::vector<Vec3> corners;
  for (const level::FaceRecord& face : data.faces)
    for (std::uint32_t k = 0; k < face.triangleCount; ++k)
      for (const Vec3& corner : level::triangleCorners(data, face, k)) corners.push_back(corner);
  return corners;
}

/// @param radius of a sphere that moves as far as AdvancedSphereCollision looks; 0 casts rays
void bullet(benchmark::State& state, Case& level, float radius) {
  const std::vector<Vec3> corners = cornersOf(level.data);
  const bench::BulletWorld world(corners);
  std::size_t hits = 0, casts = std::min<std::size_t>(level.rays.size(), 4096);
  for (auto _ : state) {
    hits = 0;
    for (const Ray& ray : std::span(level.rays).first(casts))
      hits += radius > 0 ? world.sweep(radius, ray.origin, ray.direction, radius)
                         : world.ray(ray.origin, ray.direction, 10000);
  }
  finish(state, casts, hits);
}
#endif

}  // namespace

int main(int argc, char** argv) {
  std::map<std::string, std::string, std::less<>> values{{"level", QL_ASSETS_DIR "/maps/court.bsp"}, {"rays", ""}};
  if (!ql::bench::readArguments(argc, argv, values)) return 2;
  Case level;
  try {
    level.data = load(values["level"]);
    level.rays = values["rays"].empty() ? raysIn(level.data) : readRays(values["rays"]);
  } catch (const host::FileFault& fault) {
    std::fprintf(stderr, "bench_level_rays: %s: %s\n", values["level"].c_str(), fault.what());
    return 3;
  }
  const auto add = [&](const char* name, auto run) { benchmark::RegisterBenchmark(name, run); };
  add("makeIndex", [&](benchmark::State& state) { makeIndex(state, level); });
  add("DetectCollision/30", [&](benchmark::State& state) { firstHit(state, level, 30, false); });
  add("DetectCollision/10000", [&](benchmark::State& state) { firstHit(state, level, 10000, false); });
  add("GetAltitudeFromPos", [&](benchmark::State& state) { firstHit(state, level, 10000, true); });
  add("LineSight", [&](benchmark::State& state) { lineSight(state, level); });
  for (const float radius : {4.0f, 16.0f, 64.0f})
    add(("AdvancedSphereCollision/" + std::to_string(static_cast<int>(radius))).c_str(),
        [&, radius](benchmark::State& state) { moveSphere(state, level, radius); });
#ifdef QL_HAVE_BULLET
  for (const float radius : {0.0f, 4.0f, 16.0f, 64.0f})
    add(radius > 0 ? ("bulletSweep/" + std::to_string(static_cast<int>(radius))).c_str() : "bulletRay",
        [&, radius](benchmark::State& state) { bullet(state, level, radius); });
#endif
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
