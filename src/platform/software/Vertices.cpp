#include "platform/software/Vertices.h"

#include "platform/software/Numeric.h"
#include "platform/software/VertexBatch.h"

#include <algorithm>

namespace ql::software {
namespace {

// Nothing nearer to the eye's plane is drawn, whatever the projection says.
constexpr float kSmallestW = 1e-8f;

// On which outer sides of which planes vertices lie.
void outcodes(const Pipeline& p, const VertexBatch& v, Lanes<std::uint32_t>& out) {
  const auto outside = [&](std::uint32_t bit, auto&& is) {
    for (int i = 0; i < kLanes; ++i) out[i] |= is(i) ? bit : 0u;
  };
  // One non-finite number makes the sum of products with 0 not a number.
  for (int i = 0; i < kLanes; ++i)
    out[i] = v.x[i] * 0 + v.y[i] * 0 + (v.z[i] * 0 + v.w[i] * 0) == 0 ? 0u : outcode::kNotFinite;
  const auto left = static_cast<float>(p.scissor.left), top = static_cast<float>(p.scissor.top);
  const auto right = static_cast<float>(p.scissor.right - 1), bottom = static_cast<float>(p.scissor.bottom - 1);
  outside(outcode::kLeft, [&](int i) { return v.x[i] < left * v.w[i]; });
  outside(outcode::kTop, [&](int i) { return v.y[i] < top * v.w[i]; });
  outside(outcode::kRight, [&](int i) { return v.x[i] > right * v.w[i]; });
  outside(outcode::kBottom, [&](int i) { return v.y[i] > bottom * v.w[i]; });
  // As planeDistance has them.
  const ScreenTransform s = p.screen;
  outside(outcode::kBehind, [&](int i) { return v.w[i] - kSmallestW < 0; });
  outside(outcode::kGuardLeft, [&](int i) { return v.x[i] - s.guardLeft * v.w[i] < 0; });
  outside(outcode::kGuardTop, [&](int i) { return v.y[i] - s.guardTop * v.w[i] < 0; });
  outside(outcode::kGuardRight, [&](int i) { return s.guardRight * v.w[i] - v.x[i] < 0; });
  outside(outcode::kGuardBottom, [&](int i) { return s.guardBottom * v.w[i] - v.y[i] < 0; });
  if (p.layout.transformed) return;
  outside(outcode::kNear, [&](int i) { return v.z[i] < 0; });
  outside(outcode::kFar, [&](int i) { return v.w[i] - v.z[i] < 0; });
}

// As writeRecord does it, for all lanes; those that need clipping get some numbers.
void divide(const Pipeline& p, VertexBatch& v, Lanes<std::int32_t>& x, Lanes<std::int32_t>& y) {
  const ScreenTransform s = p.screen;
  Lanes<float>&z = v.attributes[kAttributeZ], &q = v.attributes[kAttributeQ];
  for (int i = 0; i < kLanes; ++i) q[i] = 1.0f / (v.w[i] < kSmallestW ? kSmallestW : v.w[i]);
  for (int i = 0; i < kLanes; ++i) {
    x[i] = roundToInt(clampTo(v.x[i] * q[i], s.guardLeft, s.guardRight) * 256.0f);
    y[i] = roundToInt(clampTo(v.y[i] * q[i], s.guardTop, s.guardBottom) * 256.0f);
  }
  for (int i = 0; i < kLanes; ++i) {
    const float depth = depthOf(v.z[i] * q[i] * s.depthZ + s.minZ) - s.bias;
    z[i] = depth > 0 ? depth : 0.0f;
  }
  for (std::int32_t k = 2; k < p.attributes.count; ++k)
    for (int i = 0; i < kLanes; ++i) v.attributes[k][i] *= q[i];
}

}  // namespace

float planeDistance(const Pipeline& p, const ClipVertex& v, std::uint32_t bit) {
  switch (bit) {
    case outcode::kNear:
      return v.z;
    case outcode::kFar:
      return v.w - v.z;
    case outcode::kBehind:
      return v.w - kSmallestW;
    case outcode::kGuardLeft:
      return v.x - p.screen.guardLeft * v.w;
    case outcode::kGuardTop:
      return v.y - p.screen.guardTop * v.w;
    case outcode::kGuardRight:
      return p.screen.guardRight * v.w - v.x;
    default:
      return p.screen.guardBottom * v.w - v.y;
  }
}

ClipVertex readVertex(const Pipeline& p, const std::byte* source) {
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

void writeRecord(const Pipeline& p, const ClipVertex& v, float* record) {
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
}

void transformVertices(const Pipeline& p, const std::byte* source, std::size_t stride, std::size_t count,
                       float* records) {
  const auto floats = static_cast<std::size_t>(p.attributes.recordFloats());
  VertexBatch batch;
  Lanes<std::uint32_t> codes;
  Lanes<std::int32_t> x, y;
  for (std::size_t first = 0; first < count; first += kLanes) {
    const std::size_t lanes = std::min<std::size_t>(kLanes, count - first);
    readBatch(p, source + first * stride, stride, lanes, batch);
    outcodes(p, batch, codes);
    divide(p, batch, x, y);
    for (std::size_t lane = 0; lane < lanes; ++lane, records += floats) {
      const auto i = static_cast<int>(lane);
      records[kRecordX] = std::bit_cast<float>(x[i]);
      records[kRecordY] = std::bit_cast<float>(y[i]);
      records[kRecordOutcode] = std::bit_cast<float>(codes[i]);
      records[kRecordPointSize] = batch.pointSize[i];
      for (std::int32_t k = 0; k < p.attributes.count; ++k) records[kRecordHead + k] = batch.attributes[k][i];
    }
  }
}

}  // namespace ql::software
