/// @file
/// The rendering device: all fixed-function state, checked, over one back end.
#pragma once

#include "platform/device/BackEnd.h"
#include "platform/device/CallSink.h"
#include "platform/device/DeviceError.h"
#include "platform/device/Gamma.h"
#include "platform/device/Resources.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace ql::device {

/// How a device presents.
struct PresentParameters {
  std::uint32_t backBufferWidth = 0, backBufferHeight = 0;
  Format backBufferFormat = Format::Unknown;
  std::uint32_t backBufferCount = 1;
  std::uint32_t multiSampleType = 0;
  std::uint32_t swapEffect = 3;
  std::shared_ptr<Window> deviceWindow;
  bool windowed = true;
  bool enableAutoDepthStencil = true;
  Format autoDepthStencilFormat = Format::Unknown;  ///< Unknown still gets a depth buffer
  std::uint32_t flags = 0, fullScreenRefreshRate = 0, fullScreenPresentationInterval = 0;
};

/// One device. Every call checks its values, notes them for the sink when one is set, and throws DeviceError when it
/// fails; every state stays in force until it is set again. A state of a known number takes any value and gives it
/// back, but a value that means nothing (compare function 9, a fog end that is not a number) leaves the drawing as it
/// was. Calls come from one thread.
class Device {
 public:
  Device(std::shared_ptr<BackEnd> backEnd, DeviceType type, const PresentParameters& parameters);
  ~Device();
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  DeviceType type() const;
  const Capabilities& capabilities() const;
  const PresentParameters& presentParameters() const;
  const std::shared_ptr<BackEnd>& backEnd() const;
  /// Watches every call; null stops watching. What the device has already is not told: see describe.
  void setCallSink(CallSink* sink);
  /// Tells a sink all that brings a new device to where this one is: effects that make and fill its resources, calls
  /// that set its states. What stands in depth buffers is left out, so ask between frames.
  void describe(CallSink& sink);

  // Frame.
  void clear(std::span<const PixelRect> rects, std::uint32_t flags, std::uint32_t color, float z,
             std::uint32_t stencil);
  void beginScene();
  void endScene();
  /// Finishes the frame and shows it in the device's window.
  void present();
  /// Makes new targets for new parameters; resources and states stay.
  void reset(const PresentParameters& parameters);

  // State.
  void setTransform(Transform which, const math::Mat4& matrix);
  math::Mat4 getTransform(Transform which) const;
  /// @throws DeviceError invalid call: empty, outside the target, or depths outside 0 to 1
  void setViewport(const math::Viewport& viewport);
  math::Viewport getViewport() const;
  /// @throws DeviceError invalid call: a number that is no state, here and below
  void setRenderState(RenderState state, std::uint32_t value);
  std::uint32_t getRenderState(RenderState state) const;
  void setTextureStageState(std::uint32_t stage, StageState state, std::uint32_t value);
  std::uint32_t getTextureStageState(std::uint32_t stage, StageState state) const;
  /// Null draws untextured.
  void setTexture(std::uint32_t stage, std::shared_ptr<Texture> texture);
  std::shared_ptr<Texture> getTexture(std::uint32_t stage) const;
  void setMaterial(const Material& material);
  Material getMaterial() const;
  void setLight(std::uint32_t index, const Light& light);
  Light getLight(std::uint32_t index) const;
  void lightEnable(std::uint32_t index, bool enable);
  bool getLightEnable(std::uint32_t index) const;
  /// A flexible vertex format code.
  void setVertexShader(std::uint32_t vertexFormat);
  std::uint32_t getVertexShader() const;
  /// Output values of the display: of what present shows, in full screen and in windows; targets keep their colours.
  void setGammaRamp(const GammaRamp& ramp);
  GammaRamp getGammaRamp() const;

  // Drawing, inside beginScene and endScene. Draws of nothing are accepted.
  void drawPrimitiveUP(PrimitiveType type, std::uint32_t primitiveCount, std::span<const std::byte> vertices,
                       std::uint32_t stride);
  std::shared_ptr<VertexBuffer> createVertexBuffer(std::size_t bytes, std::uint32_t usage, std::uint32_t vertexFormat,
                                                   Pool pool);
  void setStreamSource(std::uint32_t stream, std::shared_ptr<VertexBuffer> buffer, std::uint32_t stride);
  void drawPrimitive(PrimitiveType type, std::uint32_t firstVertex, std::uint32_t primitiveCount);

  // Surfaces.
  std::shared_ptr<Surface> getBackBuffer(std::uint32_t index);
  std::shared_ptr<Surface> createImageSurface(std::uint32_t width, std::uint32_t height, Format format);
  /// Copies rectangles (the whole source when there are none) to points of the destination (by default where they are
  /// in the source); formats must be equal and everything must lie inside.
  void copyRects(const std::shared_ptr<Surface>& source, std::span<const PixelRect> rects,
                 const std::shared_ptr<Surface>& destination, std::span<const std::array<std::uint32_t, 2>> points);
  /// @param levels 0 makes a full chain
  std::shared_ptr<Texture> createTexture(std::uint32_t width, std::uint32_t height, std::uint32_t levels,
                                         std::uint32_t usage, Format format, Pool pool);

  // Targets beside the back buffer, for drawing onto textures.
  /// A target with colours of its own.
  TargetId createTarget(std::uint32_t width, std::uint32_t height, Format format);
  /// A target on a level of a render-target texture, which must outlive it.
  TargetId createTextureTarget(const std::shared_ptr<Texture>& texture, std::uint32_t level);
  /// @throws DeviceError invalid call: no such target, here and below
  void destroyTarget(TargetId target);
  /// Overwrites all colours of a target, tightly packed in its format.
  void writeTarget(TargetId target, std::span<const std::byte> pixels);
  /// Copies a target's picture to a level of a texture that is as large, rounded to its format, and makes the texture's
  /// smaller levels anew. Nothing waits for it.
  /// @throws DeviceError invalid call: no such target, no texture of this device, a level of another size, or the
  /// texture that the target draws into
  void copyTarget(TargetId target, const std::shared_ptr<Texture>& texture, std::uint32_t level);
  /// Directs drawing to a target of the caller's (render-to-surface); none returns to the back buffer. The viewport
  /// becomes the whole target.
  void setRenderTarget(TargetId target, std::uint32_t width, std::uint32_t height);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// Number of vertices that a number of primitives uses.
std::uint64_t vertexCount(PrimitiveType type, std::uint64_t primitiveCount);
/// Size in bytes of a vertex of a flexible vertex format code. @throws DeviceError for codes that contradict themselves
std::uint32_t vertexSize(std::uint32_t vertexFormat);

}  // namespace ql::device
