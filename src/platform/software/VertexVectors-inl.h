/// @file
/// Vertices between memory and vectors of lanes; only for instruction sets that have kernels.
#if defined(QL_VERTEX_VECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_VERTEX_VECTORS_INL_H
#undef QL_VERTEX_VECTORS_INL_H
#else
#define QL_VERTEX_VECTORS_INL_H
#endif

#include "platform/software/KernelVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

/// Four floats from each of some places, a 128-bit block each. @param at gives the place of a block
template <class F>
HWY_INLINE Floats loadBlocks(F&& at) {
#if HWY_MAX_BYTES == 64
  const __m256 low = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(at(0))), _mm_loadu_ps(at(1)), 1);
  const __m256 high = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(at(2))), _mm_loadu_ps(at(3)), 1);
  return Floats{_mm512_insertf32x8(_mm512_castps256_ps512(low), high, 1)};
#elif HWY_MAX_BYTES == 32
  return Floats{_mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(at(0))), _mm_loadu_ps(at(1)), 1)};
#else
  return Floats{_mm_loadu_ps(at(0))};
#endif
}
template <class F>
HWY_INLINE void storeBlocks(Floats v, F&& at) {
#if HWY_MAX_BYTES == 64
  _mm_storeu_ps(at(0), _mm512_castps512_ps128(v.raw));
  _mm_storeu_ps(at(1), _mm512_extractf32x4_ps(v.raw, 1));
  _mm_storeu_ps(at(2), _mm512_extractf32x4_ps(v.raw, 2));
  _mm_storeu_ps(at(3), _mm512_extractf32x4_ps(v.raw, 3));
#elif HWY_MAX_BYTES == 32
  _mm_storeu_ps(at(0), _mm256_castps256_ps128(v.raw));
  _mm_storeu_ps(at(1), _mm256_extractf128_ps(v.raw, 1));
#else
  _mm_storeu_ps(at(0), v.raw);
#endif
}

/// In each block, rows become columns.
HWY_INLINE void transpose(Floats& a, Floats& b, Floats& c, Floats& d) {
  const auto pairs = [](Floats v) HWY_ATTR { return hn::BitCast(kPair, v); };
  const auto floats = [](Pairs v) HWY_ATTR { return hn::BitCast(kFloat, v); };
  const Pairs ab = pairs(hn::InterleaveLower(kFloat, a, b)), cd = pairs(hn::InterleaveLower(kFloat, c, d));
  const Pairs abUp = pairs(hn::InterleaveUpper(kFloat, a, b)), cdUp = pairs(hn::InterleaveUpper(kFloat, c, d));
  a = floats(hn::InterleaveLower(kPair, ab, cd));
  b = floats(hn::InterleaveUpper(kPair, ab, cd));
  c = floats(hn::InterleaveLower(kPair, abUp, cdUp));
  d = floats(hn::InterleaveUpper(kPair, abUp, cdUp));
}

/// Three floats of each vertex; sixteen bytes are read there.
HWY_INLINE void loadTriples(const std::byte* const* source, std::int32_t offset, float* x, float* y, float* z) {
  for (int i = 0; i < kLanes; i += kWidth) {
    const auto row = [&](int k) HWY_ATTR {
      return loadBlocks([&](int block) { return reinterpret_cast<const float*>(source[i + 4 * block + k] + offset); });
    };
    Floats a = row(0), b = row(1), c = row(2), d = row(3);
    transpose(a, b, c, d);
    hn::Store(a, kFloat, x + i);
    hn::Store(b, kFloat, y + i);
    hn::Store(c, kFloat, z + i);
  }
}
/// Two floats of each vertex.
HWY_INLINE void loadTwos(const std::byte* const* source, std::int32_t offset, float* u, float* v) {
  alignas(64) std::uint64_t both[kLanes];
  for (int i = 0; i < kLanes; ++i) std::memcpy(both + i, source[i] + offset, sizeof *both);
  for (int i = 0; i < kLanes; i += kWidth) {
    const auto* at = reinterpret_cast<const float*>(both + i);
    const Floats first = hn::Load(kFloat, at), second = hn::Load(kFloat, at + kWidth);
    hn::Store(hn::ConcatEven(kFloat, second, first), kFloat, u + i);
    hn::Store(hn::ConcatOdd(kFloat, second, first), kFloat, v + i);
  }
}

/// Writes four neighbouring words of 16 records.
HWY_INLINE void storeFours(const float* a, const float* b, const float* c, const float* d, float* records,
                           std::size_t floats) {
  for (int i = 0; i < kLanes; i += kWidth) {
    Floats rows[4] = {hn::Load(kFloat, a + i), hn::Load(kFloat, b + i), hn::Load(kFloat, c + i),
                      hn::Load(kFloat, d + i)};
    transpose(rows[0], rows[1], rows[2], rows[3]);
    for (int k = 0; k < 4; ++k)
      storeBlocks(rows[k], [&](int block) { return records + static_cast<std::size_t>(i + 4 * block + k) * floats; });
  }
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
