/// @file
/// Drawing triangles with vectors of pixels. @see Shade.h and Raster.h for what is computed
#if defined(QL_KERNEL_RASTER_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_KERNEL_RASTER_INL_H
#undef QL_KERNEL_RASTER_INL_H
#else
#define QL_KERNEL_RASTER_INL_H
#endif

#include "platform/software/Coarse.h"
#include "platform/software/KernelBlend-inl.h"
#include "platform/software/KernelCells-inl.h"
#include "platform/software/KernelCombine-inl.h"
#include "platform/software/KernelLevels-inl.h"
#include "platform/software/KernelSample-inl.h"
#include "platform/software/KernelSetUp-inl.h"

#include <algorithm>
#include <bit>
#include <utility>

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

alignas(64) constexpr float kColumn[kLanes] = {0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3};
alignas(64) constexpr float kRow[kLanes] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
alignas(64) constexpr std::int32_t kColumnInt[kLanes] = {0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3};
alignas(64) constexpr std::int32_t kRowInt[kLanes] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
constexpr std::uint32_t kAllPixels = 0xFFFF;

/// Clears the pixels where "a compares to b" is false.
HWY_INLINE Pixels compared(device::Compare function, Ints a, Ints b, Pixels mask) {
  using device::Compare;
  switch (function) {
    case Compare::LessEqual:
      return hn::AndNot(hn::Gt(a, b), mask);
    case Compare::Less:
      return hn::And(hn::Lt(a, b), mask);
    case Compare::Equal:
      return hn::And(hn::Eq(a, b), mask);
    case Compare::Greater:
      return hn::And(hn::Gt(a, b), mask);
    case Compare::NotEqual:
      return hn::AndNot(hn::Eq(a, b), mask);
    case Compare::GreaterEqual:
      return hn::AndNot(hn::Lt(a, b), mask);
    case Compare::Never:
      return hn::Gt(a, a);
    default:
      return mask;
  }
}

/// @see expNegative
HWY_INLINE Floats expNegative(Floats x) {
  const Floats t = hn::Mul(within(x, number(0.0f), number(80.0f)), number(1.44269504f));
  const Ints whole = truncated(t);
  const Floats f = hn::Mul(hn::Sub(t, hn::ConvertTo(kFloat, whole)), number(-0.693147181f));
  Floats series = number(1.0f / 5040);
  for (const float term : {1.0f / 720, 1.0f / 120, 1.0f / 24, 1.0f / 6, 0.5f, 1.0f, 1.0f})
    series = hn::Add(hn::Mul(series, f), number(term));
  return hn::Mul(series, hn::BitCast(kFloat, hn::ShiftLeft<23>(hn::Sub(number(127), whole))));
}

/// @see fogFactor
HWY_INLINE Floats fogShare(const Fog& fog, Floats distance) {
  switch (fog.mode) {
    case device::FogMode::Exp:
      return expNegative(hn::Mul(distance, number(fog.density)));
    case device::FogMode::Exp2: {
      const Floats x = hn::Mul(distance, number(fog.density));
      return expNegative(hn::Mul(x, x));
    }
    case device::FogMode::Linear:
      return within(hn::Mul(hn::Sub(number(fog.end), distance), number(fog.scale)), number(0.0f), number(1.0f));
    case device::FogMode::None:
      break;
  }
  return number(1.0f);
}

/// Draws triangles of one pipeline into a tile, in order and in two steps: triangles are set up some at a time and
/// their blocks listed, then the blocks are shaded. So set-up of one triangle never waits for another's pixels, and the
/// loop over pixels hardly ever branches the wrong way.
template <Texturing kTexturing, Blending kBlending>
class Painter {
 public:
  Painter(const Pipeline& pipeline, const Box& area, Tile& tile)
      : p_(pipeline), area_(area), tile_(tile), raises_(raisesBound(pipeline)), rejects_(rejectsFar(pipeline)) {
    cut_ = area.left != tile.x || area.top != tile.y || area.right != tile.x + kTileSide ||
           area.bottom != tile.y + kTileSide;
    if constexpr (kBlending == Blending::General)
      if (p_.target.sixteen()) rounding_ = roundingOf(p_);
  }

  void draw(std::span<const TriangleRef> triangles) {
    while (!triangles.empty()) {
      const std::size_t count = std::min<std::size_t>(triangles.size(), kSetUpAtOnce);
      setUpSome(p_, triangles.first(count), tile_.x, tile_.y, area_, work_.triangles);
      for (std::size_t slot = 0; slot < count; ++slot) list(slot);
      shadeAll();
      triangles = triangles.subspan(count);
    }
    tile_.shaded += shaded_;
  }

