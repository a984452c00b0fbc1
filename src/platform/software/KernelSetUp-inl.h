/// @file
/// Setting triangles up, one to a lane. @see Triangle.h for what is computed
#if defined(QL_KERNEL_SET_UP_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_KERNEL_SET_UP_INL_H
#undef QL_KERNEL_SET_UP_INL_H
#else
#define QL_KERNEL_SET_UP_INL_H
#endif

#include "platform/software/KernelVectors-inl.h"
#include "platform/software/Painting.h"

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

/// Places of the vertices of some triangles.
struct Corner16 {
  alignas(64) std::uint64_t xy[kSetUpAtOnce];
};

/// What of triangles is computed a lane each.
struct SetUp16 {
  alignas(64) std::int32_t a[3][kSetUpAtOnce], b[3][kSetUpAtOnce], c[3][kSetUpAtOnce];
  alignas(64) std::int32_t x0[kSetUpAtOnce], y0[kSetUpAtOnce], x1[kSetUpAtOnce], y1[kSetUpAtOnce];
  alignas(64) float x10[kSetUpAtOnce], x20[kSetUpAtOnce], y10[kSetUpAtOnce], y20[kSetUpAtOnce];
  alignas(64) float originX[kSetUpAtOnce], originY[kSetUpAtOnce];
  alignas(64) std::int32_t swapped[kSetUpAtOnce];  ///< vertices 1 and 2 change places
  alignas(64) std::int32_t wide[kSetUpAtOnce];     ///< too large for 32 bits: nothing else is valid
};

HWY_INLINE void setUpLanes(const Corner16* corners, std::int32_t tileX, std::int32_t tileY, const Box& area,
                           SetUp16& out) {
  constexpr std::int32_t kWide = 1 << 14;  // 64 pixels: products stay below 2^30
  for (std::size_t i = 0; i < kSetUpAtOnce; i += static_cast<std::size_t>(kWidth)) {
    const auto load = [&](int k, Ints& x, Ints& y) HWY_ATTR {
      const auto* at = reinterpret_cast<const std::int32_t*>(corners[k].xy + i);
      const Ints first = hn::Load(kInt, at), second = hn::Load(kInt, at + kWidth);
      x = hn::ConcatEven(kInt, second, first);
      y = hn::ConcatOdd(kInt, second, first);
    };
    Ints x0, y0, x1, y1, x2, y2;
    load(0, x0, y0);
    load(1, x1, y1);
    load(2, x2, y2);
    const Ints left = hn::Min(hn::Min(x0, x1), x2), right = hn::Max(hn::Max(x0, x1), x2);
    const Ints top = hn::Min(hn::Min(y0, y1), y2), bottom = hn::Max(hn::Max(y0, y1), y2);
    const Ints size = hn::Or(hn::Sub(right, left), hn::Sub(bottom, top));
    hn::Store(hn::AndNot(number(kWide - 1), size), kInt, out.wide + i);

    const Ints area0 = hn::Sub(hn::Mul(hn::Sub(x1, x0), hn::Sub(y2, y0)), hn::Mul(hn::Sub(y1, y0), hn::Sub(x2, x0)));
    const Pixels negative = hn::Lt(area0, hn::Zero(kInt));
    hn::Store(hn::VecFromMask(kInt, negative), kInt, out.swapped + i);
    const Ints px[3] = {x0, hn::IfThenElse(negative, x2, x1), hn::IfThenElse(negative, x1, x2)};
    const Ints py[3] = {y0, hn::IfThenElse(negative, y2, y1), hn::IfThenElse(negative, y1, y2)};
    const Ints startX = number(tileX * 256), startY = number(tileY * 256);
    for (int k = 0; k < 3; ++k) {
      const int next = k == 2 ? 0 : k + 1;
      const Ints a = hn::Sub(py[k], py[next]), b = hn::Sub(px[next], px[k]);
      const Ints c = hn::Add(hn::Mul(a, hn::Sub(startX, px[k])), hn::Mul(b, hn::Sub(startY, py[k])));
      // Neither a top nor a left edge: a < 0, or a is 0 and b <= 0.
      const Ints rule = hn::IfThenElse(hn::Eq(a, hn::Zero(kInt)), hn::Sub(b, number(1)), a);
      hn::Store(a, kInt, out.a[k] + i);
      hn::Store(b, kInt, out.b[k] + i);
      hn::Store(hn::ShiftRight<8>(hn::Add(c, hn::ShiftRight<31>(rule))), kInt, out.c[k] + i);
    }

    const auto first = [](Ints fixed) HWY_ATTR { return hn::ShiftRight<8>(hn::Add(fixed, number(255))); };
    const Ints one = number(1), baseX = number(tileX), baseY = number(tileY);
    hn::Store(hn::Sub(hn::Max(first(left), number(area.left)), baseX), kInt, out.x0 + i);
    hn::Store(hn::Sub(hn::Max(first(top), number(area.top)), baseY), kInt, out.y0 + i);
    hn::Store(hn::Sub(hn::Sub(hn::Min(first(right), number(area.right)), baseX), one), kInt, out.x1 + i);
    hn::Store(hn::Sub(hn::Sub(hn::Min(first(bottom), number(area.bottom)), baseY), one), kInt, out.y1 + i);

    const Floats scale = hn::Div(number(256.0f), hn::ConvertTo(kFloat, hn::Abs(area0)));
    const auto scaled = [&](Ints difference) HWY_ATTR { return hn::Mul(hn::ConvertTo(kFloat, difference), scale); };
    hn::Store(scaled(hn::Sub(px[1], x0)), kFloat, out.x10 + i);
    hn::Store(scaled(hn::Sub(px[2], x0)), kFloat, out.x20 + i);
    hn::Store(scaled(hn::Sub(py[1], y0)), kFloat, out.y10 + i);
    hn::Store(scaled(hn::Sub(py[2], y0)), kFloat, out.y20 + i);
    const Floats unit = number(1.0f / 256.0f);
    hn::Store(hn::Mul(hn::ConvertTo(kFloat, hn::Sub(startX, x0)), unit), kFloat, out.originX + i);
    hn::Store(hn::Mul(hn::ConvertTo(kFloat, hn::Sub(startY, y0)), unit), kFloat, out.originY + i);
  }
}

