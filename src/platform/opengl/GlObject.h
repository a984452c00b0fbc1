/// @file
/// Names of OpenGL objects that delete themselves. The context must be current then.
#pragma once

#include <utility>

#include <epoxy/gl.h>

namespace ql::opengl {

/// @tparam kTraits create and destroy one name
template <class Traits>
class GlObject {
 public:
  GlObject() = default;
  static GlObject make() {
    GlObject out;
    out.name_ = Traits::create();
    return out;
  }
  ~GlObject() { reset(); }
  GlObject(GlObject&& other) noexcept : name_(std::exchange(other.name_, 0)) {}
  GlObject& operator=(GlObject&& other) noexcept {
    if (this != &other) {
      reset();
      name_ = std::exchange(other.name_, 0);
    }
    return *this;
  }
  GLuint name() const { return name_; }
  explicit operator bool() const { return name_ != 0; }

 private:
  void reset() {
    if (name_) Traits::destroy(name_);
    name_ = 0;
  }
  GLuint name_ = 0;
};

struct BufferTraits {
  static GLuint create() {
    GLuint name = 0;
    glGenBuffers(1, &name);
    return name;
  }
  static void destroy(GLuint name) { glDeleteBuffers(1, &name); }
};
struct TextureTraits {
  static GLuint create() {
    GLuint name = 0;
    glGenTextures(1, &name);
    return name;
  }
  static void destroy(GLuint name) { glDeleteTextures(1, &name); }
};
struct FramebufferTraits {
  static GLuint create() {
    GLuint name = 0;
    glGenFramebuffers(1, &name);
    return name;
  }
  static void destroy(GLuint name) { glDeleteFramebuffers(1, &name); }
};
struct RenderbufferTraits {
  static GLuint create() {
    GLuint name = 0;
    glGenRenderbuffers(1, &name);
    return name;
  }
  static void destroy(GLuint name) { glDeleteRenderbuffers(1, &name); }
};
struct VertexArrayTraits {
  static GLuint create() {
    GLuint name = 0;
    glGenVertexArrays(1, &name);
    return name;
  }
  static void destroy(GLuint name) { glDeleteVertexArrays(1, &name); }
};
struct SamplerTraits {
  static GLuint create() {
    GLuint name = 0;
    glGenSamplers(1, &name);
    return name;
  }
  static void destroy(GLuint name) { glDeleteSamplers(1, &name); }
};
struct ProgramTraits {
  static GLuint create() { return glCreateProgram(); }
  static void destroy(GLuint name) { glDeleteProgram(name); }
};

using GlBuffer = GlObject<BufferTraits>;
using GlTexture = GlObject<TextureTraits>;
using GlFramebuffer = GlObject<FramebufferTraits>;
using GlRenderbuffer = GlObject<RenderbufferTraits>;
using GlVertexArray = GlObject<VertexArrayTraits>;
using GlSampler = GlObject<SamplerTraits>;
using GlProgram = GlObject<ProgramTraits>;

}  // namespace ql::opengl
