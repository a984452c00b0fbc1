#include "platform/software/Blend.h"

#include "platform/software/Numeric.h"

#include <algorithm>

namespace ql::software {
namespace {

using device::Blend;
using device::BlendOp;
using Plane = Lanes<std::uint16_t>;

constexpr std::uint16_t kFull = 255;

Plane inverted(const Plane& in) {
  Plane out;
  for (int i = 0; i < kLanes; ++i) out[i] = static_cast<std::uint16_t>(kFull - in[i]);
  return out;
}

Plane filled(std::uint16_t value) {
  Plane out;
  for (int i = 0; i < kLanes; ++i) out[i] = value;
  return out;
}

Plane factor(Blend code, int channel, const Colors& s, const Colors& d) {
  switch (code) {
    case Blend::Zero:
      return filled(0);
    case Blend::SrcColor:
      return s.c[channel];
    case Blend::InvSrcColor:
      return inverted(s.c[channel]);
    case Blend::SrcAlpha:
      return s.c[kAlpha];
    case Blend::InvSrcAlpha:
      return inverted(s.c[kAlpha]);
    case Blend::DestAlpha:
      return d.c[kAlpha];
    case Blend::InvDestAlpha:
      return inverted(d.c[kAlpha]);
    case Blend::DestColor:
      return d.c[channel];
    case Blend::InvDestColor:
      return inverted(d.c[channel]);
    case Blend::SrcAlphaSat: {
      if (channel == kAlpha) return filled(kFull);
      Plane out;
      for (int i = 0; i < kLanes; ++i)
        out[i] = std::min(s.c[kAlpha][i], static_cast<std::uint16_t>(kFull - d.c[kAlpha][i]));
      return out;
    }
    default:
      return filled(kFull);
  }
}

void combine(BlendOp op, const Plane& a, const Plane& factorA, const Plane& b, const Plane& factorB, Plane& out) {
  constexpr std::uint32_t kLimit = 255 * 255;
  for (int i = 0; i < kLanes; ++i) {
    const std::uint32_t x = std::uint32_t{a[i]} * factorA[i], y = std::uint32_t{b[i]} * factorB[i];
    const std::uint32_t sum = op == BlendOp::Add        ? std::min(x + y, kLimit)
                              : op == BlendOp::Subtract ? (x > y ? x - y : 0)
                                                        : (y > x ? y - x : 0);
    out[i] = div255(sum);
  }
}

// Repeats the bits of a channel value until they fill 8; at least 4 bits.
std::uint32_t expand(std::uint32_t value, std::uint32_t bits) { return value << (8 - bits) | value >> (2 * bits - 8); }

void roundToBits(Plane& plane, std::uint32_t bits) {
  const std::uint32_t limit = (1u << bits) - 1;
  for (int i = 0; i < kLanes; ++i) plane[i] = static_cast<std::uint16_t>(expand((plane[i] * limit + 127) / 255, bits));
}

// Takes the stored value below or the one above, by comparing the place between them with the pattern. A value that can
// be stored stays as it is, so drawing again doesn't add noise.
void ditherToBits(Plane& plane, std::uint32_t bits) {
  for (int i = 0; i < kLanes; ++i) {
    const std::uint32_t value = plane[i];
    std::uint32_t low = value >> (8 - bits);
    low -= expand(low, bits) > value ? 1 : 0;
    const std::uint32_t below = expand(low, bits), above = expand(low + 1, bits);
    const bool up = (value - below) * 32 > (static_cast<std::uint32_t>(kDitherRank[i])) * (above - below);
    plane[i] = static_cast<std::uint16_t>(up ? above : below);
  }
}

}  // namespace

void blend(const Pipeline& p, const Colors& d, Colors& s) {
  if (p.blendOp == BlendOp::Min || p.blendOp == BlendOp::Max) {
    for (int c = 0; c < 4; ++c)
      for (int i = 0; i < kLanes; ++i)
        s.c[c][i] = p.blendOp == BlendOp::Min ? std::min(s.c[c][i], d.c[c][i]) : std::max(s.c[c][i], d.c[c][i]);
    return;
  }
  Colors out;
  for (int c = 0; c < 4; ++c)
    combine(p.blendOp, s.c[c], factor(p.source, c, s, d), d.c[c], factor(p.destination, c, s, d), out.c[c]);
  s = out;
}

void quantize(const Pipeline& p, Colors& colors) {
  const auto channel = [&](int c, std::uint16_t bits) {
    if (p.dither)
      ditherToBits(colors.c[c], bits);
    else
      roundToBits(colors.c[c], bits);
  };
  channel(kRed, p.target.red);
  channel(kGreen, p.target.green);
  channel(kBlue, p.target.blue);
  if (p.target.alpha != 1) return;
  for (int i = 0; i < kLanes; ++i) colors.c[kAlpha][i] = colors.c[kAlpha][i] >= 128 ? 255 : 0;
}

}  // namespace ql::software
