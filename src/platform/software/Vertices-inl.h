/// @file
/// From vertices in memory to records. @see Vertices.h
#if defined(QL_VERTICES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_VERTICES_INL_H
#undef QL_VERTICES_INL_H
#else
#define QL_VERTICES_INL_H
#endif

#include "platform/software/FogFactor.h"
#include "platform/software/Lighting-inl.h"
#include "platform/software/TextureCoordinates-inl.h"
#include "platform/software/Vertices.h"

#include <algorithm>
#include <limits>

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

// Row vectors: a component of the result is the sum along a column.
inline void transformColumn(const Vectors& v, float m1, float m2, float m3, float m4, Lanes<float>& out) {
  for (int i = 0; i < kLanes; ++i) out[i] = v.x[i] * m1 + v.y[i] * m2 + v.z[i] * m3 + m4;
}

// From the screen back to before the division.
inline void unproject(VertexBatch& v) {
  Lanes<float> rhw;
  loadFloats(v, 12, rhw);
  for (int i = 0; i < kLanes; ++i) {
    const bool usable = rhw[i] > 0 && rhw[i] <= std::numeric_limits<float>::max();
    const float w = usable ? 1.0f / rhw[i] : 1.0f;
    v.w[i] = w;
    v.x[i] = v.position.x[i] * w;
    v.y[i] = v.position.y[i] * w;
    v.z[i] = v.position.z[i] * w;
  }
}

inline void project(const Pipeline& p, VertexBatch& v) {
  const math::Mat4& m = p.clip;
  transformColumn(v.position, m.m11, m.m21, m.m31, m.m41, v.x);
  transformColumn(v.position, m.m12, m.m22, m.m32, m.m42, v.y);
  transformColumn(v.position, m.m13, m.m23, m.m33, m.m43, v.z);
  transformColumn(v.position, m.m14, m.m24, m.m34, m.m44, v.w);
  const float halfWidth = p.screen.halfWidth, halfHeight = p.screen.halfHeight;
  const float centerX = p.screen.centerX, centerY = p.screen.centerY;
  for (int i = 0; i < kLanes; ++i) {
    v.x[i] = v.x[i] * halfWidth + centerX * v.w[i];
    v.y[i] = centerY * v.w[i] - v.y[i] * halfHeight;
  }
}

inline void enterCameraSpace(const Pipeline& p, VertexBatch& v) {
  const CameraSpace& c = p.camera;
  if (c.position) {
    const math::Mat4& m = c.view;
    transformColumn(v.position, m.m11, m.m21, m.m31, m.m41, v.seen.x);
    transformColumn(v.position, m.m12, m.m22, m.m32, m.m42, v.seen.y);
    transformColumn(v.position, m.m13, m.m23, m.m33, m.m43, v.seen.z);
    for (int i = 0; i < kLanes; ++i)
      v.distance[i] = std::sqrt(v.seen.x[i] * v.seen.x[i] + v.seen.y[i] * v.seen.y[i] + v.seen.z[i] * v.seen.z[i]);
  }
  if (c.normal && p.layout.normal >= 0) {
    Vectors normal;
    loadVectors(v, p.layout.normal, p.layout.size, normal);
    const math::Mat4& m = c.normalMatrix;
    transformColumn(normal, m.m11, m.m21, m.m31, 0, v.normal.x);
    transformColumn(normal, m.m12, m.m22, m.m32, 0, v.normal.y);
    transformColumn(normal, m.m13, m.m23, m.m33, 0, v.normal.z);
    if (c.normalizes) normalize(v.normal);
  } else if (c.normal) {
    for (Lanes<float>* component : {&v.normal.x, &v.normal.y, &v.normal.z}) fill(*component, 0);
  }
  if (c.toEye && c.localViewer) {
    for (int i = 0; i < kLanes; ++i) {
      const float scale = v.distance[i] > 0 ? -1.0f / v.distance[i] : 0.0f;
      v.toEye.x[i] = v.seen.x[i] * scale;
      v.toEye.y[i] = v.seen.y[i] * scale;
      v.toEye.z[i] = v.seen.z[i] * scale;
    }
  } else if (c.toEye) {
    fill(v.toEye.x, 0);
    fill(v.toEye.y, 0);
    fill(v.toEye.z, -1);
  }
}

