#include "platform/opengl/Shadow.h"

namespace ql::opengl {

void Shadow::start() {
  glEnable(GL_SCISSOR_TEST);
  glDisable(GL_DITHER);
  glDisable(GL_MULTISAMPLE);
  glFrontFace(GL_CCW);
  glProvokingVertex(GL_FIRST_VERTEX_CONVENTION);
  glPixelStorei(GL_PACK_ALIGNMENT, 4);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
}

void Shadow::activeUnit(std::size_t unit) {
  bind(activeUnit_, unit, [unit] { glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit)); });
}

void Shadow::texture(std::size_t unit, GLuint name) {
  // Work goes to the active unit, also when the texture has been there all along.
  if (textures_[unit] != name || unit == kWorkUnit) activeUnit(unit);
  bind(textures_[unit], name, [name] { glBindTexture(GL_TEXTURE_2D, name); });
}

void Shadow::sampler(std::size_t unit, GLuint name) {
  bind(samplers_[unit], name, [=] { glBindSampler(static_cast<GLuint>(unit), name); });
}

void Shadow::uniformRange(GLuint block, GLuint buffer, std::size_t offset, std::size_t bytes) {
  bind(uniforms_[block], {buffer, offset, bytes}, [=] {
    glBindBufferRange(GL_UNIFORM_BUFFER, block, buffer, static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(bytes));
  });
}

void Shadow::scissor(const std::array<std::int32_t, 4>& wanted) {
  bind(scissor_, std::optional(wanted), [&] { glScissor(wanted[0], wanted[1], wanted[2], wanted[3]); });
}
void Shadow::colorMask(std::uint32_t wanted) {
  bind(colorMask_, wanted, [wanted] {
    const auto channel = [wanted](unsigned bit) { return static_cast<GLboolean>(wanted >> bit & 1); };
    glColorMask(channel(0), channel(1), channel(2), channel(3));
  });
}
void Shadow::depthMask(bool wanted) {
  bind(depthMask_, wanted, [wanted] { glDepthMask(wanted); });
}

void Shadow::apply(const FixedState& s) {
  enable(depthTest_, s.depthFunction != 0, GL_DEPTH_TEST);
  if (s.depthFunction != 0) {
    bind(depthFunction_, GLenum{s.depthFunction}, [&] { glDepthFunc(s.depthFunction); });
    depthMask(s.depthWrite);
  }
  enable(blend_, s.blendOp != 0, GL_BLEND);
  if (s.blendOp != 0) {
    bind(blendOp_, GLenum{s.blendOp}, [&] { glBlendEquation(s.blendOp); });
    bind(factors_, {s.source, s.destination}, [&] { glBlendFunc(s.source, s.destination); });
  }
  colorMask(s.colorMask);
  enable(cull_, s.cullFace != 0, GL_CULL_FACE);
  if (s.cullFace != 0) bind(cullFace_, GLenum{s.cullFace}, [&] { glCullFace(s.cullFace); });
  enable(offset_, s.bias != 0, GL_POLYGON_OFFSET_FILL);
  if (s.bias != 0) bind(bias_, s.bias, [&] { glPolygonOffset(0, -s.bias); });
  bind(viewport_, std::optional(s.viewport),
       [&] { glViewport(s.viewport[0], s.viewport[1], s.viewport[2], s.viewport[3]); });
  scissor(s.scissor);
  bind(depthRange_, {s.nearDepth, s.farDepth}, [&] { glDepthRange(GLdouble{s.nearDepth}, GLdouble{s.farDepth}); });
}

void Shadow::prepareClear(const std::array<std::int32_t, 4>& area) {
  colorMask(0xF);
  depthMask(true);
  scissor(area);
}

void Shadow::forgetTexture(GLuint name) {
  for (GLuint& texture : textures_)
    if (texture == name) texture = 0;
}

}  // namespace ql::opengl
