/// @file
/// Which faces of a level the camera may see, kept from frame to frame.
#pragma once

#include "level/LevelData.h"
#include "math/Matrix.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace ql::level {

/// A face to draw and the key that orders drawing, its texture in the file.
struct VisibleFace {
  std::int32_t face = 0, key = 0;
};

/// Everything outside the level that its visibility depends on.
struct View {
  math::Vec3 position, lookAt;              ///< of the camera, world coordinates
  math::Mat4 levelMatrix;                   ///< a rotation and a translation
  math::Mat4 world;                         ///< the device's current world transform
  std::span<const math::Plane, 6> frustum;  ///< world coordinates
  std::uint32_t ticks = 0;                  ///< milliseconds
  bool usePvs = true;                       ///< off: every face, every frame
};

/// From the world into a level's space (file coordinates with x negated). @param levelMatrix rotates and moves
math::Vec3 toLevelSpace(const math::Vec3& point, const math::Mat4& levelMatrix);

/// The cluster of the first leaf (from leaf 1 on) whose box holds a point of the world, faces included; 0 when none
/// does.
std::int32_t findCluster(const LevelData& level, const math::Mat4& levelMatrix, const math::Vec3& point);

/// The leaf of a Half-Life level that the way down the tree leads to from a point of the world, and whose box holds it;
/// -1 when there is none.
std::int32_t findLeaf(const LevelData& level, const math::Mat4& levelMatrix, const math::Vec3& point);
/// Which leaves of a Half-Life level may be seen from one, from its packed row of bits: one byte for each leaf from
/// leaf 1 on. Empty: all of them.
std::vector<std::uint8_t> unpackVisibility(const LevelData& level, std::int32_t leaf);

/// Orders faces by their keys; the order among equal keys is that of this very algorithm (quicksort around the middle
/// element), since it decides which of two coplanar faces is drawn last.
void sortByKey(std::vector<VisibleFace>& faces);

/// The potentially visible faces. The list is rebuilt only when the camera enters another cluster, turns far enough
/// away, or after two seconds.
class VisibleFaces {
 public:
  /// Forgets everything, for a newly loaded level.
  void reset();
  /// Brings the list up to date for a frame.
  void update(const LevelData& level, const View& view);
  const std::vector<VisibleFace>& list() const { return list_; }
  /// Whether the last rebuild found a face. Before the first one, and while the list holds all faces, every face
  /// counts.
  bool contains(std::size_t face) const { return marks_.empty() || marks_[face] != 0; }
  /// Differs whenever contains() may answer otherwise than before, from the versions of other lists too.
  std::uint32_t version() const { return version_; }
  /// Where the camera is: a cluster, or a leaf of a Half-Life level.
  std::int32_t cluster() const { return cluster_; }

 private:
  static std::uint32_t nextVersion();
  bool enterCluster(const LevelData& level, const View& view);
  bool clusterVisible(std::int32_t cluster) const;
  void listAll(const LevelData& level);
  void rebuild(const LevelData& level, const View& view);

  std::vector<VisibleFace> list_;
  std::vector<std::uint8_t> marks_;           ///< by face: listed; empty before the first rebuild
  std::vector<std::uint8_t> clusterVisible_;  ///< by cluster; empty: everything may be seen
  std::int32_t cluster_ = -50;
  math::Vec3 lastPosition_{-9999, -9999, -9999};
  math::Vec3 lastDirection_;
  std::uint32_t lastRebuild_ = 0;  ///< ticks
  std::uint32_t version_ = nextVersion();
  bool holdsAll_ = false;
};

}  // namespace ql::level
