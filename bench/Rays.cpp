// Ray tests that picking and collision rest on, over many random shapes. The answers are those of other ways to the
// same question, in double precision, except where a ray passes an edge so closely that rounding decides.
#include "math/Ray.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace ql::math;

constexpr std::size_t kShapes = 4096;

struct Ray {
  Vec3 origin, direction;
};
struct Triangle {
  std::array<Vec3, 3> corners;
};
struct Box {
  Vec3 low, high;
};

class Points {
 public:
  Vec3 next(float extent) {
    std::uniform_real_distribution<float> part(-extent, extent);
    const float x = part(random_), y = part(random_);
    return {x, y, part(random_)};
  }

 private:
  std::mt19937 random_{1};
};

Ray nextRay(Points& points) { return {points.next(100), normalize(points.next(1))}; }

/// Volumes of the tetrahedra over the triangle's edges, seen along the ray: equal signs when the line passes inside.
std::array<double, 3> edgeVolumes(const Ray& ray, const Triangle& triangle) {
  std::array<double, 3> volumes{};
  for (std::size_t i = 0; i < 3; ++i) {
    const Vec3 a = subtract(triangle.corners[i], ray.origin), b = subtract(triangle.corners[(i + 1) % 3], ray.origin);
    const double x = double{a.y} * b.z - double{a.z} * b.y, y = double{a.z} * b.x - double{a.x} * b.z,
                 z = double{a.x} * b.y - double{a.y} * b.x;
    volumes[i] = x * ray.direction.x + y * ray.direction.y + z * ray.direction.z;
  }
  return volumes;
}

void rayTriangle(benchmark::State& state) {
  Points points;
  const Ray ray = nextRay(points);
  std::vector<Triangle> triangles;
  for (std::size_t i = 0; i < kShapes; ++i)
    triangles.push_back({{points.next(100), points.next(100), points.next(100)}});
  constexpr double kClose = 1;  // of volumes that are thousands
  for (const Triangle& t : triangles) {
    const auto [low, high] = std::minmax({edgeVolumes(ray, t)[0], edgeVolumes(ray, t)[1], edgeVolumes(ray, t)[2]});
    const bool decided = std::abs(low) > kClose && std::abs(high) > kClose, inside = low > 0 || high < 0;
    if (decided && intersectTriangle(ray.origin, ray.direction, t.corners[0], t.corners[1], t.corners[2]).hit != inside)
      state.SkipWithError("a triangle's answer is wrong");
  }
  for (auto _ : state) {
    float nearest = std::numeric_limits<float>::max();
    for (const Triangle& t : triangles) {
      const TriangleHit hit = intersectTriangle(ray.origin, ray.direction, t.corners[0], t.corners[1], t.corners[2]);
      if (hit.hit) nearest = std::min(nearest, hit.t);
    }
    benchmark::DoNotOptimize(nearest);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kShapes));
}
BENCHMARK(rayTriangle);

/// The part of the ray between each pair of the box's faces, cut together.
bool meetsBox(const Ray& ray, const Box& box) {
  double from = 0, to = std::numeric_limits<double>::infinity();
  const auto cut = [&](double origin, double direction, double low, double high) {
    const double a = (low - origin) / direction, b = (high - origin) / direction;
    from = std::max(from, std::min(a, b));
    to = std::min(to, std::max(a, b));
  };
  cut(ray.origin.x, ray.direction.x, box.low.x, box.high.x);
  cut(ray.origin.y, ray.direction.y, box.low.y, box.high.y);
  cut(ray.origin.z, ray.direction.z, box.low.z, box.high.z);
  return from <= to;
}

void rayBox(benchmark::State& state) {
  Points points;
  const Ray ray = nextRay(points);
  std::vector<Box> boxes;
  for (std::size_t i = 0; i < kShapes; ++i) {
    const Vec3 a = points.next(100), b = points.next(100);
    boxes.push_back({{std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)},
                     {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)}});
  }
  std::size_t differences = 0;
  for (const Box& box : boxes)
    differences += intersectBox(ray.origin, ray.direction, box.low, box.high) != meetsBox(ray, box);
  if (differences > kShapes / 1000) state.SkipWithError("boxes' answers are wrong");
  for (auto _ : state) {
    int hits = 0;
    for (const Box& box : boxes) hits += intersectBox(ray.origin, ray.direction, box.low, box.high);
    benchmark::DoNotOptimize(hits);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kShapes));
}
BENCHMARK(rayBox);

void raySphere(benchmark::State& state) {
  Points points;
  const Ray ray = nextRay(points);
  constexpr float kRadius = 30;
  std::vector<Vec3> centers;
  for (std::size_t i = 0; i < kShapes; ++i) centers.push_back(points.next(100));
  std::size_t differences = 0;
  for (const Vec3& center : centers) {
    // The ray's nearest point to the centre, which is the origin for centres behind it.
    const Vec3 way = subtract(center, ray.origin);
    const double along = std::max(0.0, static_cast<double>(dot(way, ray.direction)));
    const Vec3 apart = subtract(way, scale(ray.direction, static_cast<float>(along)));
    differences += intersectSphere(ray.origin, ray.direction, center, kRadius) != (length(apart) <= kRadius);
  }
  if (differences > kShapes / 1000) state.SkipWithError("spheres' answers are wrong");
  for (auto _ : state) {
    int hits = 0;
    for (const Vec3& center : centers) hits += intersectSphere(ray.origin, ray.direction, center, kRadius);
    benchmark::DoNotOptimize(hits);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kShapes));
}
BENCHMARK(raySphere);

}  // namespace
