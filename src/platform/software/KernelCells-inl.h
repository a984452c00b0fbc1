/// @file
/// Looking at 8 × 8 pixels at a time, a row of them across the tile at once. @see Coarse.h
#if defined(QL_KERNEL_CELLS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_KERNEL_CELLS_INL_H
#undef QL_KERNEL_CELLS_INL_H
#else
#define QL_KERNEL_CELLS_INL_H
#endif

#include "platform/software/Coarse.h"
#include "platform/software/KernelVectors-inl.h"

#include <algorithm>

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

/// Cells in a row of a tile.
constexpr int kCells = kTileSide / TileDepth::kCoarseSide;
/// A bit for each cell of a row, from the left.
struct CellRow {
  std::uint32_t touched = 0, covered = 0;
};

/// Finds the cells of a row that a triangle may touch and that its nearest depth doesn't reject, and those that it
/// covers; keeps the bounds of the stored depths true. @param y of the row in the tile
HWY_INLINE void lookAtCells(const Pipeline& p, const Triangle& t, int y, bool rejects, std::int32_t* bounds,
                            CellRow& out) {
  using TagF = hn::CappedTag<float, kCells>;
  using TagI = hn::RebindToSigned<TagF>;
  constexpr TagF f;
  constexpr TagI d;
  constexpr int kSide = TileDepth::kCoarseSide, kReach = kSide - 1;
  alignas(32) static constexpr std::int32_t kPlaces[kCells] = {0, 8, 16, 24, 32, 40, 48, 56};
  constexpr auto lanes = static_cast<int>(hn::MaxLanes(TagF()));
  const auto whole = [](std::int32_t v) HWY_ATTR { return hn::Set(TagI(), v); };
  const auto real = [](float v) HWY_ATTR { return hn::Set(TagF(), v); };
  const bool rowBoxed = y >= t.y0 && y + kReach <= t.y1;
  out = {};
  for (int i = 0; i < kCells; i += lanes) {
    const auto x = hn::Load(d, kPlaces + i);
    auto most = whole(0), least = whole(0);
    for (int k = 0; k < 3; ++k) {
      const auto e = hn::Add(hn::Mul(x, whole(t.a[k])), whole(t.c[k] + t.b[k] * y));
      const std::int32_t a = t.a[k] * kReach, b = t.b[k] * kReach;
      most = hn::Or(most, hn::Add(e, whole(std::max(0, a) + std::max(0, b))));
      least = hn::Or(least, hn::Add(e, whole(std::min(0, a) + std::min(0, b))));
    }
    // The box also stands for the area, outside which nothing may be drawn.
    const auto beside = hn::Or(hn::Sub(hn::Add(x, whole(kReach)), whole(t.x0)), hn::Sub(whole(t.x1), x));
    auto touched = hn::Gt(hn::Or(most, beside), whole(-1));
    const auto boxed = hn::Or(hn::Sub(x, whole(t.x0)), hn::Sub(whole(t.x1 - kReach), x));
    auto covered = hn::And(touched, hn::Gt(hn::Or(least, boxed), whole(rowBoxed ? -1 : 0x7FFFFFFF)));
    if (p.depthTest) {
      // As coarseDepth has it.
      const float dx = t.dx[kAttributeZ], dy = t.dy[kAttributeZ], value = t.value[kAttributeZ];
      const float stepY = dy * (static_cast<float>(y) + t.originY), acrossX = dx * kReach, acrossY = dy * kReach;
      const auto size = [](float v) { return v < 0 ? -v : v; };
      const auto stepX = hn::Mul(real(dx), hn::Add(hn::ConvertTo(f, x), real(t.originX)));
      const auto base = hn::Add(hn::Add(real(value), stepX), real(stepY));
      const auto slack = hn::Add(
          real(1.0f), hn::Mul(hn::Add(hn::Abs(stepX), real(size(value) + size(stepY) + size(acrossX) + size(acrossY))),
                              real(1.0f / 262144)));
      const float below = std::min(acrossX, 0.0f) + std::min(acrossY, 0.0f);
      const float above = std::max(acrossX, 0.0f) + std::max(acrossY, 0.0f);
      const auto low = hn::Sub(hn::Add(base, real(below)), slack), high = hn::Add(hn::Add(base, real(above)), slack);
      // Not a number falls back to the range of the vertices.
      const auto nearest = hn::ConvertTo(d, hn::IfThenElse(hn::Gt(low, real(t.zMin)), low, real(t.zMin)));
      const auto farthest = hn::ConvertTo(d, hn::IfThenElse(hn::Lt(high, real(t.zMax)), high, real(t.zMax)));
      const auto bound = hn::LoadU(d, bounds + i);
      if (rejects) {
        touched = hn::AndNot(hn::Gt(nearest, bound), touched);
        covered = hn::And(covered, touched);
      }
      if (p.depthWrite) {
        using device::Compare;
        const auto reached = hn::Add(farthest, whole(1));
        const bool onlyNearer = p.depthFunction == Compare::Less || p.depthFunction == Compare::LessEqual;
        if (onlyNearer && !p.alphaTest)
          hn::StoreU(hn::IfThenElse(covered, hn::Min(bound, reached), bound), d, bounds + i);
        else if (raisesBound(p))
          hn::StoreU(hn::IfThenElse(touched, hn::Max(bound, reached), bound), d, bounds + i);
      }
    }
    const auto bits = [](auto mask) HWY_ATTR {
      std::uint8_t byte[8] = {};
      hn::StoreMaskBits(TagI(), mask, byte);
      return static_cast<std::uint32_t>(byte[0]) & ((1u << lanes) - 1);
    };
    out.touched |= bits(touched) << i;
    out.covered |= bits(covered) << i;
  }
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
