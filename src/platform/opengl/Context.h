/// @file
/// The OpenGL context of a back end, and whose context is current.
#pragma once

#include "platform/device/Display.h"

#include <memory>

namespace ql::opengl {

/// A context of OpenGL 3.3 core without any surface: everything is drawn into frame buffer objects. Finished pictures
/// may be drawn into windows.
class Context {
 public:
  /// @param forWindows prefer a driver that reaches the windows of the X server
  /// @throws device::DeviceError not available
  static std::unique_ptr<Context> create(bool forWindows);
  ~Context();
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  bool isCurrent() const;
  /// Whether a WindowSurface can be made.
  bool reachesWindows() const { return forWindows_; }

 private:
  friend class CurrentContext;
  friend class WindowSurface;
  friend void release(const Context& context);
  Context(void* display, void* context, bool forWindows)
      : display_(display), context_(context), forWindows_(forWindows) {}
  void* display_;
  void* context_;
  bool forWindows_;
};

/// A window of the X server that a context draws into.
class WindowSurface {
 public:
  /// The driver may set the viewport and the scissor. @return nothing when the driver refuses the window
  static std::unique_ptr<WindowSurface> create(const Context& context, const device::XWindow& window);
  ~WindowSurface();
  WindowSurface(const WindowSurface&) = delete;
  WindowSurface& operator=(const WindowSurface&) = delete;

  std::uint32_t window() const { return window_; }
  /// While the context is current: frame buffer 0 becomes the window. @return false: the window is gone
  bool bind() const;
  /// Shows what was drawn.
  void swap() const;
  /// The context is without a surface again.
  void unbind() const;

 private:
  WindowSurface(const Context& context, void* surface, std::uint32_t window)
      : context_(context), surface_(surface), window_(window) {}
  const Context& context_;
  void* surface_;
  std::uint32_t window_;
};

/// Makes a context current until the end of the scope, then what the thread had before: its own context, through EGL or
/// GLX, or none. When the context was current before, nothing happens.
class CurrentContext {
 public:
  enum class Afterwards {
    Restore,
    Keep,  ///< stays current when the thread had none: more calls follow soon
  };
  explicit CurrentContext(const Context& context, Afterwards afterwards = Afterwards::Restore);
  ~CurrentContext();
  CurrentContext(const CurrentContext&) = delete;
  CurrentContext& operator=(const CurrentContext&) = delete;

 private:
  const Context& context_;
  bool entered_ = false, keep_ = false;
  void *display_ = nullptr, *previous_ = nullptr, *draw_ = nullptr, *read_ = nullptr;  ///< of EGL
  void *glxDisplay_ = nullptr, *glxContext_ = nullptr;
  unsigned long glxDraw_ = 0, glxRead_ = 0;
};

/// Makes no context current on this thread when it is this one.
void release(const Context& context);

}  // namespace ql::opengl
