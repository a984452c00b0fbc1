#pragma once

#include "PatchGrid.h"
#include "Surfaces.h"

#include <span>
#include <vector>

namespace ql::maker {

inline constexpr int kPageSize = 128;

/// A rectangle of lightmap samples on a page.
struct Block {
  int page = -1;  ///< -1: no lightmap
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  int group = 0;  ///< blocks of one group (other than 0) are kept on one page where possible
};

/// Gives each block (whose width and height are set; 0 means none) a place. Blocks do not overlap. Returns the number
/// of pages.
int packBlocks(std::span<Block> blocks);

/// How a flat surface or a patch lies on its block. The outermost samples lie exactly on the border, so that neighbours
/// agree along it.
struct Chart {
  Block block;
  SurfaceAxes axes;  ///< flat surfaces only
  double low0 = 0.0;
  double low1 = 0.0;
  double step0 = 1.0;  ///< level units from sample to sample
  double step1 = 1.0;
};

Chart chartOf(const Surface& surface, double density);
Chart chartOf(const Patch& patch, double density);

/// Position on the page of a surface's point, in samples (whole numbers are sample centres).
std::pair<double, double> samplePosition(const Chart& chart, Vec3 p);

}  // namespace ql::maker