 private:
  static constexpr int kSmallSide = 12;  ///< triangles not larger are small
  static constexpr std::size_t kMostItems = Workspace::kMostItems;
  static constexpr std::size_t kItemsOfSmall = (kSmallSide / kBlockSide + 1) * (kSmallSide / kBlockSide + 1);

  std::size_t stages() const { return static_cast<std::size_t>(p_.stageCount); }

  /// Lists the blocks of a triangle that was set up.
  HWY_INLINE void list(std::size_t slot) {
    const Triangle& t = work_.triangles[slot];
    if (t.x0 > t.x1 || t.y0 > t.y1) return;
    Workspace::Slot& s = work_.slots[slot];
    for (int i = 0; i < kLanes; i += kWidth) {
      const Floats column = hn::Load(kFloat, kColumn + i), row = hn::Load(kFloat, kRow + i);
      for (std::int32_t k = 0; k < t.attributes; ++k)
        hn::Store(hn::Add(hn::Mul(number(t.dx[k]), column), hn::Mul(number(t.dy[k]), row)), kFloat, s.lane[k] + i);
      const Ints x = hn::Load(kInt, kColumnInt + i), y = hn::Load(kInt, kRowInt + i);
      for (int k = 0; k < 3; ++k)
        hn::Store(hn::Add(hn::Mul(number(t.a[k]), x), hn::Mul(number(t.b[k]), y)), kInt, edge_[k] + i);
    }
    s.flatDistance = t.dx[kAttributeQ] == 0 && t.dy[kAttributeQ] == 0;
    if (t.x1 - t.x0 < kSmallSide && t.y1 - t.y0 < kSmallSide && !raises_)
      listBlocks(t, slot);
    else
      listCells(t, slot);
  }

  /// Appends a block unless it has no pixel. No branch: it would go either way.
  HWY_INLINE void append(std::size_t slot, int x, int y, std::uint32_t mask, bool covered) {
    work_.x[items_] = static_cast<std::uint8_t>(x);
    work_.y[items_] = static_cast<std::uint8_t>(y);
    work_.items[items_] = {static_cast<std::uint8_t>(slot), covered, static_cast<std::uint16_t>(mask)};
    items_ += mask != 0;
  }

  HWY_INLINE void listBlocks(const Triangle& t, std::size_t slot) {
    if (items_ + kItemsOfSmall > kMostItems) shadeAll();
    for (int y = t.y0 & ~(kBlockSide - 1); y <= t.y1; y += kBlockSide)
      for (int x = t.x0 & ~(kBlockSide - 1); x <= t.x1; x += kBlockSide) append(slot, x, y, inside(t, x, y), false);
  }

  /// Through 8 × 8 pixels, a row of them at a time.
  HWY_INLINE void listCells(const Triangle& t, std::size_t slot) {
    constexpr int kSide = TileDepth::kCoarseSide;
    CellRow row;
    for (int y = t.y0 & ~(kSide - 1); y <= t.y1; y += kSide) {
      std::int32_t* bounds = tile_.depth->farthest.data() + (y / kSide) * (kTileSide / kSide);
      lookAtCells(p_, t, y, rejects_, bounds, row);
      if (items_ + 4 * kCells > kMostItems) shadeAll();
      for (std::uint32_t left = row.touched; left != 0; left &= left - 1) {
        const int cell = std::countr_zero(left), x = cell * kSide;
        if (row.covered >> cell & 1) {
          for (const auto& [dx, dy] : {std::pair{0, 0}, {4, 0}, {0, 4}, {4, 4}})
            append(slot, x + dx, y + dy, kAllPixels, true);
          continue;
        }
        for (const auto& [dx, dy] : {std::pair{0, 0}, {4, 0}, {0, 4}, {4, 4}}) {
          const std::uint32_t mask = inside(t, x + dx, y + dy);
          append(slot, x + dx, y + dy, mask, mask == kAllPixels);
        }
      }
    }
  }

