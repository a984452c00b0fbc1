/// @file
/// What a level keeps once it is loaded: plain tables that refer to each other by checked indices.
#pragma once

#include "level/Q3Bsp.h"
#include "math/Vector.h"
#include "platform/device/Resources.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ql::level {

/// A vertex of the level's one vertex buffer: position, colours, texture and lightmap coordinates.
using LevelVertex = Quasarlens3D::ColorVertex;
inline constexpr std::uint32_t kLevelVertexFormat = 0x2C2;

/// What drawing needs to know of a face.
struct FaceRecord {
  std::int16_t texture = -1;      ///< index of the level's textures; -1: none, or drawn by a shader
  std::int16_t baseSlot = -1;     ///< -1: drawn in the base pass, else the slot of its shader
  std::int32_t lightmap = -1;     ///< -1: none; of Half-Life levels the page that it is on
  std::uint32_t firstVertex = 0;  ///< in the level's vertex buffer
  std::uint32_t triangleCount = 0;
  std::int32_t patch = -1;  ///< which of the level's curved faces it is
  std::int32_t key = -1;    ///< its texture in the file, which orders drawing; -1: none
};

/// A leaf as visibility uses it, file coordinates.
struct Leaf {
  std::int32_t cluster = -1;  ///< -1: never seen
  std::array<std::int32_t, 3> mins{}, maxs{};
  std::int32_t firstLeafFace = 0, leafFaceCount = 0;
  bool solid = false;  ///< nothing can be in it
};
/// The sphere around a leaf's box, in the level's space (file coordinates with x negated).
struct LeafSphere {
  math::Vec3 center;
  float radius = 0;
};

/// How an entity's faces are drawn; the numbers are those of level files.
enum class RenderMode : std::uint8_t { Normal = 0, Color = 1, Texture = 2, Glow = 3, Solid = 4, Additive = 5 };
/// How a face of a Half-Life level looks beside its texture and light.
struct FaceLook {
  RenderMode mode = RenderMode::Normal;
  std::uint8_t amount = 255;  ///< how opaque translucent modes are
  std::uint32_t color = 0;    ///< packed RGB, of the mode Color
  bool sky = false;           ///< not drawn: the sky shows
  bool hidden = false;        ///< belongs to something that is never seen
  bool cutOut = false;        ///< its texture has holes

  /// Whether it is drawn after all that is solid, over it.
  bool translucent() const { return mode != RenderMode::Normal && mode != RenderMode::Solid; }
};
/// A part of the level that an entity places: a door, a fence, a window.
struct BrushModel {
  std::size_t firstFace = 0, faceCount = 0;
  LeafSphere sphere;  ///< around it, where its entity places it
};

struct LevelTexture {
  std::string name;                          ///< as the file has it, without an ending
  std::int32_t shaderSlot = -1;              ///< -1: an image file
  std::shared_ptr<device::Texture> texture;  ///< null: untextured
};

struct LevelData {
  std::string entityText;
  std::vector<LevelTexture> textures;
  std::vector<std::shared_ptr<device::Texture>> lightmaps;
  std::vector<FaceRecord> faces;
  std::vector<std::int32_t> leafFaces;
  std::vector<Leaf> leaves;
  std::vector<LeafSphere> leafSpheres;
  Q3Visibility visibility;
  std::shared_ptr<device::VertexBuffer> vertices;

  // For collision, which works in file coordinates on the tree and in the level's space on triangles.
  std::vector<Q3Plane> planes;
  std::vector<Q3Node> nodes;
  std::vector<Q3Model> models;
  std::vector<math::Vec3> positions;  ///< of the vertex buffer

  // Half-Life levels only.
  bool isHalfLife = false;                         ///< then faces' vertices are fans, else lists of triangles
  std::vector<FaceLook> looks;                     ///< by face
  std::vector<BrushModel> brushModels;             ///< all but the world
  std::vector<std::byte> packedVisibility;         ///< rows of bits, their zeros packed
  std::vector<std::int32_t> visibilityOffsets;     ///< by leaf, where its row starts; -1: everything may be seen
  std::int32_t triggerTexture = -1;                ///< the one that brush models' triggers have
  std::shared_ptr<device::Texture> whiteLightmap;  ///< of faces without light of their own
};

}  // namespace ql::level
