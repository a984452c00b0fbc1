/// @file
/// A back end without a renderer.
#pragma once

#include "platform/device/BackEnd.h"

#include <cstdint>
#include <map>
#include <vector>

namespace ql::recording {

/// Draws nothing and remembers what it was told: textures and buffers give back what was written, targets the colour of
/// their last clear and the pixels written since. Tests derive from it to look at packets.
class NullBackEnd : public device::BackEnd {
 public:
  const device::Capabilities& capabilities() const override { return capabilities_; }
  device::TargetId createTarget(std::uint32_t width, std::uint32_t height, device::Format format) override;
  device::TargetId createTextureTarget(device::TextureId texture, std::uint32_t level) override;
  void destroyTarget(device::TargetId target) override;
  device::TextureId createTexture(const device::TextureDescription& description) override;
  void destroyTexture(device::TextureId texture) override;
  void uploadTexture(device::TextureId texture, std::uint32_t level, std::span<const std::byte> pixels) override;
  std::vector<std::byte> readTexture(device::TextureId texture, std::uint32_t level) override;
  device::BufferId createBuffer(std::size_t bytes) override;
  void destroyBuffer(device::BufferId buffer) override;
  void uploadBuffer(device::BufferId buffer, std::size_t offset, std::span<const std::byte> bytes) override;
  std::vector<std::byte> readBuffer(device::BufferId buffer) override { return buffers_.at(buffer); }
  void draw(const device::DrawPacket& packet) override;
  void clear(device::TargetId target, std::span<const device::PixelRect> rects, std::uint32_t flags,
             std::uint32_t color, float z) override;
  std::vector<std::byte> readPixels(device::TargetId target, device::PixelRect rect) override;
  void writePixels(device::TargetId target, device::PixelRect rect, std::span<const std::byte> pixels) override;
  void copyToTexture(device::TargetId target, device::TextureId texture, std::uint32_t level) override;
  void present(device::TargetId target, device::Window* window) override;
  const device::Statistics& statistics() const override { return statistics_; }

  /// Whether every resource and target was destroyed again.
  bool empty() const { return textures_.empty() && buffers_.empty() && targets_.empty(); }

 protected:
  device::Capabilities capabilities_;

 private:
  struct Pixels {
    std::uint32_t width = 0, height = 0;
    std::size_t pixel = 0;  ///< bytes
    std::vector<std::byte> bytes;
    std::byte* row(const device::PixelRect& rect, std::size_t y);
  };
  struct Target {
    device::Format format{};
    device::TextureId texture{};  ///< none: own pixels
    std::uint32_t level = 0;
    Pixels own;
  };
  struct Texture {
    device::Format format{};
    std::vector<Pixels> levels;
  };
  Pixels& pixelsOf(Target& target);

  std::map<device::TargetId, Target> targets_;
  std::map<device::TextureId, Texture> textures_;
  std::map<device::BufferId, std::vector<std::byte>> buffers_;
  std::uint32_t lastId_ = 0;
  device::Statistics statistics_;
};

}  // namespace ql::recording
