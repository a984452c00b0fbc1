#include "platform/software/Vertices.h"

#include "math/Matrix.h"
#include "platform/software/FogFactor.h"
#include "platform/software/Numeric.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace ql::software {
namespace {

// Nothing nearer to the eye's plane is drawn, whatever the projection says.
constexpr float kSmallestW = 1e-8f;

template <class T>
T load(const std::byte* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

void loadColor(const std::byte* at, float* out) {
  const auto argb = load<std::uint32_t>(at);
  for (int c = 0; c < 4; ++c) out[c] = static_cast<float>(argb >> (c * 8) & 255);
}

// The fog factor of a vertex, 0 (all fog) to 255.
float vertexFog(const Pipeline& p, const math::Vec3& position, const std::byte* source) {
  if (p.fog.mode == device::FogMode::None) {
    if (p.layout.specular < 0) return 0;
    return static_cast<float>(load<std::uint32_t>(source + p.layout.specular) >> 24);
  }
  const math::Vec4 seen = math::transform(position, p.view);
  const float distance =
      p.fog.range ? std::sqrt(seen.x * seen.x + seen.y * seen.y + seen.z * seen.z) : std::fabs(seen.z);
  return fogFactor(p.fog, distance) * 255.0f;
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
  ClipVertex v;
  const auto position = load<math::Vec3>(source);
  if (p.layout.transformed) {
    const float rhw = load<float>(source + 12);
    v.w = rhw > 0 && std::isfinite(rhw) ? 1.0f / rhw : 1.0f;
    v.x = position.x * v.w;
    v.y = position.y * v.w;
    v.z = position.z * v.w;
  } else {
    const math::Vec4 c = math::transform(position, p.clip);
    v.w = c.w;
    v.z = c.z;
    v.x = c.x * p.screen.halfWidth + p.screen.centerX * c.w;
    v.y = p.screen.centerY * c.w - c.y * p.screen.halfHeight;
  }
  const Attributes& a = p.attributes;
  for (std::size_t i = 0; i < device::kStages; ++i) {
    if (a.uv[i] < 0 || p.layout.coordinates[i] < 0) continue;  // without coordinates: 0, 0
    std::memcpy(v.attributes.data() + (a.uv[i] - 2), source + p.layout.coordinates[i], 2 * sizeof(float));
  }
  if (a.diffuse >= 0) loadColor(source + p.layout.diffuse, v.attributes.data() + (a.diffuse - 2));
  if (a.specular >= 0) loadColor(source + p.layout.specular, v.attributes.data() + (a.specular - 2));
  if (a.fog >= 0) v.attributes[static_cast<std::size_t>(a.fog - 2)] = vertexFog(p, position, source);
  const float size = p.layout.pointSize >= 0 ? load<float>(source + p.layout.pointSize) : p.pointSize;
  v.pointSize = clampTo(size, p.pointSizeMin, p.pointSizeMax);
  return v;
}

std::uint32_t outcodeOf(const Pipeline& p, const ClipVertex& v) {
  // One non-finite number makes the sum of products with 0 not a number.
  if (!(v.x * 0 + v.y * 0 + (v.z * 0 + v.w * 0) == 0)) return outcode::kNotFinite;
  std::uint32_t code = 0;
  const auto outside = [&](bool is, std::uint32_t bit) { code |= is ? bit : 0; };
  outside(v.x < static_cast<float>(p.scissor.left) * v.w, outcode::kLeft);
  outside(v.y < static_cast<float>(p.scissor.top) * v.w, outcode::kTop);
  outside(v.x > static_cast<float>(p.scissor.right - 1) * v.w, outcode::kRight);
  outside(v.y > static_cast<float>(p.scissor.bottom - 1) * v.w, outcode::kBottom);
  constexpr std::uint32_t kAlways[] = {outcode::kBehind, outcode::kGuardLeft, outcode::kGuardTop, outcode::kGuardRight,
                                       outcode::kGuardBottom};
  for (const std::uint32_t bit : kAlways) outside(planeDistance(p, v, bit) < 0, bit);
  if (!p.layout.transformed) {
    outside(v.z < 0, outcode::kNear);
    outside(v.w - v.z < 0, outcode::kFar);
  }
  return code;
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
  const std::int32_t floats = p.attributes.recordFloats();
  for (std::size_t i = 0; i < count; ++i, source += stride, records += floats) {
    const ClipVertex v = readVertex(p, source);
    const std::uint32_t code = outcodeOf(p, v);
    if (!(code & (outcode::kClip | outcode::kNotFinite))) writeRecord(p, v, records);
    records[kRecordOutcode] = std::bit_cast<float>(code);
  }
}

}  // namespace ql::software
