#include "platform/opengl/TextureCopier.h"

#include "platform/device/Levels.h"
#include "platform/device/Resources.h"
#include "platform/opengl/Programs.h"

#include <string_view>

namespace ql::opengl {
namespace {

constexpr const char* kVertex = R"(#version 330 core
void main() {
  gl_Position = vec4(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0, 0.0, 1.0);
}
)";
// Colours are whole numbers within far less than the hundredth that lifts ties.
constexpr const char* kFragment = R"(#version 330 core
uniform sampler2D texture0;  // only the level above
uniform ivec2 beside;        // to the next column and row, where there is one
out vec4 color;
vec4 at(ivec2 place) { return texelFetch(texture0, place, 0); }
void main() {
  ivec2 place = ivec2(gl_FragCoord.xy) * 2;
  vec4 sum = at(place) + at(place + ivec2(beside.x, 0)) + at(place + ivec2(0, beside.y)) + at(place + beside);
  color = floor(sum * (255.0 / 4.0) + 0.51) * (1.0 / 255.0);
}
)";

GLint integer(std::uint32_t value) { return static_cast<GLint>(value); }

bool showsItsSteps(device::Format format) {
  using device::Format;
  return format == Format::A1R5G5B5 || format == Format::A8 || format == Format::L8 || format == Format::A8L8;
}

// Drivers in software have everything in memory, and take longer to draw many small levels than it takes to compute
// them.
bool drawsInSoftware() {
  const auto* name = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
  const std::string_view renderer = name ? name : "";
  return renderer.find("llvmpipe") != renderer.npos || renderer.find("softpipe") != renderer.npos;
}
constexpr std::uint32_t kManyPixels = 1u << 16;

void copyThroughMemory(const Target& from, Texture& to, std::uint32_t level) {
  std::vector<std::uint32_t> picture = from.read({0, 0, from.width(), from.height()});
  device::roundTo(from.format(), picture);
  for (std::uint32_t i = level; i < to.levels(); ++i) {
    std::vector<std::uint32_t> rounded = picture;
    device::roundTo(to.description().format, rounded);
    to.write(i, rounded);
    picture = device::halved(picture, to.width(i), to.height(i));
  }
}

}  // namespace

void TextureCopier::prepare() {
  program_ = makeProgram(kVertex, "", kFragment);
  nothing_ = GlVertexArray::make();
  framebuffer_ = GlFramebuffer::make();
  shadow_.program(program_.name());
  glUniform1i(glGetUniformLocation(program_.name(), "texture0"), 0);
  beside_ = glGetUniformLocation(program_.name(), "beside");
}

// The texture shows nothing but the level above meanwhile: so it can be read and drawn on at once.
void TextureCopier::drawSmaller(Texture& to, std::uint32_t level) {
  if (!program_) prepare();
  shadow_.framebuffer(framebuffer_.name());
  shadow_.vertexArray(nothing_.name());
  shadow_.program(program_.name());
  shadow_.sampler(0, 0);
  for (std::uint32_t i = level + 1; i < to.levels(); ++i) {
    FixedState fixed;
    fixed.viewport = fixed.scissor = {0, 0, integer(to.width(i)), integer(to.height(i))};
    shadow_.apply(fixed);
    to.showLevels(i - 1, i - 1);
    shadow_.texture(0, to.overwrite(i));
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, to.overwrite(i), integer(i));
    glUniform2i(beside_, to.width(i - 1) > 1, to.height(i - 1) > 1);
    glDrawArrays(GL_TRIANGLES, 0, 3);
  }
  glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 0, 0);
  to.showLevels(0, to.levels() - 1);
}

void TextureCopier::copy(Target& from, Texture& to, std::uint32_t level) {
  if (!inSoftware_) inSoftware_ = drawsInSoftware();
  if (showsItsSteps(to.description().format) || (*inSoftware_ && from.width() * from.height() >= kManyPixels))
    return copyThroughMemory(from, to, level);
  if (!device::hasAlpha(to.description().format)) to.hideAlpha();
  shadow_.framebuffer(from.framebuffer());
  shadow_.texture(Shadow::kWorkUnit, to.overwrite(level));
  glCopyTexSubImage2D(GL_TEXTURE_2D, integer(level), 0, 0, 0, 0, integer(from.width()), integer(from.height()));
  if (level + 1 < to.levels()) drawSmaller(to, level);
}

}  // namespace ql::opengl
