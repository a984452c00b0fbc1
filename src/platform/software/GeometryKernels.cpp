#include "platform/software/Geometry.h"

// Three instruction sets: none between or beyond, and AVX-512 shall ask for no cipher instructions.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL)
#define HWY_DISABLE_PCLMUL_AES
#define HWY_TARGET_INCLUDE "platform/software/GeometryTarget-inl.h"
#include <hwy/foreach_target.h>
//
#include "platform/software/GeometryTarget-inl.h"

namespace ql::software {

const GeometrySet* geometryKernels(Kernels kernels) {
  switch (kernels) {
#if HWY_TARGETS & HWY_AVX3
    case Kernels::Avx512:
      return hwy::SupportedTargets() & HWY_AVX3 ? &N_AVX3::kGeometry : nullptr;
#endif
#if HWY_TARGETS & HWY_AVX2
    case Kernels::Avx2:
      return hwy::SupportedTargets() & HWY_AVX2 ? &N_AVX2::kGeometry : nullptr;
#endif
#if HWY_TARGETS & HWY_SSE4
    case Kernels::Sse4:
      return hwy::SupportedTargets() & HWY_SSE4 ? &N_SSE4::kGeometry : nullptr;
#endif
    default:
      return nullptr;
  }
}

}  // namespace ql::software
