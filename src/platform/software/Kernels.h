/// @file
/// The code that draws triangles, for the instruction sets of this machine. All of it draws the same bits.
#pragma once

#include "platform/software/Geometry.h"
#include "platform/software/Raster.h"
#include "platform/software/SoftwareBackEnd.h"

#include <cstdint>

namespace ql::software {

/// Chooses the code that draws with a pipeline.
using PainterFunction = PaintFunction (*)(const Pipeline&);

/// Code of this one set; null when it wasn't compiled or the machine doesn't have it.
PainterFunction painterAvx512();
PainterFunction painterAvx2();
PainterFunction painterSse4();

struct KernelSet {
  PainterFunction painter;
  GeometrySet geometry;
};

/// The code for an instruction set. What the machine doesn't have, or what was not compiled, is replaced by the best
/// that is there.
KernelSet kernelSet(Kernels wanted);

}  // namespace ql::software
