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

/// The choices of the four blocks of 8 × 8 pixels, in rows. @see chooseLevel
HWY_INLINE void chooseLevels(const Sampler& s, const Triangle& t, std::int32_t uv, std::int32_t divisor, int x, int y,
                             LevelChoice* out) {
  using Tag = hn::CappedTag<float, 4>;
  constexpr Tag d;
  alignas(16) static constexpr float kX[4] = {0, 4, 0, 4}, kY[4] = {0, 0, 4, 4};
  const auto set = [](float value) HWY_ATTR { return hn::Set(Tag(), value); };
  const auto centre = [&](int from, const float* offsets, float origin) HWY_ATTR {
    const auto first = hn::Add(set(static_cast<float>(from)), hn::Load(Tag(), offsets));
    return hn::Add(hn::Add(first, set(origin)), set(1.5f));
  };
  const auto cx = centre(x, kX, t.originX), cy = centre(y, kY, t.originY);
  const auto at = [&](std::int32_t k) HWY_ATTR {
    return hn::Add(set(t.value[k]), hn::Add(hn::Mul(set(t.dx[k]), cx), hn::Mul(set(t.dy[k]), cy)));
  };
  const auto w = hn::Div(set(1.0f), at(divisor)), u = hn::Mul(at(uv), w), v = hn::Mul(at(uv + 1), w);
  const auto acrossU = hn::Mul(w, set(s.width)), acrossV = hn::Mul(w, set(s.height));
  const auto slope = [&](float along, decltype(w) value, float q, decltype(w) across)
                         HWY_ATTR { return hn::Mul(hn::Sub(set(along), hn::Mul(value, set(q))), across); };
  const float qx = t.dx[divisor], qy = t.dy[divisor];
  const auto ux = slope(t.dx[uv], u, qx, acrossU), vx = slope(t.dx[uv + 1], v, qx, acrossV);
  const auto uy = slope(t.dy[uv], u, qy, acrossU), vy = slope(t.dy[uv + 1], v, qy, acrossV);
  const auto rx = hn::Add(hn::Mul(ux, ux), hn::Mul(vx, vx)), ry = hn::Add(hn::Mul(uy, uy), hn::Mul(vy, vy));
  // As levelFor does it.
  constexpr hn::RebindToSigned<Tag> whole;
  const auto integer = [](std::int32_t value) HWY_ATTR { return hn::Set(hn::RebindToSigned<Tag>(), value); };
  const auto detail =
      hn::Add(hn::ShiftRight<1>(hn::ShiftRight<15>(hn::Sub(hn::BitCast(whole, hn::Max(rx, ry)), integer(0x3F800000)))),
              integer(s.bias));
  constexpr std::int32_t kLinear = 1 << 16, kBlendShift = 8;
  auto choice = hn::IfThenElse(hn::Gt(detail, integer(0)), integer(s.linearMin ? kLinear : 0),
                               integer(s.linearMag ? kLinear : 0));
  const auto between = [&](auto value, std::int32_t low, std::int32_t high)
                           HWY_ATTR { return hn::Min(hn::Max(value, integer(low)), integer(high)); };
  if (s.mip == Sampler::Mip::Nearest) {
    choice = hn::Or(choice, between(hn::ShiftRight<8>(hn::Add(detail, integer(128))), s.firstLevel, s.lastLevel));
  } else if (s.mip == Sampler::Mip::Linear) {
    const auto within = between(detail, s.firstLevel << 8, s.lastLevel << 8);
    const auto blend = hn::ShiftRight<1>(hn::And(within, integer(255)));
    choice = hn::Or(choice, hn::Or(hn::ShiftRight<8>(within), hn::ShiftLeft<kBlendShift>(blend)));
  } else {
    choice = hn::Or(choice, integer(s.firstLevel));
  }
  alignas(16) std::int32_t choices[4];
  hn::Store(choice, whole, choices);
  static_assert(sizeof(LevelChoice) == sizeof *choices);
  std::memcpy(out, choices, sizeof choices);
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
