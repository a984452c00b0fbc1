/// @file
/// Reading textures, a vector of pixels at a time. @see Sample.h for what is computed
#if defined(QL_KERNEL_SAMPLE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_KERNEL_SAMPLE_INL_H
#undef QL_KERNEL_SAMPLE_INL_H
#else
#define QL_KERNEL_SAMPLE_INL_H
#endif

#include "platform/software/KernelVectors-inl.h"
#include "platform/software/Sample.h"

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

/// Pairs of texels side by side, in the order of Color's halves.
struct TexelPairs {
  Pairs low, high;
};

HWY_INLINE __m128i loadTwo(const std::uint32_t* texels, const std::int32_t* index) {
  std::uint64_t first, second;
  std::memcpy(&first, texels + index[0], sizeof first);
  std::memcpy(&second, texels + index[1], sizeof second);
  return _mm_set_epi64x(static_cast<long long>(second), static_cast<long long>(first));
}

HWY_INLINE TexelPairs loadPairs(const std::uint32_t* texels, const std::int32_t* index) {
#if HWY_MAX_BYTES == 64
  const __m256i a =
      _mm256_inserti128_si256(_mm256_castsi128_si256(loadTwo(texels, index)), loadTwo(texels, index + 4), 1);
  const __m256i b =
      _mm256_inserti128_si256(_mm256_castsi128_si256(loadTwo(texels, index + 8)), loadTwo(texels, index + 12), 1);
  const __m256i c =
      _mm256_inserti128_si256(_mm256_castsi128_si256(loadTwo(texels, index + 2)), loadTwo(texels, index + 6), 1);
  const __m256i d =
      _mm256_inserti128_si256(_mm256_castsi128_si256(loadTwo(texels, index + 10)), loadTwo(texels, index + 14), 1);
  return {Pairs{_mm512_inserti64x4(_mm512_castsi256_si512(a), b, 1)},
          Pairs{_mm512_inserti64x4(_mm512_castsi256_si512(c), d, 1)}};
#elif HWY_MAX_BYTES == 32
  return {Pairs{_mm256_inserti128_si256(_mm256_castsi128_si256(loadTwo(texels, index)), loadTwo(texels, index + 4), 1)},
          Pairs{_mm256_inserti128_si256(_mm256_castsi128_si256(loadTwo(texels, index + 2)), loadTwo(texels, index + 6),
                                        1)}};
#else
  return {Pairs{loadTwo(texels, index)}, Pairs{loadTwo(texels, index + 2)}};
#endif
}

/// Each pixel's upper and lower pair by any addressing, one by one.
HWY_NOINLINE inline void loadPairsSlowly(const Sampler& s, const Sampler::Level& level, Ints u, Ints v,
                                         TexelPairs& upper, TexelPairs& lower) {
  alignas(64) std::int32_t x[kWidth], y[kWidth];
  alignas(64) std::uint32_t up[2 * kWidth], down[2 * kWidth];
  hn::Store(u, kInt, x);
  hn::Store(v, kInt, y);
  for (int i = 0; i < kWidth; ++i) {
    const std::array<std::uint32_t, 4> four = fourTexels(s, level, x[i] >> 8, y[i] >> 8);
    // Of each four pixels, two go to each half.
    const int at = (i / 4) * 4 + (i & 1) * 2 + (i & 2 ? kWidth : 0);
    up[at] = four[0];
    up[at + 1] = four[1];
    down[at] = four[2];
    down[at + 1] = four[3];
  }
  const auto half = [](const std::uint32_t* from) HWY_ATTR { return hn::BitCast(kPair, hn::Load(kUint, from)); };
  upper = {half(up), half(up + kWidth)};
  lower = {half(down), half(down + kWidth)};
}

