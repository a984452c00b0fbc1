/// @file
/// An engine with a mesh, on a test machine, in a folder of its own.
#pragma once

#include "RenderTest.h"
#include "mesh/Build.h"

#include <array>
#include <memory>

namespace ql::test {

/// The number of the EngineError that an operation throws; 0 when it throws none.
template <class Operation>
std::int32_t engineErrorOf(Operation&& operation) {
  try {
    operation();
  } catch (const std::exception&) {
    return engine::currentError().number;
  }
  return 0;
}

struct MeshTest : RenderTest {
  std::shared_ptr<mesh::MeshHandle> handle = mesh::allocateMesh(context);

  mesh::MeshRecord& record() { return mesh::meshRecord(context, handle->slot); }
  /// A vertex that differs from its neighbours in every number.
  static math::NormalVertex vertexOf(float i) { return {i, i + 0.1f, i + 0.2f, 0, 1, 0, i / 8, i / 16, i / 8, i / 16}; }
  void addVertices(std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i)
      mesh::addVertex(context, *handle, vertexOf(static_cast<float>(record().vertexCount)), 0x01020300 + i);
  }
  math::Vec3 place(std::size_t vertex) {
    const math::NormalVertex& v = record().normalVertices.at(vertex);
    const math::ColorVertex& c = record().colorVertices.at(vertex);
    EXPECT_EQ(math::Vec3({v.x, v.y, v.z}), math::Vec3({c.x, c.y, c.z})) << "the lists differ at " << vertex;
    return {v.x, v.y, v.z};
  }
  math::Vec3 normal(std::size_t vertex) {
    const math::NormalVertex& v = record().normalVertices.at(vertex);
    return {v.nx, v.ny, v.nz};
  }
  /// Both lists have one element more than the mesh has vertices, and it is zero.
  void expectSpare() {
    ASSERT_EQ(record().normalVertices.size(), static_cast<std::size_t>(record().vertexCount) + 1);
    ASSERT_EQ(record().colorVertices.size(), record().normalVertices.size());
    EXPECT_EQ(place(static_cast<std::size_t>(record().vertexCount)), math::Vec3());
    EXPECT_EQ(record().colorVertices.back().diffuse, 0);
  }
};

}  // namespace ql::test
