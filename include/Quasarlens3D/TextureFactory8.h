/// @file
/// Loading textures.
#ifndef QUASARLENS3D_TEXTUREFACTORY8_H
#define QUASARLENS3D_TEXTUREFACTORY8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Texture8.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct TextureFactoryObject;
}

/// Colour keys: each value is the packed ARGB colour that becomes transparent.
enum CONST_QL_COLORKEY : std::int32_t {
  QL_COLORKEY_NO = 0,
  QL_COLORKEY_WHITE = -1,
  QL_COLORKEY_BLACK = -16777216,
  QL_COLORKEY_BLUE = -16776961,
  QL_COLORKEY_RED = -65536,
  QL_COLORKEY_GREEN = -16711936,
  QL_COLORKEY_YELLOW = -256,
  QL_COLORKEY_MAGENTA = -65281,
  QL_COLORKEY_CYAN = -16711681
};

/// Loads textures into the engine's one table, which all factories share.
class QUASARLENS3D_API TextureFactory8 : public Detail::Handle<Detail::TextureFactoryObject> {
 public:
  TextureFactory8();
  TextureFactory8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Loads a BMP, JPG, TGA, PNG or DDS file under a name, with a full chain of mip levels. A name or file that is in
  /// the table already is reloaded in its place. A file that is missing or damaged is logged, and the handle then
  /// refers to an entry that draws untextured. Needs a device: see Quasarlens8.Initialize.
  /// @param Filename taken from the open PAK archive when it is not on disk; then the extracted file's name is written
  /// @param Name "" names it "Texture" and its index
  /// @param width,height pixels that the picture is scaled to, -1 for the file's own; the size in use is written
  /// @param Colorkey CONST_QL_COLORKEY or any packed ARGB colour; not 0 also switches alpha testing on for the device;
  /// 0 is written
  Texture8 LoadTexture(ByRef<std::string> Filename, const std::string& Name = "", ByRef<std::int32_t> width = -1,
                       ByRef<std::int32_t> height = -1, ByRef<std::int32_t> Colorkey = 0);
  /// LoadTexture with the colour key QL_COLORKEY_BLACK.
  Texture8 LoadDecalTexture(ByRef<std::string> Filename, const std::string& Name = "", ByRef<std::int32_t> width = -1,
                            ByRef<std::int32_t> height = -1);
  /// Frees a texture's entry, which the next load then takes. @param Texture becomes nothing
  /// @throws Error 91 for nothing, 9 for an index outside the table
  void DeleteTexture(ByRef<Texture8> Texture);

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
