#include "platform/device/Resources.h"

#include "platform/device/DeviceError.h"
#include "platform/device/Watch.h"

#include <algorithm>
#include <string>
#include <utility>

namespace ql::device {
namespace {

void requireBytes(std::size_t got, std::uint64_t needed, const char* what) {
  if (got != needed)
    throw DeviceError(kErrorInvalidCall,
                      std::string(what) + ": " + std::to_string(got) + " bytes instead of " + std::to_string(needed));
}

class TextureSurface final : public Surface {
 public:
  TextureSurface(std::shared_ptr<Texture> texture, std::uint32_t level) : texture_(std::move(texture)), level_(level) {}
  SurfaceDescription description() const override { return texture_->levelDescription(level_); }

  std::vector<std::byte> read(PixelRect rect) override {
    const SurfaceDescription whole = description();
    std::vector<std::byte> pixels = texture_->readLevel(level_);
    if (rect.width == whole.width && rect.height == whole.height) return pixels;
    const std::size_t pixel = bytesPerPixel(whole.format), row = rect.width * pixel, pitch = whole.width * pixel;
    std::vector<std::byte> out(row * rect.height);
    for (std::size_t y = 0; y < rect.height; ++y)
      std::copy_n(pixels.data() + (rect.y + y) * pitch + rect.x * pixel, row, out.data() + y * row);
    return out;
  }

  void write(PixelRect rect, std::span<const std::byte> pixels) override {
    const SurfaceDescription whole = description();
    const std::size_t pixel = bytesPerPixel(whole.format), row = rect.width * pixel, pitch = whole.width * pixel;
    requireBytes(pixels.size(), std::uint64_t{row} * rect.height, "surface write");
    if (rect.width == whole.width && rect.height == whole.height) return texture_->writeLevel(level_, pixels);
    std::vector<std::byte> all = texture_->readLevel(level_);
    for (std::size_t y = 0; y < rect.height; ++y)
      std::copy_n(pixels.data() + y * row, row, all.data() + (rect.y + y) * pitch + rect.x * pixel);
    texture_->writeLevel(level_, all);
  }

 private:
  std::shared_ptr<Texture> texture_;
  std::uint32_t level_;
};

}  // namespace

LockedRect Surface::lock(std::optional<PixelRect> rect, bool readOnly) {
  const SurfaceDescription whole = description();
  const PixelRect area = rect.value_or(PixelRect{0, 0, whole.width, whole.height});
  if (lock_) throw DeviceError(kErrorInvalidCall, "the surface is locked already");
  if (area.width == 0 || area.height == 0 || area.x >= whole.width || area.y >= whole.height ||
      area.width > whole.width - area.x || area.height > whole.height - area.y)
    throw DeviceError(kErrorInvalidCall, "lock of a rectangle outside the surface's " + std::to_string(whole.width) +
                                             " x " + std::to_string(whole.height) + " pixels");
  lock_ = Lock{area, read(area), readOnly};
  return {area.width * bytesPerPixel(whole.format), lock_->pixels};
}

void Surface::unlock() {
  if (!lock_) throw DeviceError(kErrorInvalidCall, "the surface is not locked");
  const Lock done = std::move(*lock_);
  lock_.reset();
  if (!done.readOnly) write(done.rect, done.pixels);
}

Texture::Texture(std::shared_ptr<BackEnd> backEnd, const TextureDescription& description, std::shared_ptr<Watch> watch)
    : backEnd_(std::move(backEnd)),
      description_(description),
      watch_(std::move(watch)),
      id_(backEnd_->createTexture(description)) {
  watch_->textures[id_] = this;
  tellTexture(watch_->sink, id_, description_);
}

Texture::~Texture() {
  backEnd_->destroyTexture(id_);
  watch_->textures.erase(id_);
  watch_->effect("TextureDestroyed", id_);
}

SurfaceDescription Texture::levelDescription(std::uint32_t level) const {
  if (level >= description_.levels)
    throw DeviceError(kErrorInvalidCall,
                      "texture level " + std::to_string(level) + " of " + std::to_string(description_.levels));
  return {std::max(description_.width >> level, 1u), std::max(description_.height >> level, 1u), description_.format};
}

void Texture::writeLevel(std::uint32_t level, std::span<const std::byte> pixels) {
  const SurfaceDescription size = levelDescription(level);
  requireBytes(pixels.size(), std::uint64_t{size.width} * size.height * bytesPerPixel(size.format), "texture level");
  backEnd_->uploadTexture(id_, level, pixels);
  watch_->effect("TextureWritten", id_, level, pixels);
}

std::vector<std::byte> Texture::readLevel(std::uint32_t level) const {
  levelDescription(level);
  return backEnd_->readTexture(id_, level);
}

std::shared_ptr<Surface> surfaceLevel(std::shared_ptr<Texture> texture, std::uint32_t level) {
  if (!texture) throw DeviceError(kErrorInvalidCall, "a surface of no texture");
  texture->levelDescription(level);
  return std::make_shared<TextureSurface>(std::move(texture), level);
}

VertexBuffer::VertexBuffer(std::shared_ptr<BackEnd> backEnd, std::size_t bytes, std::uint32_t vertexFormat,
                           std::shared_ptr<Watch> watch)
    : backEnd_(std::move(backEnd)),
      size_(bytes),
      vertexFormat_(vertexFormat),
      watch_(std::move(watch)),
      id_(backEnd_->createBuffer(bytes)) {
  watch_->buffers[id_] = this;
  watch_->effect("BufferCreated", id_, size_, vertexFormat_);
}

VertexBuffer::~VertexBuffer() {
  backEnd_->destroyBuffer(id_);
  watch_->buffers.erase(id_);
  watch_->effect("BufferDestroyed", id_);
}

void VertexBuffer::write(std::size_t offset, std::span<const std::byte> bytes) {
  if (offset > size_ || bytes.size() > size_ - offset)
    throw DeviceError(kErrorInvalidCall, std::to_string(bytes.size()) + " bytes at " + std::to_string(offset) +
                                             " of a vertex buffer of " + std::to_string(size_));
  if (bytes.empty()) return;
  backEnd_->uploadBuffer(id_, offset, bytes);
  watch_->effect("BufferWritten", id_, offset, bytes);
}

}  // namespace ql::device
