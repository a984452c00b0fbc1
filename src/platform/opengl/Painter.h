/// @file
/// Draws packets: decodes their state, brings it to the driver, and merges what can be drawn together.
#pragma once

#include "platform/opengl/Batch.h"
#include "platform/opengl/DrawState.h"
#include "platform/opengl/OpenGLBackEnd.h"
#include "platform/opengl/Programs.h"
#include "platform/opengl/Resources.h"
#include "platform/opengl/Stream.h"
#include "platform/opengl/VertexArrays.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace ql::opengl {

/// Whether the vertices of a packet must be laid out anew before OpenGL takes them.
bool repacks(const device::DrawPacket& packet);

/// Draws wait as long as the next ones have equal state and the same source. Everything that looks at what was drawn,
/// or changes what draws read, calls finish first.
class Painter {
 public:
  Painter(Shadow& shadow, DriverCalls& calls);

  /// @param textures of the stages, null for none @param buffer the packet's vertex buffer, 0: it brings its vertices
  void draw(const device::DrawPacket& packet, const Target& target,
            const std::array<Texture*, device::kStages>& textures, GLuint buffer);
  /// Whether the last packet waits for more of its kind.
  bool waits() const { return !batch_.empty(); }
  /// Adds a packet that differs from the last one, which waits, by its primitives alone: the type may be another with
  /// as many corners. It only copies memory, so that no context need be current. @return false: draw must do it
  bool drawMore(const device::DrawPacket& packet);
  /// Issues the draws that wait.
  void finish();
  /// Ends a picture. Pictures never pile up: the one before this has been finished when this returns.
  void endFrame();

  GlBuffer makeBuffer(std::size_t bytes);
  void uploadBuffer(GLuint buffer, std::size_t offset, std::span<const std::byte> bytes);
  static std::vector<std::byte> readBuffer(GLuint buffer);
  void forgetBuffer(GLuint buffer) { arrays_.forget(buffer); }

 private:
  /// What makes two packets the same but for their primitives.
  struct Source {
    std::uint64_t stateVersion = 0;
    const Target* target = nullptr;
    std::array<const Texture*, device::kStages> textures{};
    std::uint32_t vertexFormat = 0, stride = 0, corners = 0;
    GLuint buffer = 0;
    bool operator==(const Source&) const = default;
  };
  struct FenceDeleter {
    using pointer = GLsync;
    void operator()(GLsync fence) const { glDeleteSync(fence); }
  };

  void begin(const device::DrawPacket& packet, const Source& source, const Target& target,
             const std::array<Texture*, device::kStages>& textures);
  void apply(const DrawState& state, const Target& target, const std::array<Texture*, device::kStages>& textures);
  void applyUniforms(const DrawState& state);
  static std::span<const std::byte> bytesOf(const device::DrawPacket& packet);
  void append(const device::DrawPacket& packet, std::span<const std::byte> bytes);
  std::span<const std::byte> tight(const device::DrawPacket& packet, GLuint buffer);

  Shadow& shadow_;
  DriverCalls& calls_;
  Programs programs_;
  Samplers samplers_;
  std::size_t uniformAlignment_;
  Stream vertices_, indices_, uniforms_;
  GlBuffer lights_;
  VertexArrays arrays_;

  Batch batch_;
  std::uint32_t nextVertex_ = 0;    ///< behind the batch's last one in the ring
  Source source_;                   ///< of the batch, or of the last draw when nothing waits
  std::optional<DrawState> state_;  ///< that the driver has; nothing: unknown
  std::optional<DrawUniforms> sentUniforms_;
  std::vector<LightUniforms> sentLights_;
  std::vector<std::byte> repacked_;
  std::array<std::unique_ptr<Texture>, device::kStages> feedback_;  ///< copies of the target, for the draw that waits
  std::unique_ptr<__GLsync, FenceDeleter> lastFrame_;
};

}  // namespace ql::opengl
