/// @file
/// Putting vectors of colours into the tile. @see Blend.h for what is computed
#if defined(QL_KERNEL_BLEND_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_KERNEL_BLEND_INL_H
#undef QL_KERNEL_BLEND_INL_H
#else
#define QL_KERNEL_BLEND_INL_H
#endif

#include "platform/software/Blend.h"
#include "platform/software/KernelVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

HWY_INLINE Words blendFactor(device::Blend code, Words s, Words d) {
  using device::Blend;
  switch (code) {
    case Blend::Zero:
      return hn::Zero(kWord);
    case Blend::SrcColor:
      return s;
    case Blend::InvSrcColor:
      return inverted(s);
    case Blend::SrcAlpha:
      return alphaOf(s);
    case Blend::InvSrcAlpha:
      return inverted(alphaOf(s));
    case Blend::DestAlpha:
      return alphaOf(d);
    case Blend::InvDestAlpha:
      return inverted(alphaOf(d));
    case Blend::DestColor:
      return d;
    case Blend::InvDestColor:
      return inverted(d);
    case Blend::SrcAlphaSat:
      return withAlpha(hn::Min(alphaOf(s), inverted(alphaOf(d))), word(255));
    default:
      return word(255);
  }
}

HWY_INLINE Words blended(const Pipeline& p, Words s, Words d) {
  using device::BlendOp;
  if (p.blendOp == BlendOp::Min) return hn::Min(s, d);
  if (p.blendOp == BlendOp::Max) return hn::Max(s, d);
  const Words x = hn::Mul(s, blendFactor(p.source, s, d)), y = hn::Mul(d, blendFactor(p.destination, s, d));
  if (p.blendOp == BlendOp::Add) return over255(hn::Min(hn::SaturatedAdd(x, y), word(65025)));
  return over255(p.blendOp == BlendOp::Subtract ? hn::SaturatedSub(x, y) : hn::SaturatedSub(y, x));
}

/// How a 16-bit target rounds channels. Expanding to 8 bits is a product divided by 16.
struct Rounding {
  alignas(16) std::uint16_t limit[8];   ///< the largest stored value
  alignas(16) std::uint16_t expand[8];  ///< sixteen times what a stored value stands for
  alignas(16) std::uint16_t shrink[8];  ///< the high half of this product is the stored value below
  bool dither = false, oneBitAlpha = false;
};

HWY_INLINE Rounding roundingOf(const Pipeline& p) {
  Rounding r;
  const std::uint16_t bits[4] = {p.target.blue, p.target.green, p.target.red, 8};
  for (int i = 0; i < 8; ++i) {
    const int n = bits[i & 3];
    r.limit[i] = static_cast<std::uint16_t>((1 << n) - 1);
    r.expand[i] = static_cast<std::uint16_t>(n == 5 ? 33 << 2 : n == 6 ? 65 : 16);
    r.shrink[i] = static_cast<std::uint16_t>(n == 8 ? 0 : 1 << (8 + n));
  }
  r.dither = p.dither;
  r.oneBitAlpha = p.target.alpha == 1;
  return r;
}

/// @param pattern of the ordered dither, for these pixels
HWY_INLINE Words rounded(const Rounding& r, Words value, Words pattern) {
  const Words expand = perChannel(r.expand);
  Words out;
  if (r.dither) {
    const auto standsFor = [&](Words stored) HWY_ATTR { return hn::ShiftRight<4>(hn::Mul(stored, expand)); };
    const auto signedOf = [](Words x) HWY_ATTR { return hn::BitCast(kShort, x); };
    Words low = hn::MulHigh(value, perChannel(r.shrink));
    const auto above255 = hn::Gt(signedOf(standsFor(low)), signedOf(value));
    low = hn::Add(low, hn::BitCast(kWord, hn::VecFromMask(kShort, above255)));
    const Words below = standsFor(low), above = standsFor(hn::Add(low, word(1)));
    const Words place = hn::ShiftLeft<5>(hn::Sub(value, below)), step = hn::Mul(pattern, hn::Sub(above, below));
    const Words up = hn::BitCast(kWord, hn::VecFromMask(kShort, hn::Gt(signedOf(place), signedOf(step))));
    out = withAlpha(hn::Or(hn::And(up, above), hn::AndNot(up, below)), value);
  } else {
    // A quotient by 255, rounded down: exact for 16 bits.
    const Words x = hn::Add(hn::Mul(value, perChannel(r.limit)), word(127));
    const Words stored = hn::ShiftRight<8>(hn::Add(hn::Add(x, word(1)), hn::ShiftRight<8>(x)));
    out = hn::ShiftRight<4>(hn::Mul(stored, expand));
  }
  if (r.oneBitAlpha) {
    const auto opaque = hn::Gt(hn::BitCast(kShort, out), hn::Set(kShort, std::int16_t{127}));
    out = withAlpha(out, hn::And(hn::BitCast(kWord, hn::VecFromMask(kShort, opaque)), word(255)));
  }
  return out;
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
