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

HWY_INLINE __m128i loadTwo(const std::uint32_t* texels, const std::uint32_t* index) {
  const auto pair = [&](int i) { return reinterpret_cast<const __m128i*>(texels + index[i]); };
  return _mm_castps_si128(
      _mm_loadh_pi(_mm_castsi128_ps(_mm_loadl_epi64(pair(0))), reinterpret_cast<const __m64*>(pair(1))));
}

HWY_INLINE TexelPairs loadPairs(const std::uint32_t* texels, const std::uint32_t* index) {
#if HWY_MAX_BYTES == 64
  const auto four = [&](int i) HWY_ATTR {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(loadTwo(texels, index + i)), loadTwo(texels, index + i + 4),
                                   1);
  };
  const auto eight = [&](int i) HWY_ATTR {
    return Pairs{_mm512_inserti64x4(_mm512_castsi256_si512(four(i)), four(i + 8), 1)};
  };
  return {eight(0), eight(2)};
#elif HWY_MAX_BYTES == 32
  const auto four = [&](int i) HWY_ATTR {
    return Pairs{
        _mm256_inserti128_si256(_mm256_castsi128_si256(loadTwo(texels, index + i)), loadTwo(texels, index + i + 4), 1)};
  };
  return {four(0), four(2)};
#else
  return {Pairs{loadTwo(texels, index)}, Pairs{loadTwo(texels, index + 2)}};
#endif
}

/// The rest of x divided by n, 0 to n - 1; x within 23 bits.
HWY_INLINE Ints modulo(Ints x, std::int32_t n) {
  const Ints divisor = number(n);
  const Ints quotient = truncated(hn::Div(hn::ConvertTo(kFloat, x), hn::ConvertTo(kFloat, divisor)));
  // The quotient may be one too far from 0.
  Ints rest = hn::Sub(x, hn::Mul(quotient, divisor));
  rest = hn::Add(rest, hn::And(hn::ShiftRight<31>(rest), divisor));
  return hn::Sub(rest, hn::AndNot(hn::ShiftRight<31>(hn::Sub(rest, divisor)), divisor));
}

/// A fixed-point coordinate under an addressing mode, such that the texel and its right neighbour in memory, with the
/// fraction between them, are what the mode asks for. A border stays as it is.
HWY_INLINE Ints addressed(device::Address mode, Ints x, std::int32_t size, bool linear) {
  using device::Address;
  const Ints last = number((size - 1) * 256);
  switch (mode) {
    case Address::Border:
      return x;
    case Address::Clamp:
      return hn::Min(hn::Max(x, hn::Zero(kInt)), last);
    case Address::Mirror: {
      // Weights have seven bits: the lowest bit of the fraction counts for nothing, and without it turning is exact.
      const Ints fraction = hn::And(x, number(linear ? 254 : 0));
      const Ints there = hn::Or(hn::ShiftLeft<8>(modulo(hn::ShiftRight<8>(x), 2 * size)), fraction);
      const Ints back = hn::Sub(number((2 * size - 1) * 256), there);
      const Ints turned = hn::IfThenElse(hn::Lt(there, number(size * 256)), there, back);
      return hn::Min(hn::Max(turned, hn::Zero(kInt)), last);
    }
    default:
      return hn::Or(hn::ShiftLeft<8>(modulo(hn::ShiftRight<8>(x), size)), hn::And(x, number(255)));
  }
}

/// Columns or rows of both neighbours, and which of them belong to the border.
struct Neighbours {
  Ints first, second;
  Pixels firstOut, secondOut;
};
HWY_INLINE Neighbours neighbours(device::Address mode, Ints whole, std::int32_t size) {
  const Ints next = hn::Add(whole, number(1));
  const Pixels none = hn::Lt(hn::Zero(kInt), hn::Zero(kInt));
  if (mode != device::Address::Border) return {whole, next, none, none};
  const auto held = [&](Ints x) HWY_ATTR { return hn::Min(hn::Max(x, hn::Zero(kInt)), number(size - 1)); };
  const Ints first = held(whole), second = held(next);
  return {first, second, hn::Not(hn::Eq(first, whole)), hn::Not(hn::Eq(second, next))};
}

