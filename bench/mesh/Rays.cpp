// Rays against a mesh of 29,400 vertices and against many meshes, on one thread. The peers, where they are installed,
// look for the nearest hit of the same triangles; this engine for the first one in order of vertices.
#include "engine/Engine.h"
#include "mesh/Build.h"
#include "mesh/MeshPlacement.h"
#include "mesh/MeshRays.h"
#include "mesh/RayIndex.h"
#include "support/TestPlatform.h"

#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#ifdef QL_HAVE_BULLET
#include "Bullet.h"
#endif
#ifdef QL_HAVE_EMBREE
#include <embree3/rtcore.h>
#endif

namespace {

using namespace ql;
using math::Vec3;

constexpr float kReach = 20000;
constexpr std::size_t kRays = 1 << 14;

struct Ray {
  Vec3 from, direction;
};

/// From a sphere of radius 250 towards points within radius 120.
std::vector<Ray> planetRays() {
  std::mt19937 random(5);
  std::uniform_real_distribution<float> part(-1, 1), radius(0, 120);
  const auto direction = [&] {
    Vec3 v;
    do {
      const float x = part(random), y = part(random);
      v = {x, y, part(random)};
    } while (math::length(v) > 1 || math::length(v) < 0.01f);
    return math::normalize(v);
  };
  std::vector<Ray> rays;
  while (rays.size() < kRays) {
    const Vec3 from = math::scale(direction(), 250), to = math::scale(direction(), radius(random));
    rays.push_back({from, math::normalize(math::subtract(to, from))});
  }
  return rays;
}

/// A bumpy ball of 70 x 70 squares as a list.
struct Planet {
  test::TestMachine machine;
  engine::EngineContext context{machine.platform()};
  std::shared_ptr<mesh::MeshHandle> handle = mesh::allocateMesh(context);
  std::vector<Ray> rays = planetRays();

