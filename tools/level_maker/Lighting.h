#pragma once

#include "Lightmaps.h"
#include "RayTree.h"

#include <cstdint>

namespace ql::maker {

struct LightingOptions {
  int subSamples = 4;   ///< per lightmap sample: 1 or 4
  int sunRays = 4;      ///< per sub-sample
  int lampRays = 2;     ///< per sub-sample and lamp
  int gatherRays = 96;  ///< per lightmap sample
  int bounces = 3;
  unsigned threads = 1;
};

/// The lightmap pages: light that arrives, linear RGB.
struct LightPages {
  int count = 0;
  std::vector<Vec3> samples;  ///< kPageSize * kPageSize per page

  Vec3& at(int page, int x, int y) { return samples[static_cast<std::size_t>((page * kPageSize + y) * kPageSize + x)]; }
  const Vec3& at(int page, int x, int y) const {
    return samples[static_cast<std::size_t>((page * kPageSize + y) * kPageSize + x)];
  }
};

/// What the light falls on: flat surfaces and patches with their charts (same order), the triangles that stop light,
/// and how much of it each material gives back.
struct LitScene {
  const Level& level;
  std::span<const Surface> surfaces;
  std::span<const Chart> surfaceCharts;
  std::span<const Patch> patches;
  std::span<const Chart> patchCharts;
  const RayTree& triangles;
  std::span<const Vec3> albedo;  ///< per material, linear
};

/// Light of the sky in a direction, linear.
Vec3 skyRadiance(const SkyLight& sky, Vec3 direction);

LightPages computeLight(const LitScene& scene, int pages, const LightingOptions& options);

/// Bytes of the lightmap lump (RGB, page by page). The engine adds 32 to what the file holds, so 32 is taken off here.
std::vector<std::uint8_t> toBytes(const LightPages& pages, double exposure);

}  // namespace ql::maker