/// Each pixel's upper and lower pair where there is a border.
HWY_NOINLINE inline void loadPairsWithBorder(const Sampler& s, const Sampler::Level& level, Ints column, Ints row,
                                             TexelPairs& upper, TexelPairs& lower) {
  const Neighbours x = neighbours(s.addressU, column, level.width), y = neighbours(s.addressV, row, level.height);
  const Ints stride = number(level.stride);
  const Uints border = hn::Set(kUint, s.border ^ kTexelFlip);
  const auto texels = [&](Ints atX, Ints atY, Pixels outX, Pixels outY) HWY_ATTR {
    alignas(64) std::int32_t index[kWidth];
    alignas(64) std::uint32_t out[kWidth];
    hn::Store(hn::Add(hn::Mul(atY, stride), atX), kInt, index);
    for (int i = 0; i < kWidth; ++i) out[i] = level.texels[index[i]];
    return hn::IfThenElse(hn::RebindMask(kUint, hn::Or(outX, outY)), border, hn::Load(kUint, out));
  };
  const auto pairs = [](Uints left, Uints right) HWY_ATTR {
    return TexelPairs{hn::BitCast(kPair, hn::InterleaveLower(kUint, left, right)),
                      hn::BitCast(kPair, hn::InterleaveUpper(kUint, left, right))};
  };
  upper = pairs(texels(x.first, y.first, x.firstOut, y.firstOut), texels(x.second, y.first, x.secondOut, y.firstOut));
  lower =
      pairs(texels(x.first, y.second, x.firstOut, y.secondOut), texels(x.second, y.second, x.secondOut, y.secondOut));
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

/// The filter of what was sampled so.
struct Filter {
  TexelPairs upper, lower;
  Ints right, below;  ///< weights in 1/128

  HWY_INLINE Color color() const {
    // 128 - right beside right, in bytes.
    const Color across = spread(hn::Add(hn::Sub(hn::ShiftLeft<8>(right), right), number(128)));
    const Color down = spread(hn::ShiftLeft<8>(below));
    return {filtered(upper.low, lower.low, across.low, down.low),
            filtered(upper.high, lower.high, across.high, down.high)};
  }
};

/// Where the texels of a level start that lie at some columns and rows.
struct Indices {
  alignas(64) std::uint32_t index[kWidth];

  HWY_INLINE Indices(const Sampler::Level& level, Ints x, Ints y) {
    const Ints column = hn::And(hn::ShiftRight<8>(x), number(level.maskU));
    const Ints row = hn::And(hn::ShiftRight<8>(y), number(level.maskV));
    // Both are below 2^15: row · stride + column · 1 is one multiply-add of 16 bits.
    const Shorts place = hn::BitCast(kShort, hn::Or(row, hn::ShiftLeft<16>(column)));
    const Ints at = multiplyAddShorts(place, hn::BitCast(kShort, number(level.stride | 0x10000)));
    hn::Store(hn::BitCast(kUint, at), kUint, index);
    // Through memory: left to itself, the compiler takes the vector apart lane by lane, which is slower.
    asm("" : "+m"(index));
  }
  HWY_INLINE void loadBoth(const Sampler::Level& level, TexelPairs& upper, TexelPairs& lower) {
    upper = loadPairs(level.texels, index);
    asm("" : "+m"(index));  // sixteen indices kept for the next row would not fit the registers
    lower = loadPairs(level.texels + level.stride, index);
  }
};

/// The most common case: filtered, from one level, the texture clamped or wrapped at a power of two.
HWY_INLINE Color sampleQuickly(const Sampler& s, const Sampler::Level& level, Floats u, Floats v) {
  const Floats half = number(128.0f);
  Ints x = nearest(hn::Sub(hn::Mul(u, number(level.scaleU)), half));
  Ints y = nearest(hn::Sub(hn::Mul(v, number(level.scaleV)), half));
  if (s.clamps) {
    x = hn::Min(hn::Max(x, number(level.lowU)), number(level.highU));
    y = hn::Min(hn::Max(y, number(level.lowV)), number(level.highV));
  }
  Filter f;
  Indices(level, x, y).loadBoth(level, f.upper, f.lower);
  f.right = hn::And(hn::ShiftRight<1>(x), number(127));
  f.below = hn::And(hn::ShiftRight<1>(y), number(127));
  return f.color();
}

HWY_INLINE Color sampleLevel(const Sampler& s, const Sampler::Level& level, bool linear, Floats u, Floats v) {
  const Floats half = number(linear ? 128.0f : 0.0f);
  Ints x = nearest(hn::Sub(hn::Mul(u, number(level.scaleU)), half));
  Ints y = nearest(hn::Sub(hn::Mul(v, number(level.scaleV)), half));
  if (HWY_UNLIKELY(!s.fast)) {
    x = addressed(s.addressU, x, level.width, linear);
    y = addressed(s.addressV, y, level.height, linear);
  } else if (s.clamps) {
    x = hn::Min(hn::Max(x, number(level.lowU)), number(level.highU));
    y = hn::Min(hn::Max(y, number(level.lowV)), number(level.highV));
  }
  Filter f;
  if (HWY_UNLIKELY(s.bordered)) {
    loadPairsWithBorder(s, level, hn::ShiftRight<8>(x), hn::ShiftRight<8>(y), f.upper, f.lower);
  } else {
    Indices indices(level, x, y);
    if (!linear) {
      alignas(64) std::uint32_t texels[kWidth];
      for (int i = 0; i < kWidth; ++i) texels[i] = level.texels[indices.index[i]];
      return unpacked(hn::Xor(hn::Load(kUint, texels), hn::Set(kUint, kTexelFlip)));
    }
    indices.loadBoth(level, f.upper, f.lower);
  }
  const Ints fraction = number(linear ? 127 : 0);
  f.right = hn::And(hn::ShiftRight<1>(x), fraction);
  f.below = hn::And(hn::ShiftRight<1>(y), fraction);
  return f.color();
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
