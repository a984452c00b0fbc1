/// @file
/// What a mesh is: vertices cut into groups, placed in the world.
#pragma once

#include "engine/EngineContext.h"
#include "engine/SlotTable.h"
#include "math/Matrix.h"
#include "math/Vector.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ql::utility {
class SubsetMesh;
}

namespace ql::mesh {

class RayIndex;

inline constexpr std::int16_t kNormalVertices = 530;  ///< position, normal, two texture coordinate pairs
inline constexpr std::int16_t kColorVertices = 706;   ///< position, diffuse, specular, two texture coordinate pairs
inline constexpr std::int16_t kTriangleList = 4, kTriangleStrip = 5;
inline constexpr std::int16_t kNoLightmap = -1;      ///< of a group
inline constexpr std::int16_t kLightmapWanted = 0;   ///< of a group: to be made
inline constexpr std::int32_t kMaxVertices = 32767;  ///< vertex numbers are 16-bit
inline constexpr std::int32_t kMaxGroups = 32767;

/// What a host's mesh handle refers to. A handle whose slot was freed acts on whatever the slot holds next.
struct MeshHandle {
  std::int16_t slot = 0;
  std::int16_t currentGroup = 0;  ///< the group that new vertices join
};

/// A contiguous run of a mesh's vertices and how it is drawn. Groups are numbered from 1; group 0 exists, empty.
struct MeshGroup {
  std::vector<std::int16_t> indices;  ///< numbers of the vertices added, in order; not used for drawing
  std::int16_t count = 0, start = 0;
  std::int16_t texture = 0;   ///< index in the texture table; 0: none
  std::int16_t material = 0;  ///< index in the material table; 0: "Blank"
  std::int16_t lightmap = kLightmapWanted;
  std::int16_t blending = 0;   ///< 0 none, 1 alpha, 2 add, 3 colour
  std::int16_t sphereMap = 0;  ///< kept by mesh files only
  std::int16_t shader = 0;     ///< index in the shader table; 0: none
  float framePos = 0;          ///< of animated shader stages, frames
};

/// One mesh. The two vertex lists have the same length, vertexCount + 1: the last element is a spare of zeros.
struct MeshRecord {
  std::string name;
  bool inUse = false, enabled = false;
  bool matrixDirty = false;                      ///< the world matrix is rebuilt by the next drawing
  std::weak_ptr<MeshHandle> handle;              ///< its holders keep the mesh: the slot is freed with the last of them
  std::shared_ptr<utility::SubsetMesh> subsets;  ///< geometry of a sphere, teapot, 3D text or X file
  math::Vec3 position, rotation;                 ///< world units; degrees about x, y, z
  math::Vec3 scale{1, 1, 1};
  bool usesSubsets = false;  ///< drawn from subsets, not from the vertex lists
  bool sphereMapping = false;
  std::int32_t texCoordGen = 0;  ///< texture coordinate index of stage 0 while sphere mapping is on
  std::int32_t visible = 0;      ///< 1 when the last drawing found the mesh in view
  bool billboard = false;        ///< turns about y with the camera
  bool sprite = false;           ///< kept by mesh files only
  math::Vec3 sphereCenter;       ///< bounds are scaled, in the mesh's own space
  float sphereRadius = 0;
  bool boundsValid = false;
  math::Vec3 boxMin, boxMax;
  math::Vec3 velocity;  ///< world units per second
  float gravity = 0;    ///< taken from velocity.y per second
  std::vector<math::NormalVertex> normalVertices{math::NormalVertex{}};
  std::vector<math::ColorVertex> colorVertices{math::ColorVertex{}};
  std::int32_t vertexCount = 0;
  std::int16_t vertexType = kNormalVertices;  ///< which list is drawn and saved
  std::int16_t groupCount = 0;
  std::vector<MeshGroup> groups{MeshGroup{}};  ///< groupCount + 1 elements
  std::int16_t primitiveType = kTriangleList;
  math::Mat4 worldMatrix = math::identity();
  std::vector<std::int16_t> children;  ///< slots
  std::int16_t parent = 0;             ///< slot; 0: none
  std::int16_t cullMode = 1;           ///< 1 both sides, 2 clockwise, 3 counter-clockwise are dropped
  bool renderedThisFrame = false;
  float deathTime = 0;  ///< milliseconds left; 0: immortal

  std::shared_ptr<RayIndex> rayIndex;  ///< of accurate ray tests, made on demand from vertices and groups
  bool noted = false;                  ///< in MeshRegistry::changes
};

/// All meshes of an engine, at stable addresses.
struct MeshRegistry {
  std::shared_ptr<engine::SlotTable<std::unique_ptr<MeshRecord>>> slots =
      std::make_shared<engine::SlotTable<std::unique_ptr<MeshRecord>>>();  ///< no record is null from slot 1 on
  std::vector<std::int16_t> changes;  ///< slots told to noteChange since an index over all meshes last looked
};

/// The one way a mesh comes into being: takes the first free slot, else a new one, and fills its record with the
/// initial values and one empty group. @param name "" names it "Mesh" and its slot
/// @throws engine::EngineError 6 beyond 32767 meshes
std::shared_ptr<MeshHandle> allocateMesh(engine::EngineContext& context, const std::string& name = "");
/// The record of a slot, used or not. @throws engine::EngineError 9 outside 1 to the count
MeshRecord& meshRecord(engine::EngineContext& context, std::int32_t slot);
/// The first mesh of that name in order of slots, in use or not, whatever the letter case; null when there is none.
std::shared_ptr<MeshHandle> findMesh(engine::EngineContext& context, const std::string& name);
/// Number of slots.
std::int16_t meshCount(engine::EngineContext& context);
/// To be called after a mesh's bounds or world matrix changed: indices over all meshes look at it again. A mesh that
/// was just allocated is noted already.
void noteMoved(engine::EngineContext& context, std::int16_t slot);
/// To be called after a mesh's vertex positions or groups changed: what was derived from them is made anew when it is
/// needed.
void noteChange(engine::EngineContext& context, std::int16_t slot);
/// Makes a group current; a group beyond the last but one cuts or grows the list to it, empty.
/// @throws engine::EngineError 9 below 0, 6 when a group would start past vertex 32767
void setGroupPointer(engine::EngineContext& context, MeshHandle& mesh, std::int16_t group);

}  // namespace ql::mesh
