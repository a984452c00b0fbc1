#include "platform/device/Gamma.h"

namespace ql::device {

GammaRamp linearRamp() {
  GammaRamp ramp;
  for (std::uint32_t i = 0; i < 256; ++i)
    ramp.red[i] = ramp.green[i] = ramp.blue[i] = static_cast<std::uint16_t>(i * 257);
  return ramp;
}

void Gamma::setRamp(const GammaRamp& ramp) {
  ramp_ = ramp;
  changesColors_ = false;
  for (std::uint32_t i = 0; i < 256; ++i) {
    // Of 16 bits the display takes the upper 8.
    const std::uint32_t red = ramp.red[i] >> 8u, green = ramp.green[i] >> 8u, blue = ramp.blue[i] >> 8u;
    changesColors_ |= red != i || green != i || blue != i;
    red_[i] = red << 16;
    green_[i] = green << 8;
    blue_[i] = blue;
  }
}

Picture Gamma::apply(const Picture& picture) {
  if (!changesColors_) return picture;
  pixels_.resize(std::size_t{picture.width} * picture.height);
  std::uint32_t* out = pixels_.data();
  for (std::size_t y = 0; y < picture.height; ++y) {
    const std::uint32_t* row = picture.pixels + y * picture.pitch;
    for (std::size_t x = 0; x < picture.width; ++x)
      *out++ = red_[row[x] >> 16 & 255] | green_[row[x] >> 8 & 255] | blue_[row[x] & 255];
  }
  return {picture.width, picture.height, picture.width, pixels_.data()};
}

}  // namespace ql::device
