#include "Context.h"

#include <cstdlib>
#include <stdexcept>

#include <epoxy/egl.h>

namespace peers::gl {

Context::Context(Size size) : size_(size) {
  // The measure is the software driver, also where there is a graphics card.
  setenv("LIBGL_ALWAYS_SOFTWARE", "1", 0);
  display_ = eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr);
  if (display_ == EGL_NO_DISPLAY || !eglInitialize(display_, nullptr, nullptr) || !eglBindAPI(EGL_OPENGL_API))
    throw std::runtime_error("no EGL display without a surface");
  const EGLint wanted[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
  EGLConfig config = nullptr;
  EGLint count = 0;
  if (!eglChooseConfig(display_, wanted, &config, 1, &count) || count == 0)
    throw std::runtime_error("no EGL configuration for OpenGL");
  context_ = eglCreateContext(display_, config, EGL_NO_CONTEXT, nullptr);
  if (context_ == EGL_NO_CONTEXT || !eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_))
    throw std::runtime_error("no OpenGL context");

  GLuint frameBuffer = 0, buffers[2] = {};
  glGenFramebuffers(1, &frameBuffer);
  glBindFramebuffer(GL_FRAMEBUFFER, frameBuffer);
  glGenRenderbuffers(2, buffers);
  const GLenum formats[] = {GL_RGBA8, GL_DEPTH_COMPONENT24};
  const GLenum attachments[] = {GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT};
  for (int i = 0; i < 2; ++i) {
    glBindRenderbuffer(GL_RENDERBUFFER, buffers[i]);
    glRenderbufferStorage(GL_RENDERBUFFER, formats[i], size.width, size.height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachments[i], GL_RENDERBUFFER, buffers[i]);
  }
  if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
    throw std::runtime_error("the frame buffer is not complete");
  glViewport(0, 0, size.width, size.height);
  // Depths 0 to 1 in clip space, as the cases have them.
  glClipControl(GL_LOWER_LEFT, GL_ZERO_TO_ONE);
  glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
}

Context::~Context() {
  eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
  eglDestroyContext(display_, context_);
  eglTerminate(display_);
}

std::string Context::renderer() const { return reinterpret_cast<const char*>(glGetString(GL_RENDERER)); }

std::vector<std::uint32_t> Context::pixels() const {
  const auto width = static_cast<std::size_t>(size_.width), height = static_cast<std::size_t>(size_.height);
  std::vector<std::uint32_t> upsideDown(width * height), out;
  glReadPixels(0, 0, size_.width, size_.height, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, upsideDown.data());
  out.reserve(upsideDown.size());
  for (std::size_t row = height; row-- > 0;)
    out.insert(out.end(), upsideDown.begin() + static_cast<std::ptrdiff_t>(row * width),
               upsideDown.begin() + static_cast<std::ptrdiff_t>((row + 1) * width));
  return out;
}

void clear() {
  const auto part = [](int shift) { return static_cast<float>(kBackground >> shift & 255) / 255; };
  glClearColor(part(16), part(8), part(0), 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

GLuint createTexture(const std::vector<Level>& levels) {
  GLuint texture = 0;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  for (std::size_t i = 0; i < levels.size(); ++i)
    glTexImage2D(GL_TEXTURE_2D, static_cast<GLint>(i), GL_RGBA8, levels[i].side, levels[i].side, 0, GL_BGRA,
                 GL_UNSIGNED_INT_8_8_8_8_REV, levels[i].pixels.data());
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, static_cast<GLint>(levels.size()) - 1);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  return texture;
}

GLuint createBuffer(GLenum target, const void* bytes, std::size_t size) {
  GLuint buffer = 0;
  glGenBuffers(1, &buffer);
  glBindBuffer(target, buffer);
  glBufferData(target, static_cast<GLsizeiptr>(size), bytes, GL_STATIC_DRAW);
  return buffer;
}

}  // namespace peers::gl
