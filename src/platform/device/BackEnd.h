/// @file
/// What a renderer implements. The device checks everything and holds all state; a back end receives complete packets
/// and trusts them.
#pragma once

#include "platform/device/Constants.h"
#include "platform/device/Display.h"
#include "platform/device/State.h"
#include "platform/device/Statistics.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ql::device {

/// Names of a back end's resources; 0 is none.
enum class TextureId : std::uint32_t { None = 0 };
enum class BufferId : std::uint32_t { None = 0 };
/// A colour target with its depth buffer.
enum class TargetId : std::uint32_t { None = 0 };

struct Capabilities {
  std::uint32_t deviceFlags = 0;  ///< kCapsHardwareTransformLight, kCapsPureDevice
  std::uint32_t maxSimultaneousTextures = kStages;
  std::uint32_t maxTextureWidth = kMaxTextureSide, maxTextureHeight = kMaxTextureSide;
  float maxPointSize = 64;
};

struct TextureDescription {
  std::uint32_t width = 0, height = 0;
  std::uint32_t levels = 1;
  Format format = Format::A8R8G8B8;
  bool renderTarget = false;
};

/// One draw call: primitives from memory or from a vertex buffer, under a state.
struct DrawPacket {
  TargetId target = TargetId::None;
  /// The state in force. It is the device's own and changes after the call: copy what is needed later.
  const State* state = nullptr;
  /// Grows whenever any value of the state changed: equal versions mean equal states.
  std::uint64_t stateVersion = 0;
  std::array<TextureId, kStages> textures{};
  PrimitiveType primitive = PrimitiveType::TriangleList;
  std::uint32_t primitiveCount = 0;
  std::uint32_t vertexCount = 0;        ///< that the primitives use, from firstVertex
  std::uint32_t vertexFormat = 0;       ///< flexible vertex format code
  std::uint32_t stride = 0;             ///< bytes from vertex to vertex, at least the format's size
  BufferId buffer = BufferId::None;     ///< the source when not None
  std::uint32_t firstVertex = 0;        ///< in the buffer
  std::span<const std::byte> vertices;  ///< the source otherwise: valid during the call only
};

struct PixelRect {
  std::uint32_t x = 0, y = 0, width = 0, height = 0;
};

/// A renderer. Calls come from one thread; work may be deferred until a result is asked for.
class BackEnd {
 public:
  virtual ~BackEnd() = default;
  virtual const Capabilities& capabilities() const = 0;

  /// A target with colour in the given format and at least 24 bits of depth; contents undefined until cleared.
  virtual TargetId createTarget(std::uint32_t width, std::uint32_t height, Format format) = 0;
  /// A target that draws into a level of a render-target texture, with a depth buffer of its own.
  virtual TargetId createTextureTarget(TextureId texture, std::uint32_t level) = 0;
  virtual void destroyTarget(TargetId target) = 0;

  virtual TextureId createTexture(const TextureDescription& description) = 0;
  virtual void destroyTexture(TextureId texture) = 0;
  /// Replaces a whole level by rows of pixels in the texture's format, tightly packed.
  virtual void uploadTexture(TextureId texture, std::uint32_t level, std::span<const std::byte> pixels) = 0;
  /// A whole level in the texture's format, tightly packed: what was uploaded or drawn, to the bit.
  virtual std::vector<std::byte> readTexture(TextureId texture, std::uint32_t level) = 0;

  virtual BufferId createBuffer(std::size_t bytes) = 0;
  virtual void destroyBuffer(BufferId buffer) = 0;
  virtual void uploadBuffer(BufferId buffer, std::size_t offset, std::span<const std::byte> bytes) = 0;
  /// The whole buffer, as it was uploaded; 0 where nothing was.
  virtual std::vector<std::byte> readBuffer(BufferId buffer) = 0;

  virtual void draw(const DrawPacket& packet) = 0;
  /// Clears inside the rectangles (whole target when there are none). @param flags kClearTarget, kClearDepth
  virtual void clear(TargetId target, std::span<const PixelRect> rects, std::uint32_t flags, std::uint32_t color,
                     float z) = 0;
  /// Pixels of a target in its own format, tightly packed; waits for all drawing on it.
  virtual std::vector<std::byte> readPixels(TargetId target, PixelRect rect) = 0;
  /// Overwrites pixels of a target, in its own format, tightly packed.
  virtual void writePixels(TargetId target, PixelRect rect, std::span<const std::byte> pixels) = 0;
  /// Copies a target's picture, as readPixels has it, to a level of a texture that is as large, rounded to the
  /// texture's format, and makes all smaller levels anew: each from the one above, before that is rounded. Levels.h has
  /// the arithmetic. The texture is not the one that the target draws into.
  virtual void copyToTexture(TargetId target, TextureId texture, std::uint32_t level) = 0;
  /// Finishes all drawing on the target and shows it when there is a visible window.
  virtual void present(TargetId target, Window* window) = 0;

  virtual const Statistics& statistics() const = 0;
  /// Keeps the spans of all work from now on, or stops to and forgets them.
  virtual void keepSpans(bool /*on*/) {}
  /// The spans that were kept since the last call.
  virtual std::vector<WorkSpan> takeSpans() { return {}; }
};

}  // namespace ql::device
