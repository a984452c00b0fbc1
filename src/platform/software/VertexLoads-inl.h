/// @file
/// Reading vertices from memory, a lane each.
#if defined(QL_VERTEX_LOADS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_VERTEX_LOADS_INL_H
#undef QL_VERTEX_LOADS_INL_H
#else
#define QL_VERTEX_LOADS_INL_H
#endif

#include "platform/software/VertexBatch.h"

#include <cmath>
#include <cstring>

#include <hwy/highway.h>
#if HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
#include "platform/software/VertexVectors-inl.h"
#endif

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

template <class T>
T load(const std::byte* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

/// @param size of a vertex
inline void loadVectors(const VertexBatch& batch, std::int32_t offset, [[maybe_unused]] std::int32_t size,
                        Vectors& out) {
#if HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
  if (offset + 16 <= size) {
    loadTriples(batch.source.data(), offset, out.x.v, out.y.v, out.z.v);
    return;
  }
#endif
  for (int i = 0; i < kLanes; ++i) {
    const auto v = load<math::Vec3>(batch.source[static_cast<std::size_t>(i)] + offset);
    out.x[i] = v.x;
    out.y[i] = v.y;
    out.z[i] = v.z;
  }
}
inline void loadFloats(const VertexBatch& batch, std::int32_t offset, Lanes<float>& out) {
  for (int i = 0; i < kLanes; ++i) out[i] = load<float>(batch.source[static_cast<std::size_t>(i)] + offset);
}
inline void loadWords(const VertexBatch& batch, std::int32_t offset, Lanes<std::uint32_t>& out) {
  for (int i = 0; i < kLanes; ++i) out[i] = load<std::uint32_t>(batch.source[static_cast<std::size_t>(i)] + offset);
}
inline void fill(Lanes<float>& out, float value) {
  for (int i = 0; i < kLanes; ++i) out[i] = value;
}

inline void normalize(Vectors& v) {
  for (int i = 0; i < kLanes; ++i) {
    const float square = v.x[i] * v.x[i] + v.y[i] * v.y[i] + v.z[i] * v.z[i];
    const float scale = square > 0 ? 1.0f / std::sqrt(square) : 1.0f;
    v.x[i] *= scale;
    v.y[i] *= scale;
    v.z[i] *= scale;
  }
}

inline void loadColors(const VertexBatch& batch, std::int32_t offset, Lanes<float>* out) {
  Lanes<std::uint32_t> argb;
  loadWords(batch, offset, argb);
  for (int c = 0; c < 4; ++c)
    for (int i = 0; i < kLanes; ++i)
      out[c][i] = static_cast<float>(static_cast<std::int32_t>(argb[i] >> (c * 8) & 255));
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
