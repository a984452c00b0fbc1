/// @file
/// 16 vertices at a time, a lane each: the unit of all vertex work.
#pragma once

#include "platform/software/Block.h"
#include "platform/software/Pipeline.h"

#include <array>
#include <cstddef>

namespace ql::software {

struct Vectors {
  Lanes<float> x, y, z;
};

inline void dot(const Vectors& a, const Vectors& b, Lanes<float>& out) {
  for (int i = 0; i < kLanes; ++i) out[i] = a.x[i] * b.x[i] + a.y[i] * b.y[i] + a.z[i] * b.z[i];
}

/// Vertices on their way from memory to records. Every lane is computed on its own, with the same operations whatever
/// stands in the others.
struct VertexBatch {
  std::array<const std::byte*, kLanes> source;  ///< in memory; lanes without a vertex repeat the last one
  Vectors position;                             ///< in model space, or on the screen
  // In camera space; set when the pipeline asks for it.
  Vectors seen, normal;
  Vectors toEye;          ///< the unit vector to the viewer
  Lanes<float> distance;  ///< from the viewer
  // Homogeneous: x / w and y / w are pixels, z / w is the depth before the viewport's range.
  Lanes<float> x, y, z, w;
  Lanes<float> attributes[kMaxAttributes];  ///< by their place in a record, not divided; the first two are unused
  Lanes<float> pointSize;                   ///< pixels
};

}  // namespace ql::software
