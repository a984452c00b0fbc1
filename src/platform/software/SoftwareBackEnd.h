/// @file
/// The reference device: a renderer in software that needs no display and no graphics hardware.
#pragma once

#include "platform/device/BackEnd.h"

#include <cstdint>
#include <memory>

namespace ql::software {

/// Code for pixels and triangles. All of it draws the same bits.
enum class Kernels : std::uint8_t {
  Auto,      ///< the best that the machine runs
  Portable,  ///< plain C++
  Sse4,
  Avx2,
  Avx512
};
/// Whether this machine runs the code.
bool hasKernels(Kernels kernels);

struct Options {
  unsigned threads = 0;  ///< that rasterise, the caller's included; 0: as many as the machine runs at once
  Kernels kernels = Kernels::Auto;
};

/// Makes a software renderer. Draw calls are kept and carried out when a result is needed; the picture is the same to
/// the bit for every number of threads.
std::unique_ptr<device::BackEnd> createBackEnd(const Options& options = {});

}  // namespace ql::software
