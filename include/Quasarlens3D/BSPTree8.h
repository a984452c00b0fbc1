/// @file
/// Levels.
#ifndef QUASARLENS3D_BSPTREE8_H
#define QUASARLENS3D_BSPTREE8_H

#include <Quasarlens3D/CollisionResult8.h>
#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Mesh8.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct LevelObject;
}

/// How finely curved surfaces are divided: 2, 4 or 8 segments along each side of a control patch.
enum CONST_QL_CURVE : std::int32_t { QL_CURVE_LOW = 0, QL_CURVE_NORMAL = 1, QL_CURVE_HIGH = 2 };

/// What a trace could tell. No operation fills it.
struct BSPTraceReturn {
  Boolean AllSolid, StartSolid;
  Vec3 Intersection, PlaneNormal;
  float PlaneOffset = 0;
  std::int16_t FaceCollided = 0, EntityCollided = 0;
  float LinePercent = 0;
};

/// A level. The one created last is the active level.
class QUASARLENS3D_API BSPTree8 : public Detail::Handle<Detail::LevelObject> {
 public:
  BSPTree8();
  BSPTree8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Loads a Quake 3 or a Half-Life level and its textures; needs a device. A point (x, y, z) of the file stands at
  /// (-x, z, -y) in the world. Errors end the load with a log line; what was read until then is kept.
  /// @param Filename taken from the open PAK archive when it is not on disk; then the extracted file's name is written
  /// @param LoadLightMaps,LoadTexture what a Half-Life level has beside its faces; a Quake 3 level always has both
  /// @param TextureNumber bitmaps of a Half-Life level's textures are named by their numbers ("12.bmp")
  /// @param TexturePath becomes the current folder before a Half-Life level's textures are loaded
  /// @param CreateDynamicLights makes a point light for each light of a Half-Life level, while there is room for them
  /// @param CreateMipmaps textures get smaller levels
  void Load(ByRef<std::string> Filename, Boolean LoadLightMaps = True, Boolean LoadTexture = True,
            Boolean TextureNumber = False, const std::string& TexturePath = "", Boolean CreateDynamicLights = False,
            Boolean CreateMipmaps = True);
  /// Opens a texture package (WAD3) for the Half-Life levels that are loaded from now on; the file is read at each
  /// load. Textures are looked for in the package that was opened last, then in those before it, in the level's own
  /// file, and as bitmaps.
  void OpenPackWAD(const std::string& WadFilename);
  /// Closes all texture packages.
  void ClosePackWAD();
  /// Copies the textures of Half-Life levels that are loaded from now on into a folder, as bitmaps.
  /// @param TextureNumber names the copies by the textures' numbers instead of their names
  void SetCopyTexturesFolder(Boolean OnOff, const std::string& pathname, Boolean TextureNumber = False);
  /// Draws what the camera may see, inside a frame. Faces are culled with the planes of the last finished frame, and
  /// anew at most every two seconds unless the camera enters another cluster or turns away.
  /// @throws Error 91 before Quasarlens8.Initialize, or with the device's code
  void Render();
  /// From the next Render on. @param UsePVSInfo false draws every face of the level
  /// @param Culling CONST_QL_CULLING @param DisplaySky draws the level's sky, when it has one
  void SetParameters(Boolean UseLightMaps = True, Boolean UsePVSInfo = True, std::int32_t Culling = QL_DOUBLESIDED,
                     Boolean DisplaySky = False);
  /// Moves the level's origin to a point of the world.
  void SetPosition(float x, float y, float z);
  /// Adds every shader script ("*.shader") of a folder. A later Load looks a texture's name up in the scripts, in the
  /// order in which they were added, before it takes the name for a picture file. A folder that cannot be read adds
  /// none.
  void LoadShaderDirectory(const std::string& DirectoryPath);
  /// @param CurvePrecision CONST_QL_CURVE; the next Load uses it
  void SetCurvePrecision(std::int32_t CurvePrecision);
  /// The level's first player start in world coordinates; (0, 0, 0) when it has none.
  Vec3 GetStartPlayerPosition() const;

  /// Whether a ray from StartPos1 through EndPos1, world coordinates, meets a face within the collision precision
  /// (Scene8.SetCollisionPrecision, 30 at first; the end point does not limit it). Faces count when the last rebuild of
  /// the visible ones listed them (all of them before the first one and without UsePVSInfo), and textured faces that
  /// come after the first one of the first brush model. The first face in the level's order that is hit decides, not
  /// the nearest; its point and normal become the last hit that a CollisionResult8 shows.
  Boolean DetectCollision(const Vec3& StartPos1, const Vec3& EndPos1);
  /// Whether a sphere, world coordinates, reaches a solid leaf of the level. The way down the level's tree compares the
  /// radius with the square root of the distance from each plane, so that the sphere reaches farther than it looks.
  /// @param Reserved1 1: solid leaves of a Quake 3 level count as nothing
  Boolean DetectSphereCollision(const Vec3& Position, float SphereRadius = 1, std::int16_t Reserved1 = 0);
  /// A sphere that moves: the nearest face within SphereRadius on the way from SpherePos towards NewSpherePosition,
  /// among those of the leaves that DetectSphereCollision reaches at the new position, as the last hit. A sphere that
  /// reaches a solid leaf, but no face, collides with point and normal (0, 0, 0). On a Half-Life level no faces are
  /// looked at.
  CollisionResult8 AdvancedSphereCollision(const Vec3& SpherePos, const Vec3& NewSpherePosition, float SphereRadius);
  /// Whether a segment reaches no solid leaf. @param Start,LEnd coordinates of the level's file, not of the world
  /// @param NodeID the node of the tree to start from; 0 is the root @throws Error 9 when there is no such node
  Boolean LineSight(const Vec3& Start, const Vec3& LEnd, std::int32_t NodeID = 0) const;
  /// The height of the first face, in the level's order, below a point of the world; PosY itself when there is none
  /// within 10000 units. Faces count as in DetectCollision. For the nearest floor use DetectCollision with a small
  /// collision precision. @param UseCameraPosition asks for the camera's position instead
  float GetAltitudeFromPos(float PosX, float PosY, float PosZ, Boolean UseCameraPosition = False);
  /// Computes nothing.
  void Trace(const Vec3& StartPos, const Vec3& EndPos) const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