inline void colors(const Pipeline& p, VertexBatch& v) {
  const Attributes& a = p.attributes;
  if (a.diffuse < 0 && a.specular < 0) return;
  Lanes<float>* diffuse = a.diffuse >= 0 ? v.attributes + a.diffuse : nullptr;
  Lanes<float>* specular = a.specular >= 0 ? v.attributes + a.specular : nullptr;
  if (!p.lighting.enabled) {
    if (diffuse) loadColors(v, p.layout.diffuse, diffuse);
    if (specular) loadColors(v, p.layout.specular, specular);
    return;
  }
  VertexColors own;
  if (p.lighting.reads(MaterialColor::Source::Diffuse)) loadColors(v, p.layout.diffuse, own.diffuse);
  if (p.lighting.reads(MaterialColor::Source::Specular)) loadColors(v, p.layout.specular, own.specular);
  light(p.lighting, v, own, diffuse, specular);
}

// The fog factor of vertices, 0 (all fog) to 255.
inline void fog(const Pipeline& p, VertexBatch& v) {
  Lanes<float>& out = v.attributes[p.attributes.fog];
  if (p.fog.mode != device::FogMode::None) {
    for (int i = 0; i < kLanes; ++i)
      out[i] = fogFactor(p.fog, p.fog.range ? v.distance[i] : std::fabs(v.seen.z[i])) * 255.0f;
  } else if (p.layout.specular >= 0) {
    Lanes<std::uint32_t> argb;
    loadWords(v, p.layout.specular, argb);
    for (int i = 0; i < kLanes; ++i) out[i] = static_cast<float>(static_cast<std::int32_t>(argb[i] >> 24));
  } else {
    fill(out, 0);
  }
}

inline void pointSizes(const Pipeline& p, VertexBatch& v) {
  const PointSize& s = p.point;
  Lanes<float> size;
  if (p.layout.pointSize >= 0)
    loadFloats(v, p.layout.pointSize, size);
  else
    fill(size, s.size);
  if (s.scales)
    for (int i = 0; i < kLanes; ++i) {
      const float d = v.distance[i], shrink = s.a + d * (s.b + d * s.c);
      const float root = std::sqrt(shrink > 0 ? shrink : 1.0f);
      size[i] = s.height * size[i] / root;
    }
  for (int i = 0; i < kLanes; ++i) v.pointSize[i] = clampTo(size[i], s.least, s.most);
}

inline void readBatch(const Pipeline& p, const std::byte* source, std::size_t stride, std::size_t count,
                      VertexBatch& out) {
  for (std::size_t i = 0; i < kLanes; ++i) out.source[i] = source + std::min(i, count - 1) * stride;
  loadVectors(out, 0, p.layout.size, out.position);
  if (p.layout.transformed) {
    unproject(out);
  } else {
    project(p, out);
    enterCameraSpace(p, out);
  }
  colors(p, out);
  if (p.attributes.fog >= 0) fog(p, out);
  for (std::size_t stage = 0; stage < device::kStages; ++stage)
    if (p.attributes.uv[stage] >= 0) textureCoordinates(p, stage, out);
  pointSizes(p, out);
}

