#include "platform/device/Device.h"
#include "platform/device/DeviceImpl.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace ql::device {

/// Completes a packet whose source is set and hands it on, when it draws anything.
void Device::Impl::draw(PrimitiveType primitive, std::uint32_t primitiveCount, DrawPacket& packet) {
  packet.target = target;
  packet.state = &state;
  packet.stateVersion = stateVersion;
  for (std::uint32_t stage = 0; stage < kStages; ++stage)
    packet.textures[stage] = textures[stage] ? textures[stage]->id() : TextureId::None;
  packet.primitive = primitive;
  packet.primitiveCount = primitiveCount;
  packet.vertexFormat = vertexFormat;
  backEnd->draw(packet);
}

void Device::drawPrimitiveUP(PrimitiveType type, std::uint32_t primitiveCount, std::span<const std::byte> vertices,
                             std::uint32_t stride) {
  Impl& d = *impl_;
  d.note("DrawPrimitiveUP", type, primitiveCount, vertices, stride);
  if (!d.inScene) invalidCall("draw outside a scene");
  if (d.vertexFormat == 0) invalidCall("draw without a vertex format");
  const std::uint64_t count = vertexCount(type, primitiveCount);
  if (stride < d.vertexBytes)
    invalidCall("stride " + number(stride) + ": the vertex format has " + number(d.vertexBytes) + " bytes");
  if (count == 0) return;
  // The last vertex needs its own bytes only, not a whole stride.
  const std::uint64_t needed = (count - 1) * stride + d.vertexBytes;
  if (count > std::numeric_limits<std::uint32_t>::max() || needed > vertices.size())
    invalidCall(number(primitiveCount) + " primitives need " + number(needed) + " bytes of vertices, there are " +
                number(vertices.size()));
  DrawPacket packet;
  packet.vertexCount = static_cast<std::uint32_t>(count);
  packet.stride = stride;
  packet.vertices = vertices.first(static_cast<std::size_t>(needed));
  d.draw(type, primitiveCount, packet);
}

std::shared_ptr<VertexBuffer> Device::createVertexBuffer(std::size_t bytes, std::uint32_t usage,
                                                         std::uint32_t vertexFormat, Pool pool) {
  impl_->note("CreateVertexBuffer", bytes, usage, vertexFormat, pool);
  if (bytes == 0 || bytes > std::numeric_limits<std::uint32_t>::max())
    invalidCall("vertex buffer of " + number(bytes) + " bytes");
  if (vertexFormat != 0) vertexSize(vertexFormat);
  return std::make_shared<VertexBuffer>(impl_->backEnd, bytes, vertexFormat, impl_->watch);
}

void Device::setStreamSource(std::uint32_t stream, std::shared_ptr<VertexBuffer> buffer, std::uint32_t stride) {
  impl_->note("SetStreamSource", stream, buffer ? buffer->id() : BufferId::None, stride);
  if (stream != 0) invalidCall("no vertex stream " + number(stream));
  if (buffer && buffer->backEnd() != impl_->backEnd) invalidCall("a vertex buffer of another device");
  impl_->stream = std::move(buffer);
  impl_->streamStride = stride;
}

void Device::drawPrimitive(PrimitiveType type, std::uint32_t firstVertex, std::uint32_t primitiveCount) {
  Impl& d = *impl_;
  d.note("DrawPrimitive", type, firstVertex, primitiveCount);
  if (!d.inScene) invalidCall("draw outside a scene");
  if (d.vertexFormat == 0) invalidCall("draw without a vertex format");
  const std::uint64_t count = vertexCount(type, primitiveCount);
  if (!d.stream) invalidCall("draw without a stream source");
  if (d.streamStride < d.vertexBytes)
    invalidCall("stride " + number(d.streamStride) + ": the vertex format has " + number(d.vertexBytes) + " bytes");
  if (count == 0) return;
  // Fewer than 2^34 vertices of fewer than 2^32 bytes: the product can pass 64 bits, so divide instead.
  const std::uint64_t room =
      d.stream->size() < d.vertexBytes ? 0 : (d.stream->size() - d.vertexBytes) / d.streamStride + 1;
  if (firstVertex + count > room)
    invalidCall("vertices " + number(firstVertex) + " to " + number(firstVertex + count - 1) +
                " of a buffer that has " + number(room));
  DrawPacket packet;
  packet.vertexCount = static_cast<std::uint32_t>(count);
  packet.stride = d.streamStride;
  packet.buffer = d.stream->id();
  packet.firstVertex = firstVertex;
  d.draw(type, primitiveCount, packet);
}

}  // namespace ql::device
