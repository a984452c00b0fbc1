// Windows on an X server (pictures are read back from it) and the display of machines that have none.
#include "platform/window/OpenDisplay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
// Xlib's macros spoil the names of others: last.
#include <cstdlib>
#include <functional>
#include <optional>
#include <thread>

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#undef Bool
#undef None
#undef Status

namespace ql::window {
namespace {

using Size = device::Window::Size;

constexpr std::uint32_t kRed = 0xE01020, kGreen = 0x10D030, kBlue = 0x2030F0, kWhite = 0xF8F8F8;

/// A picture of four coloured quarters; its rows are longer than it is wide.
struct Quarters {
  Quarters(std::uint32_t width, std::uint32_t height) : pitch(width + 5), pixels(pitch * height, 0x00FF00FF) {
    for (std::uint32_t y = 0; y < height; ++y)
      for (std::uint32_t x = 0; x < width; ++x)
        pixels[y * pitch + x] = y < height / 2 ? (x < width / 2 ? kRed : kGreen) : (x < width / 2 ? kBlue : kWhite);
    picture = {width, height, pitch, pixels.data()};
  }
  std::uint32_t pitch;
  std::vector<std::uint32_t> pixels;
  device::Picture picture;
};

TEST(HeadlessDisplays, HaveOneAdapterAndWindowsThatNobodySees) {
  const auto display = openDisplay();
  const auto window = display->createWindow();
  ASSERT_NE(window, nullptr);
  if (window->visible()) GTEST_SKIP() << "skipped: there is a display";
  EXPECT_EQ(display->adapterCount(), 1u);
  EXPECT_EQ(display->desktopMode(0).width, 1024u);
  EXPECT_EQ(display->desktopMode(0).format, 22u);
  const auto modes = display->modes(0);
  ASSERT_EQ(modes.size(), 18u);
  EXPECT_TRUE(modes[0].width == 640 && modes[0].format == 22 && modes[17].width == 1920 && modes[17].format == 23);
  EXPECT_EQ(display->adoptWindow(1), nullptr);

  EXPECT_EQ(window->clientSize().width, 640u);
  EXPECT_EQ(window->clientSize().height, 480u);
  window->show(Quarters(8, 8).picture);
  window->pump();
  EXPECT_FALSE(window->closeRequested());
  testing::internal::CaptureStderr();
  display->messageBox("QL8", "no device");
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("no device"));
}

/// What another client of the X server sees.
class X11Windows : public testing::Test {
 protected:
  void SetUp() override {
    if (std::getenv("WAYLAND_DISPLAY") == nullptr || *std::getenv("WAYLAND_DISPLAY") == '\0')
      server_ = XOpenDisplay(nullptr);
    if (server_ == nullptr) {
      ASSERT_EQ(std::getenv("QL_EXPECT_DISPLAY"), nullptr) << "the X server did not start";
      GTEST_SKIP() << "skipped: no X server";
    }
    display_ = openDisplay();
  }
  void TearDown() override {
    if (server_ != nullptr) XCloseDisplay(server_);
  }