// On which outer sides of which planes vertices lie.
inline void outcodes(const Pipeline& p, const VertexBatch& v, Lanes<std::uint32_t>& out) {
  const auto outside = [&](std::uint32_t bit, auto&& is) HWY_ATTR {
    for (int i = 0; i < kLanes; ++i) out[i] |= is(i) ? bit : 0u;
  };
  // One non-finite number makes the sum of products with 0 not a number.
  for (int i = 0; i < kLanes; ++i)
    out[i] = v.x[i] * 0 + v.y[i] * 0 + (v.z[i] * 0 + v.w[i] * 0) == 0 ? 0u : outcode::kNotFinite;
  const auto left = static_cast<float>(p.scissor.left), top = static_cast<float>(p.scissor.top);
  const auto right = static_cast<float>(p.scissor.right - 1), bottom = static_cast<float>(p.scissor.bottom - 1);
  outside(outcode::kLeft, [&](int i) HWY_ATTR { return v.x[i] < left * v.w[i]; });
  outside(outcode::kTop, [&](int i) HWY_ATTR { return v.y[i] < top * v.w[i]; });
  outside(outcode::kRight, [&](int i) HWY_ATTR { return v.x[i] > right * v.w[i]; });
  outside(outcode::kBottom, [&](int i) HWY_ATTR { return v.y[i] > bottom * v.w[i]; });
  // As planeDistance has them.
  const ScreenTransform s = p.screen;
  outside(outcode::kBehind, [&](int i) HWY_ATTR { return v.w[i] - kSmallestW < 0; });
  outside(outcode::kGuardLeft, [&](int i) HWY_ATTR { return v.x[i] - s.guardLeft * v.w[i] < 0; });
  outside(outcode::kGuardTop, [&](int i) HWY_ATTR { return v.y[i] - s.guardTop * v.w[i] < 0; });
  outside(outcode::kGuardRight, [&](int i) HWY_ATTR { return s.guardRight * v.w[i] - v.x[i] < 0; });
  outside(outcode::kGuardBottom, [&](int i) HWY_ATTR { return s.guardBottom * v.w[i] - v.y[i] < 0; });
  if (p.layout.transformed) return;
  outside(outcode::kNear, [&](int i) HWY_ATTR { return v.z[i] < 0; });
  outside(outcode::kFar, [&](int i) HWY_ATTR { return v.w[i] - v.z[i] < 0; });
}

// @see roundToInt
inline void toNearest(const Lanes<float>& from, Lanes<std::int32_t>& out) {
#if HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
  for (int i = 0; i < kLanes; i += kWidth) hn::Store(nearest(hn::Load(kFloat, from.v + i)), kInt, out.v + i);
#else
  for (int i = 0; i < kLanes; ++i) out[i] = roundToInt(from[i]);
#endif
}

// As writeRecord does it, for all lanes; those that need clipping get some numbers.
inline void divide(const Pipeline& p, VertexBatch& v, Lanes<std::int32_t>& x, Lanes<std::int32_t>& y) {
  const ScreenTransform s = p.screen;
  Lanes<float>&z = v.attributes[kAttributeZ], &q = v.attributes[kAttributeQ];
  for (int i = 0; i < kLanes; ++i) q[i] = 1.0f / (v.w[i] < kSmallestW ? kSmallestW : v.w[i]);
  for (int i = 0; i < kLanes; ++i) {
    v.x[i] = clampTo(v.x[i] * q[i], s.guardLeft, s.guardRight) * 256.0f;
    v.y[i] = clampTo(v.y[i] * q[i], s.guardTop, s.guardBottom) * 256.0f;
  }
  toNearest(v.x, x);
  toNearest(v.y, y);
  for (int i = 0; i < kLanes; ++i) {
    const float depth = depthOf(v.z[i] * q[i] * s.depthZ + s.minZ) - s.bias;
    z[i] = depth > 0 ? depth : 0.0f;
  }
  for (std::int32_t k = 2; k < p.attributes.count; ++k)
    for (int i = 0; i < kLanes; ++i) v.attributes[k][i] *= q[i];
}

inline ClipVertex readVertex(const Pipeline& p, const std::byte* source) {
  VertexBatch batch;
  readBatch(p, source, 0, 1, batch);
  ClipVertex v;
  v.x = batch.x[0];
  v.y = batch.y[0];
  v.z = batch.z[0];
  v.w = batch.w[0];
  for (std::int32_t i = 2; i < p.attributes.count; ++i)
    v.attributes[static_cast<std::size_t>(i - 2)] = batch.attributes[i][0];
  v.pointSize = batch.pointSize[0];
  return v;
}

