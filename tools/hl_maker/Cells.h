/// @file
/// The world as a grid of cells, solid or open, and the tree of boxes that it falls into.
#pragma once

#include "Description.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ql::hl_maker {

inline constexpr int kCellSide = 16;  // units
using Index = std::array<int, 3>;
struct CellBox {
  Index low{}, high{};  ///< high is the first one outside
};

/// What a cell shows: of an open one the textures of its walls, floor and ceiling; of a filled one its own.
struct Cell {
  bool open = false;
  std::int16_t look = -1;  ///< of Cells::looks; -1: solid rock, which shows what the open cell beside it says
};

class Cells {
 public:
  explicit Cells(const std::vector<Dig>& digs);

  const CellBox& bounds() const { return bounds_; }
  /// Everything outside the grid is rock.
  Cell at(const Index& index) const;
  bool openAt(const Point& point) const;
  const std::vector<std::array<std::string, 3>>& looks() const { return looks_; }
  /// Whether nothing solid stands between two points.
  bool sees(const Point& from, const Point& to) const;

 private:
  std::size_t place(const Index& index) const;
  CellBox bounds_;
  std::vector<Cell> cells_;
  std::vector<std::array<std::string, 3>> looks_;
};

/// A node parts its box at a plane across an axis; children are nodes, or ~leaf when negative, ~0 the solid.
struct TreeNode {
  int axis = 0, at = 0;               ///< in cells
  std::array<int, 2> children{0, 0};  ///< above, below
  CellBox box;
};
struct Tree {
  std::vector<TreeNode> nodes;
  std::vector<CellBox> leaves;  ///< open boxes; leaf 0 is the solid and has none
};
Tree makeTree(const Cells& cells);

}  // namespace ql::hl_maker
