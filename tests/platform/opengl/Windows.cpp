// Pictures that the driver draws into windows, on an X server of the test's own.
#include "platform/device/Gamma.h"
#include "platform/opengl/Content.h"
#include "platform/window/OpenDisplay.h"

#include <memory>

// Its macros spoil the names of others: last.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace ql::test {
namespace {

using device::Format;

class OpenGLWindow : public OpenGL {
 protected:
  void SetUp() override {
    OpenGL::SetUp();
    if (IsSkipped()) return;
    server_.reset(XOpenDisplay(nullptr));
    if (!server_) GTEST_SKIP() << "no X server";
    display_ = window::openDisplay();
  }
  /// A back end that knows from its beginning that it draws for windows.
  static std::shared_ptr<device::BackEnd> backEndFor(const std::shared_ptr<device::Window>& window) {
    device::PresentParameters parameters;
    parameters.deviceWindow = window;
    return opengl::createBackEnd(parameters);
  }
  std::shared_ptr<device::Window> own(device::Window::Size size) {
    std::shared_ptr<device::Window> made = display_->createWindow();
    made->setMode(false, size);
    return made;
  }
  ::Window makeHosts(unsigned width, unsigned height) {
    const ::Window made =
        XCreateSimpleWindow(server_.get(), DefaultRootWindow(server_.get()), 10, 10, width, height, 0, 0, 0);
    XMapWindow(server_.get(), made);
    XSync(server_.get(), 0);
    return made;
  }
  /// What a window shows, 0xFFRRGGBB.
  std::vector<std::uint32_t> shown(const device::Window& window, device::Window::Size size) {
    std::vector<std::uint32_t> out;
    XImage* image =
        XGetImage(server_.get(), window.onServer().number, 0, 0, size.width, size.height, AllPlanes, ZPixmap);
    if (image == nullptr) return out;
    for (std::uint32_t y = 0; y < size.height; ++y)
      for (std::uint32_t x = 0; x < size.width; ++x)
        out.push_back(0xFF000000u |
                      static_cast<std::uint32_t>(XGetPixel(image, static_cast<int>(x), static_cast<int>(y))));
    XDestroyImage(image);
    return out;
  }
  /// Presents until the window shows a picture: servers and window managers work at their own time.
  void expectShown(Scene& s, device::Window& window, const std::vector<std::uint32_t>& wanted,
                   device::Window::Size size, const char* what) {
    std::vector<std::uint32_t> seen;
    for (int i = 0; i < 100 && seen != wanted; ++i) {
      s.backEnd->present(s.target, &window);
      window.pump();
      seen = shown(window, size);
    }
    ASSERT_EQ(seen.size(), wanted.size()) << what;
    std::size_t apart = 0;
    for (std::size_t i = 0; i < seen.size(); ++i) apart += seen[i] != wanted[i] ? 1 : 0;
    EXPECT_EQ(apart, 0u) << what << ": pixels of " << seen.size();
  }

