/// @file
/// Vertex work and binning, for the instruction sets of this machine.
#pragma once

#include "platform/software/Bins.h"
#include "platform/software/SoftwareBackEnd.h"

namespace ql::software {

struct GeometrySet {
  /// Makes records of count vertices. Of those that must be clipped or dropped only the outcode means anything.
  /// @param places where they also shall be told, of at most kPlaces; null: nowhere
  void (*transform)(const Pipeline&, const std::byte* source, std::size_t stride, std::size_t count, float* records,
                    Places* places);
  /// Fills a job's lists. Makes the records of draws that are transformed later. @param tilesX,tilesY of the target
  void (*bin)(std::span<const Draw> draws, std::int32_t tilesX, std::int32_t tilesY, Job& job);
};

/// Code of this one set; null when it wasn't compiled or the machine doesn't have it.
const GeometrySet* geometryKernels(Kernels kernels);
/// Code for any machine.
const GeometrySet& portableGeometry();

}  // namespace ql::software
