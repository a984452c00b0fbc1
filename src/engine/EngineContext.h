/// @file
/// The state that the whole engine shares.
#pragma once

#include "archive/PakArchive.h"
#include "diagnostics/Log.h"
#include "engine/EngineError.h"
#include "math/Matrix.h"
#include "platform/device/Direct3D.h"
#include "platform/fonts/FontFace.h"
#include "platform/host/Clock.h"
#include "platform/host/Settings.h"
#include "platform/utility/Font.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ql::engine {

/// Where in a frame's end a registered step runs, in this order.
enum class FrameStage : std::uint8_t {
  Effects,    ///< fades and flashes, inside the scene
  Cursor,     ///< the mouse cursor, inside the scene
  Input,      ///< sampling of devices, after presenting
  EndOfFrame  ///< resets, last
};
/// What happened to the device, for whoever keeps something on it.
enum class DeviceStage : std::uint8_t {
  Created,  ///< a new device has its states; registries start afresh
  Resized   ///< the device has new targets: the host's RestoreObjectsAfterResize
};
/// What releasing the engine does before it gives up the device, in this order.
enum class ReleaseStage : std::uint8_t { Materials, Textures, Screen, Scene, Level, Landscape };

/// Steps that subsystems register with the layers below them. They run by stage, within a stage in order of
/// registration; a step may register further steps.
template <class Stage, std::size_t kCount>
class StepTable {
 public:
  void add(Stage stage, std::function<void()> step) { steps_[index(stage)].push_back(std::move(step)); }
  void run(Stage stage) const {
    for (std::size_t i = 0; i < steps_[index(stage)].size(); ++i) {
      const std::function<void()> step = steps_[index(stage)][i];  // the list may grow under it
      step();
    }
  }

 private:
  static constexpr std::size_t index(Stage stage) { return static_cast<std::size_t>(stage); }
  std::array<std::vector<std::function<void()>>, kCount> steps_;
};

/// What the last finished frame drew.
struct FrameStatistics {
  std::uint32_t faces = 0;  ///< level faces drawn, each counted once
  device::Statistics work;  ///< the device's
};

/// Height of the ground under a point, for whoever walks on it; the landscape provides it.
class GroundHeight {
 public:
  virtual ~GroundHeight() = default;
  virtual float height(float x, float z) const = 0;
};

/// Everything that the machine offers, handed in so that a test makes its own.
struct Platform {
  std::shared_ptr<device::Display> display;
  std::map<device::DeviceType, device::BackEndFactory> backEnds;
  host::TickSource ticks = host::systemTicks;
  std::filesystem::path logFile = diagnostics::Log::defaultPath();
};

/// The engine-wide state. Its spine members are plain fields; what belongs to a subsystem is a struct of that
/// subsystem, made on first use and reached by its type. A new engine object starts with a new context.
struct EngineContext {
  explicit EngineContext(Platform machine);
  ~EngineContext();
  EngineContext(const EngineContext&) = delete;
  EngineContext& operator=(const EngineContext&) = delete;

  // The machine.
  Platform platform;
  diagnostics::Log log;
  archive::PakArchive pak;
  host::Settings settings;  ///< application "Quasarlens8", section "Driver"

  // Device.
  std::unique_ptr<device::Direct3D> direct3D;
  std::shared_ptr<device::Device> device;
  device::PresentParameters presentParameters;
  std::shared_ptr<device::Window> internalWindow;  ///< made on first use
  std::shared_ptr<device::Window> focusWindow;
  bool fullScreen = false, deviceReady = false;
  bool inFrame = false;  ///< between clear and renderToScreen
  device::DeviceType deviceType = device::DeviceType::Hardware;
  device::Capabilities deviceCaps;
  float maxPointSize = 0;
  device::Format textureFormat = device::Format::Unknown, alphaTextureFormat = device::Format::Unknown;
  fonts::FontRequest internalFont;  ///< the font of the engine's own window, which the system font is made from
  std::unique_ptr<utility::Font> systemFont;

  // View.
  math::Mat4 viewMatrix = math::identity(), projectionMatrix = math::identity(), worldMatrix = math::identity();
  math::Mat4 sphereMapMatrix = math::identity();
  float fieldOfView = 0;  ///< vertical, radians; 0 until set
  float farPlane = 0;     ///< world units; 0 until set
  float aspectRatio = 0;  ///< height / width
  math::Viewport viewport;
  std::array<math::Plane, 6> frustumPlanes{};  ///< left, right, top, bottom, near, far; of the previous frame
  math::Vec3 cameraPosition, cameraLookAt{0, 0, 1};
  float cameraRoll = 0;  ///< degrees

  // Frame.
  std::int32_t backgroundColor = 0;
  std::int32_t elapsedMs = 0, frameCount = 0, lastTick = 0, lastFpsTick = 0;
  float framesPerSecond = 0;
  FrameStatistics statistics;  ///< of the last finished frame
  std::uint32_t facesThisFrame = 0;
  device::Statistics countedWork;  ///< the device's counts when the last frame finished

  // Flags and queries.
  bool console = false, displayFps = false, fogEnabled = false;
  math::Vec3 lastHitNormal, lastHitPoint;
  float collisionPrecision = 0, pickingPrecision = 0;
  const GroundHeight* ground = nullptr;

  /// Draws the 2D background over a cleared frame, when a subsystem provides one.
  std::function<void()> drawBackground;
  StepTable<FrameStage, 4> frameSteps;
  StepTable<DeviceStage, 2> deviceSteps;
  StepTable<ReleaseStage, 6> releaseSteps;

  std::uint32_t ticks() const { return platform.ticks(); }
  /// The device. @throws EngineError 91 before Initialize
  device::Device& requireDevice() const;

  /// The state of a subsystem, created on first use.
  template <class T>
  T& get() {
    std::shared_ptr<void>& slot = subsystems_[std::type_index(typeid(T))];
    if (!slot) slot = std::make_shared<T>();
    return *static_cast<T*>(slot.get());
  }

 private:
  std::unordered_map<std::type_index, std::shared_ptr<void>> subsystems_;
};

}  // namespace ql::engine
