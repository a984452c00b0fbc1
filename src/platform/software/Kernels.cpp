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

const KernelSet* compiled(Kernels kernels) {
  switch (kernels) {
#if HWY_TARGETS & HWY_AVX3
    case Kernels::Avx512:
      return hwy::SupportedTargets() & HWY_AVX3 ? &N_AVX3::kKernels : nullptr;
#endif
#if HWY_TARGETS & HWY_AVX2
    case Kernels::Avx2:
      return hwy::SupportedTargets() & HWY_AVX2 ? &N_AVX2::kKernels : nullptr;
#endif
#if HWY_TARGETS & HWY_SSE4
    case Kernels::Sse4:
      return hwy::SupportedTargets() & HWY_SSE4 ? &N_SSE4::kKernels : nullptr;
#endif
    default:
      return nullptr;
  }
}

constexpr KernelSet kPortable{rasterFunction};

}  // namespace

bool hasKernels(Kernels kernels) {
  return kernels == Kernels::Auto || kernels == Kernels::Portable || compiled(kernels) != nullptr;
}

const KernelSet& kernelSet(Kernels wanted) {
  if (wanted == Kernels::Portable) return kPortable;
  if (const KernelSet* exact = compiled(wanted)) return *exact;
  for (const Kernels kernels : {Kernels::Avx512, Kernels::Avx2, Kernels::Sse4})
    if (const KernelSet* best = compiled(kernels)) return *best;
  return kPortable;
}

}  // namespace ql::software
