/// @file
/// Changing device states for a while.
#pragma once

#include "platform/device/Device.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace ql::utility {

/// Sets states and puts back at its end what they were. A state that has the wanted value already costs no call.
class StateGuard {
 public:
  explicit StateGuard(device::Device& device) : device_(device) {}
  ~StateGuard();
  StateGuard(const StateGuard&) = delete;
  StateGuard& operator=(const StateGuard&) = delete;

  void render(device::RenderState state, std::uint32_t value);
  void stage(std::uint32_t stage, device::StageState state, std::uint32_t value);
  /// The texture of stage 0.
  void texture(std::shared_ptr<device::Texture> texture);
  void vertexFormat(std::uint32_t format);

  /// States for textured rectangles over the picture: transformed vertices whose colours multiply the texture, blended
  /// by alpha, always in front, without fog, tests or culling. @param filter of the texture
  void overlay(std::shared_ptr<device::Texture> texture, device::Filter filter);

 private:
  device::Device& device_;
  std::map<device::RenderState, std::uint32_t> render_;
  std::map<std::pair<std::uint32_t, device::StageState>, std::uint32_t> stages_;
  std::optional<std::shared_ptr<device::Texture>> texture_;
  std::optional<std::uint32_t> vertexFormat_;
};

/// The vertex format of overlay rectangles: position with 1/w, diffuse, specular, one coordinate pair.
inline constexpr std::uint32_t kOverlayFormat = 0x1C4;

}  // namespace ql::utility
