#include "platform/software/Clip.h"

#include <cmath>

namespace ql::software {
namespace {

constexpr std::uint32_t kPlanes[] = {outcode::kNear,       outcode::kFar,      outcode::kBehind,
                                     outcode::kGuardLeft,  outcode::kGuardTop, outcode::kGuardRight,
                                     outcode::kGuardBottom};

ClipVertex cut(const ClipVertex& inside, const ClipVertex& outside, float inner, float outer) {
  const float t = inner / (inner - outer);
  const auto mix = [t](float a, float b) { return a + (b - a) * t; };
  ClipVertex out;
  out.x = mix(inside.x, outside.x);
  out.y = mix(inside.y, outside.y);
  out.z = mix(inside.z, outside.z);
  out.w = mix(inside.w, outside.w);
  for (std::size_t i = 0; i < out.attributes.size(); ++i)
    out.attributes[i] = mix(inside.attributes[i], outside.attributes[i]);
  out.pointSize = inside.pointSize;
  return out;
}

bool finite(const ClipVertex& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z) && std::isfinite(v.w);
}

}  // namespace

void clip(const Pipeline& pipeline, ClipPolygon& polygon, std::uint32_t codes) {
  for (const std::uint32_t plane : kPlanes) {
    if (!(codes & plane)) continue;
    ClipPolygon out;
    for (std::size_t i = 0; i < polygon.count; ++i) {
      const ClipVertex& a = polygon.corners[i];
      const ClipVertex& b = polygon.corners[i + 1 < polygon.count ? i + 1 : 0];
      const float da = planeDistance(pipeline, a, plane), db = planeDistance(pipeline, b, plane);
      if (out.count + 2 > out.corners.size()) break;  // only rounding could get here
      if (da >= 0) out.corners[out.count++] = a;
      if ((da >= 0) != (db >= 0)) out.corners[out.count++] = da >= 0 ? cut(a, b, da, db) : cut(b, a, db, da);
    }
    polygon = out;
  }
  for (std::size_t i = 0; i < polygon.count; ++i)
    if (!finite(polygon.corners[i])) polygon.count = 0;
  if (polygon.count < 3) polygon.count = 0;
}

bool clip(const Pipeline& pipeline, ClipVertex& a, ClipVertex& b, std::uint32_t codes) {
  for (const std::uint32_t plane : kPlanes) {
    if (!(codes & plane)) continue;
    const float da = planeDistance(pipeline, a, plane), db = planeDistance(pipeline, b, plane);
    if (!(da >= 0) && !(db >= 0)) return false;
    if (!(da >= 0)) a = cut(b, a, db, da);
    if (!(db >= 0)) b = cut(a, b, da, db);
  }
  return finite(a) && finite(b);
}

}  // namespace ql::software
