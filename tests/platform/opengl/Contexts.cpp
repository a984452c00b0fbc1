#include "platform/opengl/Content.h"

#include <array>

#include <epoxy/egl.h>

namespace ql::test {
namespace {

/// A host with an EGL context of its own, current on this thread.
class Host {
 public:
  Host() : display_(eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr)) {
    eglInitialize(display_, nullptr, nullptr);
    eglBindAPI(EGL_OPENGL_API);
    context_ = eglCreateContext(display_, nullptr, EGL_NO_CONTEXT, nullptr);
  }
  ~Host() {
    letGo();
    eglDestroyContext(display_, context_);
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  EGLContext context() const { return context_; }
  void takeHold() { eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_); }
  void letGo() { eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT); }

 private:
  EGLDisplay display_;
  EGLContext context_ = EGL_NO_CONTEXT;
};

TEST_F(OpenGL, LeavesTheHostsContextCurrent) {
  Host host;
  if (host.context() == EGL_NO_CONTEXT) GTEST_SKIP() << "no second context";
  host.takeHold();
  const auto expectHost = [&](const char* after) { EXPECT_EQ(eglGetCurrentContext(), host.context()) << after; };
  {
    const std::shared_ptr<device::BackEnd> made = opengl::createBackEnd({});
    expectHost("making");
    Scene s(made, 16, 16);
    expectHost("clearing");
    s.textures[0] = smoothTexture(s);
    expectHost("textures");
    s.replaceByTexture();
    s.fill(0);
    expectHost("drawing");
    EXPECT_NE(s.pixel(3, 3), 0u);
    expectHost("reading");
    made->present(s.target, nullptr);
    expectHost("presenting");
  }
  expectHost("the end");
}

TEST_F(OpenGL, LetsGoOfTheThreadAfterAPicture) {
  Scene s(hardware(), 16, 16);
  s.fill(~0u);
  hardware()->present(s.target, nullptr);
  EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
  s.pixels();
  EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
}

TEST_F(OpenGL, BackEndsDoNotDisturbEachOther) {
  Scene a(hardware(), 16, 16), b(opengl::createBackEnd({}), 16, 16);
  a.rectangle(0, 0, 8, 16, 0xFFFF0000);
  b.rectangle(0, 0, 8, 16, 0xFF00FF00);
  a.rectangle(8, 0, 16, 16, 0xFF0000FF);
  b.rectangle(8, 0, 16, 16, 0xFFFFFFFF);
  EXPECT_EQ(a.pixel(2, 2), 0xFFFF0000u);
  EXPECT_EQ(a.pixel(12, 2), 0xFF0000FFu);
  EXPECT_EQ(b.pixel(2, 2), 0xFF00FF00u);
  EXPECT_EQ(b.pixel(12, 2), 0xFFFFFFFFu);
}

}  // namespace
}  // namespace ql::test
