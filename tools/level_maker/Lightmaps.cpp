#include "Lightmaps.h"

#include <numeric>

namespace ql::maker {
namespace {

/// The outline of what is taken on a page, from left to right.
class Skyline {
 public:
  /// Lowest place for a block, or false.
  bool place(Block& block) {
    int bestY = kPageSize + 1;
    int bestX = 0;
    for (int x = 0; x + block.width <= kPageSize; ++x) {
      const int y = *std::max_element(tops_.begin() + x, tops_.begin() + x + block.width);
      if (y < bestY) {
        bestY = y;
        bestX = x;
      }
    }
    if (bestY + block.height > kPageSize) return false;
    block.x = bestX;
    block.y = bestY;
    std::fill(tops_.begin() + bestX, tops_.begin() + bestX + block.width, bestY + block.height);
    return true;
  }

 private:
  std::vector<int> tops_ = std::vector<int>(kPageSize, 0);
};

int samplesFor(double extent, double density) {
  return std::clamp(static_cast<int>(std::ceil(extent / density - 1e-6)) + 1, 2, kPageSize);
}

}  // namespace

int packBlocks(std::span<Block> blocks) {
  std::vector<std::size_t> order(blocks.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    if (blocks[a].group != blocks[b].group) return blocks[a].group < blocks[b].group;
    return blocks[a].height != blocks[b].height ? blocks[a].height > blocks[b].height
                                                : blocks[a].width > blocks[b].width;
  });
  std::vector<Skyline> pages;
  const Block* before = nullptr;
  for (const std::size_t i : order) {
    Block& block = blocks[i];
    block.page = -1;
    if (block.width <= 0 || block.height <= 0 || block.width > kPageSize || block.height > kPageSize) continue;
    if (before != nullptr && block.group != 0 && before->group == block.group &&
        pages[static_cast<std::size_t>(before->page)].place(block))
      block.page = before->page;
    before = &block;
    for (std::size_t p = 0; block.page < 0; ++p) {
      if (p == pages.size()) pages.emplace_back();
      if (pages[p].place(block)) block.page = static_cast<int>(p);
    }
  }
  return static_cast<int>(pages.size());
}

Chart chartOf(const Surface& surface, double density) {
  Chart chart;
  chart.axes = axesOf(surface.plane.normal);
  double high0 = -1e30;
  double high1 = -1e30;
  chart.low0 = 1e30;
  chart.low1 = 1e30;
  for (const Winding& piece : surface.pieces)
    for (const Vec3& p : piece) {
      chart.low0 = std::min(chart.low0, dot(p, chart.axes.across));
      high0 = std::max(high0, dot(p, chart.axes.across));
      chart.low1 = std::min(chart.low1, dot(p, chart.axes.down));
      high1 = std::max(high1, dot(p, chart.axes.down));
    }
  chart.block.width = samplesFor(high0 - chart.low0, density);
  chart.block.height = samplesFor(high1 - chart.low1, density);
  chart.step0 = (high0 - chart.low0) / (chart.block.width - 1);
  chart.step1 = (high1 - chart.low1) / (chart.block.height - 1);
  return chart;
}

Chart chartOf(const Patch& patch, double density) {
  Chart chart;
  const auto [across, along] = patchExtent(patch);
  // At least as many samples as control points, so that each piece of the curve gets its own shade.
  chart.block.width = std::min(kPageSize, std::max(patch.width, samplesFor(across, density)));
  chart.block.height = std::min(kPageSize, std::max(patch.height, samplesFor(along, density)));
  chart.step0 = across / (chart.block.width - 1);
  chart.step1 = along / (chart.block.height - 1);
  return chart;
}

std::pair<double, double> samplePosition(const Chart& chart, Vec3 p) {
  return {chart.block.x + (dot(p, chart.axes.across) - chart.low0) / chart.step0,
          chart.block.y + (dot(p, chart.axes.down) - chart.low1) / chart.step1};
}

}  // namespace ql::maker
