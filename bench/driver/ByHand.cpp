#include "ByHand.h"

#include "math/Matrix.h"
#include "platform/device/Resources.h"
#include "platform/opengl/Context.h"
#include "platform/opengl/GlObject.h"
#include "platform/opengl/Programs.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <tuple>

namespace ql::bench {
namespace {

using namespace opengl;
using device::Blend;

constexpr const char* kVertex = R"(#version 330 core
uniform mat4 clip;
layout(location = 0) in vec3 position;
layout(location = 1) in vec4 colour;
layout(location = 2) in vec2 coordinates;
out vec4 tint;
out vec2 place;
void main() {
  tint = colour;
  place = coordinates;
  vec4 p = clip * vec4(position, 1.0);
  gl_Position = vec4(p.x, p.y, 2.0 * p.z - p.w, p.w);
}
)";
constexpr const char* kFragment = R"(#version 330 core
uniform sampler2D picture;
in vec4 tint;
in vec2 place;
out vec4 colour;
void main() {
  vec4 texel = texture(picture, place);
  colour = vec4(texel.rgb * tint.rgb, texel.a);
}
)";

constexpr std::uint32_t kStride = 36, kFormat = 0x2C2;  // position, two colours, two coordinate sets

/// Faces that follow each other with one texture under one state.
struct Run {
  const device::State* state = nullptr;
  GLuint texture = 0;
  std::vector<std::uint32_t> indices;
  std::size_t at = 0;  ///< of the indices in their buffer
};
struct PreparedFrame {
  math::Mat4 clip;
  std::uint32_t clearColor = 0;
  std::vector<Run> runs;
};

// Pixels of the device have their centres at whole numbers, those of OpenGL between them.
math::Mat4 clipOf(const device::State& s) {
  math::Mat4 clip = math::multiply(math::multiply(s.world, s.view), s.projection);
  for (const auto& [x, y, w] : {std::tuple(&clip.m11, &clip.m12, clip.m14),
                                {&clip.m21, &clip.m22, clip.m24},
                                {&clip.m31, &clip.m32, clip.m34},
                                {&clip.m41, &clip.m42, clip.m44}}) {
    *x += w / kWidth;
    *y -= w / kHeight;
  }
  return clip;
}

void require(bool known, const char* what) {
  if (!known) throw std::runtime_error(std::string("the program by hand does not know this ") + what);
}

void requireKnown(const Draw& draw) {
  const device::State& s = *draw.state;
  const device::DrawPacket& p = draw.packet;
  require(p.buffer != device::BufferId::None && p.stride == kStride && p.vertexFormat == kFormat, "vertex layout");
  require(p.primitive == device::PrimitiveType::TriangleList && p.textures[0] != device::TextureId::None, "face");
  const device::RenderStates& r = s.render;
  require(!r.lighting && !r.fogEnable && !r.alphaTestEnable && !r.specularEnable && r.fillMode == 3, "render state");
  require(r.cullMode == 1 && r.zEnable && r.zFunc == 4 && r.zWriteEnable, "depth or culling");
  require(!r.alphaBlendEnable || (r.srcBlend == 9 && r.destBlend == 1), "blending");
  const device::StageStates& stage = s.stages[0];
  require(stage.colorOp == 4 && stage.alphaOp == 2 && stage.texCoordIndex <= 1 && s.stages[1].colorOp == 1, "stage");
  require(stage.minFilter == 2 && stage.magFilter == 2 && stage.mipFilter == 1 && stage.textureTransformFlags == 0,
          "filter");
}

}  // namespace

struct ByHand::Impl {
  std::unique_ptr<Context> context = Context::create(false);
  std::unique_ptr<CurrentContext> current = std::make_unique<CurrentContext>(*context);
  GlProgram program = makeProgram(kVertex, "", kFragment);
  GLint clip = glGetUniformLocation(program.name(), "clip");
  GlBuffer vertices = GlBuffer::make(), indices = GlBuffer::make();
  std::array<GlVertexArray, 2> arrays{GlVertexArray::make(), GlVertexArray::make()};  ///< by coordinate set
  std::map<device::TextureId, GlTexture> textures;
  GlRenderbuffer color = GlRenderbuffer::make(), depth = GlRenderbuffer::make();
  GlFramebuffer frameBuffer = GlFramebuffer::make();
  std::vector<PreparedFrame> frames;

  void makeTarget();
  void makeTexture(device::TextureId id, const Texture& from);
  void makeArrays();
  void prepare(const Frame& frame);
  void draw(const PreparedFrame& frame);
};

void ByHand::Impl::makeTarget() {
  glBindFramebuffer(GL_FRAMEBUFFER, frameBuffer.name());
  glBindRenderbuffer(GL_RENDERBUFFER, color.name());
  glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, kWidth, kHeight);
  glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, color.name());
  glBindRenderbuffer(GL_RENDERBUFFER, depth.name());
  glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, kWidth, kHeight);
  glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth.name());
  if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
    throw std::runtime_error("the frame buffer is not complete");
  glViewport(0, 0, kWidth, kHeight);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LEQUAL);
  glBlendFunc(GL_DST_COLOR, GL_ZERO);
  glUseProgram(program.name());
}

