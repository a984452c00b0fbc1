#include "platform/opengl/Glx.h"

#include <type_traits>

#include <dlfcn.h>

namespace ql::opengl {
namespace {

struct Functions {
  void* (*context)() = nullptr;
  void* (*display)() = nullptr;
  unsigned long (*draw)() = nullptr;
  unsigned long (*read)() = nullptr;
  int (*makeCurrent)(void* display, unsigned long draw, unsigned long read, void* context) = nullptr;
  explicit operator bool() const { return context && display && draw && read && makeCurrent; }
};

// Only when somebody else has loaded the library can a context of it be current: it is never loaded for this question.
Functions functions() {
  Functions out;
  void* library = dlopen("libGLX.so.0", RTLD_LAZY | RTLD_NOLOAD);
  if (!library) library = dlopen("libGL.so.1", RTLD_LAZY | RTLD_NOLOAD);
  if (!library) return out;
  const auto find = [library](auto& function, const char* name) {
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(library, name));
  };
  find(out.context, "glXGetCurrentContext");
  find(out.display, "glXGetCurrentDisplay");
  find(out.draw, "glXGetCurrentDrawable");
  find(out.read, "glXGetCurrentReadDrawable");
  find(out.makeCurrent, "glXMakeContextCurrent");
  dlclose(library);  // its owner holds it
  return out;
}

}  // namespace

GlxCurrent currentGlx() {
  GlxCurrent out;
  const Functions glx = functions();
  if (!glx) return out;
  out.context = glx.context();
  if (!out.context) return out;
  out.display = glx.display();
  out.draw = glx.draw();
  out.read = glx.read();
  return out;
}

void makeGlxCurrent(const GlxCurrent& wanted) {
  if (const Functions glx = functions(); glx && wanted.display)
    glx.makeCurrent(wanted.display, wanted.draw, wanted.read, wanted.context);
}

void releaseGlx(const GlxCurrent& current) { makeGlxCurrent({current.display, nullptr, 0, 0}); }

}  // namespace ql::opengl
