#include "engine/DriverSettings.h"
#include "engine/Engine.h"
#include "engine/OpenTarget.h"
#include "platform/utility/TextureFiles.h"

#include <string>
#include <string_view>

namespace ql::engine {
namespace {

using device::Format;
using device::RenderState;
using device::StageState;

constexpr float kDefaultFarPlane = 4096;            // world units
constexpr float kDefaultFieldOfView = 3.1415f / 2;  // radians
constexpr float kNearPlane = 1;                     // world units
constexpr math::Vec3 kUp{0, 1, 0};
/// Maps normals from -1..1 to texture coordinates 0..1, v downwards.
constexpr math::Mat4 kSphereMap{0.5f, 0, 0, 0, 0, -0.5f, 0, 0, 0, 0, 1, 0, 0.5f, 0.5f, 0, 1};
constexpr device::Window::Size kOwnWindowSize{640, 480};
constexpr std::string_view kNoDevice =
    "Can't create the device. Please report it to the support of Quasarlens 8.\r\n"
    "NB : DirectX8 has a lot of compabitility problems. Check if your 3D card has new drivers compatible with "
    "DirectX8\r\n"
    "Please send the file debug8.txt with your report.";

/// The lines that a first setup and a resize write for the same steps.
struct SetupLines {
  std::string_view matrices, viewportSize, viewport, sphereMap, renderStates;
};
constexpr SetupLines kFirstSetup{
    "DEVICE INIT : Create Matrices", "DEVICE INIT : Viewport size (", "DEVICE INIT : Set the viewport...",
    "DEVICE INIT : Create Spherical environment mapping matrix.", "DEVICE INIT : Set RenderStates"};
constexpr SetupLines kResizeSetup{"DEVICE INIT : RE-Creating Matrices", "DEVICE INIT : Viewport Resized (",
                                  "DEVICE INIT : Re-Setting the viewport...",
                                  "DEVICE INIT : RE-Creating Spherical environment mapping matrix.",
                                  "DEVICE INIT : Re-Setting RenderStates"};

std::string text(std::uint32_t value) { return std::to_string(static_cast<std::int32_t>(value)); }
std::string text(Format format) { return text(static_cast<std::uint32_t>(format)); }

/// Runs a step of which an error must not end the initialisation; whether it succeeded.
template <class Step>
bool attempt(Step&& step) {
  try {
    step();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool depthFormatWorks(const EngineContext& context, const DriverSettings& settings, Format format) {
  bool works = false;
  attempt([&] {
    works = context.direct3D->checkDeviceFormat(settings.adapter, device::DeviceType::Hardware, settings.format,
                                                device::kUsageDepthStencil, device::ResourceType::Surface, format);
  });
  return works;
}

Format chooseDepthFormat(EngineContext& context, const DriverSettings& settings) {
  const bool has16 = depthFormatWorks(context, settings, Format::D16);
  context.log.write(has16 ? "DEVICE INIT : The 16bits Z-Buffer is present"
                          : "DEVICE INIT : The Z-Buffer format seems not be compatible with QL8 at the moment");
  const bool has32 = depthFormatWorks(context, settings, Format::D32);
  context.log.write(has32 ? "DEVICE INIT : The 32bits Z-Buffer is present" : "DEVICE INIT : No 32 bits ZBuffer");
  return has16 ? Format::D16 : Format::Unknown;
}

std::shared_ptr<device::Window> windowOf(EngineContext& context, std::intptr_t handle) {
  if (handle != kFullScreen && handle != kOwnWindow) return context.platform.display->adoptWindow(handle);
  device::Window& own = internalWindow(context);
  // Back from full screen the own window has an ordinary window's size again, not the desktop's.
  if (handle == kOwnWindow && context.fullScreen) own.setMode(false, kOwnWindowSize);
  return context.internalWindow;
}

void fillPresentParameters(EngineContext& context, const DriverSettings& settings, std::intptr_t handle, Format depth) {
  device::PresentParameters parameters;
  context.focusWindow = windowOf(context, handle);
  context.fullScreen = handle == kFullScreen;
  parameters.windowed = !context.fullScreen;
  parameters.autoDepthStencilFormat = depth;
  if (context.fullScreen) {
    parameters.backBufferWidth = static_cast<std::uint32_t>(settings.width);
    parameters.backBufferHeight = static_cast<std::uint32_t>(settings.height);
    parameters.backBufferFormat = settings.format;
  } else {
    const device::Window::Size client =
        context.focusWindow ? context.focusWindow->clientSize() : device::Window::Size{};
    parameters.backBufferWidth = client.width;
    parameters.backBufferHeight = client.height;
    parameters.backBufferFormat = static_cast<Format>(context.direct3D->getAdapterDisplayMode(settings.adapter).format);
  }
  context.presentParameters = parameters;
}

/// Logs what the device type can do. @return whether it transforms and lights in hardware
bool reportCapabilities(EngineContext& context, const DriverSettings& settings) {
  device::Capabilities caps{.deviceFlags = 0, .maxSimultaneousTextures = 0};
  attempt([&] { caps = context.direct3D->getDeviceCaps(settings.adapter, settings.deviceType); });
  const bool hardwareTransform = (caps.deviceFlags & device::kCapsHardwareTransformLight) != 0;
  if (hardwareTransform)
    context.log.write("DEVICE INIT : T&L Card detected. Creating the device with Hardware VertexProcessing");
  if ((caps.deviceFlags & device::kCapsPureDevice) != 0)
    context.log.write("DEVICE INIT : Pure device Card detected. QL supports pure devices.");
  context.log.write(
      caps.maxSimultaneousTextures > 1
          ? "DEVICE INIT : Your device supports Single pass Multitexturing. Pixel Shaders & Lightmapping will use it"
          : "DEVICE INIT : Your device doesn't support Single Pass Texturing. Pixel Shaders & LMapping will use "
            "Double-Pass.");
  return hardwareTransform;
}

/// The device of the chosen type, else of the reference type.
bool createDevice(EngineContext& context, const DriverSettings& settings, std::uint32_t behaviour) {
  const auto create = [&](device::DeviceType type, std::uint32_t flags) {
    return attempt([&] {
      context.device =
          context.direct3D->createDevice(settings.adapter, type, context.focusWindow, flags, context.presentParameters);
      context.deviceType = type;
      context.deviceCaps = context.device->capabilities();
      context.maxPointSize = context.deviceCaps.maxPointSize;
      context.countedWork = context.device->backEnd()->statistics();
    });
  };
  if (create(settings.deviceType, behaviour)) return true;
  if (settings.deviceType != device::DeviceType::Hardware) return false;
  context.log.write("DEVICE INIT ERROR : Try with the Reference Rasterizer (Software)");
  return create(device::DeviceType::Reference, device::kCreateSoftwareVertexProcessing);
}

void setMatrices(EngineContext& context, const SetupLines& lines) {
  context.log.write(lines.matrices);
  context.viewMatrix = math::lookAt({0, 0, 0}, {0, 0, 1}, kUp);
  context.worldMatrix = math::identity();
  if (context.farPlane == 0) context.farPlane = kDefaultFarPlane;
  if (context.fieldOfView == 0) context.fieldOfView = kDefaultFieldOfView;
  const std::uint32_t width = context.presentParameters.backBufferWidth,
                      height = context.presentParameters.backBufferHeight;
  context.log.write(std::string(lines.viewportSize) + text(width) + " " + text(height) + ")");
  context.viewport = {0, 0, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), 0, 1};
  context.aspectRatio = static_cast<float>(height) / static_cast<float>(width);
  context.projectionMatrix = math::perspective(context.fieldOfView, context.aspectRatio, kNearPlane, context.farPlane);
}

/// Matrices, viewport and states of a new or resized device. @param call makes one device call: it may swallow errors
template <class Call>
void setDefaults(EngineContext& context, const SetupLines& lines, Call&& call) {
  setMatrices(context, lines);
  device::Device& device = *context.device;
  context.log.write(lines.viewport);
  call([&] { device.setViewport(context.viewport); });
  call([&] { device.setTransform(device::Transform::Projection, context.projectionMatrix); });
  call([&] { device.setTransform(device::Transform::World, context.worldMatrix); });
  call([&] { device.setTransform(device::Transform::View, context.viewMatrix); });

  context.log.write(lines.sphereMap);
  context.sphereMapMatrix = kSphereMap;

  context.log.write(lines.renderStates);
  const auto stage = [&](std::uint32_t index, StageState state, std::uint32_t value) {
    call([&] { device.setTextureStageState(index, state, value); });
  };
  const auto render = [&](RenderState state, std::uint32_t value) {
    call([&] { device.setRenderState(state, value); });
  };
  constexpr auto kLinear = static_cast<std::uint32_t>(device::Filter::Linear);
  stage(0, StageState::MinFilter, kLinear);
  stage(0, StageState::MagFilter, kLinear);
  stage(1, StageState::MinFilter, kLinear);
  stage(1, StageState::MagFilter, kLinear);
  render(RenderState::Ambient, 0xFFFFFFFF);
  render(RenderState::FillMode, static_cast<std::uint32_t>(device::FillMode::Solid));
  render(RenderState::ZEnable, 1);
  render(RenderState::ZWriteEnable, 1);
  render(RenderState::AlphaBlendEnable, 0);
  render(RenderState::CullMode, static_cast<std::uint32_t>(device::CullMode::None));
  render(RenderState::ShadeMode, static_cast<std::uint32_t>(device::ShadeMode::Gouraud));
  render(RenderState::Lighting, 0);
  stage(0, StageState::TexCoordIndex, 0);
}

/// The format nearest to the one asked for that the device has 256 x 256 textures of.
Format nearestTextureFormat(const EngineContext& context, Format asked) {
  Format answer = asked;
  attempt([&] {
    answer =
        utility::checkTextureRequirements(*context.device, {.width = 256, .height = 256, .levels = 1, .format = asked})
            .format;
  });
  return answer;
}

void checkTextureFormats(EngineContext& context) {
  const auto ask = [&](std::string_view name, Format asked) {
    const Format answer = nearestTextureFormat(context, asked);
    context.log.write("TEXTURE REQUIREMENTS CHECKING : " + std::string(name) + (answer == asked ? " : Yes" : " : No"));
    return answer;
  };
  context.textureFormat = ask("D3DFMT_R5G6B5", Format::R5G6B5);
  if (context.textureFormat == Format::R5G6B5) {
    context.alphaTextureFormat = ask("D3DFMT_A1R5G6B5", Format::A4R4G4B4);
    return;
  }
  context.textureFormat = ask("D3DFMT_A8R8G8B8", Format::A8R8G8B8);
  if (context.textureFormat == Format::A8R8G8B8) return;
  context.log.write(
      "TEXTURE REQUIEREMENTS CHECKING : Quasarlens may have problems because your 3d card doesn't support the 16bits "
      "or 32bits texture mode ");
  context.log.write("TEXTURE REQUIEREMENTS CHECKING : Format that will be used " + text(context.textureFormat));
}

void createSystemFont(EngineContext& context) {
  context.systemFont = std::make_unique<utility::Font>(*context.device, context.internalFont);
}

}  // namespace

device::Window& internalWindow(EngineContext& context) {
  if (!context.internalWindow) context.internalWindow = context.platform.display->createWindow();
  return *context.internalWindow;
}

bool initialize(EngineContext& context, std::intptr_t windowHandle) {
  const DriverSettings settings = readDriverSettings(context.settings);
  const Format depth = chooseDepthFormat(context, settings);
  fillPresentParameters(context, settings, windowHandle, depth);
  const device::PresentParameters& parameters = context.presentParameters;
  context.log.write("DEVICE INIT : Create the device with " + text(parameters.backBufferWidth) + "x" +
                    text(parameters.backBufferHeight) + " ane the DX8 format " + text(parameters.backBufferFormat));
  const bool hardwareTransform = reportCapabilities(context, settings) && settings.hardwareTransform;

  // A former device goes first: two would share the window.
  endOpenTarget(context);
  context.systemFont.reset();
  context.device.reset();
  context.deviceReady = context.inFrame = false;
  if (!createDevice(
          context, settings,
          hardwareTransform ? device::kCreateHardwareVertexProcessing : device::kCreateSoftwareVertexProcessing)) {
    context.platform.display->messageBox("QL8", std::string(kNoDevice));
    return false;
  }
  context.deviceReady = true;
  context.log.write("DEVICE INIT : Device initialized without problem.");

  const auto tolerant = [](auto&& step) { attempt(step); };
  setDefaults(context, kFirstSetup, tolerant);
  context.cameraPosition = {0, 0, 0};
  context.cameraLookAt = {0, 0, 1};
  attempt([&] { context.deviceSteps.run(DeviceStage::Created); });
  checkTextureFormats(context);
  context.log.write("DEVICE INIT : Create the Quasarlens System Font");
  attempt([&] { createSystemFont(context); });
  context.log.write("DEVICE INIT : Initialization finished ...");
  return true;
}

bool resizeDevice(EngineContext& context) {
  if (!context.deviceReady || context.fullScreen || context.inFrame || !context.focusWindow) return false;
  const device::Window::Size client = context.focusWindow->clientSize();
  if (client.width == 0 || client.height == 0) return false;
  endOpenTarget(context);
  device::PresentParameters parameters = context.presentParameters;
  parameters.deviceWindow = context.focusWindow;
  parameters.windowed = true;
  parameters.backBufferWidth = client.width;
  parameters.backBufferHeight = client.height;
  context.device->reset(parameters);
  context.presentParameters = parameters;
  setDefaults(context, kResizeSetup, [](auto&& step) { step(); });
  createSystemFont(context);
  context.deviceSteps.run(DeviceStage::Resized);
  return true;
}

void resetDevice(EngineContext& context) {
  endOpenTarget(context);
  context.requireDevice().reset(context.presentParameters);
}

}  // namespace ql::engine