  struct Closer {
    void operator()(::Display* server) const { XCloseDisplay(server); }
  };
  std::unique_ptr<::Display, Closer> server_;
  std::unique_ptr<device::Display> display_;
};

/// Colours that differ everywhere, top from bottom and left from right.
void gradient(Scene& s) {
  s.draw(
      PrimitiveType::TriangleFan,
      std::vector<ScreenVertex>{
          {0, 0, 0, 1, 0xFF102030}, {64, 0, 0, 1, 0xFFF04060}, {64, 48, 0, 1, 0xFF60E0F0}, {0, 48, 0, 1, 0xFF20A0FF}});
}
std::vector<std::uint32_t> opaque(std::vector<std::uint32_t> pixels) {
  for (std::uint32_t& pixel : pixels) pixel |= 0xFF000000;
  return pixels;
}

TEST_F(OpenGLWindow, ShowsEveryPixelInTheEnginesWindow) {
  for (const Format format : {Format::X8R8G8B8, Format::R5G6B5}) {
    const std::shared_ptr<device::Window> window = own({64, 48});
    const std::shared_ptr<device::BackEnd> backEnd = backEndFor(window);
    Scene s(backEnd, 64, 48, format);
    s.clear(0xFF808080);
    s.state.render.alphaBlendEnable = 1;  // colours between the steps of a narrow format
    s.state.render.srcBlend = s.state.render.destBlend = code(device::Blend::SrcColor);
    gradient(s);
    expectShown(s, *window, opaque(s.pixels()), {64, 48}, "a window's own size");
    EXPECT_GT(opengl::driverCalls(*backEnd).pictures, 0u) << "the picture was read back";

    // The frame buffer and the state of later frames are what they were.
    s.clear(0xFF000000);
    gradient(s);
    expectShown(s, *window, opaque(s.pixels()), {64, 48}, "the next frame");
  }
}

TEST_F(OpenGLWindow, AppliesTheGammaRamp) {
  const std::shared_ptr<device::Window> window = own({64, 48});
  const std::shared_ptr<device::BackEnd> backEnd = backEndFor(window);
  Scene s(backEnd, 64, 48, Format::X8R8G8B8);
  gradient(s);
  device::GammaRamp ramp = device::linearRamp();
  for (std::uint32_t i = 0; i < 256; ++i) {
    ramp.red[i] = static_cast<std::uint16_t>((255 - i) * 257);
    ramp.green[i] = static_cast<std::uint16_t>(i / 2 * 256 + 200);
    ramp.blue[i] = static_cast<std::uint16_t>(i < 128 ? 0 : 0xFFFF);
  }
  device::Gamma gamma;
  gamma.setRamp(ramp);
  device::GammaWindow corrected(*window, gamma);
  const std::vector<std::uint32_t> kept = s.pixels();
  const device::Picture wanted = gamma.apply({64, 48, 64, kept.data()});
  expectShown(s, corrected, opaque({wanted.pixels, wanted.pixels + 64 * 48}), {64, 48}, "through the ramp");
  EXPECT_EQ(s.pixels(), kept) << "the back buffer keeps its colours";
  expectShown(s, *window, opaque(kept), {64, 48}, "without it again");
}

TEST_F(OpenGLWindow, ScalesToTheWholeScreenAndBack) {
  const std::shared_ptr<device::Window> window = own({64, 48});
  const std::shared_ptr<device::BackEnd> backEnd = backEndFor(window);
  Scene s(backEnd, 64, 48, Format::X8R8G8B8);
  s.fill(0xFF3366CC);
  s.rectangle(0, 0, 32, 24, 0xFFFFFF00);
  window->setMode(true, {64, 48});
  const device::DisplayMode desktop = display_->desktopMode(0);
  const device::Window::Size all{desktop.width, desktop.height};
  std::vector<std::uint32_t> seen;
  for (int i = 0; i < 100 && (seen.empty() || seen.back() != 0xFF3366CC); ++i) {
    backEnd->present(s.target, window.get());
    window->pump();
    if (window->clientSize().width == all.width) seen = shown(*window, all);
  }
  ASSERT_EQ(seen.size(), std::size_t{all.width} * all.height);
  EXPECT_EQ(seen.front(), 0xFFFFFF00u);
  EXPECT_EQ(seen[all.width - 1], 0xFF3366CCu);
  EXPECT_EQ(seen.back(), 0xFF3366CCu);
  EXPECT_EQ(seen[std::size_t{all.width} * (all.height / 2 - 12) + all.width / 2 - 12], 0xFFFFFF00u);
  window->setMode(false, {64, 48});
  expectShown(s, *window, opaque(s.pixels()), {64, 48}, "an ordinary window again");
}

TEST_F(OpenGLWindow, FollowsAHostsWindowUntilItIsGone) {
  const ::Window hosts = makeHosts(64, 48);
  const std::shared_ptr<device::Window> window = display_->adoptWindow(static_cast<std::intptr_t>(hosts));
  ASSERT_NE(window, nullptr);
  const std::shared_ptr<device::BackEnd> backEnd = backEndFor(window);
  Scene small(backEnd, 64, 48, Format::X8R8G8B8);
  gradient(small);
  expectShown(small, *window, opaque(small.pixels()), {64, 48}, "the host's window");
  EXPECT_GT(opengl::driverCalls(*backEnd).pictures, 0u);
  XResizeWindow(server_.get(), hosts, 90, 70);
  XSync(server_.get(), 0);
  Scene large(backEnd, 90, 70, Format::X8R8G8B8);
  large.fill(0xFF112233);
  gradient(large);
  expectShown(large, *window, opaque(large.pixels()), {90, 70}, "after a resize");

  XDestroyWindow(server_.get(), hosts);
  XSync(server_.get(), 0);
  for (int i = 0; i < 3; ++i) backEnd->present(large.target, window.get());
  large.fill(0xFF445566);
  EXPECT_EQ(large.pixel(80, 60), 0xFF445566u) << "drawing goes on";
  const std::shared_ptr<device::Window> next = own({90, 70});
  expectShown(large, *next, opaque(large.pixels()), {90, 70}, "another window of the same device");
}

}  // namespace
}  // namespace ql::test
