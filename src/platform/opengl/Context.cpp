#include "platform/opengl/Context.h"

#include "platform/device/Constants.h"
#include "platform/device/DeviceError.h"
#include "platform/opengl/Glx.h"

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <dlfcn.h>
#include <epoxy/egl.h>
#include <epoxy/gl.h>

namespace ql::opengl {
namespace {

constexpr int kVersion = 33;

[[noreturn]] void notAvailable(const std::string& why) {
  throw device::DeviceError(device::kErrorNotAvailable, "no OpenGL 3.3 here: " + why);
}

bool canOpen(const char* library) { return dlopen(library, RTLD_LAZY | RTLD_LOCAL) != nullptr; }

// The loader of OpenGL's functions ends the process when a library is missing, so ask first.
bool librariesExist() {
  static const bool exist = canOpen("libEGL.so.1") && (canOpen("libOpenGL.so.0") || canOpen("libGL.so.1"));
  return exist;
}

bool lists(const char* extensions, std::string_view name) {
  const std::string_view all = extensions ? extensions : "";
  for (std::size_t at = all.find(name); at != std::string_view::npos; at = all.find(name, at + 1)) {
    const std::size_t end = at + name.size();
    if ((at == 0 || all[at - 1] == ' ') && (end == all.size() || all[end] == ' ')) return true;
  }
  return false;
}

// Drivers that are not there are complained about on standard error by default; here they are an ordinary case.
class Silence {
 public:
  Silence() : silenced_(std::getenv(kVariable) == nullptr) {
    if (silenced_) ::setenv(kVariable, "fatal", 0);
  }
  ~Silence() {
    if (silenced_) ::unsetenv(kVariable);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  static constexpr const char* kVariable = "EGL_LOG_LEVEL";
  bool silenced_;
};

struct Candidate {
  EGLDisplay display;
  bool hasWindows;
};

// The X server when its windows are wanted, then displays that need no window system, the likeliest first.
std::vector<Candidate> candidates(bool forWindows) {
  std::vector<Candidate> out;
  const char* extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
  const bool platforms = lists(extensions, "EGL_EXT_platform_base");
  const auto add = [&out](EGLDisplay display, bool hasWindows = false) {
    if (display != EGL_NO_DISPLAY) out.push_back({display, hasWindows});
  };
  // The driver connects to the server by itself: its connection outlives every window system part of this process.
  if (forWindows && platforms && lists(extensions, "EGL_EXT_platform_x11"))
    add(eglGetPlatformDisplayEXT(EGL_PLATFORM_X11_EXT, nullptr, nullptr), true);
  if (platforms && lists(extensions, "EGL_MESA_platform_surfaceless"))
    add(eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr));
  if (platforms && lists(extensions, "EGL_EXT_platform_device") && lists(extensions, "EGL_EXT_device_enumeration")) {
    std::array<EGLDeviceEXT, 8> devices{};
    EGLint count = 0;
    if (eglQueryDevicesEXT(static_cast<EGLint>(devices.size()), devices.data(), &count))
      for (EGLint i = 0; i < count; ++i)
        add(eglGetPlatformDisplayEXT(EGL_PLATFORM_DEVICE_EXT, devices[static_cast<std::size_t>(i)], nullptr));
  }
  return out;
}

EGLContext contextOf(EGLDisplay display) {
  EGLint major = 0, minor = 0;
  if (!eglInitialize(display, &major, &minor)) return EGL_NO_CONTEXT;
  const char* extensions = eglQueryString(display, EGL_EXTENSIONS);
  if (!lists(extensions, "EGL_KHR_surfaceless_context") || !lists(extensions, "EGL_KHR_create_context"))
    return EGL_NO_CONTEXT;
  EGLConfig config = nullptr;  // none
  if (!lists(extensions, "EGL_KHR_no_config_context")) {
    constexpr EGLint kWanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    EGLint count = 0;
    if (!eglChooseConfig(display, kWanted, &config, 1, &count) || count < 1) return EGL_NO_CONTEXT;
  }
  const EGLenum hostApi = eglQueryAPI();
  if (!eglBindAPI(EGL_OPENGL_API)) return EGL_NO_CONTEXT;
  constexpr EGLint kAttributes[] = {EGL_CONTEXT_MAJOR_VERSION_KHR,
                                    kVersion / 10,
                                    EGL_CONTEXT_MINOR_VERSION_KHR,
                                    kVersion % 10,
                                    EGL_CONTEXT_OPENGL_PROFILE_MASK_KHR,
                                    EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT_KHR,
                                    EGL_NONE};
  const EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, kAttributes);
  if (hostApi != EGL_NONE) eglBindAPI(hostApi);
  return context;
}

}  // namespace

