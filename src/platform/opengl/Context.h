/// @file
/// The OpenGL context of a back end, and whose context is current.
#pragma once

#include <memory>

namespace ql::opengl {

/// A context of OpenGL 3.3 core without any surface: everything is drawn into frame buffer objects.
class Context {
 public:
  /// @throws device::DeviceError not available
  static std::unique_ptr<Context> create();
  ~Context();
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  bool isCurrent() const;

 private:
  friend class CurrentContext;
  friend void release(const Context& context);
  Context(void* display, void* context) : display_(display), context_(context) {}
  void* display_;
  void* context_;
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
