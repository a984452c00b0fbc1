/// @file
/// Building meshes: vertices, groups, flat pieces, links. A mesh is named by its handle; every operation acts on what
/// its slot holds.
#pragma once

#include "mesh/MeshRecord.h"

#include <cstdint>
#include <span>

namespace ql::mesh {

/// Appends a vertex to both lists and to the current group. @param vertex its second coordinate pair counts too
/// @param color packed ARGB, of the coloured list @return the number of vertices
/// @throws engine::EngineError 6 beyond 32767 vertices, 9 when the current group does not exist; nothing changed
std::int16_t addVertex(engine::EngineContext& context, MeshHandle& mesh, const math::NormalVertex& vertex,
                       std::int32_t color);
/// Opens a new group. @param texture index in the texture table, 0: none @param lightmap whether one is wanted
/// @throws engine::EngineError 6 beyond 32767 groups
void addFace(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture, bool lightmap);

/// How often a texture repeats over a flat piece.
struct Tiling {
  float width = 1, height = 1;
};
/// One end of a wall, world units.
struct WallEnd {
  float x = 0, z = 0, altitude = 0, height = 0;
};
/// The pieces below open a group of their own, lightmap wanted, with white vertices whose texture coordinates keep 2 %
/// off the texture's edges. The primitive type is the whole mesh's: a piece of four vertices (but addSlopedWall) makes
/// it a strip.
/// @throws engine::EngineError 6 as addVertex and addFace
void addWall(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture, const WallEnd& from,
             const WallEnd& to, const Tiling& tiling);
/// A wall whose ends differ; the primitive type stays.
void addSlopedWall(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture, const WallEnd& from,
                   const WallEnd& to, const Tiling& tiling);
/// A horizontal piece between two corners.
void addFloor(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture, float x1, float z1, float x2,
              float z2, float altitude, const Tiling& tiling);
/// Four points in the order of a strip.
void addQuad(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture,
             std::span<const math::Vec3, 4> points, const Tiling& tiling);
/// Three points; the primitive type stays.
void addTriangle(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture,
                 std::span<const math::Vec3, 3> points, const Tiling& tiling);

/// Moves a vertex in both lists. @param vertex counted from the group's first one @param group 0: from the mesh's
/// @param relative adds to its place @throws engine::EngineError 9 for a group or vertex that does not exist
void moveVertex(engine::EngineContext& context, const MeshHandle& mesh, std::int16_t vertex, std::int16_t group,
                const math::Vec3& place, bool relative);
/// Colours one vertex of the coloured list, or all. @param color packed ARGB @param vertex -1: all, the spare included
/// @throws engine::EngineError 9 for a vertex that does not exist
void setColor(engine::EngineContext& context, const MeshHandle& mesh, std::int32_t color, std::int32_t vertex);

/// Flat normals: of every triangle in a list; of the first triangle, for all vertices of the group, in a strip. A piece
/// of a triangle past the last vertex keeps its normals. Meshes drawn from subsets get smooth ones.
void computeNormals(engine::EngineContext& context, const MeshHandle& mesh);
/// Bounding sphere and box, scaled, in the mesh's own space; of the vertex lists with the spare, hence with the origin.
/// Nothing without vertices.
void computeBounds(engine::EngineContext& context, const MeshHandle& mesh);
/// Checks that the device could hold the mesh's triangles with shared vertices; the mesh stays as it is.
/// @throws engine::EngineError 91 without a device
void optimize(engine::EngineContext& context, const MeshHandle& mesh);

/// Makes a mesh a child of another. @throws engine::EngineError 5 for a mesh that is the parent or one of its parents,
/// 6 beyond 32767 children
void addChild(engine::EngineContext& context, const MeshHandle& parent, const MeshHandle& child);
/// Unlinks all children; they stay.
void deleteChildren(engine::EngineContext& context, const MeshHandle& parent);

}  // namespace ql::mesh
