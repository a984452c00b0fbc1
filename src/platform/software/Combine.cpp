#include "platform/software/Combine.h"

#include "platform/software/Numeric.h"

#include <algorithm>

namespace ql::software {
namespace {

using device::TextureArg;
using device::TextureOp;
using Plane = Lanes<std::uint16_t>;

constexpr std::int32_t kFull = 255, kHalf = 128, kLimit = 255 * 255;

const Colors& select(std::uint8_t arg, const StageInputs& in, const Colors& current) {
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
      return current;
  }
}

// A channel of an argument, with its modifiers.
void fetch(std::uint8_t arg, int channel, const StageInputs& in, const Colors& current, Plane& out) {
  const Plane& from = select(arg, in, current).c[arg & device::kArgAlphaReplicate ? kAlpha : channel];
  const std::uint16_t flip = arg & device::kArgComplement ? 255 : 0;  // 255 - x, as x has 8 bits
  for (int i = 0; i < kLanes; ++i) out[i] = from[i] ^ flip;
}

std::int32_t product(std::int32_t a, std::int32_t b) { return div255(static_cast<std::uint32_t>(a * b)); }
std::int32_t scaledProduct(std::int32_t a, std::int32_t b, std::int32_t scale) {
  return div255(static_cast<std::uint32_t>(std::min(a * b * scale, kLimit)));
}
// f of a and the rest of b.
std::int32_t mix(std::int32_t a, std::int32_t b, std::int32_t f) {
  return div255(static_cast<std::uint32_t>(a * f + b * (kFull - f)));
}

template <class F>
void apply(Plane& out, F&& f) {
  for (int i = 0; i < kLanes; ++i) out[i] = static_cast<std::uint16_t>(std::clamp(f(i), 0, kFull));
}

// One channel of an operation. @param factor the alpha of the Blend operations @param alpha1 argument 1's alpha
void operate(TextureOp op, const Plane& a0, const Plane& a1, const Plane& a2, const Plane& factor, const Plane& alpha1,
             Plane& out) {
  const auto x = [&](int i) { return std::int32_t{a1[i]}; };
  const auto y = [&](int i) { return std::int32_t{a2[i]}; };
  const auto f = [&](int i) { return std::int32_t{factor[i]}; };
  const auto alpha = [&](int i) { return std::int32_t{alpha1[i]}; };
  switch (op) {
    case TextureOp::SelectArg2:
      out = a2;
      break;
    case TextureOp::Modulate:
      apply(out, [&](int i) { return product(x(i), y(i)); });
      break;
    case TextureOp::Modulate2x:
      apply(out, [&](int i) { return scaledProduct(x(i), y(i), 2); });
      break;
    case TextureOp::Modulate4x:
      apply(out, [&](int i) { return scaledProduct(x(i), y(i), 4); });
      break;
    case TextureOp::Add:
      apply(out, [&](int i) { return x(i) + y(i); });
      break;
    case TextureOp::AddSigned:
      apply(out, [&](int i) { return x(i) + y(i) - kHalf; });
      break;
    case TextureOp::AddSigned2x:
      apply(out, [&](int i) { return (x(i) + y(i) - kHalf) * 2; });
      break;
    case TextureOp::Subtract:
      apply(out, [&](int i) { return x(i) - y(i); });
      break;
    case TextureOp::AddSmooth:
      apply(out, [&](int i) { return x(i) + product(kFull - x(i), y(i)); });
      break;
    case TextureOp::BlendDiffuseAlpha:
    case TextureOp::BlendTextureAlpha:
    case TextureOp::BlendFactorAlpha:
    case TextureOp::BlendCurrentAlpha:
      apply(out, [&](int i) { return mix(x(i), y(i), f(i)); });
      break;
    case TextureOp::BlendTextureAlphaPremultiplied:
      apply(out, [&](int i) { return x(i) + product(y(i), kFull - f(i)); });
      break;
    case TextureOp::ModulateAlphaAddColor:
      apply(out, [&](int i) { return x(i) + product(alpha(i), y(i)); });
      break;
    case TextureOp::ModulateColorAddAlpha:
      apply(out, [&](int i) { return product(x(i), y(i)) + alpha(i); });
      break;
    case TextureOp::ModulateInvAlphaAddColor:
      apply(out, [&](int i) { return product(kFull - alpha(i), y(i)) + x(i); });
      break;
    case TextureOp::ModulateInvColorAddAlpha:
      apply(out, [&](int i) { return product(kFull - x(i), y(i)) + alpha(i); });
      break;
    case TextureOp::MultiplyAdd:
      apply(out, [&](int i) { return a0[i] + product(x(i), y(i)); });
      break;
    case TextureOp::Lerp:
      apply(out, [&](int i) { return mix(x(i), y(i), a0[i]); });
      break;
    default:
      out = a1;
  }
}

const Plane& blendFactor(TextureOp op, const StageInputs& in, const Colors& current) {
  switch (op) {
    case TextureOp::BlendDiffuseAlpha:
      return in.diffuse.c[kAlpha];
    case TextureOp::BlendTextureAlpha:
    case TextureOp::BlendTextureAlphaPremultiplied:
      return in.texture.c[kAlpha];
    case TextureOp::BlendFactorAlpha:
      return in.factor.c[kAlpha];
    default:
      return current.c[kAlpha];
  }
}

void run(TextureOp op, const std::array<std::uint8_t, 3>& args, int channel, const StageInputs& in,
         const Colors& current, Plane& out) {
  Plane a0, a1, a2, alpha1;
  const bool three = op == TextureOp::MultiplyAdd || op == TextureOp::Lerp;
  fetch(args[three ? 0 : 1], channel, in, current, a0);
  fetch(args[1], channel, in, current, a1);
  fetch(args[2], channel, in, current, a2);
  fetch(args[1], kAlpha, in, current, alpha1);
  operate(op, a0, a1, a2, blendFactor(op, in, current), alpha1, out);
}

// Four times the sum of the products of the channels around their middle, in all channels.
void dotProduct(const Stage& stage, const StageInputs& in, const Colors& current, Colors& out) {
  Lanes<std::int32_t> sum{};
  for (int c = 0; c < 3; ++c) {
    Plane a1, a2;
    fetch(stage.colorArgs[1], c, in, current, a1);
    fetch(stage.colorArgs[2], c, in, current, a2);
    for (int i = 0; i < kLanes; ++i) sum[i] += (a1[i] - kHalf) * (a2[i] - kHalf);
  }
  for (int i = 0; i < kLanes; ++i) {
    const std::int32_t dot = std::clamp((std::max(sum[i], 0) * 4 + kFull / 2) / kFull, 0, kFull);
    for (Plane& plane : out.c) plane[i] = static_cast<std::uint16_t>(dot);
  }
}

}  // namespace

void combine(const Stage& stage, const StageInputs& in, Colors& current) {
  Colors out = current;
  if (stage.colorOp == TextureOp::DotProduct3) {
    dotProduct(stage, in, current, out);
    current = out;
    return;
  }
  for (int c = 0; c < 3; ++c) run(stage.colorOp, stage.colorArgs, c, in, current, out.c[c]);
  if (stage.alphaOp != TextureOp::Disable) run(stage.alphaOp, stage.alphaArgs, kAlpha, in, current, out.c[kAlpha]);
  current = out;
}

}  // namespace ql::software
