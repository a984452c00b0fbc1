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
#include "platform/software/KernelCombine-inl.h"
#include "platform/software/KernelSample-inl.h"
#include "platform/software/LevelOfDetail.h"

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

alignas(64) constexpr float kColumn[kLanes] = {0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3};
alignas(64) constexpr float kRow[kLanes] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
alignas(64) constexpr std::int32_t kColumnInt[kLanes] = {0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3};
alignas(64) constexpr std::int32_t kRowInt[kLanes] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};

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

/// Draws one triangle.
template <Texturing kTexturing, Blending kBlending>
class Painter {
 public:
  Painter(const Pipeline& pipeline, const Triangle& triangle, Tile& tile) : p_(pipeline), t_(triangle), tile_(tile) {
    const std::int32_t count = t_.attributes;
    for (int i = 0; i < kLanes; i += kWidth) {
      const Floats column = hn::Load(kFloat, kColumn + i), row = hn::Load(kFloat, kRow + i);
      for (std::int32_t k = 0; k < count; ++k)
        hn::Store(hn::Add(hn::Mul(number(t_.dx[k]), column), hn::Mul(number(t_.dy[k]), row)), kFloat, lane_[k] + i);
      const Ints x = hn::Load(kInt, kColumnInt + i), y = hn::Load(kInt, kRowInt + i);
      for (int k = 0; k < 3; ++k)
        hn::Store(hn::Add(hn::Mul(number(t_.a[k]), x), hn::Mul(number(t_.b[k]), y)), kInt, edge_[k] + i);
    }
    flatDistance_ = t_.dx[kAttributeQ] == 0 && t_.dy[kAttributeQ] == 0;
    if constexpr (kBlending == Blending::General)
      if (p_.target.sixteen()) rounding_ = roundingOf(p_);
    if constexpr (kTexturing != Texturing::None)
      for (std::size_t i = 0; i < stages(); ++i) {
        if (kTexturing == Texturing::General && !p_.stages[i].samples) continue;
        perBlock_[i] = !chooseOnce(p_.samplers[i], t_, p_.attributes.uv[i], p_.attributes.divisor[i], level_[i][0]);
        if (perBlock_[i]) continue;
        level_[i][1] = level_[i][2] = level_[i][3] = level_[i][0];
      }
  }

  std::uint64_t shaded() const { return shaded_; }
  void draw() {
    constexpr int kSide = TileDepth::kCoarseSide;
    for (int k = 0; k < 3; ++k)
      blockMax_[k] = std::max(0, t_.a[k] * (kBlockSide - 1)) + std::max(0, t_.b[k] * (kBlockSide - 1));
    if (t_.x1 - t_.x0 <= kSide && t_.y1 - t_.y0 <= kSide && !raisesBound(p_)) {
      for (int y = t_.y0 & ~(kBlockSide - 1); y <= t_.y1; y += kBlockSide)
        for (int x = t_.x0 & ~(kBlockSide - 1); x <= t_.x1; x += kBlockSide) {
          if (outside(x, y)) continue;
          chooseOne(x, y);
          block(x, y, false, 0);
        }
      return;
    }
    drawCells();
  }

 private:
  std::size_t stages() const { return static_cast<std::size_t>(p_.stageCount); }
  HWY_INLINE std::int32_t edge(int k, int x, int y) const { return t_.c[k] + t_.a[k] * x + t_.b[k] * y; }
  HWY_INLINE bool outside(int x, int y) const {
    return ((edge(0, x, y) + blockMax_[0]) | (edge(1, x, y) + blockMax_[1]) | (edge(2, x, y) + blockMax_[2])) < 0;
  }

