#include "platform/recording/Replayer.h"

#include "platform/recording/ReplayValues.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace ql::recording {

using namespace device;
using host::Fault;

namespace {

constexpr std::uint64_t kTexelBytes = 4, kTargetBytes = 8;  // as renderers hold them: with depth

/// Calls that leave a device as it is, or whose effects are recorded with more detail.
constexpr std::array<std::string_view, 9> kPassedOver{"CheckDeviceFormat",  "CopyRects",     "CreateDevice",
                                                      "CreateImageSurface", "CreateTexture", "CreateVertexBuffer",
                                                      "GetBackBuffer",      "GetDeviceCaps", "Reset"};

std::uint64_t area(std::uint32_t width, std::uint32_t height) { return std::uint64_t{width} * height; }

}  // namespace

struct Replayer::Impl {
  using Step = void (Impl::*)(ReplayValues&);
  struct Target {
    TargetId id{};
    std::shared_ptr<Texture> texture;  ///< that it draws onto
    std::uint32_t width = 0, height = 0;
    std::uint64_t cost = 0;
  };

  TraceCursor cursor;
  DeviceType type;
  BackEndFactory makeBackEnd;
  Limits limits;
  Counts counts;

  std::unique_ptr<Device> device;
  // By their numbers in the trace.
  std::unordered_map<std::uint32_t, std::shared_ptr<Texture>> textures;
  std::unordered_map<std::uint32_t, std::shared_ptr<VertexBuffer>> buffers;
  std::unordered_map<std::uint32_t, Target> targets;
  std::uint32_t target = 0;  ///< that is drawn into
  std::uint64_t used = 0, backBufferCost = 0;

  Impl(const Trace& trace, DeviceType deviceType, BackEndFactory make, const Limits& most)
      : cursor(trace), type(deviceType), makeBackEnd(std::move(make)), limits(most) {}
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
  ~Impl() { drop(); }

  void drop() {
    if (device)
      for (const auto& [number, made] : targets) device->destroyTarget(made.id);
    targets.clear();
    textures.clear();
    buffers.clear();
    device.reset();
    target = 0;
    used = backBufferCost = 0;
  }

  void reserve(std::uint64_t bytes) {
    if (bytes > limits.resourceBytes - used)
      throw host::FileFault(Fault::TooLarge, "resources of a trace", 0, used + bytes, limits.resourceBytes);
    used += bytes;
  }

  /// What a trace refers to may have been refused here.
  template <class Map>
  auto& find(Map& map, std::uint32_t number) {
    const auto found = map.find(number);
    if (found == map.end()) throw DeviceError(kErrorNotFound, "no such resource");
    return found->second;
  }
  template <class Map>
  void requireFree(const Map& map, std::uint32_t number, const ReplayValues& v) {
    if (number == 0 || map.contains(number)) v.fault(Fault::BadReference, number, 0);
  }

  // Devices.
  PresentParameters parametersOf(ReplayValues& v) {
    v.u32();  // the kind that it was recorded on
    PresentParameters wanted;
    wanted.backBufferWidth = v.u32();
    wanted.backBufferHeight = v.u32();
    wanted.backBufferFormat = v.code<Format>();
    if (wanted.backBufferWidth > kMaxTargetSide || wanted.backBufferHeight > kMaxTargetSide)
      v.fault(Fault::BadSize, std::max(wanted.backBufferWidth, wanted.backBufferHeight), kMaxTargetSide);
    const std::uint64_t before = std::exchange(backBufferCost, 0);
    used -= before;
    reserve(area(wanted.backBufferWidth, wanted.backBufferHeight) * kTargetBytes);
    backBufferCost = area(wanted.backBufferWidth, wanted.backBufferHeight) * kTargetBytes;
    return wanted;
  }
  void deviceCreated(ReplayValues& v) {
    drop();
    const PresentParameters wanted = parametersOf(v);
    device = std::make_unique<Device>(makeBackEnd(wanted), type, wanted);
  }
  void deviceReset(ReplayValues& v) {
    device->reset(parametersOf(v));
    target = 0;
  }

