#include "platform/utility/SubsetMesh.h"

#include <algorithm>
#include <utility>

namespace ql::utility {
namespace {

constexpr std::size_t kCorners = 3;  // of a triangle

}  // namespace

SubsetMesh::SubsetMesh(std::vector<SubsetVertex> vertices, std::vector<std::uint32_t> indices,
                       std::vector<std::uint32_t> subsets)
    : vertices_(std::move(vertices)), indices_(std::move(indices)), subsets_(std::move(subsets)) {
  const std::size_t triangles = indices_.size() / kCorners;
  if (subsets_.empty()) subsets_.resize(triangles);
  if (indices_.size() % kCorners != 0 || subsets_.size() != triangles)
    throw device::DeviceError(device::kErrorInvalidCall, "mesh: triangles and subsets disagree");
  if (std::ranges::any_of(indices_, [&](std::uint32_t index) { return index >= vertices_.size(); }))
    throw device::DeviceError(device::kErrorInvalidCall, "mesh: an index without a vertex");
  if (std::ranges::any_of(subsets_, [](std::uint32_t subset) { return subset > kLargestSubset; }))
    throw device::DeviceError(device::kErrorInvalidCall, "mesh: a subset's number is too large");
  first_.resize(subsets_.empty() ? 1 : std::size_t{*std::ranges::max_element(subsets_)} + 2);
  for (const std::uint32_t subset : subsets_) ++first_[subset + 1];
  for (std::size_t i = 1; i < first_.size(); ++i) first_[i] += first_[i - 1];
}

void SubsetMesh::drawSubset(device::Device& device, std::size_t subset) {
  if (subset >= subsetCount() || first_[subset] == first_[subset + 1]) return;
  if (!buffer_ || buffer_->backEnd() != device.backEnd()) {
    std::vector<SubsetVertex> corners(indices_.size());
    std::vector<std::size_t> next = first_;
    for (std::size_t triangle = 0; triangle < subsets_.size(); ++triangle) {
      const std::size_t to = next[subsets_[triangle]]++;
      for (std::size_t corner = 0; corner < kCorners; ++corner)
        corners[to * kCorners + corner] = vertices_[indices_[triangle * kCorners + corner]];
    }
    const std::span<const std::byte> bytes = std::as_bytes(std::span(corners));
    std::shared_ptr<device::VertexBuffer> made =
        device.createVertexBuffer(bytes.size(), 0, kSubsetVertexFormat, device::Pool::Managed);
    made->write(0, bytes);
    buffer_ = std::move(made);
  }
  device.setVertexShader(kSubsetVertexFormat);
  device.setStreamSource(0, buffer_, sizeof(SubsetVertex));
  device.drawPrimitive(device::PrimitiveType::TriangleList, static_cast<std::uint32_t>(first_[subset] * kCorners),
                       static_cast<std::uint32_t>(first_[subset + 1] - first_[subset]));
}

Sphere SubsetMesh::boundingSphere() const {
  return utility::boundingSphere(std::as_bytes(std::span(vertices_)), sizeof(SubsetVertex));
}
Box SubsetMesh::boundingBox() const {
  return utility::boundingBox(std::as_bytes(std::span(vertices_)), sizeof(SubsetVertex));
}

void SubsetMesh::computeNormals() {
  for (SubsetVertex& vertex : vertices_) vertex.normal = {};
  for (std::size_t i = 0; i < indices_.size(); i += kCorners) {
    SubsetVertex& a = vertices_[indices_[i]];
    SubsetVertex& b = vertices_[indices_[i + 1]];
    SubsetVertex& c = vertices_[indices_[i + 2]];
    const math::Vec3 normal =
        math::cross(math::subtract(b.position, a.position), math::subtract(c.position, a.position));
    for (SubsetVertex* corner : {&a, &b, &c}) corner->normal = math::add(corner->normal, normal);
  }
  for (SubsetVertex& vertex : vertices_) vertex.normal = math::normalize(vertex.normal);
  buffer_.reset();
}

}  // namespace ql::utility
