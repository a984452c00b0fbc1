/// @file
/// Which meshes a ray may meet.
#pragma once

#include "mesh/MeshRecord.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ql::mesh {

/// Boxes in the world around what rays can meet of meshes, in a tree. It answers with all meshes that a ray may meet
/// and a few more; who asks tests them one by one. Meshes that changed since the tree was made, or that no box fits,
/// are among the answers always; when they have cost more than a new tree would, it is made.
class MeshIndex {
 public:
  /// What of meshes: their bounds (of those that have them), or the triangles of their vertices.
  enum class Kind : std::uint8_t { Bounds, Triangles };
  explicit MeshIndex(Kind kind) : kind_(kind) {}

  /// A mesh is to be looked at again.
  void change(std::int16_t slot);
  /// Slots in ascending order, each once; valid until the next call.
  std::span<const std::int16_t> candidates(engine::EngineContext& context, const math::Vec3& origin,
                                           const math::Vec3& end);

 private:
  struct Box {
    math::Vec3 minimum, maximum;
  };
  enum class State : std::uint8_t {
    Changed,  ///< its box is not known
    Boxed,    ///< in the tree
    Boxless,  ///< may be met anywhere
    Unmet     ///< has nothing to meet
  };
  struct Entry {
    State state = State::Changed;
    Box box;
  };
  /// A node's children follow each other; a leaf has one mesh.
  struct Node {
    Box box;
    std::int32_t child = 0;
    std::int16_t slot = 0;  ///< not 0: a leaf
  };

  void rebuild(engine::EngineContext& context);
  Entry look(const MeshRecord& mesh) const;
  void make(std::int32_t node, std::span<std::int16_t> slots);
  void search(const math::Vec3& origin, const math::Vec3& direction, float slack);

  Kind kind_;
  std::vector<Entry> entries_;       ///< by slot
  std::vector<std::int16_t> loose_;  ///< changed or without a box, in no order
  std::vector<Node> nodes_;
  float extent_ = 0;  ///< the largest coordinate of a box
  std::size_t looseTests_ = 0;
  std::vector<std::int16_t> found_;
};

}  // namespace ql::mesh