  /// Through 8 × 8 pixels at a time.
  HWY_INLINE void drawCells() {
    constexpr int kSide = TileDepth::kCoarseSide;
    const bool reject = rejectsFar(p_);
    std::int32_t most[3], least[3];
    for (int k = 0; k < 3; ++k) {
      most[k] = std::max(0, t_.a[k] * (kSide - 1)) + std::max(0, t_.b[k] * (kSide - 1));
      least[k] = std::min(0, t_.a[k] * (kSide - 1)) + std::min(0, t_.b[k] * (kSide - 1));
    }
    for (int y = t_.y0 & ~(kSide - 1); y <= t_.y1; y += kSide)
      for (int x = t_.x0 & ~(kSide - 1); x <= t_.x1; x += kSide) {
        const std::int32_t e0 = edge(0, x, y), e1 = edge(1, x, y), e2 = edge(2, x, y);
        if (((e0 + most[0]) | (e1 + most[1]) | (e2 + most[2])) < 0) continue;
        const bool boxed = x >= t_.x0 && y >= t_.y0 && x + kSide - 1 <= t_.x1 && y + kSide - 1 <= t_.y1;
        const bool covered = boxed && ((e0 + least[0]) | (e1 + least[1]) | (e2 + least[2])) >= 0;
        if (p_.depthTest) {
          std::int32_t& bound =
              tile_.depth->farthest[static_cast<std::size_t>((y / kSide) * (kTileSide / kSide) + x / kSide)];
          const Coarse coarse = coarseDepth(t_, x, y);
          if (reject && static_cast<std::int32_t>(coarse.nearest) > bound) continue;
          updateBound(p_, coarse, covered, bound);
        }
        chooseFour(x, y);
        for (int i = 0; i < 4; ++i) {
          const int bx = x + (i & 1) * kBlockSide, by = y + (i >> 1) * kBlockSide;
          if (!covered) {
            if (bx > t_.x1 || by > t_.y1 || bx + kBlockSide <= t_.x0 || by + kBlockSide <= t_.y0) continue;
            if (outside(bx, by)) continue;
          }
          block(bx, by, covered, i);
        }
      }
  }

  HWY_INLINE LevelChoice levelAt(std::size_t stage, int x, int y) const {
    return chooseLevel(p_.samplers[stage], t_, p_.attributes.uv[stage], p_.attributes.divisor[stage],
                       static_cast<float>(x) + t_.originX, static_cast<float>(y) + t_.originY);
  }
  /// Levels of detail of one block, or of the four of 8 × 8 pixels.
  HWY_INLINE void chooseOne(int x, int y) {
    if constexpr (kTexturing == Texturing::None) return;
    for (std::size_t i = 0; i < stages(); ++i)
      if (perBlock_[i]) level_[i][0] = levelAt(i, x, y);
  }
  HWY_INLINE void chooseFour(int x, int y) {
    if constexpr (kTexturing == Texturing::None) return;
    using Tag = hn::CappedTag<float, 4>;
    constexpr Tag d;
    alignas(16) static constexpr float kX[4] = {0, 4, 0, 4}, kY[4] = {0, 0, 4, 4};
    for (std::size_t i = 0; i < stages(); ++i) {
      if (!perBlock_[i]) continue;
      const Sampler& s = p_.samplers[i];
      const std::int32_t uv = p_.attributes.uv[i], divisor = p_.attributes.divisor[i];
      // As chooseLevel does it.
      const auto set = [](float value) HWY_ATTR { return hn::Set(Tag(), value); };
      const auto centre = [&](int from, const float* offsets, float origin) HWY_ATTR {
        const auto first = hn::Add(set(static_cast<float>(from)), hn::Load(d, offsets));
        return hn::Add(hn::Add(first, set(origin)), set(1.5f));
      };
      const auto cx = centre(x, kX, t_.originX), cy = centre(y, kY, t_.originY);
      const auto at = [&](std::int32_t k) HWY_ATTR {
        return hn::Add(set(t_.value[k]), hn::Add(hn::Mul(set(t_.dx[k]), cx), hn::Mul(set(t_.dy[k]), cy)));
      };
      const auto w = hn::Div(set(1.0f), at(divisor)), u = hn::Mul(at(uv), w), v = hn::Mul(at(uv + 1), w);
      const auto acrossU = hn::Mul(w, set(s.width)), acrossV = hn::Mul(w, set(s.height));
      const auto slope = [&](float along, decltype(w) value, float q, decltype(w) across)
                             HWY_ATTR { return hn::Mul(hn::Sub(set(along), hn::Mul(value, set(q))), across); };
      const float qx = t_.dx[divisor], qy = t_.dy[divisor];
      const auto ux = slope(t_.dx[uv], u, qx, acrossU), vx = slope(t_.dx[uv + 1], v, qx, acrossV);
      const auto uy = slope(t_.dy[uv], u, qy, acrossU), vy = slope(t_.dy[uv + 1], v, qy, acrossV);
      const auto rx = hn::Add(hn::Mul(ux, ux), hn::Mul(vx, vx)), ry = hn::Add(hn::Mul(uy, uy), hn::Mul(vy, vy));
      alignas(16) float change[4];
      hn::Store(hn::Max(rx, ry), d, change);
      for (int k = 0; k < 4; ++k) level_[i][k] = levelFor(s, change[k]);
    }
  }