  std::uint32_t pixel(::Window window, int x, int y) {
    XImage* image = XGetImage(server_, window, x, y, 1, 1, AllPlanes, ZPixmap);
    if (image == nullptr) return 0;
    const auto value = static_cast<std::uint32_t>(XGetPixel(image, 0, 0)) & 0xFFFFFF;
    XDestroyImage(image);
    return value;
  }
  /// The colours near the four corners of an area.
  std::vector<std::uint32_t> corners(::Window window, int width, int height) {
    return {pixel(window, 4, 4), pixel(window, width - 5, 4), pixel(window, 4, height - 5),
            pixel(window, width - 5, height - 5)};
  }
  ::Window root() { return DefaultRootWindow(server_); }
  /// A mapped top-level window of a size.
  std::optional<::Window> mapped(int width, int height) {
    ::Window rootWindow = 0, parent = 0, *children = nullptr;
    unsigned count = 0;
    std::optional<::Window> found;
    XQueryTree(server_, root(), &rootWindow, &parent, &children, &count);
    for (unsigned i = 0; i < count; ++i) {
      XWindowAttributes attributes;
      if (XGetWindowAttributes(server_, children[i], &attributes) && attributes.map_state == IsViewable &&
          attributes.width == width && attributes.height == height)
        found = children[i];
    }
    if (children != nullptr) XFree(children);
    return found;
  }
  /// Shows frames until something holds; the X server works at its own time.
  static bool eventually(device::Window& window, const device::Picture& picture, const std::function<bool()>& holds) {
    for (int i = 0; i < 100; ++i) {
      window.show(picture);
      window.pump();
      if (holds()) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
  }

  ::Display* server_ = nullptr;
  std::unique_ptr<device::Display> display_;
  const std::vector<std::uint32_t> quarters_{kRed, kGreen, kBlue, kWhite};
};

TEST_F(X11Windows, TheEnginesOwnAppearsWithItsFirstPicture) {
  const auto window = display_->createWindow();
  ASSERT_NE(window, nullptr);
  window->setMode(false, {320, 200});
  EXPECT_EQ(window->clientSize().width, 320u);
  window->pump();
  EXPECT_FALSE(mapped(320, 200)) << "nothing was shown yet";

  const Quarters equal(320, 200), small(32, 20);
  EXPECT_TRUE(eventually(*window, equal.picture, [&] {
    const auto id = mapped(320, 200);
    return id && corners(*id, 320, 200) == quarters_;
  }));
  EXPECT_TRUE(eventually(*window, small.picture, [&] { return corners(*mapped(320, 200), 320, 200) == quarters_; }));

  window->setMode(true, {640, 480});
  EXPECT_TRUE(eventually(*window, small.picture, [&] { return corners(root(), 1024, 768) == quarters_; }))
      << "full screen covers the desktop";
  EXPECT_EQ(window->clientSize().width, 1024u);
  window->setMode(false, {400, 300});
  EXPECT_TRUE(eventually(*window, small.picture, [&] {
    const auto id = mapped(400, 300);
    return id && corners(*id, 400, 300) == quarters_;
  }));
  EXPECT_EQ(window->clientSize().height, 300u);
}

TEST_F(X11Windows, StartFullScreenWhenAskedBeforeTheFirstPicture) {
  const auto window = display_->createWindow();
  window->setMode(true, {640, 480});
  EXPECT_EQ(window->clientSize().width, 1024u);
  const Quarters picture(640, 480);
  EXPECT_TRUE(eventually(*window, picture.picture, [&] { return corners(root(), 1024, 768) == quarters_; }));
}

TEST_F(X11Windows, NoticeThatTheUserClosesThem) {
  const auto window = display_->createWindow(), other = display_->createWindow();
  window->setMode(false, {330, 210});
  const Quarters picture(330, 210);
  ASSERT_TRUE(eventually(*window, picture.picture, [&] { return mapped(330, 210).has_value(); }));
  EXPECT_FALSE(window->closeRequested());
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = *mapped(330, 210);
  event.xclient.message_type = XInternAtom(server_, "WM_PROTOCOLS", 0);
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(XInternAtom(server_, "WM_DELETE_WINDOW", 0));
  XSendEvent(server_, event.xclient.window, 0, NoEventMask, &event);
  XSync(server_, 0);
  EXPECT_TRUE(eventually(*window, picture.picture, [&] { return window->closeRequested(); }));
  EXPECT_FALSE(other->closeRequested());
}

TEST_F(X11Windows, OfTheHostMayChangeAndVanish) {
  const ::Window id = XCreateSimpleWindow(server_, root(), 50, 60, 200, 100, 0, 0, 0);
  XMapWindow(server_, id);
  XSync(server_, 0);
  const auto window = display_->adoptWindow(static_cast<std::intptr_t>(id));
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(window->clientSize().width, 200u);
  const Quarters picture(64, 64);
  EXPECT_TRUE(eventually(*window, picture.picture, [&] { return corners(id, 200, 100) == quarters_; }));

  XResizeWindow(server_, id, 300, 240);
  XSync(server_, 0);
  EXPECT_EQ(window->clientSize().width, 300u);
  EXPECT_EQ(window->clientSize().height, 240u);
  EXPECT_TRUE(eventually(*window, picture.picture, [&] { return corners(id, 300, 240) == quarters_; }));

  XDestroyWindow(server_, id);
  XSync(server_, 0);
  window->show(picture.picture);
  window->pump();
  EXPECT_FALSE(window->visible());
  EXPECT_EQ(window->clientSize().width, 0u);
  for (const std::intptr_t none :
       {std::intptr_t{0}, std::intptr_t{-1}, static_cast<std::intptr_t>(id), std::intptr_t{0x7FFFFFFF}})
    EXPECT_EQ(display_->adoptWindow(none), nullptr) << none;
}

TEST_F(X11Windows, StandOnADesktopWhoseModesAreListed) {
  ASSERT_GE(display_->adapterCount(), 1u);
  const auto desktop = display_->desktopMode(0);
  EXPECT_EQ(desktop.width, static_cast<std::uint32_t>(DisplayWidth(server_, 0)));
  EXPECT_EQ(desktop.format, 22u);
  bool full = false, sixteen = false;
  for (const auto& mode : display_->modes(0)) {
    EXPECT_TRUE(mode.format == 22 || mode.format == 23);
    full |= mode.width == desktop.width && mode.height == desktop.height && mode.format == 22;
    sixteen |= mode.width == 640 && mode.height == 480 && mode.format == 23;
  }
  EXPECT_TRUE(full && sixteen);
}

}  // namespace
}  // namespace ql::window
