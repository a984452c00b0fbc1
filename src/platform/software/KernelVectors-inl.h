/// @file
/// Vectors of pixels, for one instruction set: every function is exact, so that widths and sets don't show.
#if defined(QL_KERNEL_VECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_KERNEL_VECTORS_INL_H
#undef QL_KERNEL_VECTORS_INL_H
#else
#define QL_KERNEL_VECTORS_INL_H
#endif

#include "platform/software/Block.h"

#include <cstdint>
#include <cstring>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Pixels in a vector.
constexpr int kWidth = HWY_MAX_BYTES / 4;
static_assert(kLanes % kWidth == 0);

using TagFloat = hn::CappedTag<float, kLanes>;
using TagInt = hn::RebindToSigned<TagFloat>;
using TagUint = hn::RebindToUnsigned<TagFloat>;
using TagByte = hn::Repartition<std::uint8_t, TagFloat>;
using TagShort = hn::Repartition<std::int16_t, TagFloat>;
using TagWord = hn::Repartition<std::uint16_t, TagFloat>;
using TagPair = hn::Repartition<std::uint64_t, TagFloat>;
constexpr TagFloat kFloat;
constexpr TagInt kInt;
constexpr TagUint kUint;
constexpr TagByte kByte;
constexpr TagShort kShort;
constexpr TagWord kWord;
constexpr TagPair kPair;

using Floats = hn::Vec<TagFloat>;
using Ints = hn::Vec<TagInt>;
using Uints = hn::Vec<TagUint>;
using Shorts = hn::Vec<TagShort>;
using Words = hn::Vec<TagWord>;
using Pairs = hn::Vec<TagPair>;
using Pixels = hn::Mask<TagInt>;  ///< one bit per pixel

/// Four channels of 16 bits per pixel: of each four pixels, low holds the first two and high the last two.
struct Color {
  Words low, high;
};

HWY_INLINE Floats number(float x) { return hn::Set(kFloat, x); }
HWY_INLINE Ints number(std::int32_t x) { return hn::Set(kInt, x); }
HWY_INLINE Words word(int x) { return hn::Set(kWord, static_cast<std::uint16_t>(x)); }

/// To the nearest integer, halves to even; the lowest integer for what doesn't fit.
HWY_INLINE Ints nearest(Floats x) {
#if HWY_MAX_BYTES == 64
  return Ints{_mm512_cvtps_epi32(x.raw)};
#elif HWY_MAX_BYTES == 32
  return Ints{_mm256_cvtps_epi32(x.raw)};
#else
  return Ints{_mm_cvtps_epi32(x.raw)};
#endif
}
/// Towards 0, of values that fit.
HWY_INLINE Ints truncated(Floats x) {
#if HWY_MAX_BYTES == 64
  return Ints{_mm512_cvttps_epi32(x.raw)};
#elif HWY_MAX_BYTES == 32
  return Ints{_mm256_cvttps_epi32(x.raw)};
#else
  return Ints{_mm_cvttps_epi32(x.raw)};
#endif
}
/// A bit for each pixel, from the lowest on.
HWY_INLINE std::uint32_t bitsOf(Pixels mask) {
#if HWY_MAX_BYTES == 64
  return mask.raw;
#elif HWY_MAX_BYTES == 32
  return static_cast<std::uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(hn::VecFromMask(kInt, mask).raw)));
#else
  return static_cast<std::uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(hn::VecFromMask(kInt, mask).raw)));
#endif
}
/// The pixels whose bits are set; higher bits than there are pixels are ignored.
HWY_INLINE Pixels pixelsOf(std::uint32_t bits) {
#if HWY_MAX_BYTES == 64
  return Pixels{static_cast<__mmask16>(bits)};
#else
  alignas(32) static constexpr std::int32_t kBit[8] = {1, 2, 4, 8, 16, 32, 64, 128};
  const Ints bit = hn::Load(kInt, kBit);
  return hn::Eq(hn::And(number(static_cast<std::int32_t>(bits)), bit), bit);
#endif
}
/// x within low to high; low for not a number: what these instructions make of it.
HWY_INLINE Floats within(Floats x, Floats low, Floats high) { return hn::Min(hn::Max(x, low), high); }

