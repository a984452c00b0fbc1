#include "Cells.h"

#include <algorithm>
#include <cmath>

namespace ql::hl_maker {

Cells::Cells(const std::vector<Dig>& digs) {
  const auto index = [](const Point& p) {
    Index out{};
    for (std::size_t axis = 0; axis < 3; ++axis) out[axis] = static_cast<int>(p[axis]) / kCellSide;
    return out;
  };
  bounds_ = {index(digs.front().box.low), index(digs.front().box.high)};
  for (const Dig& dig : digs)
    for (std::size_t axis = 0; axis < 3; ++axis) {
      // A shell of rock all around.
      bounds_.low[axis] = std::min(bounds_.low[axis], index(dig.box.low)[axis] - 1);
      bounds_.high[axis] = std::max(bounds_.high[axis], index(dig.box.high)[axis] + 1);
    }
  std::size_t size = 1;
  for (std::size_t axis = 0; axis < 3; ++axis) size *= static_cast<std::size_t>(bounds_.high[axis] - bounds_.low[axis]);
  cells_.resize(size);
  for (const Dig& dig : digs) {
    const Cell cell{dig.open, static_cast<std::int16_t>(looks_.size())};
    looks_.push_back(dig.textures);
    const Index low = index(dig.box.low), high = index(dig.box.high);
    for (int z = low[2]; z < high[2]; ++z)
      for (int y = low[1]; y < high[1]; ++y)
        for (int x = low[0]; x < high[0]; ++x) cells_[place({x, y, z})] = cell;
  }
}

std::size_t Cells::place(const Index& i) const {
  const auto side = [&](std::size_t axis) { return bounds_.high[axis] - bounds_.low[axis]; };
  return static_cast<std::size_t>(((i[2] - bounds_.low[2]) * side(1) + i[1] - bounds_.low[1]) * side(0) + i[0] -
                                  bounds_.low[0]);
}

Cell Cells::at(const Index& index) const {
  for (std::size_t axis = 0; axis < 3; ++axis)
    if (index[axis] < bounds_.low[axis] || index[axis] >= bounds_.high[axis]) return {};
  return cells_[place(index)];
}

bool Cells::openAt(const Point& p) const {
  Index index{};
  for (std::size_t axis = 0; axis < 3; ++axis) index[axis] = static_cast<int>(std::floor(p[axis] / kCellSide));
  return at(index).open;
}

bool Cells::sees(const Point& from, const Point& to) const {
  constexpr double kStride = 3;  // units; nothing is thinner than a cell
  double longest = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) longest = std::max(longest, std::abs(to[axis] - from[axis]));
  const int steps = static_cast<int>(longest / kStride) + 1;
  for (int i = 1; i < steps; ++i) {
    const double t = static_cast<double>(i) / steps;
    if (!openAt({from[0] + (to[0] - from[0]) * t, from[1] + (to[1] - from[1]) * t, from[2] + (to[2] - from[2]) * t}))
      return false;
  }
  return true;
}

namespace {

class TreeMaker {
 public:
  TreeMaker(const Cells& cells, Tree& tree) : cells_(cells), tree_(tree) {}

  int make(const CellBox& box) {
    bool open = false, solid = false;
    each(box, [&](const Index& i) { (cells_.at(i).open ? open : solid) = true; });
    if (!open) return ~0;
    if (!solid) {
      tree_.leaves.push_back(box);
      return ~static_cast<int>(tree_.leaves.size() - 1);
    }
    TreeNode node = bestSplit(box);
    node.box = box;
    const auto index = tree_.nodes.size();
    tree_.nodes.push_back(node);
    CellBox above = box, below = box;
    above.low[static_cast<std::size_t>(node.axis)] = node.at;
    below.high[static_cast<std::size_t>(node.axis)] = node.at;
    const int first = make(above), second = make(below);
    tree_.nodes[index].children = {first, second};
    return static_cast<int>(index);
  }

 private:
  template <class Visit>
  static void each(const CellBox& box, Visit&& visit) {
    for (int z = box.low[2]; z < box.high[2]; ++z)
      for (int y = box.low[1]; y < box.high[1]; ++y)
        for (int x = box.low[0]; x < box.high[0]; ++x) visit(Index{x, y, z});
  }

  /// The plane along which the largest part of its cross-section changes between open and solid.
  TreeNode bestSplit(const CellBox& box) const {
    TreeNode best;
    double most = -1;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const auto length = static_cast<std::size_t>(box.high[axis] - box.low[axis]);
      std::vector<int> changes(length, 0);
      each(box, [&](Index i) {
        if (i[axis] == box.low[axis]) return;
        const std::size_t at = static_cast<std::size_t>(i[axis] - box.low[axis]);
        const bool open = cells_.at(i).open;
        --i[axis];
        changes[at] += cells_.at(i).open != open;
      });
      double section = 1;
      for (std::size_t other = 0; other < 3; ++other)
        if (other != axis) section *= box.high[other] - box.low[other];
      for (std::size_t at = 1; at < length; ++at) {
        const double part = changes[at] / section;
        if (part > most)
          most = part, best.axis = static_cast<int>(axis), best.at = box.low[axis] + static_cast<int>(at);
      }
    }
    return best;
  }

  const Cells& cells_;
  Tree& tree_;
};

}  // namespace

Tree makeTree(const Cells& cells) {
  Tree tree;
  tree.leaves.emplace_back();
  TreeMaker(cells, tree).make(cells.bounds());
  return tree;
}

}  // namespace ql::hl_maker
