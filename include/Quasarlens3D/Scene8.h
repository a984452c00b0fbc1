/// @file
/// The scene: projection, background, text and global drawing states.
#ifndef QUASARLENS3D_SCENE8_H
#define QUASARLENS3D_SCENE8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/RenderSurface8.h>
#include <Quasarlens3D/Mesh8.h>
#include <Quasarlens3D/Texture8.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct SceneObject;
}

/// How primitives are drawn.
enum CONST_QL_RENDERMODE : std::int32_t {
  QL_POINT = 1,  ///< their corners
  QL_LINE = 2,   ///< their edges
  QL_SOLID = 3
};

/// The scene. The one created last is the active scene; each new one sets the collision precision to 30 and the
/// picking precision to 1000.
class QUASARLENS3D_API Scene8 : public Detail::Handle<Detail::SceneObject> {
 public:
  Scene8();
  Scene8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// The colour that Quasarlens8.Clear clears to; components 0 to 1, one above 1 gives black.
  void SetSceneBackGround(float r, float g, float b);
  /// A perspective projection for pictures of 4:3, near plane 1. Before Quasarlens8.Initialize the values are only
  /// stored; Initialize then uses them with the picture's own proportions.
  /// @param sAngleFOV vertical field of view in degrees, between 0 and 180 @param sFarPlane world units
  void SetViewFrustum(float sAngleFOV, float sFarPlane);
  /// Places the camera and the point that it looks at, world units.
  void SetCamera(float xpos, float ypos, float zpos, float xlookat, float ylookat, float zlookat);
  /// @param RM CONST_QL_RENDERMODE; other values change nothing @throws Error 91 before Quasarlens8.Initialize
  void SetRenderMode(std::int32_t RM);
  /// Switches between mip levels on for textures of stage 0. @throws Error 91 before Quasarlens8.Initialize
  void EnableMipMapping();
  /// Dithering of 16-bit pictures. @throws Error 91 before Quasarlens8.Initialize
  void SetDithering(Boolean OnOff);

  /// Draws text with the system font, inside a frame. Line breaks are honoured. @param x,y its top left, pixels
  /// @param color packed ARGB @throws Error 91 before Quasarlens8.Initialize
  void DrawText(const std::string& Text, std::int32_t x, std::int32_t y, std::int32_t color = -1);
  /// Changes the system font. A face that is not installed becomes the default face.
  /// @param FontName "" keeps the face @param FontSize points as text; "" or "0" keeps the size
  /// @param color no effect @throws Error 91 before Quasarlens8.Initialize
  void SelectFont(const std::string& FontName = "", const std::string& FontSize = "", const std::string& color = "",
                  Boolean Bold = False, Boolean Italic = False, Boolean Underlined = False);

  /// A new mesh in the first free slot, with group 1, empty. It lives as long as a handle to it does.
  /// @param Name "" names it "Mesh" and its slot @throws Error 6 beyond 32767 meshes
  Mesh8 CreateMeshBuilder(const std::string& Name = "");

  /// Loads a texture without a colour key: see TextureFactory8.LoadTexture.
  Texture8 LoadTexture(ByRef<std::string> Filename, ByRef<std::int32_t> width = -1, ByRef<std::int32_t> height = -1,
                       const std::string& TextureName = "");
  /// Makes a texture to draw into. @param width,height pixels; the size that the device can use is written back
  /// @param Texture,PosX,PosY no effect @throws Error 91 before Quasarlens8.Initialize
  RenderSurface8 CreateRenderSurface(ByRef<std::int32_t> width, ByRef<std::int32_t> height, Boolean Texture,
                                     std::int32_t PosX = 0, std::int32_t PosY = 0);

  /// How far landscape ray tests reach, world units.
  void SetPickingPrecision(float farPlane);
  /// The distance that level ray tests use, world units.
  void SetCollisionPrecision(float Collide);

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
