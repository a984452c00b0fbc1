#pragma once

#include "Winding.h"

#include <array>
#include <span>
#include <vector>

namespace ql::maker {

/// A face that cuts space: part of the border of the solid structure.
struct Cutter {
  Plane plane;
  Winding winding;
};

struct TreeNode {
  Plane plane;                    ///< child 0 is in front
  std::array<int, 2> children{};  ///< a node index, or ~leaf
  Bounds bounds;
};

struct TreeLeaf {
  Bounds bounds;
  Vec3 middle;         ///< a point well inside
  bool solid = false;  ///< inside the structure, or not reachable from any start
};

/// The opening between two leaves.
struct Portal {
  Winding winding;
  Plane plane;  ///< faces into `front`
  int front = 0;
  int back = 0;
};

struct Tree {
  std::vector<TreeNode> nodes;  ///< 0 is the root; empty when there is one leaf only
  std::vector<TreeLeaf> leaves;
  Bounds world;

  int leafAt(Vec3 p) const;
};

struct LeafPiece {
  Winding winding;
  int leaf = 0;
};

/// Cuts the box `world` by the cutters' planes until no cutter crosses a leaf.
Tree buildTree(std::vector<Cutter> cutters, const Bounds& world);

/// Every opening between two leaves, solid ones included.
std::vector<Portal> findPortals(const Tree& tree);

/// Sends a face (facing along `plane`) down the tree; a piece that lies on a node's plane goes to the side it faces.
std::vector<LeafPiece> distribute(const Tree& tree, const Winding& winding, const Plane& plane);

/// Marks as solid every leaf that cannot be reached from the starts. Returns the leaves on a path from a start out to
/// the border of the world when there is a leak, else nothing.
std::vector<int> sealLeaves(Tree& tree, std::span<const Portal> portals, std::span<const Vec3> starts);

}  // namespace ql::maker
