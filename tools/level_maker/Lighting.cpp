#include "Lighting.h"

#include "Numbers.h"
#include "Parallel.h"

#include <cstdlib>

namespace ql::maker {
namespace {

constexpr double kLift = 0.6;                    // how far above a surface its light is measured, level units
constexpr std::uint32_t kMissed = 0xFFFFFFFFU;   // a gathering ray that ends in the sky
constexpr std::uint32_t kNoLight = 0xFFFFFFFEU;  // ... or on something without a lightmap

struct Point {
  Vec3 position;
  Vec3 normal;
};

bool insideWinding(const Winding& winding, Vec3 normal, Vec3 p) {
  for (std::size_t i = 0; i < winding.size(); ++i) {
    const Vec3 edge = winding[(i + 1) % winding.size()] - winding[i];
    if (dot(cross(edge, p - winding[i]), normal) > 0.02 * length(edge)) return false;
  }
  return true;
}

/// All light on the samples of one surface or patch.
class ChartLight {
 public:
  ChartLight(const LitScene& scene, const LightingOptions& options, const Chart& chart, std::uint32_t seed)
      : scene_(scene), options_(options), chart_(chart), seed_(seed) {}

  /// Direct light; fills the pages and remembers where each sample lies.
  void direct(LightPages& pages, const Surface* surface, const Patch* patch) {
    const Block& b = chart_.block;
    centres_.resize(static_cast<std::size_t>(b.width * b.height));
    valid_.resize(centres_.size());
    if (surface != nullptr) {
      for (const Brush& brush : scene_.level.brushes)
        if (!brush.liquid && brush.bounds.touches(boundsOf(surface->whole), 1.0)) near_.push_back(&brush);
    } else {
      Bounds box;
      for (const ControlPoint& p : patch->points) box.add(p.position);
      for (const Brush& brush : scene_.level.brushes)
        if (!brush.liquid && brush.bounds.touches(box, 1.0)) near_.push_back(&brush);
    }
    const int grid = options_.subSamples >= 4 ? 2 : 1;
    for (int y = 0; y < b.height; ++y)
      for (int x = 0; x < b.width; ++x) {
        Vec3 sum;
        Point middle{};
        int count = 0;
        for (int sub = 0; sub < grid * grid; ++sub) {
          const double dx = grid == 1 ? 0.0 : (sub % 2 == 0 ? -0.25 : 0.25);
          const double dy = grid == 1 ? 0.0 : (sub / 2 == 0 ? -0.25 : 0.25);
          Point point;
          if (!locate(surface, patch, x + dx, y + dy, point)) continue;
          const std::uint32_t salt = mixBits(seed_ * 65599U + static_cast<std::uint32_t>((y * b.width + x) * 4 + sub));
          sum += lightAt(point, salt);
          middle.position += point.position;
          middle.normal += point.normal;
          ++count;
        }
        const auto i = static_cast<std::size_t>(y * b.width + x);
        if (count == 0) continue;
        valid_[i] = true;
        centres_[i] = {middle.position * (1.0 / count), normalized(middle.normal)};
        pages.at(b.page, b.x + x, b.y + y) = sum * (1.0 / count);
      }
  }

