/// @file
/// What runs into a level: rays against its faces, spheres and lines of sight against its tree.
#pragma once

#include "level/LevelData.h"
#include "level/Visibility.h"
#include "math/TriangleTree.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace ql::level {

/// On which side of a plane a point lies; closer than 0.001 it lies on the plane.
enum class Side : std::uint8_t { Front = 1, Back = 2, On = 3 };
Side classifyPoint(const math::Vec3& point, const Q3Plane& plane);
/// The square root of the point's distance from the plane: what a sphere's radius is compared with.
float planeSpan(const math::Vec3& point, const Q3Plane& plane);

/// Whether a segment reaches no solid leaf of the tree below a node. A crossed plane whose far side is a leaf ends the
/// way there, so that not every solid leaf counts. @param start,end file coordinates
/// @param node an index of the level's nodes
bool lineSight(const LevelData& level, const math::Vec3& start, const math::Vec3& end, std::int32_t node);

/// A sphere's way down the tree.
struct SphereDescent {
  bool solid = false;                 ///< it reached a solid leaf, which ended the way
  std::vector<std::int32_t> touched;  ///< other leaves that it reached before, in the order of the way
};
/// @param position file coordinates @param passSolid solid leaves count as nothing
void descendSphere(const LevelData& level, const math::Vec3& position, float radius, bool passSolid,
                   SphereDescent& out);

/// What a moving sphere ran into. Point and normal are in the level's space.
struct SphereHit {
  float distance = 0;
  math::Vec3 point, normal;
};

/// A face that a ray meets. The normal, in the level's space, is as long as twice the triangle's area.
struct FaceHit {
  std::uint32_t triangle = 0;  ///< of all faces' triangles, in the faces' order
  std::uint32_t face = 0;
  float distance = 0;
  math::Vec3 normal;
};

/// Answers rays, with an index that is made when the first one asks. Everything is in the level's space.
class FaceCollision {
 public:
  /// Forgets the index, for a newly loaded level.
  void reset() { *this = FaceCollision(); }

  /// The first face in order that the ray meets between 0 and a limit, both left out. Faces count when the last rebuild
  /// of the visible ones found them, and textured faces also when they come after the first of the first brush model.
  std::optional<FaceHit> firstHit(const LevelData& level, const VisibleFaces& visible, const math::Vec3& origin,
                                  const math::Vec3& direction, float limit);
  /// The nearest hit below a limit among the faces of some leaves; of equally near ones the first in the leaves' order.
  std::optional<SphereHit> nearestHit(const LevelData& level, std::span<const std::int32_t> leaves,
                                      const math::Vec3& origin, const math::Vec3& direction, float limit);

 private:
  /// A place in the list of a leaf's faces.
  struct Place {
    std::uint32_t leaf = 0, position = 0;
  };
  void makeTree(const LevelData& level);
  void makePlaces(const LevelData& level);

  std::optional<math::TriangleTree> tree_;
  std::vector<std::uint32_t> faceOf_;        ///< by triangle
  std::optional<std::uint32_t> candidates_;  ///< the version of the visible faces that the tree knows
  std::vector<std::uint32_t> firstPlace_;    ///< by face, into places_
  std::vector<Place> places_;
  std::vector<std::uint32_t> rank_;  ///< by leaf: 1 and up, its place among the touched ones of the running query
};

/// Corners of one of a face's triangles, in the level's space.
std::array<math::Vec3, 3> triangleCorners(const LevelData& level, const FaceRecord& face, std::uint32_t triangle);
/// Whether rays meet a face.
bool isCandidate(const LevelData& level, const VisibleFaces& visible, std::size_t face);

}  // namespace ql::level
