#include "api/Guard.h"
#include "api/Textures.h"

#include <Quasarlens3D/TextureFactory8.h>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using Detail::TextureFactoryObject;

TextureFactory8::TextureFactory8() : Handle(api::create<TextureFactoryObject>()) {}
TextureFactory8::TextureFactory8(std::nullptr_t) noexcept : Handle(nullptr) {}

Texture8 TextureFactory8::LoadTexture(ByRef<std::string> Filename, const std::string& Name, ByRef<std::int32_t> width,
                                      ByRef<std::int32_t> height, ByRef<std::int32_t> Colorkey) {
  return call(*this, [&](TextureFactoryObject& self) {
    return api::load(*self.context, Filename, Name, width, height, *Colorkey);
  });
}
Texture8 TextureFactory8::LoadDecalTexture(ByRef<std::string> Filename, const std::string& Name,
                                           ByRef<std::int32_t> width, ByRef<std::int32_t> height) {
  return call(*this, [&](TextureFactoryObject& self) {
    std::int32_t colorKey = QL_COLORKEY_BLACK;
    return api::load(*self.context, Filename, Name, width, height, colorKey);
  });
}
void TextureFactory8::DeleteTexture(ByRef<Texture8> Texture) {
  call(*this, [&](TextureFactoryObject& self) {
    render::deleteTexture(*self.context, *api::Access::live(*Texture).handle);
    *Texture = nullptr;
  });
}

}  // namespace Quasarlens3D
