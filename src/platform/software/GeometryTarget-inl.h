// Included once per instruction set that the compiler can target; those without kernels are left out.
#include <hwy/highway.h>
#if HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
#include "platform/software/GeometryTable-inl.h"
#endif
