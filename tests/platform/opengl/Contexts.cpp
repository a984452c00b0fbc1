#include "platform/opengl/Content.h"

#include <array>

#include <SDL.h>
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

// On an X server, hosts usually draw through GLX, which refuses a thread that EGL holds, and the other way round.
TEST_F(OpenGL, LeavesAHostsGlxContextCurrent) {
  SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
  SDL_SetHint(SDL_HINT_VIDEODRIVER, "x11");
  if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) GTEST_SKIP() << "no X server";
  SDL_Window* window = SDL_CreateWindow("host", 0, 0, 64, 64, SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN);
  SDL_GLContext context = window ? SDL_GL_CreateContext(window) : nullptr;
  if (context) {
    using ClearColor = void (*)(float, float, float, float);
    using Clear = void (*)(unsigned);
    using ReadPixels = void (*)(int, int, int, int, unsigned, unsigned, void*);
    reinterpret_cast<ClearColor>(SDL_GL_GetProcAddress("glClearColor"))(0, 1, 0, 1);
    for (int i = 0; i < 3; ++i) {
      Scene s(hardware(), 16, 16);
      s.fill(0xFFFF0000);
      EXPECT_EQ(s.pixel(4, 4), 0xFFFF0000u);
      s.backEnd->present(s.target, nullptr);
      // The host goes on in its own context without taking hold of it again.
      reinterpret_cast<Clear>(SDL_GL_GetProcAddress("glClear"))(0x4000);
      std::uint32_t seen = 0;
      reinterpret_cast<ReadPixels>(SDL_GL_GetProcAddress("glReadPixels"))(5, 5, 1, 1, 0x1908, 0x1401, &seen);
      EXPECT_EQ(seen, 0xFF00FF00u);
      EXPECT_EQ(SDL_GL_MakeCurrent(window, context), 0);
      hardware()->destroyTarget(s.target);
    }
    SDL_GL_DeleteContext(context);
  }
  if (window) SDL_DestroyWindow(window);
  SDL_QuitSubSystem(SDL_INIT_VIDEO);
  if (!context) GTEST_SKIP() << "no OpenGL through GLX";
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
