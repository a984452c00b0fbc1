#include "platform/software/SoftwareBackEnd.h"

#include "platform/device/Resources.h"
#include "platform/software/Buffer.h"
#include "platform/software/Passes.h"
#include "platform/software/Snapshots.h"
#include "platform/software/ViewSides.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <thread>
#include <unordered_map>

namespace ql::software {
namespace {

using device::BufferId;
using device::PixelRect;
using device::TargetId;
using device::TextureId;

/// What waits belongs to one target at a time: drawing on another one starts to carry it out. What is under way is
/// finished before anything else is carried out, and before its results are read or changed from here.
class SoftwareBackEnd final : public device::BackEnd {
 public:
  SoftwareBackEnd(unsigned threads, const KernelSet& kernels) : passes_(threads, kernels, statistics_) {}

  const device::Capabilities& capabilities() const override { return capabilities_; }

  TargetId createTarget(std::uint32_t width, std::uint32_t height, device::Format format) override {
    return add(std::make_unique<Target>(width, height, format));
  }
  TargetId createTextureTarget(TextureId texture, std::uint32_t level) override {
    return add(std::make_unique<Target>(textures_.at(texture), level));
  }
  void destroyTarget(TargetId target) override {
    finish(target);
    if (pending_ == target) pending_ = TargetId::None;
    targets_.erase(target);
  }

  TextureId createTexture(const device::TextureDescription& description) override {
    const TextureId id{++lastId_};
    textures_[id] = std::make_shared<Texture>(description);
    return id;
  }
  // Draws that wait keep the texture's contents, and so do they when it is uploaded again.
  void destroyTexture(TextureId texture) override { textures_.erase(texture); }
  void uploadTexture(TextureId id, std::uint32_t level, std::span<const std::byte> pixels) override {
    Texture& texture = *textures_.at(id);
    finish(texture);
    texture.upload(level, pixels);
  }
  std::vector<std::byte> readTexture(TextureId id, std::uint32_t level) override {
    const Texture& texture = *textures_.at(id);
    finish(texture);
    return texture.read(level);
  }

  BufferId createBuffer(std::size_t bytes) override {
    const BufferId id{++lastId_};
    buffers_.try_emplace(id, bytes);
    return id;
  }
  void destroyBuffer(BufferId buffer) override { buffers_.erase(buffer); }
  void uploadBuffer(BufferId id, std::size_t offset, std::span<const std::byte> bytes) override {
    buffers_.at(id).upload(offset, bytes);
  }
  std::vector<std::byte> readBuffer(BufferId id) override { return *buffers_.at(id).bytes(); }

  void draw(const device::DrawPacket& packet) override;
  void clear(TargetId target, std::span<const PixelRect> rects, std::uint32_t flags, std::uint32_t color,
             float z) override;
  std::vector<std::byte> readPixels(TargetId target, PixelRect rect) override;
  void writePixels(TargetId target, PixelRect rect, std::span<const std::byte> pixels) override;
  void copyToTexture(TargetId target, TextureId texture, std::uint32_t level) override;
  void present(TargetId target, device::Window* window) override;

  const device::Statistics& statistics() const override {
    passes_.settle();
    return statistics_;
  }
  void keepSpans(bool on) override {
    passes_.settle();
    passes_.meter().keepSpans(on);
  }
  std::vector<device::WorkSpan> takeSpans() override {
    passes_.settle();
    return passes_.meter().takeSpans();
  }

 private:
  TargetId add(std::unique_ptr<Target> target) {
    const TargetId id{++lastId_};
    targets_[id] = std::move(target);
    return id;
  }
  /// Makes a target the one that draws wait for.
  Target& begin(TargetId id) {
    Target& target = *targets_.at(id);
    if (pending_ != id) {
      start();
      pending_ = id;
      sides_.reset();
    }
    return target;
  }
  bool waits() { return pending_ != TargetId::None && !passes_.frame().empty(); }
  void flush() {
    if (waits()) passes_.finish(*targets_.at(pending_));
    forget();
  }
  /// @param copy of the target that draws wait for, made on the way; null: none
  void start(std::unique_ptr<TextureCopy> copy = nullptr) {
    if (waits()) passes_.start(*targets_.at(pending_), std::move(copy));
    forget();
  }
  /// Forgets what belongs to the frame that took draws.
  void forget() {
    pipeline_ = nullptr;
    snapshots_.clear();
    pipelineTextures_ = {};  // else the next upload would copy
  }
  void finish(TargetId id) {
    if (pending_ == id) flush();
    const Target& target = *targets_.at(id);
    if (passes_.drawOn(target)) passes_.settle();
    if (target.texture()) finish(*target.texture());
  }
  void finish(const Texture& texture) {
    if (pending_ != TargetId::None && targets_.at(pending_)->texture() == &texture) flush();
    if (passes_.drawOn(texture)) passes_.settle();
  }
  const Pipeline* pipelineFor(const device::DrawPacket& packet, const Target& target, bool white);
  bool outside(const device::DrawPacket& packet, const Target& target, const Buffer::Part& part);

