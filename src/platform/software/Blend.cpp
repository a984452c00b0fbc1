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

// Thresholds of the dither pattern, in 1/32 with 1/64 added: spread evenly, neighbours far apart.
constexpr std::uint16_t kPattern[kLanes] = {0, 8, 2, 10, 12, 4, 14, 6, 3, 11, 1, 9, 15, 7, 13, 5};

void quantizeChannel(Plane& plane, std::uint16_t bits, bool dither) {
  const std::uint32_t limit = (1u << bits) - 1;
  for (int i = 0; i < kLanes; ++i) {
    const std::uint32_t threshold = dither ? ((kPattern[i] * 2u + 1u) * 255u) >> 5 : 127;
    const std::uint32_t value = (plane[i] * limit + threshold) / 255;
    std::uint32_t expanded = value << (8 - bits);
    for (std::uint32_t filled = bits; filled < 8; filled *= 2) expanded |= expanded >> filled;
    plane[i] = static_cast<std::uint16_t>(expanded);
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
  quantizeChannel(colors.c[kRed], p.target.red, p.dither);
  quantizeChannel(colors.c[kGreen], p.target.green, p.dither);
  quantizeChannel(colors.c[kBlue], p.target.blue, p.dither);
  if (p.target.alpha == 1) quantizeChannel(colors.c[kAlpha], 1, false);
}

}  // namespace ql::software
