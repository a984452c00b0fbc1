// The gamma ramp: in what the window gets, and nowhere else.
#include "platform/device/Device.h"
#include "platform/software/SoftwareBackEnd.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace ql::test {
namespace {

class Screen final : public device::Window {
 public:
  Size clientSize() const override { return {4, 2}; }
  bool visible() const override { return true; }
  void show(const device::Picture& picture) override {
    shown.clear();
    for (std::uint32_t y = 0; y < picture.height; ++y)
      for (std::uint32_t x = 0; x < picture.width; ++x)
        shown.push_back(picture.pixels[y * picture.pitch + x] & 0xFFFFFF);
  }
  void pump() override { ++pumps; }
  void setTitle(const std::string&) override {}
  bool closeRequested() const override { return false; }
  void setMode(bool, Size) override {}

  std::vector<std::uint32_t> shown;
  int pumps = 0;
};

TEST(Gamma, ChangesWhatTheWindowGetsOnly) {
  const auto screen = std::make_shared<Screen>();
  device::PresentParameters parameters;
  parameters.backBufferWidth = 4;
  parameters.backBufferHeight = 2;
  parameters.backBufferFormat = device::Format::X8R8G8B8;
  parameters.deviceWindow = screen;
  device::Device device(software::createBackEnd({1}), device::DeviceType::Reference, parameters);
  const auto shown = [&] {
    device.clear({}, device::kClearTarget, 0xFF204080, 1, 0);
    device.present();
    EXPECT_EQ(screen->shown.size(), 8u);
    EXPECT_EQ(screen->shown.front(), screen->shown.back());
    return screen->shown.front();
  };
  EXPECT_EQ(shown(), 0x204080u);
  device::GammaRamp ramp = device.getGammaRamp();
  ramp.red[0x20] = 0xFF00;
  ramp.green[0x40] = 0x12FF;
  ramp.blue[0x80] = 0;
  device.setGammaRamp(ramp);
  EXPECT_EQ(shown(), 0xFF1200u);
  EXPECT_EQ(screen->pumps, 2) << "the window's own messages";
  const auto kept = device.backEnd()->readPixels(device::TargetId{1}, {0, 0, 1, 1});
  EXPECT_EQ(kept[0], std::byte{0x80});
  EXPECT_EQ(kept[2], std::byte{0x20});
  device.setGammaRamp(device::linearRamp());
  EXPECT_EQ(shown(), 0x204080u);
}

}  // namespace
}  // namespace ql::test