  /// Follows rays from every sample; they do not change from bounce to bounce.
  void shoot() {
    const Block& b = chart_.block;
    const int count = options_.gatherRays;
    ends_.assign(centres_.size() * static_cast<std::size_t>(count), kNoLight);
    materials_.assign(ends_.size(), 0);
    sky_.assign(centres_.size(), {});
    gathered_ = valid_;
    // Indirect light is smooth: on larger charts every other sample is enough, like the black squares of a chess board.
    const bool sparse = b.width >= 8 && b.height >= 8;
    for (int y = 0; y < b.height; ++y)
      for (int x = 0; x < b.width; ++x) {
        const auto i = static_cast<std::size_t>(y * b.width + x);
        if (sparse && (x + y) % 2 != 0 && ((x > 0 && valid_[i - 1]) || (x + 1 < b.width && valid_[i + 1])))
          gathered_[i] = false;
        if (!gathered_[i]) continue;
        const Point& p = centres_[i];
        const Vec3 helper = std::fabs(p.normal.z) > 0.9 ? Vec3{1, 0, 0} : Vec3{0, 0, 1};
        const Vec3 u = normalized(cross(helper, p.normal));
        const Vec3 v = cross(p.normal, u);
        // Sixteen different sets of directions in a 4 x 4 pattern, which the smoothing afterwards averages.
        const auto set = static_cast<std::uint32_t>((x & 3) + 4 * (y & 3));
        const double turn = hashUnit(set, 91);
        const double shift = hashUnit(set, 92);
        for (int k = 0; k < count; ++k) {
          double r2 = (k + 0.5) / count + shift / count - 0.5 / count;
          double angle = radicalInverse(static_cast<std::uint32_t>(k), 2) + turn;
          angle = (angle - std::floor(angle)) * 2.0 * kPi;
          r2 = std::min(r2, 0.9999);
          const double r = std::sqrt(r2);
          const Vec3 direction = u * (r * cosine(angle)) + v * (r * sine(angle)) + p.normal * std::sqrt(1.0 - r2);
          const auto hit = scene_.triangles.nearest(p.position, direction);
          const std::size_t at = i * static_cast<std::size_t>(count) + static_cast<std::size_t>(k);
          if (!hit) {
            ends_[at] = kMissed;
            sky_[i] += skyRadiance(scene_.level.skyLight, direction) * (1.0 / count);
            continue;
          }
          const Triangle& t = scene_.triangles.at(hit->triangle);
          if (t.page < 0) continue;
          const double b0 = 1.0 - hit->b1 - hit->b2;
          const double lx = t.lightmap[0].first * b0 + t.lightmap[1].first * hit->b1 + t.lightmap[2].first * hit->b2;
          const double ly = t.lightmap[0].second * b0 + t.lightmap[1].second * hit->b1 + t.lightmap[2].second * hit->b2;
          const int px = std::clamp(static_cast<int>(lx + 0.5), 0, kPageSize - 1);
          const int py = std::clamp(static_cast<int>(ly + 0.5), 0, kPageSize - 1);
          ends_[at] = static_cast<std::uint32_t>((t.page * kPageSize + py) * kPageSize + px);
          materials_[at] = static_cast<std::uint16_t>(t.material);
        }
      }
  }

  /// Light that arrives from the sky and from the surfaces around, given the light on those; smoothed.
  void gather(const LightPages& lit, LightPages& out) const {
    const Block& b = chart_.block;
    const int count = options_.gatherRays;
    std::vector<Vec3> raw(centres_.size());
    for (std::size_t i = 0; i < raw.size(); ++i) {
      if (!gathered_[i]) continue;
      Vec3 sum;
      for (int k = 0; k < count; ++k) {
        const std::size_t at = i * static_cast<std::size_t>(count) + static_cast<std::size_t>(k);
        if (ends_[at] < kNoLight) sum += lit.samples[ends_[at]] * scene_.albedo[materials_[at]];
      }
      raw[i] = sum * (1.0 / count) + sky_[i];
    }
    // An average over one or two repeats of the direction sets' 4 x 4 pattern.
    const int reach = b.width >= 32 && b.height >= 20 ? 4 : 2;
    const auto weightOf = [&](int offset) { return std::abs(offset) == reach ? 0.5 : 1.0; };
    for (int y = 0; y < b.height; ++y)
      for (int x = 0; x < b.width; ++x) {
        if (!valid_[static_cast<std::size_t>(y * b.width + x)]) continue;
        Vec3 sum;
        double weights = 0.0;
        for (int ny = std::max(0, y - reach); ny <= std::min(b.height - 1, y + reach); ++ny)
          for (int nx = std::max(0, x - reach); nx <= std::min(b.width - 1, x + reach); ++nx) {
            const auto j = static_cast<std::size_t>(ny * b.width + nx);
            if (!gathered_[j]) continue;
            const double w = weightOf(nx - x) * weightOf(ny - y);
            sum += raw[j] * w;
            weights += w;
          }
        out.at(b.page, b.x + x, b.y + y) = sum * (1.0 / weights);
      }
  }

