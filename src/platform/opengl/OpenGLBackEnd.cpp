#include "platform/opengl/OpenGLBackEnd.h"

#include "platform/device/DeviceError.h"
#include "platform/opengl/Batch.h"
#include "platform/opengl/Context.h"
#include "platform/opengl/Painter.h"
#include "platform/opengl/Presenter.h"
#include "platform/opengl/Resources.h"
#include "platform/opengl/TextureCopier.h"

#include <algorithm>
#include <array>
#include <memory>
#include <unordered_map>

namespace ql::opengl {
namespace {

using device::BufferId;
using device::PixelRect;
using device::TargetId;
using device::TextureId;

// Afterwards the context stays current only for calls that come in crowds; a picture's end lets go of it.
constexpr auto kKeep = CurrentContext::Afterwards::Keep;

class OpenGLBackEnd final : public device::BackEnd {
 public:
  explicit OpenGLBackEnd(std::unique_ptr<Context> context) : context_(std::move(context)) {
    const CurrentContext current(*context_);
    gpu_ = std::make_unique<Gpu>(calls_);
    GLint side = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &side);
    const auto largest = static_cast<std::uint32_t>(std::max(side, 1));
    capabilities_.deviceFlags = device::kCapsHardwareTransformLight;
    capabilities_.maxTextureWidth = std::min(capabilities_.maxTextureWidth, largest);
    capabilities_.maxTextureHeight = std::min(capabilities_.maxTextureHeight, largest);
  }
  ~OpenGLBackEnd() override {
    const CurrentContext current(*context_);
    gpu_.reset();
  }

  const device::Capabilities& capabilities() const override { return capabilities_; }
  const device::Statistics& statistics() const override { return statistics_; }
  const DriverCalls& driverCalls() const { return calls_; }

