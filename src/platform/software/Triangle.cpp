#include "platform/software/Triangle.h"

#include <algorithm>
#include <utility>

namespace ql::software {
namespace {

// With vertices in the guard band, an edge function changes by less than this across a tile: a clamped value keeps its
// sign.
constexpr std::int64_t kEdgeLimit = 1 << 30;

}  // namespace

void setUp(const Pipeline& p, const float* v0, const float* v1, const float* v2, std::int32_t tileX, std::int32_t tileY,
           const Box& area, Triangle& t) {
  std::int64_t twice = signedArea(v0, v1, v2);
  if (twice < 0) {
    std::swap(v1, v2);
    twice = -twice;
  }
  const float* v[3] = {v0, v1, v2};
  const std::int64_t x = std::int64_t{tileX} * 256, y = std::int64_t{tileY} * 256;
  for (int k = 0; k < 3; ++k) {
    const float *from = v[k], *to = v[k == 2 ? 0 : k + 1];
    const std::int32_t a = recordY(from) - recordY(to), b = recordX(to) - recordX(from);
    std::int64_t c = a * (x - recordX(from)) + b * (y - recordY(from));
    if (!(a > 0 || (a == 0 && b > 0))) c -= 1;
    t.a[k] = a;
    t.b[k] = b;
    t.c[k] = static_cast<std::int32_t>(std::clamp<std::int64_t>(c >> 8, -kEdgeLimit, kEdgeLimit));
  }
  const Box box = intersect(pixelBox(v0, v1, v2), area);
  t.x0 = box.left - tileX;
  t.y0 = box.top - tileY;
  t.x1 = box.right - 1 - tileX;
  t.y1 = box.bottom - 1 - tileY;

  // Plane equations by Cramer's rule, in pixels.
  const float scale = 256.0f / static_cast<float>(twice);
  const float x10 = static_cast<float>(recordX(v1) - recordX(v0)) * scale;
  const float x20 = static_cast<float>(recordX(v2) - recordX(v0)) * scale;
  const float y10 = static_cast<float>(recordY(v1) - recordY(v0)) * scale;
  const float y20 = static_cast<float>(recordY(v2) - recordY(v0)) * scale;
  t.originX = static_cast<float>(x - recordX(v0)) * (1.0f / 256.0f);
  t.originY = static_cast<float>(y - recordY(v0)) * (1.0f / 256.0f);
  const float *a0 = v0 + kRecordHead, *a1 = v1 + kRecordHead, *a2 = v2 + kRecordHead;
  t.attributes = p.attributes.count;
  // Records end at a multiple of four, with zeros behind the last attribute.
  for (std::int32_t first = 0; first < t.attributes; first += 4)
    for (std::int32_t i = first; i < first + 4; ++i) {
      const float d1 = a1[i] - a0[i], d2 = a2[i] - a0[i];
      t.value[i] = a0[i];
      t.dx[i] = d1 * y20 - d2 * y10;
      t.dy[i] = d2 * x10 - d1 * x20;
    }
  // Vectors go on to a multiple of their width: what they read there must not be slow to calculate with.
  for (std::int32_t i = (t.attributes + 3) & ~3; i % kAttributeStep != 0; ++i) t.value[i] = t.dx[i] = t.dy[i] = 0;
  t.zMin = std::min({a0[kAttributeZ], a1[kAttributeZ], a2[kAttributeZ]});
  t.zMax = std::max({a0[kAttributeZ], a1[kAttributeZ], a2[kAttributeZ]});

  if (!p.flat) return;
  // Flat colours: vertex 0's value times the plane of 1 / w, so that the division by it gives the value back.
  const auto flatten = [&](std::int32_t first, std::int32_t count) {
    for (std::int32_t i = first; first >= 0 && i < first + count; ++i) {
      const float value = a0[i] / a0[kAttributeQ];
      t.dx[i] = value * t.dx[kAttributeQ];
      t.dy[i] = value * t.dy[kAttributeQ];
    }
  };
  flatten(p.attributes.diffuse, 4);
  flatten(p.attributes.specular, 4);
}

}  // namespace ql::software