  /// One bit for each pixel of a block that is inside the triangle. A pixel inside all edges is inside the triangle's
  /// own box, so the box matters only where the area cut it.
  HWY_INLINE std::uint32_t inside(const Triangle& t, int x, int y) const {
    std::uint32_t bits = 0;
    const Ints e0 = number(t.c[0] + t.a[0] * x + t.b[0] * y);
    const Ints e1 = number(t.c[1] + t.a[1] * x + t.b[1] * y);
    const Ints e2 = number(t.c[2] + t.a[2] * x + t.b[2] * y);
    for (int i = 0; i < kLanes; i += kWidth) {
      const auto value = [&](Ints e, int k) HWY_ATTR { return hn::Add(e, hn::Load(kInt, edge_[k] + i)); };
      Ints outside = hn::Or(hn::Or(value(e0, 0), value(e1, 1)), value(e2, 2));
      if (cut_) {
        const Ints px = hn::Add(number(x), hn::Load(kInt, kColumnInt + i));
        const Ints py = hn::Add(number(y), hn::Load(kInt, kRowInt + i));
        outside = hn::Or(outside, hn::Or(hn::Or(hn::Sub(px, number(t.x0)), hn::Sub(number(t.x1), px)),
                                         hn::Or(hn::Sub(py, number(t.y0)), hn::Sub(number(t.y1), py))));
      }
      bits |= bitsOf(hn::Gt(outside, number(-1))) << i;
    }
    return bits;
  }

  HWY_NOINLINE void shadeAll() {
    if constexpr (kTexturing != Texturing::None)
      for (std::size_t i = 0; i < stages(); ++i)
        if (kTexturing != Texturing::General || p_.stages[i].samples) chooseAllLevels(i);
    for (std::size_t i = 0; i < items_; ++i) shade(i);
    items_ = 0;
  }

  /// Levels of detail of all blocks that wait, triangle by triangle.
  HWY_INLINE void chooseAllLevels(std::size_t stage) {
    const Sampler& s = p_.samplers[stage];
    LevelChoice* const out = work_.levels[stage];
    if (!choosesLevel(s)) {
      std::fill_n(out, items_, onlyLevel(s));
      return;
    }
    for (std::size_t first = 0, end = 0; first < items_; first = end) {
      const std::uint8_t slot = work_.items[first].slot;
      for (end = first + 1; end < items_ && work_.items[end].slot == slot;) ++end;
      chooseLevels(s, work_.triangles[slot], p_.attributes.uv[stage], p_.attributes.divisor[stage], work_.x + first,
                   work_.y + first, end - first, out + first);
    }
  }

  /// An attribute's value at each pixel, as it is interpolated on the screen.
  HWY_INLINE Floats at(std::int32_t attribute, int i) const {
    return hn::Add(number(base_[attribute]), hn::Load(kFloat, slot_->lane[attribute] + i));
  }
  HWY_INLINE Ints channel(std::int32_t attribute, int i, Floats w) const {
    const Floats value = within(hn::Mul(at(attribute, i), w), number(0.0f), number(255.0f));
    return truncated(hn::Add(value, number(0.5f)));
  }
  HWY_INLINE Color vertexColor(std::int32_t attribute, std::uint32_t otherwise, int i, Floats w) const {
    if (attribute < 0) return unpacked(hn::Set(kUint, otherwise));
    return gathered(channel(attribute, i, w), channel(attribute + 1, i, w), channel(attribute + 2, i, w),
                    channel(attribute + 3, i, w));
  }
  HWY_INLINE Color diffuse(int i, Floats w) const { return vertexColor(p_.attributes.diffuse, 0xFFFFFFFF, i, w); }
  template <bool kQuick>
  HWY_INLINE Color texture(std::size_t stage, int i, Floats w) const {
    const std::int32_t uv = p_.attributes.uv[stage], divisor = p_.attributes.divisor[stage];
    const Floats scale = HWY_LIKELY(divisor == kAttributeQ) ? w : hn::Div(number(1.0f), at(divisor, i));
    const Floats u = hn::Mul(at(uv, i), scale), v = hn::Mul(at(uv + 1, i), scale);
    const Sampler& s = p_.samplers[stage];
    if constexpr (kQuick) return sampleQuickly(s, s.levels[work_.levels[stage][item_].level], u, v);
    return sampleAt(s, work_.levels[stage][item_], u, v);
  }