  TargetId createTarget(std::uint32_t width, std::uint32_t height, device::Format format) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    return add<TargetId>(gpu_->targets, std::make_unique<Target>(gpu_->shadow, width, height, format));
  }
  TargetId createTextureTarget(TextureId texture, std::uint32_t level) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    return add<TargetId>(gpu_->targets, std::make_unique<Target>(gpu_->shadow, gpu_->textures.at(texture), level));
  }
  void destroyTarget(TargetId target) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    gpu_->targets.erase(target);
  }

  TextureId createTexture(const device::TextureDescription& description) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    return add<TextureId>(gpu_->textures, std::make_shared<Texture>(gpu_->shadow, description));
  }
  void destroyTexture(TextureId texture) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    gpu_->textures.erase(texture);
  }
  void uploadTexture(TextureId texture, std::uint32_t level, std::span<const std::byte> pixels) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    gpu_->textures.at(texture)->upload(level, pixels);
  }
  std::vector<std::byte> readTexture(TextureId texture, std::uint32_t level) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    return gpu_->textures.at(texture)->read(level);
  }

  BufferId createBuffer(std::size_t bytes) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    return add<BufferId>(gpu_->buffers, gpu_->painter.makeBuffer(bytes));
  }
  void destroyBuffer(BufferId buffer) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    const auto at = gpu_->buffers.find(buffer);
    if (at == gpu_->buffers.end()) return;
    gpu_->painter.forgetBuffer(at->second.name());
    gpu_->buffers.erase(at);
  }
  void uploadBuffer(BufferId buffer, std::size_t offset, std::span<const std::byte> bytes) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    gpu_->painter.uploadBuffer(gpu_->buffers.at(buffer).name(), offset, bytes);
  }
  std::vector<std::byte> readBuffer(BufferId buffer) override {
    const CurrentContext current(*context_);
    return gpu_->painter.readBuffer(gpu_->buffers.at(buffer).name());
  }

  void draw(const device::DrawPacket& packet) override {
    ++statistics_.drawCalls;
    if (packet.primitive >= device::PrimitiveType::TriangleList) statistics_.triangles += packet.primitiveCount;
    if (packet.primitiveCount == 0) return;
    const Kind kind{packet.target,       packet.stateVersion, packet.textures,          packet.buffer,
                    packet.vertexFormat, packet.stride,       corners(packet.primitive)};
    const bool goesOn =
        gpu_->painter.waits() && kind == lastKind_ && packet.primitive != device::PrimitiveType::LineStrip;
    if (goesOn && gpu_->painter.drawMore(packet)) return;
    const CurrentContext current(*context_, kKeep);
    lastKind_ = repacks(packet) ? Kind{} : kind;
    std::array<Texture*, device::kStages> textures{};
    for (std::size_t i = 0; i < device::kStages; ++i)
      if (const auto at = gpu_->textures.find(packet.textures[i]); at != gpu_->textures.end())
        textures[i] = at->second.get();
    const GLuint buffer = packet.buffer == BufferId::None ? 0 : gpu_->buffers.at(packet.buffer).name();
    gpu_->painter.draw(packet, *gpu_->targets.at(packet.target), textures, buffer);
  }

  void clear(TargetId id, std::span<const PixelRect> rects, std::uint32_t flags, std::uint32_t color,
             float z) override {
    const CurrentContext current(*context_, kKeep);
    gpu_->painter.finish();
    Target& target = *gpu_->targets.at(id);
    const auto side = [](std::uint32_t v) { return static_cast<std::int32_t>(std::min(v, device::kMaxTargetSide)); };
    if (rects.empty()) target.clear({0, 0, side(target.width()), side(target.height())}, flags, color, z);
    for (const PixelRect& r : rects)
      target.clear({side(r.x), side(r.y), side(r.width), side(r.height)}, flags, color, z);
  }

  std::vector<std::byte> readPixels(TargetId id, PixelRect rect) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    const Target& target = *gpu_->targets.at(id);
    return encodePixels(target.format(), target.read(rect));
  }
  void writePixels(TargetId target, PixelRect rect, std::span<const std::byte> pixels) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    gpu_->targets.at(target)->write(rect, pixels);
  }

  void copyToTexture(TargetId target, TextureId texture, std::uint32_t level) override {
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    gpu_->copier.copy(*gpu_->targets.at(target), *gpu_->textures.at(texture), level);
  }

  void present(TargetId id, device::Window* window) override {
    Target& target = *gpu_->targets.at(id);
    const bool shows = window && window->visible() && !target.isTextureLevel();
    const bool direct = shows && prepareSurface(*window);
    std::vector<std::uint32_t> picture;
    {
      const CurrentContext current(*context_);
      gpu_->painter.finish();
      if (direct)
        drawInto(*window, target);
      else if (shows)
        picture = shownPicture(target);
      gpu_->painter.endFrame();
    }
    release(*context_);
    if (window && !picture.empty()) window->show({target.width(), target.height(), target.width(), picture.data()});
  }

 private:
  /// Everything that lives in the context.
  struct Gpu {
    explicit Gpu(DriverCalls& calls) : shadow(calls.states), painter(shadow, calls), copier(shadow), presenter(shadow) {
      shadow.start();
    }
    Shadow shadow;
    std::unordered_map<TextureId, std::shared_ptr<Texture>> textures;
    std::unordered_map<TargetId, std::unique_ptr<Target>> targets;
    std::unordered_map<BufferId, GlBuffer> buffers;
    Painter painter;
    TextureCopier copier;
    Presenter presenter;
  };

  /// Packets of one kind differ by their primitives alone.
  struct Kind {
    TargetId target{};
    std::uint64_t stateVersion = 0;
    std::array<TextureId, device::kStages> textures{};
    BufferId buffer{};
    std::uint32_t vertexFormat = 0, stride = 0, corners = 0;
    bool operator==(const Kind&) const = default;
  };

  template <class Id, class Table, class Value>
  Id add(Table& table, Value&& value) {
    const Id id{++lastId_};
    table.emplace(id, std::forward<Value>(value));
    return id;
  }
  /// Makes the surface of a window, once. @return false: its pictures must be read back
  bool prepareSurface(device::Window& window) {
    const device::XWindow place = context_->reachesWindows() ? window.onServer() : device::XWindow{};
    if (place.number == 0 || place.number == refused_) return false;
    window.appear();
    if (surface_ && surface_->window() == place.number) return true;
    const CurrentContext current(*context_);
    gpu_->painter.finish();
    surface_.reset();
    surface_ = WindowSurface::create(*context_, place);
    gpu_->shadow.forgetAreas();
    refused_ = surface_ ? 0 : place.number;
    return surface_ != nullptr;
  }
  void drawInto(device::Window& window, Target& target) {
    const device::Window::Size size = window.clientSize();
    if (size.width == 0 || size.height == 0) return;  // gone, or nothing of it to be seen
    if (surface_->bind()) {
      gpu_->presenter.draw(target, size, window.ramp());
      surface_->swap();
      ++calls_.pictures;
    }
    surface_->unbind();
  }
  static std::vector<std::uint32_t> shownPicture(const Target& target) {
    std::vector<std::uint32_t> picture = target.read({0, 0, target.width(), target.height()});
    // Blended colours of narrow formats are rounded only when somebody looks at them.
    if (device::bytesPerPixel(target.format()) == 2)
      picture = decodePixels(target.format(), encodePixels(target.format(), picture));
    return picture;
  }

  std::unique_ptr<Context> context_;
  std::unique_ptr<WindowSurface> surface_;  ///< of the window that was shown in last
  std::uint32_t refused_ = 0;               ///< number of a window that the driver cannot draw in
  DriverCalls calls_;
  device::Capabilities capabilities_;
  device::Statistics statistics_;
  std::uint32_t lastId_ = 0;
  Kind lastKind_;
  std::unique_ptr<Gpu> gpu_;
};

}  // namespace

std::shared_ptr<device::BackEnd> createBackEnd(const device::PresentParameters& parameters) {
  const bool forWindows = parameters.deviceWindow && parameters.deviceWindow->onServer().number != 0;
  return std::make_shared<OpenGLBackEnd>(Context::create(forWindows));
}

const DriverCalls& driverCalls(const device::BackEnd& backEnd) {
  return dynamic_cast<const OpenGLBackEnd&>(backEnd).driverCalls();
}

}  // namespace ql::opengl