  Planet() {
    constexpr int kCells = 70;
    const auto at = [](int i, int j) {
      const float u = static_cast<float>(i) / kCells * 6.2831853f, v = static_cast<float>(j) / kCells * 3.1415927f;
      const float r = 100 + 6 * std::sin(9 * u) * std::sin(7 * v) + 2 * std::sin(31 * u + 3) * std::sin(29 * v);
      return Vec3{r * std::sin(v) * std::cos(u), r * std::cos(v), r * std::sin(v) * std::sin(u)};
    };
    for (int j = 0; j < kCells; ++j)
      for (int i = 0; i < kCells; ++i)
        for (const Vec3& p : {at(i, j), at(i, j + 1), at(i + 1, j), at(i + 1, j), at(i, j + 1), at(i + 1, j + 1)})
          mesh::addVertex(context, *handle, {p.x, p.y, p.z}, -1);
    context.collisionPrecision = kReach;
  }
  mesh::MeshRecord& record() { return mesh::meshRecord(context, handle->slot); }
  /// The triangles that the engine tests: every three consecutive vertices.
  std::vector<Vec3> triangles() {
    std::vector<Vec3> all;
    for (std::size_t i = 0; i + 2 < static_cast<std::size_t>(record().vertexCount); ++i)
      for (std::size_t k = 0; k < 3; ++k) {
        const math::NormalVertex& v = record().normalVertices[i + k];
        all.push_back({v.x, v.y, v.z});
      }
    return all;
  }
  bool cast(const Ray& ray) {
    return mesh::collision(context, handle->slot, ray.from, math::add(ray.from, math::scale(ray.direction, 100)),
                           mesh::RayTest::Accurate);
  }
};

void engineRays(benchmark::State& state) {
  Planet planet;
  for (std::size_t i = 0; i < 500; ++i) {
    const Ray& ray = planet.rays[i];
    const Vec3 end = math::add(ray.from, math::scale(ray.direction, 100));
    const Vec3 direction = math::normalize(math::subtract(end, ray.from));
    const auto wanted = mesh::RayIndex::scan(planet.record(), ray.from, direction, kReach);
    planet.context.lastHitNormal = {};
    if (planet.cast(ray) != wanted.has_value() || (wanted && planet.context.lastHitNormal != wanted->normal))
      return state.SkipWithError("the answers are not those of the scan");
  }
  std::size_t i = 0, hits = 0;
  for (auto _ : state) hits += planet.cast(planet.rays[i++ % kRays]);
  state.SetItemsProcessed(state.iterations());
  state.counters["hit"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
}
BENCHMARK(engineRays);

void scanOfAllTriangles(benchmark::State& state) {
  Planet planet;
  std::size_t i = 0;
  for (auto _ : state) {
    const Ray& ray = planet.rays[i++ % kRays];
    benchmark::DoNotOptimize(mesh::RayIndex::scan(planet.record(), ray.from, ray.direction, kReach));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(scanOfAllTriangles);

#ifdef QL_HAVE_EMBREE
void embreeRays(benchmark::State& state) {
  Planet planet;
  const std::vector<Vec3> corners = planet.triangles();
  RTCDevice device = rtcNewDevice("threads=1");
  RTCScene scene = rtcNewScene(device);
  RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
  std::memcpy(
      rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, sizeof(Vec3), corners.size()),
      corners.data(), corners.size() * sizeof(Vec3));
  auto* indices = static_cast<unsigned*>(
      rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 12, corners.size() / 3));
  for (std::size_t i = 0; i < corners.size(); ++i) indices[i] = static_cast<unsigned>(i);
  rtcCommitGeometry(geometry);
  rtcAttachGeometry(scene, geometry);
  rtcReleaseGeometry(geometry);
  rtcCommitScene(scene);
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  std::size_t i = 0, hits = 0;
  for (auto _ : state) {
    const Ray& from = planet.rays[i++ % kRays];
    RTCRayHit ray{};
    ray.ray.org_x = from.from.x, ray.ray.org_y = from.from.y, ray.ray.org_z = from.from.z;
    ray.ray.dir_x = from.direction.x, ray.ray.dir_y = from.direction.y, ray.ray.dir_z = from.direction.z;
    ray.ray.tfar = kReach;
    ray.ray.mask = ~0u;
    ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    rtcIntersect1(scene, &context, &ray);
    hits += ray.hit.geomID != RTC_INVALID_GEOMETRY_ID;
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["hit"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
  rtcReleaseScene(scene);
  rtcReleaseDevice(device);
}
BENCHMARK(embreeRays);
#endif

#ifdef QL_HAVE_BULLET
void bulletRays(benchmark::State& state) {
  Planet planet;
  const std::vector<Vec3> corners = planet.triangles();
  const bench::BulletWorld world(corners);
  std::size_t i = 0, hits = 0;
  for (auto _ : state) {
    const Ray& ray = planet.rays[i++ % kRays];
    hits += world.ray(ray.from, ray.direction, kReach);
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["hit"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
}
BENCHMARK(bulletRays);
#endif

/// Boxes everywhere, a ray that meets few of them.
void firstOfManyMeshes(benchmark::State& state) {
  test::TestMachine machine;
  engine::EngineContext context{machine.platform()};
  std::vector<std::shared_ptr<mesh::MeshHandle>> handles;
  std::mt19937 random(9);
  std::uniform_real_distribution<float> part(-1000, 1000);
  const auto point = [&] {
    const float x = part(random), y = part(random);
    return Vec3{x, y, part(random)};
  };
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    mesh::MeshHandle& mesh = *handles.emplace_back(mesh::allocateMesh(context));
    mesh::addWall(context, mesh, 0, {-5, -5, -5, 10}, {5, 5, -5, 10}, {});
    mesh::setPosition(mesh::meshRecord(context, mesh.slot), point());
    mesh::rebuildMatrix(context, mesh.slot);
    mesh::computeBounds(context, mesh);
  }
  const auto test = static_cast<mesh::RayTest>(state.range(1));
  context.collisionPrecision = kReach;
  std::vector<std::pair<Vec3, Vec3>> rays(1024);
  for (auto& [from, to] : rays) from = point(), to = point();
  for (const auto& [from, to] : rays) {
    std::int16_t wanted = 0;
    for (std::size_t slot = 1; slot <= handles.size() && wanted == 0; ++slot)
      if (mesh::collision(context, static_cast<std::int16_t>(slot), from, to, test))
        wanted = static_cast<std::int16_t>(slot);
    if (mesh::firstMeshHit(context, from, to, test) != wanted) return state.SkipWithError("not the first mesh");
  }
  std::size_t i = 0;
  for (auto _ : state) {
    const auto& [from, to] = rays[i++ % rays.size()];
    benchmark::DoNotOptimize(mesh::firstMeshHit(context, from, to, test));
  }
}
BENCHMARK(firstOfManyMeshes)->ArgNames({"meshes", "test"})->ArgsProduct({{100, 1000, 10'000}, {1, 3}});

}  // namespace
