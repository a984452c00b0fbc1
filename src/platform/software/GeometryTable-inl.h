// Vertex work and binning of one instruction set; compiled once for each.
#include "platform/software/Bins-inl.h"
#include "platform/software/Geometry.h"

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

constexpr GeometrySet kGeometry{transformVertices, bin};

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