  // Resources.
  static std::uint64_t costOf(const TextureDescription& made) {
    return area(made.width, made.height) * kTexelBytes * (made.levels > 1 ? 2 : 1);
  }
  void textureCreated(ReplayValues& v) {
    const std::uint32_t number = v.u32();
    requireFree(textures, number, v);
    TextureDescription wanted{v.u32(), v.u32(), v.u32(), v.code<Format>(), v.boolean()};
    wanted.levels = std::max(wanted.levels, 1u);
    reserve(costOf(wanted));
    try {
      textures[number] =
          device->createTexture(wanted.width, wanted.height, wanted.levels,
                                wanted.renderTarget ? kUsageRenderTarget : 0, wanted.format, Pool::Default);
    } catch (...) {
      used -= costOf(wanted);
      textures.erase(number);
      throw;
    }
  }
  void textureWritten(ReplayValues& v) {
    Texture& texture = *find(textures, v.u32());
    const std::uint32_t level = v.u32();
    texture.writeLevel(level, v.bytes());
  }
  void textureDestroyed(ReplayValues& v) {
    const std::uint32_t number = v.u32();
    used -= costOf(find(textures, number)->description());
    textures.erase(number);
  }
  void bufferCreated(ReplayValues& v) {
    const std::uint32_t number = v.u32(), size = v.u32(), format = v.u32();
    requireFree(buffers, number, v);
    reserve(size);
    try {
      buffers[number] = device->createVertexBuffer(size, 0, format, Pool::Default);
    } catch (...) {
      used -= size;
      buffers.erase(number);
      throw;
    }
  }
  void bufferWritten(ReplayValues& v) {
    VertexBuffer& buffer = *find(buffers, v.u32());
    const std::uint32_t offset = v.u32();
    buffer.write(offset, v.bytes());
  }
  void bufferDestroyed(ReplayValues& v) {
    const std::uint32_t number = v.u32();
    used -= find(buffers, number)->size();
    buffers.erase(number);
  }
  void targetCreated(ReplayValues& v) {
    const std::uint32_t number = v.u32(), width = v.u32(), height = v.u32();
    requireFree(targets, number, v);
    const auto format = v.code<Format>();
    if (width > kMaxTargetSide || height > kMaxTargetSide)
      v.fault(Fault::BadSize, std::max(width, height), kMaxTargetSide);
    keepTarget(number, {{}, nullptr, width, height, area(width, height) * kTargetBytes},
               [&] { return device->createTarget(width, height, format); });
  }
  void textureTargetCreated(ReplayValues& v) {
    const std::uint32_t number = v.u32();
    requireFree(targets, number, v);
    const std::shared_ptr<Texture> texture = find(textures, v.u32());
    const std::uint32_t level = v.u32();
    const SurfaceDescription size = texture->levelDescription(level);
    keepTarget(number, {{}, texture, size.width, size.height, area(size.width, size.height) * kTargetBytes},
               [&] { return device->createTextureTarget(texture, level); });
  }
  template <class Make>
  void keepTarget(std::uint32_t number, Target made, Make&& make) {
    reserve(made.cost);
    try {
      made.id = make();
    } catch (...) {
      used -= made.cost;
      throw;
    }
    targets.emplace(number, std::move(made));
  }
  void targetWritten(ReplayValues& v) {
    const std::uint32_t number = v.u32();
    const PixelRect rect{v.u32(), v.u32(), v.u32(), v.u32()};
    const auto pixels = v.bytes();
    if (number != 0) {
      device->writeTarget(find(targets, number).id, pixels);
      return;
    }
    const std::shared_ptr<Surface> surface = device->getBackBuffer(0);
    const LockedRect locked = surface->lock(rect);  // checks it
    if (locked.bytes.size() != pixels.size()) v.fault(Fault::BadSize, pixels.size(), locked.bytes.size());
    std::ranges::copy(pixels, locked.bytes.begin());
    surface->unlock();
  }
  void targetDestroyed(ReplayValues& v) {
    const std::uint32_t number = v.u32();
    const Target made = find(targets, number);
    if (target == number) device->setRenderTarget(TargetId::None, 0, 0);
    if (target == number) target = 0;
    targets.erase(number);
    used -= made.cost;
    device->destroyTarget(made.id);
  }

