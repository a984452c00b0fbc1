/// @file
/// The scene: meshes, sky, cursor, projection, background, text, global drawing states, hit tests.
#ifndef QUASARLENS3D_SCENE8_H
#define QUASARLENS3D_SCENE8_H

#include <Quasarlens3D/CollisionResult8.h>
#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Mesh8.h>
#include <Quasarlens3D/RenderSurface8.h>
#include <Quasarlens3D/Screen8.h>
#include <Quasarlens3D/Texture8.h>
#include <Quasarlens3D/TextureFactory8.h>
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
  /// Draws every mesh that has no parent, in order of slots; see Mesh8.Render. Nothing is sorted: what is see-through
  /// belongs into later slots. @throws Error 91 before Quasarlens8.Initialize
  void RenderAllMeshes();
  /// A rectangle standing on its lower edge that turns about y with the camera. Keep the handle.
  /// @param x,y,z the middle of its lower edge @param width,height world units @param alpha,src,dest,color no effect
  Mesh8 CreateBillboard(const Texture8& Texture, float x, float y, float z, float width, float height,
                        const std::string& Name = "", Boolean alpha = False, std::int32_t src = D3DBLEND_SRCALPHA,
                        std::int32_t dest = D3DBLEND_INVSRCALPHA, std::int32_t color = -1);

  /// The pictures of the box that RenderSky draws around the camera: left at -z, right at +z, front at -x, back at +x,
  /// top at -y, bottom at +y. @param SkyDistance world units from the camera to each face; stay below the far plane
  /// @throws Error 91 for nothing
  void SetSkyTexture(const Texture8& Front, const Texture8& Back, const Texture8& Left, const Texture8& Right,
                     const Texture8& Top, const Texture8& Bottom, float SkyDistance = 600);
  /// Loads the six pictures of a sky box. A face whose picture cannot be loaded is white.
  /// @param TextureFileName one of them: its last five characters are a digit and an ending; the digit becomes 1 left,
  /// 2 right, 3 front, 4 back, 5 top, 6 bottom @throws Error 5 for a shorter name
  void LoadSky(const std::string& TextureFileName, float SkyDistance = 1000);
  /// Draws the sky box, best before everything else. Lighting, alpha blending and culling stay off.
  /// @throws Error 91 before Quasarlens8.Initialize
  void RenderSky();

  /// Loads a picture as the mouse cursor, the texture named "Cursor", and shows it: every RenderToScreen draws it at
  /// the mouse's place. @param Colorkey CONST_QL_COLORKEY @param width,height pixels
  void LoadCursor(ByRef<std::string> Filename, std::int32_t Colorkey = QL_COLORKEY_NO, float width = 32,
                  float height = 32);
  /// Shows a texture as the mouse cursor. @param Cursor nothing hides it
  void SetCursorTexture(const Texture8& Cursor, float CursWidth = 32, float CursHeight = 32);

  /// Loads a texture without a colour key: see TextureFactory8.LoadTexture.
  Texture8 LoadTexture(ByRef<std::string> Filename, ByRef<std::int32_t> width = -1, ByRef<std::int32_t> height = -1,
                       const std::string& TextureName = "");
  /// Loads what a text file lists, in its order. After a line "TEXTURES n" the next n lines hold a file name, ">" and
  /// the texture's name, loaded 256 x 256 with QL_COLORKEY_BLACK. After a line "SHADER name" a shader's body follows,
  /// as in shader scripts; its textures are found by name among those that are loaded.
  /// @throws Error 53 for a missing file; 9 for a texture line without ">" and 62 for too few lines: what came before
  /// stays
  void LoadShaders(const std::string& Filename);
  /// Makes a texture to draw into. @param width,height pixels; the size that the device can use is written back
  /// @param Texture,PosX,PosY no effect @throws Error 91 before Quasarlens8.Initialize
  RenderSurface8 CreateRenderSurface(ByRef<std::int32_t> width, ByRef<std::int32_t> height, Boolean Texture,
                                     std::int32_t PosX = 0, std::int32_t PosY = 0);

  /// Whether a ray meets the level, an enabled mesh or the landscape, asked in this order until one is met.
  /// @param Start world coordinates @param EndLine gives the direction only; how far is looked is each one's own rule:
  /// see SetCollisionPrecision, SetPickingPrecision, Mesh8.Collision @param TestType CONST_QL_TESTTYPE, for meshes
  Boolean Collide(const Vec3& Start, const Vec3& EndLine, std::int32_t TestType = QL_TESTTYPE_ACCURATETESTING);
  /// What lies under a pixel: the first enabled mesh in order of slots (not the nearest), else the landscape, else the
  /// level. @param ObjectTypeToTest CONST_QL_OBJECT_TYPE, ored; 0: all. Those beside meshes, landscape and level select
  /// nothing @param TestType CONST_QL_TESTTYPE, for meshes
  CollisionResult8 MousePicking(std::int32_t x, std::int32_t y, std::int32_t ObjectTypeToTest = 0,
                                std::int32_t TestType = QL_TESTTYPE_BOUNDINGBOX);

  /// How far landscape ray tests reach, world units.
  void SetPickingPrecision(float farPlane);
  /// How far ray tests against levels and the triangles of meshes reach, world units.
  void SetCollisionPrecision(float Collide);

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
