/// @file
/// Texture stages on vectors of pixels: any operation on any arguments. @see Combine.h for what is computed
#if defined(QL_KERNEL_COMBINE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_KERNEL_COMBINE_INL_H
#undef QL_KERNEL_COMBINE_INL_H
#else
#define QL_KERNEL_COMBINE_INL_H
#endif

#include "platform/software/KernelVectors-inl.h"
#include "platform/software/Pipeline.h"

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

/// What the arguments of a stage can name.
struct Inputs {
  Color diffuse, specular, texture, factor, current;
};

HWY_INLINE const Color& named(std::uint8_t arg, const Inputs& in) {
  using device::TextureArg;
  switch (static_cast<TextureArg>(arg & device::kArgSelectMask)) {
    case TextureArg::Diffuse:
      return in.diffuse;
    case TextureArg::Texture:
      return in.texture;
    case TextureArg::TextureFactor:
      return in.factor;
    case TextureArg::Specular:
      return in.specular;
    default:
      return in.current;
  }
}

HWY_INLINE Color argument(std::uint8_t arg, const Inputs& in) {
  Color out = named(arg, in);
  if (arg & device::kArgAlphaReplicate) out = alphaOf(out);
  if (arg & device::kArgComplement) out = {inverted(out.low), inverted(out.high)};
  return out;
}

HWY_INLINE Color factorOf(device::TextureOp op, const Inputs& in) {
  using device::TextureOp;
  switch (op) {
    case TextureOp::BlendDiffuseAlpha:
      return alphaOf(in.diffuse);
    case TextureOp::BlendTextureAlpha:
    case TextureOp::BlendTextureAlphaPremultiplied:
      return alphaOf(in.texture);
    case TextureOp::BlendFactorAlpha:
      return alphaOf(in.factor);
    default:
      return alphaOf(in.current);
  }
}

/// A product doubled or quadrupled: all that exceeds 255 · 255 gives 255.
template <int kShift>
HWY_INLINE Words scaledProduct(Words a, Words b) {
  return over255(hn::ShiftLeft<kShift>(hn::Min(hn::Mul(a, b), word(65025 >> kShift))));
}

HWY_INLINE Color operate(device::TextureOp op, const std::array<std::uint8_t, 3>& args, const Inputs& in) {
  using device::TextureOp;
  const Color x = argument(args[1], in);
  const auto second = [&]() HWY_ATTR { return argument(args[2], in); };
  const auto third = [&]() HWY_ATTR { return argument(args[0], in); };
  switch (op) {
    case TextureOp::SelectArg2:
      return second();
    case TextureOp::Modulate:
      return each([](Words a, Words b) HWY_ATTR { return product(a, b); }, x, second());
    case TextureOp::Modulate2x:
      return each([](Words a, Words b) HWY_ATTR { return scaledProduct<1>(a, b); }, x, second());
    case TextureOp::Modulate4x:
      return each([](Words a, Words b) HWY_ATTR { return scaledProduct<2>(a, b); }, x, second());
    case TextureOp::Add:
      return each([](Words a, Words b) HWY_ATTR { return limited(hn::Add(a, b)); }, x, second());
    case TextureOp::AddSigned:
      return each([](Words a, Words b) HWY_ATTR { return limited(hn::SaturatedSub(hn::Add(a, b), word(128))); }, x,
                  second());
    case TextureOp::AddSigned2x:
      return each([](Words a, Words b)
                      HWY_ATTR { return limited(hn::ShiftLeft<1>(hn::SaturatedSub(hn::Add(a, b), word(128)))); },
                  x, second());
    case TextureOp::Subtract:
      return each([](Words a, Words b) HWY_ATTR { return hn::SaturatedSub(a, b); }, x, second());
    case TextureOp::AddSmooth:
      return each([](Words a, Words b) HWY_ATTR { return limited(hn::Add(a, product(inverted(a), b))); }, x, second());
    case TextureOp::BlendDiffuseAlpha:
    case TextureOp::BlendTextureAlpha:
    case TextureOp::BlendFactorAlpha:
    case TextureOp::BlendCurrentAlpha:
      return each([](Words a, Words b, Words f) HWY_ATTR { return mixed(a, b, f); }, x, second(), factorOf(op, in));
    case TextureOp::BlendTextureAlphaPremultiplied:
      return each([](Words a, Words b, Words f) HWY_ATTR { return limited(hn::Add(a, product(b, inverted(f)))); }, x,
                  second(), factorOf(op, in));
    case TextureOp::ModulateAlphaAddColor:
      return each([](Words a, Words b) HWY_ATTR { return limited(hn::Add(a, product(alphaOf(a), b))); }, x, second());
    case TextureOp::ModulateColorAddAlpha:
      return each([](Words a, Words b) HWY_ATTR { return limited(hn::Add(product(a, b), alphaOf(a))); }, x, second());
    case TextureOp::ModulateInvAlphaAddColor:
      return each([](Words a, Words b) HWY_ATTR { return limited(hn::Add(product(inverted(alphaOf(a)), b), a)); }, x,
                  second());
    case TextureOp::ModulateInvColorAddAlpha:
      return each([](Words a, Words b) HWY_ATTR { return limited(hn::Add(product(inverted(a), b), alphaOf(a))); }, x,
                  second());
    case TextureOp::MultiplyAdd:
      return each([](Words a, Words b, Words c) HWY_ATTR { return limited(hn::Add(c, product(a, b))); }, x, second(),
                  third());
    case TextureOp::Lerp:
      return each([](Words a, Words b, Words f) HWY_ATTR { return mixed(a, b, f); }, x, second(), third());
    default:
      return x;
  }
}

