#include "platform/software/Kernels.h"

// Three instruction sets: none between or beyond, and AVX-512 shall ask for no cipher instructions.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL)
#define HWY_DISABLE_PCLMUL_AES
#define HWY_TARGET_INCLUDE "platform/software/KernelTarget-inl.h"
#include <hwy/foreach_target.h>
//
#include "platform/software/KernelTarget-inl.h"

namespace ql::software {
namespace {

const PainterFunction* compiled(Kernels kernels) {
  switch (kernels) {
#if HWY_TARGETS & HWY_AVX3
    case Kernels::Avx512:
      return hwy::SupportedTargets() & HWY_AVX3 ? &N_AVX3::kPainter : nullptr;
#endif
#if HWY_TARGETS & HWY_AVX2
    case Kernels::Avx2:
      return hwy::SupportedTargets() & HWY_AVX2 ? &N_AVX2::kPainter : nullptr;
#endif
#if HWY_TARGETS & HWY_SSE4
    case Kernels::Sse4:
      return hwy::SupportedTargets() & HWY_SSE4 ? &N_SSE4::kPainter : nullptr;
#endif
    default:
      return nullptr;
  }
}

}  // namespace

bool hasKernels(Kernels kernels) {
  return kernels == Kernels::Auto || kernels == Kernels::Portable || compiled(kernels) != nullptr;
}

KernelSet kernelSet(Kernels wanted) {
  if (wanted == Kernels::Portable) return {paintFunction, portableGeometry()};
  for (const Kernels kernels : {wanted, Kernels::Avx512, Kernels::Avx2, Kernels::Sse4})
    if (const PainterFunction* painter = compiled(kernels)) return {*painter, *geometryKernels(kernels)};
  return {paintFunction, portableGeometry()};
}

}  // namespace ql::software
