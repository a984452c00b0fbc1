/// @file
/// The code that draws triangles, for the instruction sets of this machine. All of it draws the same bits.
#pragma once

#include "platform/software/Raster.h"
#include "platform/software/SoftwareBackEnd.h"

#include <cstdint>

namespace ql::software {

struct KernelSet {
  RasterFunction (*raster)(const Pipeline&);
};

/// The code for an instruction set. What the machine doesn't have, or what was not compiled, is replaced by the best
/// that is there.
const KernelSet& kernelSet(Kernels wanted);

}  // namespace ql::software
