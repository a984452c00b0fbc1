/// @file
/// The gamma ramp: what the display makes of each colour value.
#pragma once

#include "platform/device/Display.h"

#include <array>
#include <cstdint>
#include <vector>

namespace ql::device {

/// The red, green and blue output values for each input value.
struct GammaRamp {
  std::array<std::uint16_t, 256> red{}, green{}, blue{};
};

/// The ramp that changes nothing.
GammaRamp linearRamp();

/// Applies a ramp to the pictures that are shown, in a copy of its own: what they were made from keeps its colours.
class Gamma {
 public:
  Gamma() : ramp_(linearRamp()) {}

  const GammaRamp& ramp() const { return ramp_; }
  void setRamp(const GammaRamp& ramp);
  /// Whether the ramp changes any colour that a window can show, which has 8 bits per channel.
  bool changesColors() const { return changesColors_; }

  /// The picture as the display gives it out; valid until the next call.
  Picture apply(const Picture& picture);

 private:
  GammaRamp ramp_;
  bool changesColors_ = false;
  std::array<std::uint32_t, 256> red_{}, green_{}, blue_{};  ///< output values in their place of a pixel
  std::vector<std::uint32_t> pixels_;
};

/// A window that shows pictures through a ramp; all else is the window's own.
class GammaWindow final : public Window {
 public:
  GammaWindow(Window& window, Gamma& gamma) : window_(window), gamma_(gamma) {}
  Size clientSize() const override { return window_.clientSize(); }
  bool visible() const override { return window_.visible(); }
  void show(const Picture& picture) override { window_.show(gamma_.apply(picture)); }
  XWindow onServer() const override { return window_.onServer(); }
  void appear() override { window_.appear(); }
  const GammaRamp* ramp() const override { return &gamma_.ramp(); }
  void pump() override { window_.pump(); }
  void setTitle(const std::string& title) override { window_.setTitle(title); }
  bool closeRequested() const override { return window_.closeRequested(); }
  void setMode(bool fullScreen, Size size) override { window_.setMode(fullScreen, size); }

 private:
  Window& window_;
  Gamma& gamma_;
};

}  // namespace ql::device
