/// @file
/// Drawing on the screen: lines, boxes, textures, text, sprites, a background.
#ifndef QUASARLENS3D_SCREEN8_H
#define QUASARLENS3D_SCREEN8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Texture8.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct ScreenObject;
}

/// Factors that what is drawn, or what stands there already, is multiplied by before both are added.
enum CONST_D3DBLEND : std::int32_t {
  D3DBLEND_ZERO = 1,
  D3DBLEND_ONE = 2,
  D3DBLEND_SRCCOLOR = 3,
  D3DBLEND_INVSRCCOLOR = 4,
  D3DBLEND_SRCALPHA = 5,
  D3DBLEND_INVSRCALPHA = 6,
  D3DBLEND_DESTALPHA = 7,
  D3DBLEND_INVDESTALPHA = 8,
  D3DBLEND_DESTCOLOR = 9,
  D3DBLEND_INVDESTCOLOR = 10,
  D3DBLEND_SRCALPHASAT = 11,
  D3DBLEND_BOTHSRCALPHA = 12,
  D3DBLEND_BOTHINVSRCALPHA = 13
};

/// Draws in screen space, over the scene or before it, between Quasarlens8.Clear and RenderToScreen (or between
/// RenderSurface8.StartRender and EndRender). Coordinates are pixels from the upper left; a rectangle from (x, y) to
/// (x1, y1) fills the columns x to x1 - 1 and the rows y to y1 - 1. Colours are packed ARGB. All drawing throws
/// Error 91 before Quasarlens8.Initialize and the device's invalid call (0x8876086C) outside a frame, and leaves the
/// device with the states that it sets: no lighting, the texture, the blending. Each screen has its own user fonts and
/// blending mode; sprites and the background belong to the engine.
class QUASARLENS3D_API Screen8 : public Detail::Handle<Detail::ScreenObject> {
 public:
  Screen8();
  Screen8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Makes a font for DrawText. A face that is not installed becomes the default face.
  /// @param UserName "" names it "UserFont" and its number, from 1 @param FontSize points
  /// @throws Error 91 before Quasarlens8.Initialize
  void CreateUserFont(const std::string& UserName, const std::string& FontName, std::int32_t FontSize, Boolean FontBold,
                      Boolean fontItalic, Boolean fontUnderline);

  /// The outline of a rectangle, through its four corners.
  void DrawBox(float x, float y, float x1, float y1, std::int32_t color);
  void DrawFilledBox(float x, float y, float x1, float y1, std::int32_t color, Boolean AlphaBlended = False);
  /// @param color1,color2,color3,color4 at (x, y), (x1, y), (x, y1), (x1, y1)
  void DrawFilledColorBox(float x, float y, float x1, float y1, std::int32_t color1, std::int32_t color2,
                          std::int32_t color3, std::int32_t color4, Boolean AlphaBlended = False);
  void DrawLine(float x, float y, float x1, float y1, std::int32_t color);
  void DrawPoint(float x, float y, std::int32_t color);
  /// A line in the world, world units, behind what is nearer. The device's world transform becomes the identity.
  void DrawLine3D(float x, float y, float z, float x1, float y1, float z1, std::int32_t color);

  /// A texture without a fiftieth of it at every side, multiplied by a colour. Switches the alpha test on.
  /// @throws Error 91 for nothing
  void DrawTexture(const Texture8& Texture, float x, float y, float x1, float y1, std::int32_t color = -1,
                   Boolean AlphaBlended = False);
  /// The part of a texture between two points of it. @param tu1,tv1,tu2,tv2 texture coordinates, 0 to 1 within it
  /// @throws Error 91 for nothing
  void DrawPartTexture(const Texture8& Texture, float x, float y, float x1, float y1, float tu1, float tv1, float tu2,
                       float tv2, std::int32_t color = -1, Boolean AlphaBlended = False);
  /// Draws text; line breaks are honoured. Text that is not valid UTF-8 is Windows-1252. All states are put back.
  /// @param x,y its top left @param UserFont name of a user font, whatever the letter case; any other: the font of
  /// Scene8.DrawText
  void DrawText(const std::string& Text, std::int32_t x, std::int32_t y, std::int32_t color,
                const std::string& UserFont = "");

  /// Makes a sprite. @param sprite name of a loaded texture, whatever the letter case, or a picture file, which is then
  /// loaded @param Name "" names it "Sprite " and its index @return its index
  /// @throws Error 91 before Quasarlens8.Initialize
  std::int16_t LoadSprite(const std::string& sprite, const std::string& Name = "");
  /// Draws a sprite, with linear filtering, blended by the texture's alpha. All states are put back.
  /// @param x,y its top left before it is turned @throws Error 9 for an index that no sprite has (below too), the
  /// device's invalid call for one without a picture
  void DrawSprite(std::int16_t SpriteIndex, std::int32_t x, std::int32_t y);
  /// @param RotationCenterX,RotationCenterY pixels from the scaled sprite's top left @param RotationAngles degrees,
  /// clockwise
  void RotateSprite(std::int16_t SpriteIndex, float RotationCenterX, float RotationCenterY, float RotationAngles);
  /// @param scalex,scaley factors of the picture's size
  void ScaleSprite(std::int16_t SpriteIndex, float scalex, float scaley);

  /// A button: draws one texture while the mouse is inside, the other while it is not (as DrawTexture). The edges are
  /// outside. Without an input engine the mouse is outside. @return whether the mouse is inside
  Boolean RollOver(const Texture8& TextureOver, const Texture8& TextureNormal, std::int32_t Left, std::int32_t Top,
                   std::int32_t Right, std::int32_t Bottom, Boolean AlphaBlended = False);

  /// What AlphaBlended means for this screen; at first the source's alpha and its inverse.
  /// @param Destination,src CONST_D3DBLEND
  void SetBlendingMode(std::int32_t Destination, std::int32_t src);

  /// Whether Quasarlens8.Clear draws the background picture.
  void EnableBackground(Boolean OnOff);
  /// Loads the background picture, stretched to the screen. @throws Error 91 before Quasarlens8.Initialize, 0x88760866
  /// when there is no such file, 0x88760B59 when it cannot be read; the picture before stays
  void LoadBackground(const std::string& Filename);

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
