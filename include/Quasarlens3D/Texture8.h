/// @file
/// A texture of the engine's table.
#ifndef QUASARLENS3D_TEXTURE8_H
#define QUASARLENS3D_TEXTURE8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>

namespace Quasarlens3D {

namespace Detail {
struct TextureHandleObject;
}

class Mesh8;

/// A texture, handed out by the engine (TextureFactory8.LoadTexture, Globals8.GetTex). It carries the index of an
/// entry of the engine's texture table; several handles may name one entry.
class QUASARLENS3D_API Texture8 : public Detail::Handle<Detail::TextureHandleObject> {
 public:
  /// Nothing.
  Texture8() noexcept;
  Texture8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Lays the texture flat over a mesh's group: texels along the ways from its first vertex to the second (u) and to
  /// the third (v), one per world unit. The second texture coordinates stay. @param Group -1: each group by itself
  /// @param scalex,scaley texels per unit @param ShiftX,ShiftY texels @param Rotation degrees, about the origin
  /// @param LightMapToo no effect @throws Error 91 for nothing, 9 for a group of more than 8 vertices, 11 for a texture
  /// without a size
  void ApplyOn(const Mesh8& MeshObj, std::int16_t Group = -1, float scalex = 1.0f, float scaley = 1.0f,
               float ShiftX = 0, float ShiftY = 0, float Rotation = 0, Boolean LightMapToo = False) const;

  /// Whether two handles are the same texture's, or both nothing.
  friend QUASARLENS3D_API bool operator==(const Texture8& a, const Texture8& b) noexcept;
  friend QUASARLENS3D_API bool operator!=(const Texture8& a, const Texture8& b) noexcept;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
