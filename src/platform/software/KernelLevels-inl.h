/// @file
/// Levels of detail of several blocks. @see LevelOfDetail.h for what is computed
#if defined(QL_KERNEL_LEVELS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_KERNEL_LEVELS_INL_H
#undef QL_KERNEL_LEVELS_INL_H
#else
#define QL_KERNEL_LEVELS_INL_H
#endif

#include "platform/software/KernelVectors-inl.h"
#include "platform/software/LevelOfDetail.h"

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

/// The levels of some blocks of a triangle. @see chooseLevel
/// @param blockX,blockY their places in the tile @param out a choice for each; both are read and written up to kLanes
/// farther
HWY_INLINE void chooseLevels(const Sampler& s, const Triangle& t, std::int32_t uv, std::int32_t divisor,
                             const std::uint8_t* blockX, const std::uint8_t* blockY, std::size_t count,
                             LevelChoice* out) {
  static_assert(sizeof(LevelChoice) == sizeof(std::int32_t));
  constexpr hn::Rebind<std::uint8_t, TagInt> bytes;
  constexpr std::int32_t kLinear = 1 << 16, kBlendShift = 8;
  const auto at = [&t](std::int32_t k, Floats cx, Floats cy) HWY_ATTR {
    return hn::Add(number(t.value[k]), hn::Add(hn::Mul(number(t.dx[k]), cx), hn::Mul(number(t.dy[k]), cy)));
  };
  const auto centre = [&](const std::uint8_t* from, float origin) HWY_ATTR {
    const Floats first = hn::ConvertTo(kFloat, hn::PromoteTo(kInt, hn::LoadU(bytes, from)));
    return hn::Add(hn::Add(first, number(origin)), number(1.5f));
  };
  const auto slope = [](float along, Floats value, float q, Floats across)
                         HWY_ATTR { return hn::Mul(hn::Sub(number(along), hn::Mul(value, number(q))), across); };
  const auto between = [](Ints value, std::int32_t low, std::int32_t high)
                           HWY_ATTR { return hn::Min(hn::Max(value, number(low)), number(high)); };
  const float qx = t.dx[divisor], qy = t.dy[divisor];
  for (std::size_t i = 0; i < count; i += static_cast<std::size_t>(kWidth)) {
    const Floats cx = centre(blockX + i, t.originX), cy = centre(blockY + i, t.originY);
    const Floats w = hn::Div(number(1.0f), at(divisor, cx, cy));
    const Floats u = hn::Mul(at(uv, cx, cy), w), v = hn::Mul(at(uv + 1, cx, cy), w);
    const Floats acrossU = hn::Mul(w, number(s.width)), acrossV = hn::Mul(w, number(s.height));
    const Floats ux = slope(t.dx[uv], u, qx, acrossU), vx = slope(t.dx[uv + 1], v, qx, acrossV);
    const Floats uy = slope(t.dy[uv], u, qy, acrossU), vy = slope(t.dy[uv + 1], v, qy, acrossV);
    const Floats rx = hn::Add(hn::Mul(ux, ux), hn::Mul(vx, vx)), ry = hn::Add(hn::Mul(uy, uy), hn::Mul(vy, vy));
    // As levelFor does it.
    const Ints change = hn::BitCast(kInt, hn::Max(rx, ry));
    const Ints detail =
        hn::Add(hn::ShiftRight<1>(hn::ShiftRight<15>(hn::Sub(change, number(0x3F800000)))), number(s.bias));
    Ints choice = hn::IfThenElse(hn::Gt(detail, hn::Zero(kInt)), number(s.linearMin ? kLinear : 0),
                                 number(s.linearMag ? kLinear : 0));
    if (s.mip == Sampler::Mip::Nearest) {
      choice = hn::Or(choice, between(hn::ShiftRight<8>(hn::Add(detail, number(128))), s.firstLevel, s.lastLevel));
    } else if (s.mip == Sampler::Mip::Linear) {
      const Ints within = between(detail, s.firstLevel << 8, s.lastLevel << 8);
      const Ints blend = hn::ShiftRight<1>(hn::And(within, number(255)));
      choice = hn::Or(choice, hn::Or(hn::ShiftRight<8>(within), hn::ShiftLeft<kBlendShift>(blend)));
    } else {
      choice = hn::Or(choice, number(s.firstLevel));
    }
    hn::StoreU(choice, kInt, reinterpret_cast<std::int32_t*>(out + i));
  }
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