  // Calls.
  void clear(ReplayValues& v) {
    v.u32();
    const std::vector<PixelRect> rects = v.table<PixelRect>();
    const std::uint32_t flags = v.u32(), color = v.u32();
    const float z = v.real();
    device->clear(rects, flags, color, z, v.u32());
  }
  void beginScene(ReplayValues&) { device->beginScene(); }
  void endScene(ReplayValues&) { device->endScene(); }
  void present(ReplayValues&) { device->present(); }
  void setTransform(ReplayValues& v) {
    const auto which = v.code<Transform>();
    device->setTransform(which, v.structure<math::Mat4>());
  }
  void setViewport(ReplayValues& v) {
    math::Viewport view;
    view.x = v.i32();
    view.y = v.i32();
    view.width = v.i32();
    view.height = v.i32();
    view.minZ = v.real();
    view.maxZ = v.real();
    device->setViewport(view);
  }
  void setRenderState(ReplayValues& v) {
    const auto state = v.code<RenderState>();
    device->setRenderState(state, v.u32());
  }
  void setTextureStageState(ReplayValues& v) {
    const std::uint32_t stage = v.u32();
    const auto state = v.code<StageState>();
    device->setTextureStageState(stage, state, v.u32());
  }
  void setTexture(ReplayValues& v) {
    const std::uint32_t stage = v.u32(), number = v.u32();
    device->setTexture(stage, number == 0 ? nullptr : find(textures, number));
  }
  void setMaterial(ReplayValues& v) { device->setMaterial(v.structure<Material>()); }
  void setLight(ReplayValues& v) {
    const std::uint32_t index = v.u32();
    device->setLight(index, v.structure<Light>());
  }
  void lightEnable(ReplayValues& v) {
    const std::uint32_t index = v.u32();
    device->lightEnable(index, v.boolean());
  }
  void setVertexShader(ReplayValues& v) { device->setVertexShader(v.u32()); }
  void setGammaRamp(ReplayValues& v) { device->setGammaRamp(v.structure<GammaRamp>()); }
  void drawPrimitiveUP(ReplayValues& v) {
    const auto primitive = v.code<PrimitiveType>();
    const std::uint32_t count = v.u32();
    const auto vertices = v.bytes();
    device->drawPrimitiveUP(primitive, count, vertices, v.u32());
  }
  void setStreamSource(ReplayValues& v) {
    const std::uint32_t stream = v.u32(), number = v.u32(), stride = v.u32();
    device->setStreamSource(stream, number == 0 ? nullptr : find(buffers, number), stride);
  }
  void drawPrimitive(ReplayValues& v) {
    const auto primitive = v.code<PrimitiveType>();
    const std::uint32_t first = v.u32(), count = v.u32();
    device->drawPrimitive(primitive, first, count);
  }
  void setRenderTarget(ReplayValues& v) {
    const std::uint32_t number = v.u32();
    if (number == 0) {
      device->setRenderTarget(TargetId::None, 0, 0);
    } else {
      // The size that it was made with: nothing may be drawn outside.
      const Target& to = find(targets, number);
      device->setRenderTarget(to.id, to.width, to.height);
    }
    target = number;
  }

  void copyTarget(ReplayValues& v) {
    const TargetId from = find(targets, v.u32()).id;
    const std::shared_ptr<Texture> to = find(textures, v.u32());
    device->copyTarget(from, to, v.u32());
  }

