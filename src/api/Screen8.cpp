#include "api/Guard.h"
#include "api/Textures.h"
#include "render/Background.h"
#include "render/Sprites.h"

#include <Quasarlens3D/Screen8.h>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using api::entryOf;
using Detail::ScreenObject;

Screen8::Screen8() : Handle(api::create<ScreenObject>()) {}
Screen8::Screen8(std::nullptr_t) noexcept : Handle(nullptr) {}

void Screen8::CreateUserFont(const std::string& UserName, const std::string& FontName, std::int32_t FontSize,
                             Boolean FontBold, Boolean fontItalic, Boolean fontUnderline) {
  call(*this, [&](ScreenObject& self) {
    self.screen.userFonts().create(UserName, {.face = FontName,
                                              .points = static_cast<float>(FontSize),
                                              .bold = FontBold,
                                              .italic = fontItalic,
                                              .underline = fontUnderline});
  });
}

void Screen8::DrawBox(float x, float y, float x1, float y1, std::int32_t color) {
  call(*this, [&](ScreenObject& self) { self.screen.drawBox({x, y, x1, y1}, color); });
}
void Screen8::DrawFilledBox(float x, float y, float x1, float y1, std::int32_t color, Boolean AlphaBlended) {
  call(*this, [&](ScreenObject& self) { self.screen.drawFilledBox({x, y, x1, y1}, color, AlphaBlended); });
}
void Screen8::DrawFilledColorBox(float x, float y, float x1, float y1, std::int32_t color1, std::int32_t color2,
                                 std::int32_t color3, std::int32_t color4, Boolean AlphaBlended) {
  call(*this, [&](ScreenObject& self) {
    self.screen.drawFilledColorBox({x, y, x1, y1}, {color1, color2, color3, color4}, AlphaBlended);
  });
}
void Screen8::DrawLine(float x, float y, float x1, float y1, std::int32_t color) {
  call(*this, [&](ScreenObject& self) { self.screen.drawLine({x, y, x1, y1}, color); });
}
void Screen8::DrawPoint(float x, float y, std::int32_t color) {
  call(*this, [&](ScreenObject& self) { self.screen.drawPoint(x, y, color); });
}
void Screen8::DrawLine3D(float x, float y, float z, float x1, float y1, float z1, std::int32_t color) {
  call(*this, [&](ScreenObject& self) { self.screen.drawLine3D({x, y, z}, {x1, y1, z1}, color); });
}

void Screen8::DrawTexture(const Texture8& Texture, float x, float y, float x1, float y1, std::int32_t color,
                          Boolean AlphaBlended) {
  call(*this, [&](ScreenObject& self) {
    self.screen.drawTexture(entryOf(Texture).texture, {x, y, x1, y1}, color, AlphaBlended);
  });
}
void Screen8::DrawPartTexture(const Texture8& Texture, float x, float y, float x1, float y1, float tu1, float tv1,
                              float tu2, float tv2, std::int32_t color, Boolean AlphaBlended) {
  call(*this, [&](ScreenObject& self) {
    self.screen.drawPartTexture(entryOf(Texture).texture, {x, y, x1, y1}, {tu1, tv1, tu2, tv2}, color, AlphaBlended);
  });
}
void Screen8::DrawText(const std::string& Text, std::int32_t x, std::int32_t y, std::int32_t color,
                       const std::string& UserFont) {
  call(*this, [&](ScreenObject& self) { self.screen.drawText(Text, x, y, color, UserFont); });
}

std::int16_t Screen8::LoadSprite(const std::string& sprite, const std::string& Name) {
  return call(*this, [&](ScreenObject& self) { return render::loadSprite(*self.context, sprite, Name); });
}
void Screen8::DrawSprite(std::int16_t SpriteIndex, std::int32_t x, std::int32_t y) {
  call(*this, [&](ScreenObject& self) { render::drawSprite(*self.context, SpriteIndex, x, y); });
}
void Screen8::RotateSprite(std::int16_t SpriteIndex, float RotationCenterX, float RotationCenterY,
                           float RotationAngles) {
  call(*this, [&](ScreenObject& self) {
    render::rotateSprite(*self.context, SpriteIndex, {RotationCenterX, RotationCenterY}, RotationAngles);
  });
}
void Screen8::ScaleSprite(std::int16_t SpriteIndex, float scalex, float scaley) {
  call(*this, [&](ScreenObject& self) { render::scaleSprite(*self.context, SpriteIndex, {scalex, scaley}); });
}

Boolean Screen8::RollOver(const Texture8& TextureOver, const Texture8& TextureNormal, std::int32_t Left,
                          std::int32_t Top, std::int32_t Right, std::int32_t Bottom, Boolean AlphaBlended) {
  return call(*this, [&](ScreenObject& self) {
    return Boolean(self.screen.rollOver(entryOf(TextureOver).texture, entryOf(TextureNormal).texture,
                                        {Left, Top, Right, Bottom}, AlphaBlended));
  });
}

void Screen8::SetBlendingMode(std::int32_t Destination, std::int32_t src) {
  call(*this, [&](ScreenObject& self) {
    self.screen.setBlending(static_cast<std::uint32_t>(Destination), static_cast<std::uint32_t>(src));
  });
}
void Screen8::EnableBackground(Boolean OnOff) {
  call(*this, [&](ScreenObject& self) { self.context->get<render::Background>().enabled = OnOff; });
}
void Screen8::LoadBackground(const std::string& Filename) {
  call(*this, [&](ScreenObject& self) { render::loadBackground(*self.context, Filename); });
}

}  // namespace Quasarlens3D