/// Sums of two neighbouring products of bytes 0 to 128 with signed bytes.
HWY_INLINE Shorts multiplyAddBytes(hn::Vec<TagByte> weights, hn::Vec<TagByte> values) {
#if HWY_MAX_BYTES == 64
  return Shorts{_mm512_maddubs_epi16(weights.raw, values.raw)};
#elif HWY_MAX_BYTES == 32
  return Shorts{_mm256_maddubs_epi16(weights.raw, values.raw)};
#else
  return Shorts{_mm_maddubs_epi16(weights.raw, values.raw)};
#endif
}
/// Sums of two neighbouring products of 16 bits.
HWY_INLINE Ints multiplyAddShorts(Shorts a, Shorts b) {
#if HWY_MAX_BYTES == 64
  return Ints{_mm512_madd_epi16(a.raw, b.raw)};
#elif HWY_MAX_BYTES == 32
  return Ints{_mm256_madd_epi16(a.raw, b.raw)};
#else
  return Ints{_mm_madd_epi16(a.raw, b.raw)};
#endif
}

/// As 0xAARRGGBB; what exceeds 255 becomes 255.
HWY_INLINE Uints packed(const Color& c) {
#if HWY_MAX_BYTES == 64
  return Uints{_mm512_packus_epi16(c.low.raw, c.high.raw)};
#elif HWY_MAX_BYTES == 32
  return Uints{_mm256_packus_epi16(c.low.raw, c.high.raw)};
#else
  return Uints{_mm_packus_epi16(c.low.raw, c.high.raw)};
#endif
}
HWY_INLINE Color unpacked(Uints argb) {
  const auto bytes = hn::BitCast(kByte, argb), zero = hn::Zero(kByte);
  return {hn::BitCast(kWord, hn::InterleaveLower(kByte, bytes, zero)),
          hn::BitCast(kWord, hn::InterleaveUpper(kByte, bytes, zero))};
}
/// A value below 65536 per pixel, into all four channels.
HWY_INLINE Color spread(Ints value) {
  const Ints twice = hn::Or(value, hn::ShiftLeft<16>(value));
  return {hn::BitCast(kWord, hn::InterleaveLower(kInt, twice, twice)),
          hn::BitCast(kWord, hn::InterleaveUpper(kInt, twice, twice))};
}
/// Four channels 0 to 255 of each pixel.
HWY_INLINE Color gathered(Ints blue, Ints green, Ints red, Ints alpha) {
  const Ints first = hn::Or(blue, hn::ShiftLeft<16>(green)), second = hn::Or(red, hn::ShiftLeft<16>(alpha));
  return {hn::BitCast(kWord, hn::InterleaveLower(kInt, first, second)),
          hn::BitCast(kWord, hn::InterleaveUpper(kInt, first, second))};
}

HWY_INLINE Words alphaOf(Words channels) {
  alignas(16) static constexpr std::uint8_t kIndex[16] = {6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15};
  return hn::BitCast(kWord, hn::TableLookupBytes(hn::BitCast(kByte, channels), hn::LoadDup128(kByte, kIndex)));
}
HWY_INLINE Color alphaOf(const Color& c) { return {alphaOf(c.low), alphaOf(c.high)}; }
/// The same four values in each pixel. @param values blue, green, red, alpha, twice
HWY_INLINE Words perChannel(const std::uint16_t* values) { return hn::LoadDup128(kWord, values); }
/// Takes the alpha of one and the other channels of the other.
HWY_INLINE Words withAlpha(Words color, Words alpha) {
  alignas(16) static constexpr std::uint16_t kAlphaBits[8] = {0, 0, 0, 0xFFFF, 0, 0, 0, 0xFFFF};
  const Words mask = hn::LoadDup128(kWord, kAlphaBits);
  return hn::Or(hn::AndNot(mask, color), hn::And(mask, alpha));
}

/// A number up to 65025 divided by 255, to nearest. With t = x + 128 it is (t + t / 256) / 256, one product.
HWY_INLINE Words over255(Words x) { return hn::MulHigh(hn::Add(x, word(128)), word(257)); }
HWY_INLINE Words product(Words a, Words b) { return over255(hn::Mul(a, b)); }
HWY_INLINE Words inverted(Words x) { return hn::Xor(x, word(255)); }
/// f of a and the rest of b.
HWY_INLINE Words mixed(Words a, Words b, Words f) { return over255(hn::Add(hn::Mul(a, f), hn::Mul(b, inverted(f)))); }
HWY_INLINE Words limited(Words x) { return hn::Min(x, word(255)); }

/// Calls f for both halves of some colours.
template <class F, class... C>
HWY_INLINE Color each(F&& f, const C&... colors) {
  return {f(colors.low...), f(colors.high...)};
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
