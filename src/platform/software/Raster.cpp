#include "platform/software/Raster.h"

#include "platform/software/Coarse.h"
#include "platform/software/Shade.h"

#include <algorithm>

namespace ql::software {
namespace {

template <Texturing kTexturing, Blending kBlending>
void raster(const Pipeline& p, const Triangle& t, Tile& tile) {
  constexpr int kSide = TileDepth::kCoarseSide;
  const Box inner{t.x0, t.y0, t.x1 + 1, t.y1 + 1};
  const bool reject = rejectsFar(p);
  std::int32_t reachMax[3], reachMin[3], blockMax[3];
  for (int k = 0; k < 3; ++k) {
    reachMax[k] = std::max(0, t.a[k] * (kSide - 1)) + std::max(0, t.b[k] * (kSide - 1));
    reachMin[k] = std::min(0, t.a[k] * (kSide - 1)) + std::min(0, t.b[k] * (kSide - 1));
    blockMax[k] = std::max(0, t.a[k] * (kBlockSide - 1)) + std::max(0, t.b[k] * (kBlockSide - 1));
  }
  const auto edge = [&t](int k, int x, int y) { return t.c[k] + t.a[k] * x + t.b[k] * y; };
  for (int y = t.y0 & ~(kSide - 1); y <= t.y1; y += kSide)
    for (int x = t.x0 & ~(kSide - 1); x <= t.x1; x += kSide) {
      const std::int32_t e0 = edge(0, x, y), e1 = edge(1, x, y), e2 = edge(2, x, y);
      if (((e0 + reachMax[0]) | (e1 + reachMax[1]) | (e2 + reachMax[2])) < 0) continue;
      // The box also stands for the viewport and the target's end: outside it nothing may be drawn.
      const bool boxed = x >= inner.left && y >= inner.top && x + kSide <= inner.right && y + kSide <= inner.bottom;
      const bool covered = boxed && ((e0 + reachMin[0]) | (e1 + reachMin[1]) | (e2 + reachMin[2])) >= 0;
      if (p.depthTest) {
        std::int32_t& bound =
            tile.depth->farthest[static_cast<std::size_t>((y / kSide) * (kTileSide / kSide) + x / kSide)];
        const Coarse coarse = coarseDepth(t, x, y);
        if (reject && static_cast<std::int32_t>(coarse.nearest) > bound) continue;
        updateBound(p, coarse, covered, bound);
      }
      for (int by = y; by < y + kSide; by += kBlockSide)
        for (int bx = x; bx < x + kSide; bx += kBlockSide) {
          if (covered) {
            shade<kTexturing, kBlending>(p, t, tile, bx, by, nullptr);
            continue;
          }
          if (bx > t.x1 || by > t.y1 || bx + kBlockSide <= t.x0 || by + kBlockSide <= t.y0) continue;
          if (((edge(0, bx, by) + blockMax[0]) | (edge(1, bx, by) + blockMax[1]) | (edge(2, bx, by) + blockMax[2])) < 0)
            continue;
          Mask mask;
          cover(t, bx, by, mask);
          if (!none(mask)) shade<kTexturing, kBlending>(p, t, tile, bx, by, &mask);
        }
    }
}

template <Texturing kTexturing, Blending kBlending>
void paint(const Pipeline& p, std::span<const TriangleRef> triangles, const Box& area, Tile& tile) {
  Triangle& t = tile.work.triangles[0];
  for (const TriangleRef& r : triangles) {
    setUp(p, r.v[0], r.v[1], r.v[2], tile.x, tile.y, area, t);
    raster<kTexturing, kBlending>(p, t, tile);
  }
}

template <Texturing kTexturing>
PaintFunction chooseBlend(Blending blending) {
  switch (blending) {
    case Blending::Opaque:
      return paint<kTexturing, Blending::Opaque>;
    case Blending::Alpha:
      return paint<kTexturing, Blending::Alpha>;
    case Blending::Multiply:
      return paint<kTexturing, Blending::Multiply>;
    case Blending::General:
      break;
  }
  return paint<kTexturing, Blending::General>;
}

}  // namespace

PaintFunction paintFunction(const Pipeline& p) {
  switch (p.texturing) {
    case Texturing::None:
      return chooseBlend<Texturing::None>(p.blending);
    case Texturing::Replace:
      return chooseBlend<Texturing::Replace>(p.blending);
    case Texturing::Modulate:
      return chooseBlend<Texturing::Modulate>(p.blending);
    case Texturing::General:
      break;
  }
  return chooseBlend<Texturing::General>(p.blending);
}

}  // namespace ql::software
