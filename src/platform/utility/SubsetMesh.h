/// @file
/// Indexed meshes in the device's memory, drawn by subsets.
#pragma once

#include "math/Vector.h"
#include "platform/device/Device.h"
#include "platform/utility/Bounds.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ql::utility {

/// One corner of a SubsetMesh: position, normal and one texture coordinate pair, as the device takes it.
struct SubsetVertex {
  math::Vec3 position, normal;
  float tu = 0, tv = 0;
};
static_assert(sizeof(SubsetVertex) == 32);
/// Its flexible vertex format.
inline constexpr std::uint32_t kSubsetVertexFormat = 0x112;

/// Subsets are numbered from 0 to this.
inline constexpr std::uint32_t kLargestSubset = 65535;

/// Triangles that share vertices, each belonging to a subset that is drawn by its number. The device's copy is made by
/// the first drawing, and again by the first one on another device.
class SubsetMesh {
 public:
  /// @param indices three per triangle, clockwise as seen from outside @param subsets one per triangle; empty: all 0
  /// @throws device::DeviceError invalid call: an index without a vertex, triangles that are not whole, not one
  /// subset per triangle, or a subset above kLargestSubset
  SubsetMesh(std::vector<SubsetVertex> vertices, std::vector<std::uint32_t> indices,
             std::vector<std::uint32_t> subsets = {});

  std::span<const SubsetVertex> vertices() const { return vertices_; }
  std::span<const std::uint32_t> indices() const { return indices_; }
  /// The subset of each triangle.
  std::span<const std::uint32_t> subsets() const { return subsets_; }
  std::size_t triangleCount() const { return subsets_.size(); }
  /// One more than the largest subset that has triangles.
  std::size_t subsetCount() const { return first_.size() - 1; }

  /// Draws the triangles of a subset in their order; a subset without triangles makes no call.
  /// @throws device::DeviceError as the device's calls do
  void drawSubset(device::Device& device, std::size_t subset);

  Sphere boundingSphere() const;
  Box boundingBox() const;
  /// Gives every vertex the normal of the triangles that use it, large ones counting more.
  void computeNormals();

 private:
  std::vector<SubsetVertex> vertices_;
  std::vector<std::uint32_t> indices_, subsets_;
  std::vector<std::size_t> first_;  ///< of each subset: its first triangle in the device's copy; and one past the last
  std::shared_ptr<device::VertexBuffer> buffer_;  ///< corner by corner, by subsets
};

}  // namespace ql::utility