void ByHand::Impl::makeTexture(device::TextureId id, const Texture& from) {
  GlTexture made = GlTexture::make();
  glBindTexture(GL_TEXTURE_2D, made.name());
  const device::TextureDescription& d = from.description;
  for (std::uint32_t level = 0; level < d.levels; ++level) {
    const std::uint32_t width = std::max(d.width >> level, 1u), height = std::max(d.height >> level, 1u);
    std::vector<std::uint32_t> argb(std::size_t{width} * height);
    if (!from.levels[level].empty()) device::toArgb(d.format, from.levels[level], argb);
    glTexImage2D(GL_TEXTURE_2D, static_cast<GLint>(level), GL_RGBA8, static_cast<GLsizei>(width),
                 static_cast<GLsizei>(height), 0, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, argb.data());
  }
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, static_cast<GLint>(d.levels) - 1);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_NEAREST);
  textures[id] = std::move(made);
}

void ByHand::Impl::makeArrays() {
  for (std::size_t set = 0; set < 2; ++set) {
    glBindVertexArray(arrays[set].name());
    glBindBuffer(GL_ARRAY_BUFFER, vertices.name());
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indices.name());
    const auto attribute = [](GLuint place, GLint size, GLenum type, std::size_t offset) {
      glEnableVertexAttribArray(place);
      glVertexAttribPointer(place, size, type, type == GL_UNSIGNED_BYTE, kStride,
                            reinterpret_cast<const void*>(offset));
    };
    attribute(0, 3, GL_FLOAT, 0);
    attribute(1, GL_BGRA, GL_UNSIGNED_BYTE, 12);
    attribute(2, 2, GL_FLOAT, 20 + 8 * set);
  }
}

void ByHand::Impl::prepare(const Frame& frame) {
  PreparedFrame out{clipOf(*frame.draws.front().state), frame.clearColor, {}};
  for (const Draw& draw : frame.draws) {
    requireKnown(draw);
    const GLuint texture = textures.at(draw.packet.textures[0]).name();
    if (out.runs.empty() || out.runs.back().texture != texture || out.runs.back().state != draw.state.get())
      out.runs.push_back({draw.state.get(), texture, {}, 0});
    for (std::uint32_t i = 0; i < draw.packet.vertexCount; ++i)
      out.runs.back().indices.push_back(draw.packet.firstVertex + i);
  }
  frames.push_back(std::move(out));
}

// What is visible is known only when the frame begins: its indices are gathered and sent then.
void ByHand::Impl::draw(const PreparedFrame& frame) {
  const auto channel = [&](int shift) { return static_cast<float>(frame.clearColor >> shift & 255) / 255; };
  glDepthMask(GL_TRUE);
  glClearColor(channel(16), channel(8), channel(0), 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  std::vector<std::uint32_t> all;
  for (const Run& run : frame.runs) all.insert(all.end(), run.indices.begin(), run.indices.end());
  // Row vectors in row order are column vectors in column order.
  glUniformMatrix4fv(clip, 1, GL_FALSE, &frame.clip.m11);
  glBindVertexArray(arrays[0].name());
  glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(all.size() * sizeof(std::uint32_t)), all.data(),
               GL_STREAM_DRAW);
  const device::State* state = nullptr;
  std::size_t at = 0;
  for (const Run& run : frame.runs) {
    if (run.state != state) {
      state = run.state;
      glBindVertexArray(arrays[state->stages[0].texCoordIndex].name());
      state->render.alphaBlendEnable ? glEnable(GL_BLEND) : glDisable(GL_BLEND);
    }
    glBindTexture(GL_TEXTURE_2D, run.texture);
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(run.indices.size()), GL_UNSIGNED_INT,
                   reinterpret_cast<const void*>(at * sizeof(std::uint32_t)));
    at += run.indices.size();
  }
}

ByHand::ByHand(const Walk& walk) : impl_(std::make_unique<Impl>()) {
  Impl& d = *impl_;
  d.makeTarget();
  for (const auto& [id, texture] : walk.textures) d.makeTexture(id, texture);
  for (const Frame& frame : walk.frames) d.prepare(frame);
  const std::vector<std::byte>& bytes = walk.buffers.at(walk.frames.front().draws.front().packet.buffer);
  d.makeArrays();
  glBindBuffer(GL_ARRAY_BUFFER, d.vertices.name());
  glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(bytes.size()), bytes.data(), GL_STATIC_DRAW);
  d.current.reset();
}

ByHand::~ByHand() { impl_->current = std::make_unique<CurrentContext>(*impl_->context); }  // for the objects' names

void ByHand::frame(std::size_t index) {
  const CurrentContext current(*impl_->context);
  impl_->draw(impl_->frames[index]);
  std::uint32_t pixel = 0;
  glReadPixels(0, 0, 1, 1, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, &pixel);
}

std::vector<std::uint32_t> ByHand::picture() {
  const CurrentContext current(*impl_->context);
  std::vector<std::uint32_t> upsideDown(std::size_t{kWidth} * kHeight), out;
  glReadPixels(0, 0, kWidth, kHeight, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, upsideDown.data());
  for (std::uint32_t row = kHeight; row-- > 0;)
    out.insert(out.end(), upsideDown.begin() + std::ptrdiff_t{row} * kWidth,
               upsideDown.begin() + (std::ptrdiff_t{row} + 1) * kWidth);
  return out;
}

}  // namespace ql::bench
