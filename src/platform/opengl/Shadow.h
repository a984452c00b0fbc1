/// @file
/// A copy of the state that the driver has, so that no call that changes nothing reaches it.
#pragma once

#include "platform/opengl/DrawState.h"

#include <array>
#include <cstdint>
#include <optional>

#include <epoxy/gl.h>

namespace ql::opengl {

class Shadow {
 public:
  /// @param changes counts the calls that reach the driver
  explicit Shadow(std::uint64_t& changes) : changes_(changes) {}
  /// Brings a new context into the state that this copy starts with.
  void start();

  void apply(const FixedState& state);
  void framebuffer(GLuint name) {
    bind(framebuffer_, name, [name] { glBindFramebuffer(GL_FRAMEBUFFER, name); });
  }
  void program(GLuint name) {
    bind(program_, name, [name] { glUseProgram(name); });
  }
  void vertexArray(GLuint name) {
    bind(vertexArray_, name, [name] { glBindVertexArray(name); });
  }
  void arrayBuffer(GLuint name) {
    bind(arrayBuffer_, name, [name] { glBindBuffer(GL_ARRAY_BUFFER, name); });
  }
  /// A texture for a stage, or for work on it when the unit is kWorkUnit.
  void texture(std::size_t unit, GLuint name);
  void sampler(std::size_t unit, GLuint name);
  void uniformRange(GLuint block, GLuint buffer, std::size_t offset, std::size_t bytes);

  /// A clear writes all channels and depth, inside a rectangle.
  void prepareClear(const std::array<std::int32_t, 4>& area);

  /// A context that meets its first window takes its size for the viewport and the scissor.
  void forgetAreas() { viewport_ = scissor_ = std::nullopt; }
  /// The driver forgets the bindings of objects that are deleted.
  void forgetTexture(GLuint name);
  void forgetFramebuffer(GLuint name) { framebuffer_ = framebuffer_ == name ? 0 : framebuffer_; }
  void forgetVertexArray(GLuint name) { vertexArray_ = vertexArray_ == name ? 0 : vertexArray_; }
  void forgetArrayBuffer(GLuint name) { arrayBuffer_ = arrayBuffer_ == name ? 0 : arrayBuffer_; }

  static constexpr std::size_t kWorkUnit = device::kStages;

 private:
  template <class Value, class Call>
  void bind(Value& current, const Value& wanted, Call&& call) {
    if (current == wanted) return;
    current = wanted;
    ++changes_;
    call();
  }
  void enable(bool& current, bool wanted, GLenum capability) {
    bind(current, wanted, [=] { wanted ? glEnable(capability) : glDisable(capability); });
  }
  void activeUnit(std::size_t unit);
  void scissor(const std::array<std::int32_t, 4>& wanted);
  void colorMask(std::uint32_t wanted);
  void depthMask(bool wanted);

  struct UniformRange {
    GLuint buffer = 0;
    std::size_t offset = 0, bytes = 0;
    bool operator==(const UniformRange&) const = default;
  };

  std::uint64_t& changes_;
  GLuint framebuffer_ = 0, program_ = 0, vertexArray_ = 0, arrayBuffer_ = 0;
  std::size_t activeUnit_ = 0;
  std::array<GLuint, device::kStages + 1> textures_{}, samplers_{};
  std::array<UniformRange, 2> uniforms_{};
  bool depthTest_ = false, blend_ = false, cull_ = false, offset_ = false, depthMask_ = true;
  GLenum depthFunction_ = GL_LESS, blendOp_ = GL_FUNC_ADD, cullFace_ = GL_BACK;
  std::array<GLenum, 2> factors_{GL_ONE, GL_ZERO};
  std::uint32_t colorMask_ = 0xF;
  float bias_ = 0;
  std::optional<std::array<std::int32_t, 4>> viewport_, scissor_;
  std::array<float, 2> depthRange_{0, 1};
};

}  // namespace ql::opengl
