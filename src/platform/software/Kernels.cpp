#include "platform/software/Kernels.h"

namespace ql::software {
namespace {

PainterFunction compiled(Kernels kernels) {
  switch (kernels) {
    case Kernels::Avx512:
      return painterAvx512();
    case Kernels::Avx2:
      return painterAvx2();
    case Kernels::Sse4:
      return painterSse4();
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
    if (const PainterFunction painter = compiled(kernels)) return {painter, *geometryKernels(kernels)};
  return {paintFunction, portableGeometry()};
}

}  // namespace ql::software
