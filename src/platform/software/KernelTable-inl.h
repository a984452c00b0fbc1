// The kernels of one instruction set; compiled once for each.
#include "platform/software/KernelRaster-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

constexpr PainterFunction kPainter = painter;

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