  static Step stepOf(const TraceRecord& record);
  void perform(const TraceRecord& record);
};

Replayer::Impl::Step Replayer::Impl::stepOf(const TraceRecord& record) {
  static const std::unordered_map<std::string_view, Step> calls{
      {"Clear", &Impl::clear},
      {"BeginScene", &Impl::beginScene},
      {"EndScene", &Impl::endScene},
      {"Present", &Impl::present},
      {"SetTransform", &Impl::setTransform},
      {"SetViewport", &Impl::setViewport},
      {"SetRenderState", &Impl::setRenderState},
      {"SetTextureStageState", &Impl::setTextureStageState},
      {"SetTexture", &Impl::setTexture},
      {"SetMaterial", &Impl::setMaterial},
      {"SetLight", &Impl::setLight},
      {"LightEnable", &Impl::lightEnable},
      {"SetVertexShader", &Impl::setVertexShader},
      {"SetGammaRamp", &Impl::setGammaRamp},
      {"DrawPrimitiveUP", &Impl::drawPrimitiveUP},
      {"SetStreamSource", &Impl::setStreamSource},
      {"DrawPrimitive", &Impl::drawPrimitive},
      {"SetRenderTarget", &Impl::setRenderTarget},
      {"CopyTarget", &Impl::copyTarget},
  };
  static const std::unordered_map<std::string_view, Step> effects{
      {"DeviceCreated", &Impl::deviceCreated},       {"DeviceReset", &Impl::deviceReset},
      {"TextureCreated", &Impl::textureCreated},     {"TextureWritten", &Impl::textureWritten},
      {"TextureDestroyed", &Impl::textureDestroyed}, {"BufferCreated", &Impl::bufferCreated},
      {"BufferWritten", &Impl::bufferWritten},       {"BufferDestroyed", &Impl::bufferDestroyed},
      {"TargetCreated", &Impl::targetCreated},       {"TextureTargetCreated", &Impl::textureTargetCreated},
      {"TargetWritten", &Impl::targetWritten},       {"TargetDestroyed", &Impl::targetDestroyed},
  };
  const auto& table = record.origin == Origin::Call ? calls : effects;
  const auto found = table.find(record.name);
  return found == table.end() ? nullptr : found->second;
}

void Replayer::Impl::perform(const TraceRecord& record) {
  const Step step = stepOf(record);
  if (!step) {
    if (record.origin == Origin::Effect || std::ranges::find(kPassedOver, record.name) == kPassedOver.end())
      ++counts.unknown;
    return;
  }
  ReplayValues values(cursor, record);
  if (step == &Impl::deviceCreated) return deviceCreated(values);
  if (!device) values.fault(Fault::BadReference, 0, 0);
  ++counts.calls;
  try {
    (this->*step)(values);
  } catch (const DeviceError&) {
    ++counts.refused;
  }
}

Replayer::Replayer(const Trace& trace, DeviceType type, BackEndFactory makeBackEnd, const Limits& limits)
    : impl_(std::make_unique<Impl>(trace, type, std::move(makeBackEnd), limits)) {}

Replayer::~Replayer() = default;

bool Replayer::nextFrame() {
  while (const TraceRecord* record = impl_->cursor.next()) {
    impl_->perform(*record);
    if (record->origin == Origin::Call && record->name == kFrameEnd) return true;
  }
  return false;
}

FramePicture Replayer::picture() const {
  FramePicture out;
  if (!impl_->device) return out;
  const std::shared_ptr<Surface> surface = impl_->device->getBackBuffer(0);
  const SurfaceDescription size = surface->description();
  out = {size.width, size.height, std::vector<std::uint32_t>(std::size_t{size.width} * size.height)};
  toArgb(size.format, surface->read({0, 0, size.width, size.height}), out.pixels);
  return out;
}

const Replayer::Counts& Replayer::counts() const { return impl_->counts; }

}  // namespace ql::recording