  /// Interpolates, samples and combines: the colour that arrives at the alpha test.
  template <bool kQuick>
  HWY_INLINE Color colorAt(int i) const {
    const Floats q = at(kAttributeQ, i);
    const Floats w = slot_->flatDistance ? number(1.0f / base_[kAttributeQ]) : hn::Div(number(1.0f), q);
    Color out = stagesAt<kQuick>(i, w);
    if (p_.specularAdd)
      out = each([](Words c, Words s) HWY_ATTR { return withAlpha(limited(hn::Add(c, s)), c); }, out,
                 vertexColor(p_.attributes.specular, 0, i, w));
    return p_.fog.source == FogSource::None ? out : fogged(out, i, w);
  }
  /// The last stage's result.
  template <bool kQuick>
  HWY_INLINE Color stagesAt(int i, Floats w) const {
    if constexpr (kTexturing == Texturing::None) {
      return diffuse(i, w);
    } else if constexpr (kTexturing == Texturing::Replace) {
      const Color texel = texture<kQuick>(0, i, w);
      return p_.second.active ? second(texel, texture<kQuick>(1, i, w)) : texel;
    } else if constexpr (kTexturing == Texturing::Modulate) {
      const Color texel = texture<kQuick>(0, i, w), vertex = diffuse(i, w);
      Color out = each([](Words a, Words b) HWY_ATTR { return product(a, b); }, texel, vertex);
      if (p_.firstAlpha != FirstAlpha::Multiply)
        out = each([](Words c, Words a) HWY_ATTR { return withAlpha(c, a); }, out,
                   p_.firstAlpha == FirstAlpha::Texture ? texel : vertex);
      return p_.second.active ? second(out, texture<kQuick>(1, i, w)) : out;
    } else {
      Inputs in;
      in.diffuse = diffuse(i, w);
      in.specular = vertexColor(p_.attributes.specular, 0, i, w);
      in.factor = unpacked(hn::Set(kUint, p_.textureFactor));
      in.current = in.diffuse;
      for (std::size_t stage = 0; stage < stages(); ++stage) {
        if (p_.stages[stage].samples)
          in.texture = texture<false>(stage, i, w);
        else
          in.texture = {word(255), word(255)};
        combineStage(p_.stages[stage], in);
      }
      return in.current;
    }
  }
  /// A second stage that multiplies.
  HWY_INLINE Color second(const Color& current, const Color& texel) const {
    const Words most = word(65025 >> p_.second.shift);
    return each(
        [&](Words c, Words t) HWY_ATTR {
          const Words out = over255(hn::ShiftLeftSame(hn::Min(hn::Mul(c, t), most), p_.second.shift));
          if (p_.second.alpha == SecondStage::Alpha::Multiply) return out;
          return withAlpha(out, p_.second.alpha == SecondStage::Alpha::Keep ? c : t);
        },
        current, texel);
  }

  HWY_INLINE Color fogged(const Color& color, int i, Floats w) const {
    const Ints share = p_.fog.source == FogSource::Vertex
                           ? channel(p_.attributes.fog, i, w)
                           : truncated(hn::Add(hn::Mul(fogShare(p_.fog, w), number(255.0f)), number(0.5f)));
    return each([](Words c, Words fog, Words f) HWY_ATTR { return withAlpha(mixed(c, fog, f), c); }, color,
                unpacked(hn::Set(kUint, p_.fog.color)), spread(share));
  }

  /// Draws a block.
  HWY_INLINE void shade(std::size_t place) {
    const Workspace::Item item = work_.items[place];
    const int x = work_.x[place], y = work_.y[place];
    const Triangle& t = work_.triangles[item.slot];
    slot_ = &work_.slots[item.slot];
    item_ = place;
    using Tag = hn::CappedTag<float, kAttributeStep>;
    constexpr Tag d;
    const auto dx = hn::Set(d, static_cast<float>(x) + t.originX);
    const auto dy = hn::Set(d, static_cast<float>(y) + t.originY);
    for (std::int32_t k = 0; k < t.attributes; k += static_cast<std::int32_t>(hn::MaxLanes(d))) {
      const auto step = hn::Add(hn::Mul(hn::Load(d, t.dx + k), dx), hn::Mul(hn::Load(d, t.dy + k), dy));
      hn::Store(hn::Add(hn::Load(d, t.value + k), step), d, base_ + k);
    }
    const auto offset = static_cast<std::size_t>(blockOffset(x, y));
    std::uint32_t* const colors = tile_.color.data() + offset;
    std::int32_t* const depths = tile_.depth->depth.data() + offset;
    if (quick(place))
      shadePixels<true>(t, item, colors, depths);
    else
      shadePixels<false>(t, item, colors, depths);
  }
  /// Whether all textures of a block are filtered, from one level, and addressed quickly.
  HWY_INLINE bool quick(std::size_t place) const {
    if constexpr (kTexturing == Texturing::Replace || kTexturing == Texturing::Modulate) {
      const auto is = [&](std::size_t stage) {
        const LevelChoice& choice = work_.levels[stage][place];
        return p_.samplers[stage].fast && choice.linear && choice.blend == 0;
      };
      return is(0) && (!p_.second.active || is(1));
    }
    return false;
  }
  template <bool kQuick>
  HWY_INLINE void shadePixels(const Triangle& t, const Workspace::Item& item, std::uint32_t* colors,
                              std::int32_t* depths) {
    for (int i = 0; i < kLanes; i += kWidth) {
      Pixels mask = pixelsOf(static_cast<std::uint32_t>(item.mask) >> i);
      if (kWidth < kLanes && hn::AllFalse(kInt, mask)) continue;
      Ints depth = hn::Zero(kInt), stored = depth;
      if (p_.depthTest) {
        depth = truncated(within(at(kAttributeZ, i), number(t.zMin), number(t.zMax)));
        stored = hn::Load(kInt, depths + i);
        mask = compared(p_.depthFunction, depth, stored, mask);
        if (hn::AllFalse(kInt, mask)) continue;
        if (p_.depthWrite && !p_.alphaTest) hn::Store(hn::IfThenElse(mask, depth, stored), kInt, depths + i);
      }
      shaded_ += hn::CountTrue(kInt, mask);
      const Color color = colorAt<kQuick>(i);
      if (p_.alphaTest) {
        const Ints alpha = hn::BitCast(kInt, hn::ShiftRight<24>(packed(color)));
        mask = compared(p_.alphaFunction, alpha, number(std::int32_t{p_.alphaRef}), mask);
        if (hn::AllFalse(kInt, mask)) continue;
        if (p_.depthWrite) hn::Store(hn::IfThenElse(mask, depth, stored), kInt, depths + i);
      }
      write(color, mask, item.covered && !p_.depthTest && !p_.alphaTest, colors + i, i);
    }
  }

