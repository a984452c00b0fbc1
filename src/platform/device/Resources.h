/// @file
/// Textures, surfaces and vertex buffers of a device.
#pragma once

#include "platform/device/BackEnd.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace ql::device {

class Device;
struct Watch;

/// Bytes of one pixel of a format. @throws DeviceError invalid call for formats that no surface has
std::uint32_t bytesPerPixel(Format format);

/// What surfaces of a format can be; the same for every device.
bool isTextureFormat(Format format);
bool isTargetFormat(Format format);
bool isDepthFormat(Format format);
/// Whether the format stores alpha.
bool hasAlpha(Format format);

/// One pixel from a format's value to 0xAARRGGBB (missing alpha is 255) and back (the nearest value of each channel).
std::uint32_t toArgb(Format format, std::uint32_t value);
std::uint32_t fromArgb(Format format, std::uint32_t argb);

/// The same for rows of pixels, as many as there are colours. @throws DeviceError invalid call: sizes that disagree
void toArgb(Format format, std::span<const std::byte> pixels, std::span<std::uint32_t> argb);
void fromArgb(Format format, std::span<const std::uint32_t> argb, std::span<std::byte> pixels);

struct SurfaceDescription {
  std::uint32_t width = 0, height = 0;
  Format format = Format::Unknown;
};

struct LockedRect {
  std::uint32_t pitch = 0;     ///< bytes from row to row
  std::span<std::byte> bytes;  ///< rows from the top, from the locked rectangle's first pixel
};

/// The number of levels of a full mip chain, down to 1 × 1.
std::uint32_t fullLevelCount(std::uint32_t width, std::uint32_t height);

/// A picture that the device can copy: an image in system memory, a texture's level, or the back buffer.
class Surface {
 public:
  virtual ~Surface() = default;
  virtual SurfaceDescription description() const = 0;
  /// Gives access to the pixels until unlock; the whole surface without a rectangle.
  /// @throws DeviceError invalid call: locked already, or a rectangle outside
  LockedRect lock(std::optional<PixelRect> rect = {}, bool readOnly = false);
  /// Writes changed pixels back. @throws DeviceError invalid call: not locked
  void unlock();
  bool locked() const { return lock_.has_value(); }

  /// Pixels of a rectangle, tightly packed in the surface's format. The rectangle lies inside.
  virtual std::vector<std::byte> read(PixelRect rect) = 0;
  virtual void write(PixelRect rect, std::span<const std::byte> pixels) = 0;

 private:
  struct Lock {
    PixelRect rect;
    std::vector<std::byte> pixels;
    bool readOnly = false;
  };
  std::optional<Lock> lock_;
};

/// A texture with its mip levels. Pixels live in the back end; reading a level gives back what was written.
class Texture {
 public:
  /// @param watch of the device that makes it
  Texture(std::shared_ptr<BackEnd> backEnd, const TextureDescription& description, std::shared_ptr<Watch> watch);
  ~Texture();
  Texture(const Texture&) = delete;
  Texture& operator=(const Texture&) = delete;

  TextureId id() const { return id_; }
  const TextureDescription& description() const { return description_; }
  std::uint32_t levelCount() const { return description_.levels; }
  const std::shared_ptr<BackEnd>& backEnd() const { return backEnd_; }
  /// Size and format of a level. @throws DeviceError invalid call: no such level (the operations below too)
  SurfaceDescription levelDescription(std::uint32_t level) const;
  /// Replaces a level by tightly packed rows in the texture's format. @throws DeviceError invalid call: another size
  void writeLevel(std::uint32_t level, std::span<const std::byte> pixels);
  std::vector<std::byte> readLevel(std::uint32_t level) const;

 private:
  std::shared_ptr<BackEnd> backEnd_;
  TextureDescription description_;
  std::shared_ptr<Watch> watch_;
  TextureId id_;
};

/// The surface of a texture's level; keeps the texture alive.
std::shared_ptr<Surface> surfaceLevel(std::shared_ptr<Texture> texture, std::uint32_t level);

/// Vertices in the device's memory.
class VertexBuffer {
 public:
  VertexBuffer(std::shared_ptr<BackEnd> backEnd, std::size_t bytes, std::uint32_t vertexFormat,
               std::shared_ptr<Watch> watch);
  ~VertexBuffer();
  VertexBuffer(const VertexBuffer&) = delete;
  VertexBuffer& operator=(const VertexBuffer&) = delete;

  BufferId id() const { return id_; }
  std::size_t size() const { return size_; }
  const std::shared_ptr<BackEnd>& backEnd() const { return backEnd_; }
  std::uint32_t vertexFormat() const { return vertexFormat_; }
  /// Copies bytes into the buffer. @throws DeviceError invalid call when they do not fit
  void write(std::size_t offset, std::span<const std::byte> bytes);

 private:
  std::shared_ptr<BackEnd> backEnd_;
  std::size_t size_;
  std::uint32_t vertexFormat_;
  std::shared_ptr<Watch> watch_;
  BufferId id_;
};

}  // namespace ql::device