std::unique_ptr<Context> Context::create(bool forWindows) {
  if (!librariesExist()) notAvailable("its libraries are not installed");
  const Silence silence;
  // Displays are shared within the process and stay: ending one would end a host's contexts on it.
  for (const Candidate& candidate : candidates(forWindows)) {
    const EGLDisplay display = candidate.display;
    const EGLContext made = contextOf(display);
    if (made == EGL_NO_CONTEXT) continue;
    // A context that belongs to no configuration takes windows of every one.
    const bool anyWindow =
        candidate.hasWindows && lists(eglQueryString(display, EGL_EXTENSIONS), "EGL_KHR_no_config_context");
    std::unique_ptr<Context> context(new Context(display, made, anyWindow));
    const CurrentContext current(*context);
    if (context->isCurrent() && epoxy_gl_version() >= kVersion) return context;
  }
  notAvailable("no driver offers it without a display");
}

Context::~Context() {
  release(*this);
  eglDestroyContext(display_, context_);
}

bool Context::isCurrent() const { return eglGetCurrentContext() == context_; }

namespace {

// The configuration of a visual. Depth of its own would be wasted: what is shown is a finished picture.
EGLConfig configOf(EGLDisplay display, std::uint32_t visual) {
  constexpr EGLint kWanted[] = {EGL_SURFACE_TYPE, EGL_WINDOW_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
  EGLint count = 0;
  if (!eglChooseConfig(display, kWanted, nullptr, 0, &count) || count < 1) return nullptr;
  std::vector<EGLConfig> configs(static_cast<std::size_t>(count));
  if (!eglChooseConfig(display, kWanted, configs.data(), count, &count)) return nullptr;
  configs.resize(static_cast<std::size_t>(count));
  EGLConfig best = nullptr;
  EGLint leastDepth = 0;
  for (const EGLConfig config : configs) {
    EGLint its = 0, depth = 0, samples = 0;
    eglGetConfigAttrib(display, config, EGL_NATIVE_VISUAL_ID, &its);
    eglGetConfigAttrib(display, config, EGL_DEPTH_SIZE, &depth);
    eglGetConfigAttrib(display, config, EGL_SAMPLES, &samples);
    if (static_cast<std::uint32_t>(its) != visual || samples > 0 || (best != nullptr && depth >= leastDepth)) continue;
    best = config;
    leastDepth = depth;
  }
  return best;
}

}  // namespace

std::unique_ptr<WindowSurface> WindowSurface::create(const Context& context, const device::XWindow& window) {
  if (!context.reachesWindows() || window.number == 0) return nullptr;
  const EGLConfig config = configOf(context.display_, window.visual);
  if (config == nullptr) return nullptr;
  const EGLSurface surface = eglCreateWindowSurface(context.display_, config, window.number, nullptr);
  if (surface == EGL_NO_SURFACE) return nullptr;
  std::unique_ptr<WindowSurface> made(new WindowSurface(context, surface, window.number));
  if (!made->bind()) return nullptr;
  eglSwapInterval(context.display_, 0);  // frames never wait for the display
  made->unbind();
  return made;
}

WindowSurface::~WindowSurface() { eglDestroySurface(context_.display_, surface_); }

bool WindowSurface::bind() const {
  return eglMakeCurrent(context_.display_, surface_, surface_, context_.context_) == EGL_TRUE;
}
void WindowSurface::swap() const { eglSwapBuffers(context_.display_, surface_); }
void WindowSurface::unbind() const {
  eglMakeCurrent(context_.display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_.context_);
}

CurrentContext::CurrentContext(const Context& context, Afterwards afterwards) : context_(context) {
  previous_ = eglGetCurrentContext();
  if (previous_ == context.context_) return;
  entered_ = true;
  if (previous_ != EGL_NO_CONTEXT) {
    display_ = eglGetCurrentDisplay();
    draw_ = eglGetCurrentSurface(EGL_DRAW);
    read_ = eglGetCurrentSurface(EGL_READ);
  } else if (const GlxCurrent glx = currentGlx(); glx.context) {
    glxDisplay_ = glx.display;
    glxContext_ = glx.context;
    glxDraw_ = glx.draw;
    glxRead_ = glx.read;
    releaseGlx(glx);
  }
  keep_ = afterwards == Afterwards::Keep && previous_ == EGL_NO_CONTEXT && !glxContext_;
  eglMakeCurrent(context.display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context.context_);
}

CurrentContext::~CurrentContext() {
  if (!entered_ || keep_) return;
  if (previous_ != EGL_NO_CONTEXT) {
    eglMakeCurrent(display_, draw_, read_, previous_);
    return;
  }
  release(context_);
  if (glxContext_) makeGlxCurrent({glxDisplay_, glxContext_, glxDraw_, glxRead_});
}

void release(const Context& context) {
  if (context.isCurrent()) eglMakeCurrent(context.display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

}  // namespace ql::opengl
