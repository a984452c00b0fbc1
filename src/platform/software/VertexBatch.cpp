#include "platform/software/VertexBatch.h"

#include "platform/software/FogFactor.h"
#include "platform/software/Numeric.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace ql::software {
namespace {

template <class T>
T load(const std::byte* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

void loadVectors(const VertexBatch& batch, std::int32_t offset, Vectors& out) {
  for (int i = 0; i < kLanes; ++i) {
    const auto v = load<math::Vec3>(batch.source[static_cast<std::size_t>(i)] + offset);
    out.x[i] = v.x;
    out.y[i] = v.y;
    out.z[i] = v.z;
  }
}
void loadFloats(const VertexBatch& batch, std::int32_t offset, Lanes<float>& out) {
  for (int i = 0; i < kLanes; ++i) out[i] = load<float>(batch.source[static_cast<std::size_t>(i)] + offset);
}
void loadWords(const VertexBatch& batch, std::int32_t offset, Lanes<std::uint32_t>& out) {
  for (int i = 0; i < kLanes; ++i) out[i] = load<std::uint32_t>(batch.source[static_cast<std::size_t>(i)] + offset);
}
void fill(Lanes<float>& out, float value) {
  for (int i = 0; i < kLanes; ++i) out[i] = value;
}

// Row vectors: a component of the result is the sum along a column.
void transformColumn(const Vectors& v, float m1, float m2, float m3, float m4, Lanes<float>& out) {
  for (int i = 0; i < kLanes; ++i) out[i] = v.x[i] * m1 + v.y[i] * m2 + v.z[i] * m3 + m4;
}

// From the screen back to before the division.
void unproject(VertexBatch& v) {
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

void project(const Pipeline& p, VertexBatch& v) {
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

void enterCameraSpace(const Pipeline& p, VertexBatch& v) {
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
    loadVectors(v, p.layout.normal, normal);
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

void colors(const Pipeline& p, VertexBatch& v) {
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
void fog(const Pipeline& p, VertexBatch& v) {
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

void pointSizes(const Pipeline& p, VertexBatch& v) {
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

}  // namespace

void normalize(Vectors& v) {
  for (int i = 0; i < kLanes; ++i) {
    const float square = v.x[i] * v.x[i] + v.y[i] * v.y[i] + v.z[i] * v.z[i];
    const float scale = square > 0 ? 1.0f / std::sqrt(square) : 1.0f;
    v.x[i] *= scale;
    v.y[i] *= scale;
    v.z[i] *= scale;
  }
}

void loadColors(const VertexBatch& batch, std::int32_t offset, Lanes<float>* out) {
  Lanes<std::uint32_t> argb;
  loadWords(batch, offset, argb);
  for (int c = 0; c < 4; ++c)
    for (int i = 0; i < kLanes; ++i)
      out[c][i] = static_cast<float>(static_cast<std::int32_t>(argb[i] >> (c * 8) & 255));
}

void readBatch(const Pipeline& p, const std::byte* source, std::size_t stride, std::size_t count, VertexBatch& out) {
  for (std::size_t i = 0; i < kLanes; ++i) out.source[i] = source + std::min(i, count - 1) * stride;
  loadVectors(out, 0, out.position);
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

}  // namespace ql::software
