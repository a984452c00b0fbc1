/// @file
/// Levels.
#ifndef QUASARLENS3D_BSPTREE8_H
#define QUASARLENS3D_BSPTREE8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct LevelObject;
}

/// Which sides of faces are drawn.
enum CONST_QL_CULLING : std::int32_t { QL_DOUBLESIDED = 1, QL_BACK_CULL = 2, QL_FRONT_CULL = 3 };

/// How finely curved surfaces are divided: 2, 4 or 8 segments along each side of a control patch.
enum CONST_QL_CURVE : std::int32_t { QL_CURVE_LOW = 0, QL_CURVE_NORMAL = 1, QL_CURVE_HIGH = 2 };

/// A level. The one created last is the active level.
class QUASARLENS3D_API BSPTree8 : public Detail::Handle<Detail::LevelObject> {
 public:
  BSPTree8();
  BSPTree8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Loads a level file and its textures; needs a device. A point (x, y, z) of the file stands at (-x, z, -y) in the
  /// world. Errors end the load with a log line; what was read until then is kept.
  /// @param Filename taken from the open PAK archive when it is not on disk; then the extracted file's name is written
  /// @param LoadLightMaps,LoadTexture,TextureNumber,TexturePath,CreateDynamicLights,CreateMipmaps options of other
  /// kinds of levels; a Quake 3 level always loads its lightmaps and textures
  void Load(ByRef<std::string> Filename, Boolean LoadLightMaps = True, Boolean LoadTexture = True,
            Boolean TextureNumber = False, const std::string& TexturePath = "", Boolean CreateDynamicLights = False,
            Boolean CreateMipmaps = True);
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
  /// @param CurvePrecision CONST_QL_CURVE; the next Load uses it
  void SetCurvePrecision(std::int32_t CurvePrecision);
  /// The level's first player start in world coordinates; (0, 0, 0) when it has none.
  Vec3 GetStartPlayerPosition() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
