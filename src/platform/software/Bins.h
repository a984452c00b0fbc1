/// @file
/// From vertex records to lists of triangles per tile.
#pragma once

#include "platform/software/Vertices.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ql::software {

/// The vertices of a triangle; the first gives the flat colour, and all wind the same way.
struct Corners {
  std::uint32_t v[3];
};

/// A draw call that waits, or several in a row that differ in their vertices alone: lists, or strips or fans of equally
/// many triangles, whose vertices follow each other.
struct Draw {
  const Pipeline* pipeline = nullptr;
  device::PrimitiveType type = device::PrimitiveType::TriangleList;
  std::uint32_t first = 0, count = 0;  ///< numbers of its primitives, counted through all draws that wait
  std::uint32_t vertexCount = 0;
  std::uint32_t pieceCount = 0, pieceVertices = 0;  ///< of a strip or fan
  std::size_t stride = 0;
  const std::byte* source = nullptr;  ///< of its first vertex
  float* records = nullptr;

  /// Whether its vertices are transformed when it is binned: those of a list belong to one triangle each.
  bool transformsLater() const { return type == device::PrimitiveType::TriangleList; }
  const float* record(std::uint32_t vertex) const {
    return records + std::size_t{vertex} * static_cast<std::size_t>(pipeline->attributes.recordFloats());
  }
  float* writable(std::uint32_t vertex) const {
    return records + std::size_t{vertex} * static_cast<std::size_t>(pipeline->attributes.recordFloats());
  }
  const std::byte* vertex(std::uint32_t vertex) const { return source + std::size_t{vertex} * stride; }
  const std::byte* end() const { return vertex(vertexCount); }
  Corners triangle(std::uint32_t i) const {
    if (type == device::PrimitiveType::TriangleList) return {{i * 3, i * 3 + 1, i * 3 + 2}};
    const std::uint32_t piece = count == pieceCount ? 0 : i / pieceCount, center = piece * pieceVertices;
    i -= piece * pieceCount;
    const std::uint32_t next = center + i;
    if (type == device::PrimitiveType::TriangleFan) return {{next + 1, next + 2, center}};
    return i & 1 ? Corners{{next, next + 2, next + 1}} : Corners{{next, next + 1, next + 2}};
  }
};

/// Some primitives in order, with the lists of what they draw in each tile.
struct Job {
  /// In lists: the number of a primitive that is a triangle as it is, or this bit and a number in extras.
  static constexpr std::uint32_t kExtra = 0x80000000;
  /// A triangle that was made: a piece of a clipped one, a line, a point.
  struct Extra {
    std::uint32_t primitive = 0;
    std::size_t record[3] = {};  ///< places of its vertices in records
  };
  std::uint32_t firstPrimitive = 0, primitiveCount = 0;
  std::size_t firstDraw = 0;
  std::vector<std::vector<std::uint32_t>> lists;
  std::vector<Extra> extras;
  std::vector<float> records;
  std::int64_t vertexNanoseconds = 0;    ///< spent on transforming vertices
  std::uint32_t drawn = 0, clipped = 0;  ///< triangles listed somewhere, whole or in parts; triangles that were cut
};

}  // namespace ql::software
