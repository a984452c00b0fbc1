/// @file
/// A texture of the engine's table.
#ifndef QUASARLENS3D_TEXTURE8_H
#define QUASARLENS3D_TEXTURE8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>

#include <cstddef>

namespace Quasarlens3D {

namespace Detail {
struct TextureHandleObject;
}

/// A texture, handed out by the engine (TextureFactory8.LoadTexture, Globals8.GetTex). It carries the index of an
/// entry of the engine's texture table; several handles may name one entry.
class QUASARLENS3D_API Texture8 : public Detail::Handle<Detail::TextureHandleObject> {
 public:
  /// Nothing.
  Texture8() noexcept;
  Texture8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Whether two handles are the same texture's, or both nothing.
  friend QUASARLENS3D_API bool operator==(const Texture8& a, const Texture8& b) noexcept;
  friend QUASARLENS3D_API bool operator!=(const Texture8& a, const Texture8& b) noexcept;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
