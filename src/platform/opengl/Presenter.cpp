#include "platform/opengl/Presenter.h"

#include "platform/device/Resources.h"

#include <algorithm>

namespace ql::opengl {
namespace {

// One triangle over the whole window. The first row of pictures is the lowest of textures, and of windows the highest.
constexpr const char* kVertex = R"(#version 330 core
out vec2 place;
void main() {
  vec2 corner = vec2(gl_VertexID == 1 ? 2.0 : 0.0, gl_VertexID == 2 ? 2.0 : 0.0);
  place = corner;
  gl_Position = vec4(corner.x * 2.0 - 1.0, 1.0 - corner.y * 2.0, 0.0, 1.0);
}
)";
constexpr const char* kFragment = R"(#version 330 core
uniform sampler2D texture0, texture1;  // the picture; what the display makes of each value
uniform ivec3 limits;                  // the largest value of each channel
in vec2 place;
out vec4 color;
int widened(int value, int limit) {
  int narrow = (value * limit + 127) / 255;
  if (limit == 31) return narrow << 3 | narrow >> 2;
  if (limit == 63) return narrow << 2 | narrow >> 4;
  return narrow;
}
void main() {
  ivec3 value = ivec3(texture(texture0, place).rgb * 255.0 + 0.5);
  color = vec4(texelFetch(texture1, ivec2(widened(value.r, limits.r), 0), 0).r,
               texelFetch(texture1, ivec2(widened(value.g, limits.g), 0), 0).g,
               texelFetch(texture1, ivec2(widened(value.b, limits.b), 0), 0).b, 1.0);
}
)";

GlSampler sampler(GLint filter) {
  GlSampler made = GlSampler::make();
  glSamplerParameteri(made.name(), GL_TEXTURE_MIN_FILTER, filter);
  glSamplerParameteri(made.name(), GL_TEXTURE_MAG_FILTER, filter);
  glSamplerParameteri(made.name(), GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
  glSamplerParameteri(made.name(), GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
  return made;
}

std::array<GLint, 3> limitsOf(device::Format format) {
  if (format == device::Format::R5G6B5) return {31, 63, 31};
  return device::bytesPerPixel(format) == 2 ? std::array<GLint, 3>{31, 31, 31} : std::array<GLint, 3>{255, 255, 255};
}

}  // namespace

void Presenter::prepare() {
  program_ = makeProgram(kVertex, "", kFragment);
  nothing_ = GlVertexArray::make();
  nearest_ = sampler(GL_NEAREST);
  linear_ = sampler(GL_LINEAR);
  table_ = GlTexture::make();
  shadow_.texture(Shadow::kWorkUnit, table_.name());
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 256, 1, 0, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, nullptr);
  shadow_.program(program_.name());
  glUniform1i(glGetUniformLocation(program_.name(), "texture0"), 0);
  glUniform1i(glGetUniformLocation(program_.name(), "texture1"), 1);
  limits_ = glGetUniformLocation(program_.name(), "limits");
}

void Presenter::setTable(const device::GammaRamp* ramp) {
  const auto upper = [](std::uint16_t level) { return std::uint32_t{level} >> 8; };  // all that the display takes
  Table wanted;
  for (std::uint32_t i = 0; i < 256; ++i)
    wanted[i] = ramp ? upper(ramp->red[i]) << 16 | upper(ramp->green[i]) << 8 | upper(ramp->blue[i]) : i * 0x10101;
  if (sentTable_ == wanted) return;
  shadow_.texture(Shadow::kWorkUnit, table_.name());
  glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 256, 1, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, wanted.data());
  sentTable_ = wanted;
}

void Presenter::draw(Target& target, device::Window::Size size, const device::GammaRamp* ramp) {
  if (!program_) prepare();
  const auto side = [](std::uint32_t length) { return static_cast<std::int32_t>(std::min(length, 0x7FFFu)); };
  FixedState fixed;
  fixed.viewport = fixed.scissor = {0, 0, side(size.width), side(size.height)};
  shadow_.framebuffer(0);
  glDrawBuffer(GL_BACK);  // nowhere until somebody says so: the context began without a window
  shadow_.apply(fixed);
  shadow_.program(program_.name());
  shadow_.vertexArray(nothing_.name());
  setTable(ramp);
  const bool sameSize = size.width == target.width() && size.height == target.height();
  shadow_.texture(0, target.colors());
  shadow_.sampler(0, (sameSize ? nearest_ : linear_).name());
  shadow_.texture(1, table_.name());
  shadow_.sampler(1, nearest_.name());
  if (const std::array<GLint, 3> limits = limitsOf(target.format()); limits != sentLimits_) {
    glUniform3iv(limits_, 1, limits.data());
    sentLimits_ = limits;
  }
  glDrawArrays(GL_TRIANGLES, 0, 3);
}

}  // namespace ql::opengl