  /// Gives samples that lie in no piece of the surface the light of their neighbours, so that filtering at borders does
  /// not fetch darkness.
  void spread(LightPages& pages) const {
    const Block& b = chart_.block;
    std::vector<bool> known = valid_;
    for (bool again = true; again;) {
      again = false;
      std::vector<bool> next = known;
      for (int y = 0; y < b.height; ++y)
        for (int x = 0; x < b.width; ++x) {
          if (known[static_cast<std::size_t>(y * b.width + x)]) continue;
          Vec3 sum;
          double count = 0;
          for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
              if (x + dx < 0 || y + dy < 0 || x + dx >= b.width || y + dy >= b.height ||
                  !known[static_cast<std::size_t>((y + dy) * b.width + x + dx)])
                continue;
              sum += pages.at(b.page, b.x + x + dx, b.y + y + dy);
              count += 1.0;
            }
          if (count == 0) continue;
          pages.at(b.page, b.x + x, b.y + y) = sum * (1.0 / count);
          next[static_cast<std::size_t>(y * b.width + x)] = true;
          again = true;
        }
      known = std::move(next);
    }
  }

 private:
  bool locate(const Surface* surface, const Patch* patch, double x, double y, Point& out) const {
    const Block& b = chart_.block;
    x = std::clamp(x, 0.02, b.width - 1.02);
    y = std::clamp(y, 0.02, b.height - 1.02);
    if (surface != nullptr) {
      const Vec3 n = surface->plane.normal;
      const Vec3 across = chart_.axes.across;
      const Vec3 down = chart_.axes.down;
      // On a floor the two axes, on a wall too, are at right angles to the normal: the point is their sum.
      Vec3 p = across * (chart_.low0 + x * chart_.step0) + down * (chart_.low1 + y * chart_.step1) +
               n * surface->plane.distance;
      if (std::none_of(surface->pieces.begin(), surface->pieces.end(),
                       [&](const Winding& w) { return insideWinding(w, n, p); }))
        return false;
      out = {p + n * kLift, n};
    } else {
      const SurfacePoint s = evaluatePatch(*patch, x / (b.width - 1), y / (b.height - 1));
      if (length(s.normal) < 0.5) return false;
      out = {s.position + s.normal * kLift, s.normal};
    }
    return std::none_of(near_.begin(), near_.end(),
                        [&](const Brush* brush) { return brush->contains(out.position, 0.05); });
  }

  Vec3 lightAt(const Point& p, std::uint32_t salt) const {
    Vec3 sum = sunAt(p, salt);
    for (std::size_t l = 0; l < scene_.level.lights.size(); ++l)
      sum += lampAt(p, scene_.level.lights[l], mixBits(salt + static_cast<std::uint32_t>(l) * 977U));
    return sum;
  }

  Vec3 sunAt(const Point& p, std::uint32_t salt) const {
    const Sun& sun = scene_.level.sun;
    const double slope = dot(sun.direction, p.normal);
    if (slope <= 0.0 || options_.sunRays <= 0) return {};
    const Vec3 u = normalized(cross({0, 0, 1}, sun.direction));
    const Vec3 v = cross(sun.direction, u);
    int free = 0;
    for (int k = 0; k < options_.sunRays; ++k) {
      const double angle = 2.0 * kPi * (hashUnit(salt, 1) + static_cast<double>(k) / options_.sunRays);
      const double r =
          sun.radius * std::sqrt((k + hashUnit(salt, static_cast<std::uint32_t>(k), 2)) / options_.sunRays);
      if (scene_.triangles.free(p.position,
                                normalized(sun.direction + u * (r * cosine(angle)) + v * (r * sine(angle)))))
        ++free;
    }
    return sun.colour * (slope * free / options_.sunRays);
  }

