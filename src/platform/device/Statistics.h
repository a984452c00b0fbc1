/// @file
/// What back ends tell of their work.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ql::device {

/// What a renderer in software does one after another.
enum class WorkStep : std::uint8_t {
  Vertices,  ///< transforming and lighting
  Binning,   ///< culling and clipping triangles, and finding the tiles that they touch
  Tiles      ///< setting triangles up and drawing their pixels
};
inline constexpr std::size_t kWorkSteps = 3;

/// Counts of work since the device was created; differences are per frame. A back end that can't look into its work
/// leaves all but the first two at 0; the others count what was carried out, which may be later than the draw call.
struct Statistics {
  std::uint64_t drawCalls = 0, triangles = 0;
  std::uint64_t culled = 0;   ///< triangles that nothing was drawn of: turned away, without area, outside the view
  std::uint64_t clipped = 0;  ///< triangles that were cut, drawn or not
  std::uint64_t drawn = 0;    ///< all triangles but the culled ones
  std::uint64_t pixels = 0;   ///< pixels whose colour was computed, of all primitives
  std::uint64_t tiles = 0;    ///< tiles of the target that something was drawn into or that were cleared
  std::array<std::uint64_t, kWorkSteps> nanoseconds{};  ///< of each step, all threads together

  friend Statistics operator-(Statistics a, const Statistics& b) {
    a.drawCalls -= b.drawCalls;
    a.triangles -= b.triangles;
    a.culled -= b.culled;
    a.clipped -= b.clipped;
    a.drawn -= b.drawn;
    a.pixels -= b.pixels;
    a.tiles -= b.tiles;
    for (std::size_t i = 0; i < kWorkSteps; ++i) a.nanoseconds[i] -= b.nanoseconds[i];
    return a;
  }
};

/// A stretch of one thread's work, in nanoseconds of the steady clock.
struct WorkSpan {
  WorkStep step = WorkStep::Vertices;
  std::uint32_t thread = 0;  ///< 0: the one that draws
  std::int64_t begin = 0, end = 0;
};

}  // namespace ql::device