  device::Capabilities capabilities_;
  device::Statistics statistics_;
  std::uint32_t lastId_ = 0;
  std::unordered_map<TargetId, std::unique_ptr<Target>> targets_;
  std::unordered_map<TextureId, std::shared_ptr<Texture>> textures_;
  std::unordered_map<BufferId, Buffer> buffers_;
  mutable Passes passes_;  ///< asking for statistics waits for them
  TargetId pending_ = TargetId::None;

  std::optional<ViewSides> sides_;  ///< of the state of the last draw that they were asked for, and of its target
  std::uint64_t sidesVersion_ = 0;

  Snapshots snapshots_;  ///< of the pipelines that wait
  // The pipeline of the last draw and what it was made from.
  const Pipeline* pipeline_ = nullptr;
  std::uint64_t stateVersion_ = 0;
  std::uint32_t vertexFormat_ = 0;
  bool white_ = false;
  std::array<std::shared_ptr<const TextureData>, device::kStages> pipelineTextures_;
};

const Pipeline* SoftwareBackEnd::pipelineFor(const device::DrawPacket& packet, const Target& target, bool white) {
  std::array<const Texture*, device::kStages> textures{};
  std::array<std::shared_ptr<const TextureData>, device::kStages> data;
  for (std::size_t i = 0; i < device::kStages; ++i) {
    if (packet.textures[i] == TextureId::None) continue;
    const auto at = textures_.find(packet.textures[i]);
    if (at == textures_.end()) continue;
    // A draw that reads what it draws on sees it as it was before.
    if (at->second.get() == target.texture()) start();
    textures[i] = at->second.get();
    data[i] = at->second->data();
  }
  if (pipeline_ && stateVersion_ == packet.stateVersion && vertexFormat_ == packet.vertexFormat && white_ == white &&
      data == pipelineTextures_)
    return pipeline_;
  stateVersion_ = packet.stateVersion;
  vertexFormat_ = packet.vertexFormat;
  white_ = white;
  std::array<const TextureData*, device::kStages> reads{};
  std::ranges::transform(data, reads.begin(), [](const auto& texture) { return texture.get(); });
  const Pipeline*& known = snapshots_.find(packet, reads, white);
  if (!known) {
    Pipeline& made = passes_.frame().addPipeline();
    makePipeline(packet, target, textures, white, made);
    passes_.frame().finish(made);
    known = &made;
  }
  pipeline_ = known;
  pipelineTextures_ = std::move(data);
  return pipeline_;
}

bool SoftwareBackEnd::outside(const device::DrawPacket& packet, const Target& target, const Buffer::Part& part) {
  const std::uint32_t fill = packet.state->render.fillMode;
  if (!part.bounds || (packet.vertexFormat & device::fvf::kXyzRhw) != 0 ||
      packet.primitive < device::PrimitiveType::TriangleList ||
      fill == static_cast<std::uint32_t>(device::FillMode::Point) ||
      fill == static_cast<std::uint32_t>(device::FillMode::Wireframe))
    return false;
  if (!sides_ || sidesVersion_ != packet.stateVersion) {
    sides_.emplace(*packet.state, target);
    sidesVersion_ = packet.stateVersion;
  }
  return sides_->outside(*part.bounds);
}

void SoftwareBackEnd::draw(const device::DrawPacket& packet) {
  const std::uint32_t triangles = packet.primitive >= device::PrimitiveType::TriangleList ? packet.primitiveCount : 0;
  ++statistics_.drawCalls;
  statistics_.triangles += triangles;
  if (packet.primitiveCount == 0) return;
  const Target& target = begin(packet.target);
  // Where all vertices are white, multiplying by their colours changes nothing.
  const std::int32_t color = packet.state->render.lighting == 0 ? diffuseOffset(packet.vertexFormat) : -1;
  bool white = false;
  if (packet.buffer == BufferId::None) {
    white = color >= 0 && allWhite(packet.vertices, packet.stride, color, packet.vertexCount);
  } else {
    const Buffer::Part& part = buffers_.at(packet.buffer).part(packet, color);
    if (outside(packet, target, part)) {
      statistics_.culled += triangles;
      return;
    }
    white = color >= 0 && part.white;
  }
  if (passes_.frame().full(target)) start();
  const Pipeline* pipeline = pipelineFor(packet, target, white);
  if (!pipeline->draws()) {
    statistics_.culled += triangles;
    return;
  }
  passes_.frame().draw(pipeline, packet,
                       packet.buffer == BufferId::None ? nullptr : buffers_.at(packet.buffer).bytes());
}

void SoftwareBackEnd::clear(TargetId id, std::span<const PixelRect> rects, std::uint32_t flags, std::uint32_t color,
                            float z) {
  const Target& target = begin(id);
  Clear clear;
  clear.color = (flags & device::kClearTarget) != 0;
  clear.depth = (flags & device::kClearDepth) != 0;
  clear.argb = device::toArgb(target.format(), device::fromArgb(target.format(), color));
  clear.z = static_cast<std::int32_t>(depthOf(z));
  clear.box = {0, 0, target.width(), target.height()};
  if (rects.empty()) passes_.frame().clear(clear);
  for (const PixelRect& rect : rects) {
    const auto side = [](std::uint32_t v) { return static_cast<std::int32_t>(std::min(v, device::kMaxTargetSide)); };
    clear.box =
        intersect({side(rect.x), side(rect.y), side(rect.x) + side(rect.width), side(rect.y) + side(rect.height)},
                  {0, 0, target.width(), target.height()});
    if (!clear.box.empty()) passes_.frame().clear(clear);
  }
}

std::vector<std::byte> SoftwareBackEnd::readPixels(TargetId id, PixelRect rect) {
  Target& target = *targets_.at(id);
  const Box area{static_cast<std::int32_t>(rect.x), static_cast<std::int32_t>(rect.y),
                 static_cast<std::int32_t>(rect.x + rect.width), static_cast<std::int32_t>(rect.y + rect.height)};
  if (pending_ == id && waits()) {
    passes_.finishArea(target, area);
    forget();
  } else {
    finish(id);
  }
  const FormatCodec codec(target.format());
  const std::size_t pitch = std::size_t{rect.width} * codec.bytes();
  std::vector<std::byte> out(pitch * rect.height);
  std::vector<std::uint32_t> row(rect.width);
  for (std::uint32_t y = 0; y < rect.height; ++y) {
    target.readRow(static_cast<std::int32_t>(rect.x), static_cast<std::int32_t>(rect.y + y), row);
    codec.encode(row, std::span(out).subspan(y * pitch, pitch));
  }
  return out;
}

void SoftwareBackEnd::writePixels(TargetId id, PixelRect rect, std::span<const std::byte> pixels) {
  finish(id);
  Target& target = *targets_.at(id);
  const FormatCodec codec(target.format());
  const std::size_t pitch = std::size_t{rect.width} * codec.bytes();
  const Target::Rows rows = target.beginWrite();
  for (std::uint32_t y = 0; y < rect.height; ++y) {
    const std::span<std::uint32_t> row(rows.first + (rect.y + y) * rows.pitch + rect.x, rect.width);
    codec.decode(pixels.subspan(y * pitch, pitch), row);
    for (std::uint32_t& pixel : row) pixel ^= rows.flip;
  }
  target.endWrite();
}

void SoftwareBackEnd::copyToTexture(TargetId id, TextureId textureId, std::uint32_t level) {
  const std::shared_ptr<Texture>& texture = textures_.at(textureId);
  finish(*texture);
  Target& target = *targets_.at(id);
  if (pending_ == id && waits()) {
    start(std::make_unique<TextureCopy>(target, texture, level));
  } else {
    TextureCopy copy(target, texture, level);
    passes_.copy(target, copy);
  }
}

void SoftwareBackEnd::present(TargetId id, device::Window* window) {
  finish(id);
  const Target& target = *targets_.at(id);
  if (!window || !window->visible() || target.texture()) return;
  const auto width = static_cast<std::uint32_t>(target.width()), height = static_cast<std::uint32_t>(target.height());
  window->show({width, height, width, target.picture()});
}

}  // namespace

std::unique_ptr<device::BackEnd> createBackEnd(const Options& options) {
  const unsigned threads = options.threads ? options.threads : std::max(std::thread::hardware_concurrency(), 1u);
  return std::make_unique<SoftwareBackEnd>(threads, kernelSet(options.kernels));
}

}  // namespace ql::software
