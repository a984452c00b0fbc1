#include "platform/opengl/Painter.h"

#include "platform/opengl/ShaderText.h"

#include <algorithm>
#include <cstring>

namespace ql::opengl {
namespace {

using device::PrimitiveType;

constexpr std::size_t kVertexBytes = std::size_t{8} << 20, kIndexBytes = std::size_t{4} << 20;
constexpr std::size_t kUniformBytes = std::size_t{1} << 20;
// Small draws that are merged share one mapping of this size.
constexpr std::size_t kVertexWindow = std::size_t{256} << 10;
// Drivers need not take larger strides.
constexpr std::uint32_t kLargestStride = 2048;
constexpr GLuint64 kPatience = 1'000'000'000;  // nanoseconds

GLenum modeOf(PrimitiveType type) {
  switch (type) {
    case PrimitiveType::PointList:
      return GL_POINTS;
    case PrimitiveType::LineList:
      return GL_LINES;
    case PrimitiveType::LineStrip:
      return GL_LINE_STRIP;
    case PrimitiveType::TriangleStrip:
      return GL_TRIANGLE_STRIP;
    case PrimitiveType::TriangleFan:
      return GL_TRIANGLE_FAN;
    default:
      return GL_TRIANGLES;
  }
}
GLenum listOf(std::uint32_t corners) { return corners == 1 ? GL_POINTS : corners == 2 ? GL_LINES : GL_TRIANGLES; }

std::size_t alignmentOfUniforms() {
  GLint alignment = 0;
  glGetIntegerv(GL_UNIFORM_BUFFER_OFFSET_ALIGNMENT, &alignment);
  return static_cast<std::size_t>(std::max(alignment, 16));
}

}  // namespace

bool repacks(const device::DrawPacket& packet) {
  const bool unaligned = packet.buffer == device::BufferId::None && packet.stride % sizeof(float) != 0;
  return packet.stride > kLargestStride || unaligned;
}

Painter::Painter(Shadow& shadow, DriverCalls& calls)
    : shadow_(shadow),
      calls_(calls),
      programs_(shadow, calls.programs),
      uniformAlignment_(alignmentOfUniforms()),
      vertices_(kVertexBytes, kVertexWindow),
      indices_(kIndexBytes, 0),
      uniforms_(kUniformBytes, 0),
      lights_(makeBuffer(kMostLights * sizeof(LightUniforms))),
      arrays_(shadow, indices_.buffer()) {}

GlBuffer Painter::makeBuffer(std::size_t bytes) {
  GlBuffer made = GlBuffer::make();
  glBindBuffer(GL_COPY_WRITE_BUFFER, made.name());
  glBufferData(GL_COPY_WRITE_BUFFER, static_cast<GLsizeiptr>(bytes), std::vector<std::byte>(bytes).data(),
               GL_STATIC_DRAW);
  return made;
}

void Painter::uploadBuffer(GLuint buffer, std::size_t offset, std::span<const std::byte> bytes) {
  glBindBuffer(GL_COPY_WRITE_BUFFER, buffer);
  glBufferSubData(GL_COPY_WRITE_BUFFER, static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(bytes.size()),
                  bytes.data());
}

std::vector<std::byte> Painter::readBuffer(GLuint buffer) {
  GLint size = 0;
  glBindBuffer(GL_COPY_READ_BUFFER, buffer);
  glGetBufferParameteriv(GL_COPY_READ_BUFFER, GL_BUFFER_SIZE, &size);
  std::vector<std::byte> bytes(static_cast<std::size_t>(size));
  glGetBufferSubData(GL_COPY_READ_BUFFER, 0, size, bytes.data());
  return bytes;
}

void Painter::applyUniforms(const DrawState& state) {
  if (sentUniforms_ != state.uniforms) {
    const std::size_t at =
        uniforms_.write(uniforms_.place(uniformAlignment_), std::as_bytes(std::span(&state.uniforms, 1)));
    uniforms_.finish();
    shadow_.uniformRange(kDrawBlock, uniforms_.buffer(), at, sizeof(DrawUniforms));
    sentUniforms_ = state.uniforms;
  }
  if (!state.key.lighting) return;
  shadow_.uniformRange(kLightBlock, lights_.name(), 0, kMostLights * sizeof(LightUniforms));
  if (sentLights_ == state.lights) return;
  if (!state.lights.empty()) uploadBuffer(lights_.name(), 0, std::as_bytes(std::span(state.lights)));
  sentLights_ = state.lights;
}

void Painter::apply(const DrawState& state, const Target& target,
                    const std::array<Texture*, device::kStages>& textures) {
  shadow_.program(programs_.programFor(state.key));
  feedback_ = {};
  for (std::size_t i = 0; i < device::kStages; ++i) {
    if (!state.key.stages[i].samples) continue;
    // A draw that reads what it draws on sees it as it was before.
    if (textures[i] == &target.texture()) feedback_[i] = textures[i]->copy();
    shadow_.texture(i, (textures[i] == &target.texture() ? feedback_[i].get() : textures[i])->complete());
    shadow_.sampler(i, samplers_.samplerFor(state.samplers[i]));
  }
  shadow_.framebuffer(target.framebuffer());
  shadow_.apply(state.fixed);
  applyUniforms(state);
}

void Painter::begin(const device::DrawPacket& packet, const Source& source, const Target& target,
                    const std::array<Texture*, device::kStages>& textures) {
  DrawSurroundings around{target.width(), target.height(), target.format(), {}, {}};
  for (std::size_t i = 0; i < device::kStages; ++i) {
    if (!textures[i]) continue;
    around.textured[i] = true;
    around.textures[i] = {textures[i]->width(0), textures[i]->height(0), textures[i]->levels()};
  }
  DrawState state = decode(packet, around);
  // Versions grow also when a state returns to what it was, and textures may be set that nothing reads.
  Source same = source;
  same.stateVersion = source_.stateVersion;
  for (std::size_t i = 0; i < device::kStages; ++i)
    if (!state.key.stages[i].samples) same.textures[i] = source_.textures[i];
  const bool merges =
      !batch_.empty() && same == source_ && state_ == state && packet.primitive != PrimitiveType::LineStrip;
  if (!merges) {
    finish();
    if (state.draws) apply(state, target, textures);
  }
  source_ = source;
  state_ = std::move(state);
}

std::span<const std::byte> Painter::tight(const device::DrawPacket& packet, GLuint buffer) {
  const std::size_t size = device::vertexSize(packet.vertexFormat), count = packet.vertexCount;
  std::span<const std::byte> from = packet.vertices;
  std::vector<std::byte> read;
  if (buffer) {
    read.resize((count - 1) * packet.stride + size);
    glBindBuffer(GL_COPY_WRITE_BUFFER, buffer);
    glGetBufferSubData(GL_COPY_WRITE_BUFFER, static_cast<GLintptr>(std::size_t{packet.firstVertex} * packet.stride),
                       static_cast<GLsizeiptr>(read.size()), read.data());
    from = read;
  }
  repacked_.resize(count * size);
  for (std::size_t i = 0; i < count; ++i)
    std::memcpy(repacked_.data() + i * size, from.data() + i * packet.stride, size);
  return repacked_;
}

std::span<const std::byte> Painter::bytesOf(const device::DrawPacket& packet) {
  return packet.vertices.first(std::min(packet.vertices.size(), std::size_t{packet.vertexCount} * packet.stride));
}

void Painter::draw(const device::DrawPacket& packet, const Target& target,
                   const std::array<Texture*, device::kStages>& textures, GLuint buffer) {
  std::span<const std::byte> bytes = bytesOf(packet);
  std::uint32_t stride = packet.stride;
  if (repacks(packet)) {
    bytes = tight(packet, buffer);
    stride = device::vertexSize(packet.vertexFormat);
    buffer = 0;
  }
  Source source{packet.stateVersion, &target, {}, packet.vertexFormat, stride, corners(packet.primitive), buffer};
  for (std::size_t i = 0; i < device::kStages; ++i) source.textures[i] = textures[i];
  const bool strip = packet.primitive == PrimitiveType::LineStrip;
  if (!state_ || source != source_ || batch_.empty() || strip) begin(packet, source, target, textures);
  if (!state_->draws) return;
  append(packet, bytes);
  // The number of a line decides about its last pixel, and what is drawn on may be read by the next draw.
  if (strip || feedback_[0] || feedback_[1]) finish();
}

bool Painter::drawMore(const device::DrawPacket& packet) {
  const std::span<const std::byte> bytes = bytesOf(packet);
  if (!source_.buffer && !vertices_.reaches(std::size_t{nextVertex_} * source_.stride, bytes.size())) return false;
  append(packet, bytes);
  return true;
}

void Painter::append(const device::DrawPacket& packet, std::span<const std::byte> bytes) {
  std::uint32_t first = packet.firstVertex;
  if (!source_.buffer) {
    const std::size_t stride = source_.stride;
    std::size_t offset = batch_.empty() ? vertices_.place(stride) : std::size_t{nextVertex_} * stride;
    if (!vertices_.fits(offset, bytes.size())) finish();
    const bool goesOn = !batch_.empty();
    offset = vertices_.write(offset, bytes);
    first = goesOn ? nextVertex_ : static_cast<std::uint32_t>(offset / stride);
    nextVertex_ = first + packet.vertexCount;
  }
  batch_.add({packet.primitive, first, packet.vertexCount});
}

void Painter::finish() {
  if (batch_.empty()) return;
  vertices_.finish();
  arrays_.bind(source_.buffer ? source_.buffer : vertices_.buffer(), source_.vertexFormat, source_.stride);
  if (batch_.single()) {
    const Batch::Range& r = batch_.front();
    glDrawArrays(modeOf(r.type), static_cast<GLint>(r.first), static_cast<GLsizei>(r.count));
  } else {
    const std::span<const std::uint32_t> list = batch_.indices();
    const std::size_t at = indices_.write(indices_.place(sizeof(std::uint32_t)), std::as_bytes(list));
    indices_.finish();
    glDrawElements(listOf(source_.corners), static_cast<GLsizei>(list.size()), GL_UNSIGNED_INT,
                   reinterpret_cast<const void*>(at));
  }
  ++calls_.draws;
  batch_.clear();
}

void Painter::endFrame() {
  finish();
  std::unique_ptr<__GLsync, FenceDeleter> fence(glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0));
  glFlush();
  if (lastFrame_) glClientWaitSync(lastFrame_.get(), 0, kPatience);
  lastFrame_ = std::move(fence);
}

}  // namespace ql::opengl
