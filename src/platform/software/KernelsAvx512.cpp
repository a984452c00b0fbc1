#include "platform/software/Kernels.h"

// One instruction set: the compiler takes long over each. AVX-512 shall ask for no cipher instructions.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL | HWY_SSE4 | HWY_AVX2)
#define HWY_DISABLE_PCLMUL_AES
#define HWY_TARGET_INCLUDE "platform/software/KernelTarget-inl.h"
#include <hwy/foreach_target.h>
//
#include "platform/software/KernelTarget-inl.h"

namespace ql::software {

PainterFunction painterAvx512() {
#if HWY_TARGETS & HWY_AVX3
  if (hwy::SupportedTargets() & HWY_AVX3) return N_AVX3::kPainter;
#endif
  return nullptr;
}

}  // namespace ql::software
