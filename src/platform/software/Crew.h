/// @file
/// Threads and what they draw with.
#pragma once

#include "platform/software/Kernels.h"
#include "platform/software/Meter.h"
#include "platform/software/Pool.h"
#include "platform/software/Tile.h"

#include <memory>
#include <vector>

namespace ql::software {

/// Shared by frames, of which one at a time is carried out.
struct Crew {
  Crew(unsigned threads, const KernelSet& kernelSet) : pool(threads), meter(pool.threads()), kernels(kernelSet) {
    for (unsigned i = 0; i < pool.threads(); ++i) tiles.push_back(std::make_unique<Tile>());
  }
  Pool pool;
  Meter meter;
  KernelSet kernels;
  std::vector<std::unique_ptr<Tile>> tiles;  ///< one per thread
};

}  // namespace ql::software