inline void writeRecord(const Pipeline& p, const ClipVertex& v, float* record) {
  const ScreenTransform& s = p.screen;
  const float q = 1.0f / std::max(v.w, kSmallestW);
  // The clamp only trims what rounding may have added: edge functions rely on it.
  const std::int32_t x = roundToInt(clampTo(v.x * q, s.guardLeft, s.guardRight) * 256.0f);
  const std::int32_t y = roundToInt(clampTo(v.y * q, s.guardTop, s.guardBottom) * 256.0f);
  const float z = depthOf(v.z * q * s.depthZ + s.minZ) - s.bias;
  record[kRecordX] = std::bit_cast<float>(x);
  record[kRecordY] = std::bit_cast<float>(y);
  record[kRecordOutcode] = 0;
  record[kRecordPointSize] = v.pointSize;
  float* a = record + kRecordHead;
  a[kAttributeZ] = z > 0 ? z : 0.0f;
  a[kAttributeQ] = q;
  for (std::int32_t i = 2; i < p.attributes.count; ++i) a[i] = v.attributes[static_cast<std::size_t>(i - 2)] * q;
  for (std::int32_t i = p.attributes.count; i < p.attributes.recordFloats() - kRecordHead; ++i) a[i] = 0;
}

/// Writes four neighbouring words of 16 records.
inline void storeWords(const Lanes<float>& a, const Lanes<float>& b, const Lanes<float>& c, const Lanes<float>& d,
                       float* records, std::size_t floats, std::size_t lanes) {
#if HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
  if (lanes == kLanes) {
    storeFours(a.v, b.v, c.v, d.v, records, floats);
    return;
  }
#endif
  for (std::size_t lane = 0; lane < lanes; ++lane, records += floats) {
    const auto i = static_cast<int>(lane);
    records[0] = a[i];
    records[1] = b[i];
    records[2] = c[i];
    records[3] = d[i];
  }
}

/// Makes records of count vertices. Of those that must be clipped or dropped only the outcode means anything.
/// @param places where they also shall be told, of at most kPlaces; null: nowhere
inline void transformVertices(const Pipeline& p, const std::byte* source, std::size_t stride, std::size_t count,
                              float* records, Places* places) {
  const auto floats = static_cast<std::size_t>(p.attributes.recordFloats());
  VertexBatch batch;
  Lanes<std::uint32_t> codes;
  Lanes<std::int32_t> x, y;
  Lanes<float> head[3];
  for (std::int32_t k = p.attributes.count; k % 4 != 0; ++k) fill(batch.attributes[k], 0);
  for (std::size_t first = 0; first < count; first += kLanes) {
    const std::size_t lanes = std::min<std::size_t>(kLanes, count - first);
    readBatch(p, source + first * stride, stride, lanes, batch);
    outcodes(p, batch, codes);
    divide(p, batch, x, y);
    for (int i = 0; i < kLanes; ++i) {
      head[0][i] = std::bit_cast<float>(x[i]);
      head[1][i] = std::bit_cast<float>(y[i]);
      head[2][i] = std::bit_cast<float>(codes[i]);
    }
    storeWords(head[0], head[1], head[2], batch.pointSize, records, floats, lanes);
    const Lanes<float>* a = batch.attributes;
    for (std::int32_t k = 0; k < p.attributes.count; k += 4)
      storeWords(a[k], a[k + 1], a[k + 2], a[k + 3], records + kRecordHead + k, floats, lanes);
    records += lanes * floats;
    if (!places) continue;
    for (int i = 0; i < kLanes; ++i) {
      places->x[first + static_cast<std::size_t>(i)] = x[i];
      places->y[first + static_cast<std::size_t>(i)] = y[i];
      places->outcode[first + static_cast<std::size_t>(i)] = codes[i];
    }
  }
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