/// Across with weights of bytes (the left one's and the right one's side by side), then down; as unsigned 0 to 255.
HWY_INLINE Words filtered(Pairs upper, Pairs lower, Words across, Words down) {
  alignas(16) static constexpr std::uint8_t kMixed[16] = {0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15};
  const auto order = hn::LoadDup128(kByte, kMixed);
  const auto weights = hn::BitCast(kByte, across);
  const Shorts top = multiplyAddBytes(weights, hn::TableLookupBytes(hn::BitCast(kByte, upper), order));
  const Shorts bottom = multiplyAddBytes(weights, hn::TableLookupBytes(hn::BitCast(kByte, lower), order));
  const Shorts sum = hn::Add(top, hn::MulFixedPoint15(hn::Sub(bottom, top), hn::BitCast(kShort, down)));
  return hn::ShiftRight<7>(hn::BitCast(kWord, hn::Add(sum, hn::Set(kShort, std::int16_t{16384 + 64}))));
}

HWY_INLINE Color sampleLevel(const Sampler& s, const Sampler::Level& level, bool linear, Floats u, Floats v) {
  const Floats half = number(linear ? 128.0f : 0.0f);
  Ints x = nearest(hn::Sub(hn::Mul(u, number(level.scaleU)), half));
  Ints y = nearest(hn::Sub(hn::Mul(v, number(level.scaleV)), half));
  TexelPairs upper, lower;
  alignas(64) std::int32_t index[kWidth];
  if (HWY_LIKELY(s.fast)) {
    x = hn::Min(hn::Max(x, number(level.lowU)), number(level.highU));
    y = hn::Min(hn::Max(y, number(level.lowV)), number(level.highV));
    const Ints column = hn::And(hn::ShiftRight<8>(x), number(level.maskU));
    const Ints row = hn::And(hn::ShiftRight<8>(y), number(level.maskV));
    // Both are below 2^15: row · stride + column · 1 is one multiply-add of 16 bits.
    const Shorts place = hn::BitCast(kShort, hn::Or(row, hn::ShiftLeft<16>(column)));
    const Ints at = multiplyAddShorts(place, hn::BitCast(kShort, number(level.stride | 0x10000)));
    hn::Store(at, kInt, index);
    // Through memory: left to itself, the compiler takes the vector apart lane by lane, which is slower.
    asm("" : "+m"(index));
    if (!linear) {
      alignas(64) std::uint32_t texels[kWidth];
      for (int i = 0; i < kWidth; ++i) texels[i] = level.texels[index[i]];
      return unpacked(hn::Xor(hn::Load(kUint, texels), hn::Set(kUint, kTexelFlip)));
    }
    upper = loadPairs(level.texels, index);
    lower = loadPairs(level.texels + level.stride, index);
  } else {
    loadPairsSlowly(s, level, x, y, upper, lower);
  }
  const Ints fraction = number(linear ? 127 : 0);
  const Ints right = hn::And(hn::ShiftRight<1>(x), fraction), below = hn::And(hn::ShiftRight<1>(y), fraction);
  // 128 - right beside right, in bytes.
  const Color across = spread(hn::Add(hn::Sub(hn::ShiftLeft<8>(right), right), number(128)));
  const Color down = spread(hn::ShiftLeft<8>(below));
  return {filtered(upper.low, lower.low, across.low, down.low),
          filtered(upper.high, lower.high, across.high, down.high)};
}

HWY_INLINE Color sampleAt(const Sampler& s, const LevelChoice& choice, Floats u, Floats v) {
  const Sampler::Level* level = &s.levels[static_cast<std::size_t>(choice.level)];
  const Color first = sampleLevel(s, *level, choice.linear, u, v);
  if (HWY_LIKELY(choice.blend == 0)) return first;
  const Color next = sampleLevel(s, level[1], choice.linear, u, v);
  const Shorts share = hn::Set(kShort, static_cast<std::int16_t>(choice.blend));
  return each(
      [share](Words a, Words b) HWY_ATTR {
        const Shorts change = hn::Mul(hn::BitCast(kShort, hn::Sub(b, a)), share);
        const Shorts step = hn::ShiftRight<7>(hn::Add(change, hn::Set(kShort, std::int16_t{64})));
        return hn::Add(a, hn::BitCast(kWord, step));
      },
      first, next);
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
