/// @file
/// The current GLX context of a thread.
#pragma once

namespace ql::opengl {

/// What GLX has current; all empty when it has nothing, or is not loaded at all.
struct GlxCurrent {
  void *display = nullptr, *context = nullptr;
  unsigned long draw = 0, read = 0;
};

/// EGL refuses to make a context current while GLX has one on the same thread, and the other way round.
GlxCurrent currentGlx();
void makeGlxCurrent(const GlxCurrent& wanted);
/// Makes nothing current.
void releaseGlx(const GlxCurrent& current);

}  // namespace ql::opengl