/// Four times the sum of the products of the channels around their middle, in all channels.
HWY_INLINE Words dotProduct(Words a, Words b) {
  const Shorts middle = hn::Set(kShort, std::int16_t{128});
  const Words x = hn::BitCast(kWord, hn::Sub(hn::BitCast(kShort, a), middle));
  const Words y = hn::BitCast(kWord, hn::Sub(hn::BitCast(kShort, b), middle));
  const Words noAlpha = withAlpha(y, hn::Zero(kWord));
  const Ints parts = multiplyAddShorts(hn::BitCast(kShort, x), hn::BitCast(kShort, noAlpha));
  const Ints sum = hn::Add(parts, hn::Shuffle2301(parts));
  // Beyond 16384 the result is 255 anyway, and the division by 255 below is exact up to there.
  const Ints inside = hn::Min(hn::Max(sum, hn::Zero(kInt)), number(16384));
  const Uints four = hn::BitCast(kUint, hn::Add(hn::ShiftLeft<2>(inside), number(127)));
  const Uints dot =
      hn::Min(hn::ShiftRight<23>(hn::Mul(four, hn::Set(kUint, 0x8081u))), hn::Set(kUint, std::uint32_t{255}));
  return hn::BitCast(kWord, hn::Or(dot, hn::ShiftLeft<16>(dot)));
}

/// Carries out a stage: in.current becomes its result.
HWY_INLINE void combineStage(const Stage& stage, Inputs& in) {
  using device::TextureOp;
  if (stage.colorOp == TextureOp::DotProduct3) {
    in.current = each([](Words a, Words b) HWY_ATTR { return dotProduct(a, b); }, argument(stage.colorArgs[1], in),
                      argument(stage.colorArgs[2], in));
    return;
  }
  const Color color = operate(stage.colorOp, stage.colorArgs, in);
  if (stage.alphaOp == stage.colorOp && stage.alphaArgs == stage.colorArgs) {
    in.current = color;
    return;
  }
  const Color alpha = stage.alphaOp == TextureOp::Disable ? in.current : operate(stage.alphaOp, stage.alphaArgs, in);
  in.current = each([](Words c, Words a) HWY_ATTR { return withAlpha(c, a); }, color, alpha);
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
