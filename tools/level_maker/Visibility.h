#pragma once

#include "Tree.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ql::maker {

/// Which clusters can be seen from which: one row of bits per cluster, bit c mod 8 of byte c div 8 for cluster c.
struct Visibility {
  int clusters = 0;
  int bytesPerCluster = 0;
  std::vector<std::uint8_t> rows;

  bool sees(int from, int to) const {
    return (rows[static_cast<std::size_t>(from * bytesPerCluster + to / 8)] >> (to % 8) & 1) != 0;
  }
};

/// A cluster for each leaf that is not solid, in leaf order; -1 for solid leaves.
std::vector<int> numberClusters(const Tree& tree);

/// Follows lines of sight from portal to portal, narrowing them by the planes that separate the portals already passed.
/// Never hides what can be seen: where the search would take more than `stepLimit` steps for a portal, everything in
/// front of the portal that connects to it counts as seen.
Visibility computeVisibility(const Tree& tree, std::span<const Portal> portals, std::span<const int> clusterOfLeaf,
                             unsigned threads, std::uint64_t stepLimit);

}  // namespace ql::maker