  /// An attribute's value at each pixel, as it is interpolated on the screen.
  HWY_INLINE Floats at(std::int32_t attribute, int i) const {
    return hn::Add(number(base_[attribute]), hn::Load(kFloat, lane_[attribute] + i));
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
  HWY_INLINE Color texture(std::size_t stage, int i, Floats w, int level) const {
    const std::int32_t uv = p_.attributes.uv[stage], divisor = p_.attributes.divisor[stage];
    const Floats scale = HWY_LIKELY(divisor == kAttributeQ) ? w : hn::Div(number(1.0f), at(divisor, i));
    const Floats u = hn::Mul(at(uv, i), scale), v = hn::Mul(at(uv + 1, i), scale);
    return sampleAt(p_.samplers[stage], level_[stage][level], u, v);
  }

  /// Interpolates, samples and combines: the colour that arrives at the alpha test.
  HWY_INLINE Color colorAt(int i, int level) const {
    const Floats q = at(kAttributeQ, i);
    const Floats w = flatDistance_ ? number(1.0f / base_[kAttributeQ]) : hn::Div(number(1.0f), q);
    Color out = stagesAt(i, w, level);
    if (p_.specularAdd)
      out = each([](Words c, Words s) HWY_ATTR { return withAlpha(limited(hn::Add(c, s)), c); }, out,
                 vertexColor(p_.attributes.specular, 0, i, w));
    return p_.fog.source == FogSource::None ? out : fogged(out, i, w);
  }
  /// The last stage's result.
  HWY_INLINE Color stagesAt(int i, Floats w, int level) const {
    if constexpr (kTexturing == Texturing::None) {
      return vertexColor(p_.attributes.diffuse, 0xFFFFFFFF, i, w);
    } else if constexpr (kTexturing == Texturing::Replace) {
      const Color texel = texture(0, i, w, level);
      return p_.second.active ? second(texel, texture(1, i, w, level)) : texel;
    } else if constexpr (kTexturing == Texturing::Modulate) {
      const Color texel = texture(0, i, w, level);
      const Color out = each([](Words a, Words b) HWY_ATTR { return product(a, b); }, texel,
                             vertexColor(p_.attributes.diffuse, 0xFFFFFFFF, i, w));
      return p_.second.active ? second(out, texture(1, i, w, level)) : out;
    } else {
      Inputs in;
      in.diffuse = vertexColor(p_.attributes.diffuse, 0xFFFFFFFF, i, w);
      in.specular = vertexColor(p_.attributes.specular, 0, i, w);
      in.factor = unpacked(hn::Set(kUint, p_.textureFactor));
      in.current = in.diffuse;
      for (std::size_t stage = 0; stage < stages(); ++stage) {
        if (p_.stages[stage].samples)
          in.texture = texture(stage, i, w, level);
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

  /// Draws a block. @param covered whether all its pixels are inside @param level which of level_ holds its levels
  HWY_INLINE void block(int x, int y, bool covered, int level) {
    const float atX = static_cast<float>(x) + t_.originX, atY = static_cast<float>(y) + t_.originY;
    using Tag = hn::CappedTag<float, kAttributeStep>;
    constexpr Tag d;
    const auto dx = hn::Set(d, atX), dy = hn::Set(d, atY);
    for (std::int32_t k = 0; k < t_.attributes; k += static_cast<std::int32_t>(hn::MaxLanes(d))) {
      const auto step = hn::Add(hn::Mul(hn::Load(d, t_.dx + k), dx), hn::Mul(hn::Load(d, t_.dy + k), dy));
      hn::Store(hn::Add(hn::Load(d, t_.value + k), step), d, base_ + k);
    }
    const auto place = static_cast<std::size_t>(blockOffset(x, y));
    std::uint32_t* const colors = tile_.color.data() + place;
    std::int32_t* const depths = tile_.depth->depth.data() + place;
    const std::int32_t e[3] = {edge(0, x, y), edge(1, x, y), edge(2, x, y)};
    const bool boxed = x >= t_.x0 && y >= t_.y0 && x + kBlockSide - 1 <= t_.x1 && y + kBlockSide - 1 <= t_.y1;
    for (int i = 0; i < kLanes; i += kWidth) {
      Pixels mask = hn::Eq(hn::Zero(kInt), hn::Zero(kInt));
      if (!covered) {
        mask = inside(e, i);
        if (!boxed) mask = hn::And(mask, insideBox(x, y, i));
        if (hn::AllFalse(kInt, mask)) continue;
      }
      Ints depth = hn::Zero(kInt), stored = depth;
      if (p_.depthTest) {
        depth = truncated(within(at(kAttributeZ, i), number(t_.zMin), number(t_.zMax)));
        stored = hn::Load(kInt, depths + i);
        mask = compared(p_.depthFunction, depth, stored, mask);
        if (hn::AllFalse(kInt, mask)) continue;
        if (p_.depthWrite && !p_.alphaTest) hn::Store(hn::IfThenElse(mask, depth, stored), kInt, depths + i);
      }
      shaded_ += hn::CountTrue(kInt, mask);
      const Color color = colorAt(i, level);
      if (p_.alphaTest) {
        const Ints alpha = hn::BitCast(kInt, hn::ShiftRight<24>(packed(color)));
        mask = compared(p_.alphaFunction, alpha, number(std::int32_t{p_.alphaRef}), mask);
        if (hn::AllFalse(kInt, mask)) continue;
        if (p_.depthWrite) hn::Store(hn::IfThenElse(mask, depth, stored), kInt, depths + i);
      }
      write(color, mask, covered && !p_.depthTest && !p_.alphaTest, colors + i, i);
    }
  }
  HWY_INLINE Pixels inside(const std::int32_t* e, int i) const {
    const auto value = [&](int k) HWY_ATTR { return hn::Add(number(e[k]), hn::Load(kInt, edge_[k] + i)); };
    return hn::Gt(hn::Or(hn::Or(value(0), value(1)), value(2)), number(-1));
  }
  HWY_INLINE Pixels insideBox(int x, int y, int i) const {
    const Ints px = hn::Add(number(x), hn::Load(kInt, kColumnInt + i));
    const Ints py = hn::Add(number(y), hn::Load(kInt, kRowInt + i));
    const Ints beyond = hn::Or(hn::Or(hn::Sub(px, number(t_.x0)), hn::Sub(number(t_.x1), px)),
                               hn::Or(hn::Sub(py, number(t_.y0)), hn::Sub(number(t_.y1), py)));
    return hn::Gt(beyond, number(-1));
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
  const Triangle& t_;
  Tile& tile_;
  alignas(64) float lane_[kMaxAttributes][kLanes];  ///< what a pixel adds to the value at its block's first one
  alignas(64) std::int32_t edge_[3][kLanes];
  alignas(64) float base_[kMaxAttributes];  ///< at the first pixel of the block that is being drawn
  std::int32_t blockMax_[3];
  std::uint64_t shaded_ = 0;
  bool flatDistance_ = false;  ///< the same w everywhere
  std::array<bool, device::kStages> perBlock_{};
  std::array<std::array<LevelChoice, 4>, device::kStages> level_;
  Rounding rounding_;
};

template <Texturing kTexturing, Blending kBlending>
void paint(const Pipeline& p, const Triangle& t, Tile& tile) {
  Painter<kTexturing, kBlending> painter(p, t, tile);
  painter.draw();
  tile.shaded += painter.shaded();
}

template <Texturing kTexturing>
RasterFunction withBlending(Blending blending) {
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

inline RasterFunction raster(const Pipeline& p) {
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