  Vec3 lampAt(const Point& p, const Light& light, std::uint32_t salt) const {
    const Vec3 way = light.origin - p.position;
    const double squared = dot(way, way);
    const double strength = light.power * 100.0 / (squared + 400.0);
    if (strength < 0.01 || dot(way, p.normal) <= -light.radius) return {};
    double sum = 0.0;
    for (int k = 0; k < options_.lampRays; ++k) {
      const auto index = static_cast<std::uint32_t>(k);
      Vec3 jitter{hashUnit(salt, index, 3) - 0.5, hashUnit(salt, index, 4) - 0.5, hashUnit(salt, index, 5) - 0.5};
      const Vec3 to = way + jitter * (2.0 * light.radius);
      const double distance = length(to);
      const Vec3 direction = to * (1.0 / std::max(distance, 1e-6));
      const double slope = dot(direction, p.normal);
      if (slope > 0.0 && scene_.triangles.free(p.position, direction, distance)) sum += slope;
    }
    return light.colour * (strength * sum / options_.lampRays);
  }

  const LitScene& scene_;
  const LightingOptions& options_;
  const Chart& chart_;
  std::uint32_t seed_;
  std::vector<const Brush*> near_;
  std::vector<Point> centres_;
  std::vector<bool> valid_;     // lies on the surface and in the open
  std::vector<bool> gathered_;  // has rays of its own for indirect light
  std::vector<std::uint32_t> ends_;
  std::vector<std::uint16_t> materials_;
  std::vector<Vec3> sky_;
};

}  // namespace

Vec3 skyRadiance(const SkyLight& sky, Vec3 direction) {
  const double height = std::max(0.0, direction.z);
  return mix(sky.horizon, sky.zenith, std::sqrt(height));
}

LightPages computeLight(const LitScene& scene, int pages, const LightingOptions& options) {
  std::vector<ChartLight> charts;
  std::vector<std::pair<const Surface*, const Patch*>> shapes;
  const auto add = [&](const Chart& chart, const Surface* surface, const Patch* patch) {
    if (chart.block.page < 0) return;
    charts.emplace_back(scene, options, chart, static_cast<std::uint32_t>(charts.size() + 1));
    shapes.emplace_back(surface, patch);
  };
  for (std::size_t i = 0; i < scene.surfaces.size(); ++i) add(scene.surfaceCharts[i], &scene.surfaces[i], nullptr);
  for (std::size_t i = 0; i < scene.patches.size(); ++i) add(scene.patchCharts[i], nullptr, &scene.patches[i]);

  LightPages direct{pages, std::vector<Vec3>(static_cast<std::size_t>(pages * kPageSize * kPageSize))};
  parallelFor(charts.size(), options.threads, [&](std::size_t i) {
    charts[i].direct(direct, shapes[i].first, shapes[i].second);
    charts[i].spread(direct);
    if (options.bounces > 0) charts[i].shoot();
  });
  LightPages total = direct;
  for (int bounce = 0; bounce < options.bounces; ++bounce) {
    LightPages indirect{pages, std::vector<Vec3>(direct.samples.size())};
    parallelFor(charts.size(), options.threads, [&](std::size_t i) {
      charts[i].gather(total, indirect);
      charts[i].spread(indirect);
    });
    for (std::size_t i = 0; i < total.samples.size(); ++i) total.samples[i] = direct.samples[i] + indirect.samples[i];
  }
  return total;
}

std::vector<std::uint8_t> toBytes(const LightPages& pages, double exposure) {
  constexpr double kBrightest = 223.0;  // becomes 255 when loaded
  constexpr double kAdded = 32.0;
  constexpr double kShown = 1.0 / 2.15;  // from light to what a screen is given
  std::vector<std::uint8_t> bytes;
  bytes.reserve(pages.samples.size() * 3);
  for (const Vec3& sample : pages.samples)
    for (int channel = 0; channel < 3; ++channel) {
      const double light = 1.0 - exponential(-exposure * sample[channel]);
      const double shown = 255.0 * power(light, kShown);
      bytes.push_back(static_cast<std::uint8_t>(std::clamp(shown - kAdded, 0.0, kBrightest) + 0.5));
    }
  return bytes;
}

}  // namespace ql::maker