  HWY_INLINE void write(const Color& color, Pixels mask, bool all, std::uint32_t* pixels, int i) const {
    Color out = color;
    if constexpr (kBlending == Blending::Alpha) {
      out = each([](Words s, Words d) HWY_ATTR { return mixed(s, d, alphaOf(s)); }, color,
                 unpacked(hn::Load(kUint, pixels)));
    } else if constexpr (kBlending == Blending::Multiply) {
      out = each([](Words s, Words d) HWY_ATTR { return product(s, d); }, color, unpacked(hn::Load(kUint, pixels)));
    } else if constexpr (kBlending == Blending::General) {
      if (p_.blend)
        out = each([this](Words s, Words d) HWY_ATTR { return blended(p_, s, d); }, color,
                   unpacked(hn::Load(kUint, pixels)));
      if (p_.target.sixteen())
        out = each([this](Words c, Words pattern) HWY_ATTR { return rounded(rounding_, c, pattern); }, out,
                   spread(hn::Load(kInt, kDitherRank + i)));
    }
    const std::uint32_t ones = p_.target.alpha == 0 ? 0xFF000000 : 0;
    Uints result = hn::Or(packed(out), hn::Set(kUint, ones));
    if constexpr (kBlending == Blending::General) {
      const Uints channels = hn::Set(kUint, p_.writeMask | ones);
      result = hn::Or(hn::And(result, channels), hn::AndNot(channels, hn::Load(kUint, pixels)));
    }
    if (all)
      hn::Store(result, kUint, pixels);
    else
      hn::BlendedStore(result, hn::RebindMask(kUint, mask), kUint, pixels);
  }

  const Pipeline& p_;
  const Box& area_;
  Tile& tile_;
  const bool raises_, rejects_;
  bool cut_ = false;  ///< the area is not the whole tile
  std::uint64_t shaded_ = 0;

  Workspace& work_ = tile_.work;
  std::size_t items_ = 0;
  // Of the triangle that is being listed.
  alignas(64) std::int32_t edge_[3][kLanes];
  // Of the block that is being drawn.
  alignas(64) float base_[kMaxAttributes];  ///< at its first pixel
  const Workspace::Slot* slot_ = nullptr;
  std::size_t item_ = 0;
  Rounding rounding_;
};

template <Texturing kTexturing, Blending kBlending>
void paint(const Pipeline& p, std::span<const TriangleRef> triangles, const Box& area, Tile& tile) {
  Painter<kTexturing, kBlending>(p, area, tile).draw(triangles);
}

template <Texturing kTexturing>
PaintFunction withBlending(Blending blending) {
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

inline PaintFunction painter(const Pipeline& p) {
  switch (p.firstTexturing) {
    case Texturing::None:
      return withBlending<Texturing::None>(p.blending);
    case Texturing::Replace:
      return withBlending<Texturing::Replace>(p.blending);
    case Texturing::Modulate:
      return withBlending<Texturing::Modulate>(p.blending);
    case Texturing::General:
      break;
  }
  return withBlending<Texturing::General>(p.blending);
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