/// Planes of the attributes, some at a time.
HWY_INLINE void setUpPlanes(const float* const v[3], float x10, float x20, float y10, float y20, Triangle& t) {
  using Tag = hn::CappedTag<float, 4>;
  constexpr Tag d;
  constexpr std::int32_t kStep = 4;
  const auto w10 = hn::Set(d, x10), w20 = hn::Set(d, x20), h10 = hn::Set(d, y10), h20 = hn::Set(d, y20);
  std::int32_t k = 0;
  for (; k < t.attributes; k += kStep) {
    const auto at = [&](int corner) HWY_ATTR { return hn::LoadU(Tag(), v[corner] + kRecordHead + k); };
    const auto a0 = at(0), d1 = hn::Sub(at(1), a0), d2 = hn::Sub(at(2), a0);
    hn::Store(a0, d, t.value + k);
    hn::Store(hn::Sub(hn::Mul(d1, h20), hn::Mul(d2, h10)), d, t.dx + k);
    hn::Store(hn::Sub(hn::Mul(d2, w10), hn::Mul(d1, w20)), d, t.dy + k);
  }
  for (; k % kAttributeStep != 0; k += kStep)
    for (float* plane : {t.value, t.dx, t.dy}) hn::Store(hn::Zero(d), d, plane + k);
}

/// Sets triangles up, as setUp does one. @param out has a place for each
HWY_INLINE void setUpSome(const Pipeline& p, std::span<const TriangleRef> triangles, std::int32_t tileX,
                          std::int32_t tileY, const Box& area, Triangle* out) {
  const auto one = [&](std::size_t i) {
    const TriangleRef& r = triangles[i];
    setUp(p, r.v[0], r.v[1], r.v[2], tileX, tileY, area, out[i]);
  };
  const std::size_t count = triangles.size();
  if (p.flat || count < 3) {  // by lanes it doesn't pay
    for (std::size_t i = 0; i < count; ++i) one(i);
    return;
  }
  Corner16 corners[3];
  for (std::size_t i = 0; i < kSetUpAtOnce; ++i)
    for (int k = 0; k < 3; ++k)
      std::memcpy(&corners[k].xy[i], triangles[std::min(i, count - 1)].v[k] + kRecordX, sizeof corners[k].xy[i]);
  SetUp16 lanes;
  setUpLanes(corners, tileX, tileY, area, lanes);
  for (std::size_t i = 0; i < count; ++i) {
    if (HWY_UNLIKELY(lanes.wide[i] != 0)) {
      one(i);
      continue;
    }
    Triangle& t = out[i];
    for (int k = 0; k < 3; ++k) {
      t.a[k] = lanes.a[k][i];
      t.b[k] = lanes.b[k][i];
      t.c[k] = lanes.c[k][i];
    }
    t.x0 = lanes.x0[i];
    t.y0 = lanes.y0[i];
    t.x1 = lanes.x1[i];
    t.y1 = lanes.y1[i];
    t.originX = lanes.originX[i];
    t.originY = lanes.originY[i];
    t.attributes = p.attributes.count;
    const TriangleRef& r = triangles[i];
    const bool swapped = lanes.swapped[i] != 0;
    const float* v[3] = {r.v[0], r.v[swapped ? 2 : 1], r.v[swapped ? 1 : 2]};
    const float z0 = v[0][kRecordHead + kAttributeZ], z1 = v[1][kRecordHead + kAttributeZ],
                z2 = v[2][kRecordHead + kAttributeZ];
    t.zMin = std::min({z0, z1, z2});
    t.zMax = std::max({z0, z1, z2});
    setUpPlanes(v, lanes.x10[i], lanes.x20[i], lanes.y10[i], lanes.y20[i], t);
  }
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
