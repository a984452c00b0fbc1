/// @file
/// The demo walk as a renderer is told it: the packets of every frame.
#pragma once

#include "platform/device/BackEnd.h"
#include "platform/recording/NullBackEnd.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace ql::bench {

inline constexpr std::uint32_t kWidth = 1024, kHeight = 768;

/// A packet with what it refers to.
struct Draw {
  device::DrawPacket packet;                   ///< its state and vertices are below
  std::shared_ptr<const device::State> state;  ///< shared by the packets of one version
  std::vector<std::byte> vertices;
};
struct Frame {
  std::uint32_t clearColor = 0;
  std::vector<Draw> draws;
};
struct Texture {
  device::TextureDescription description;
  std::vector<std::vector<std::byte>> levels;
};

/// Everything that the frames need.
struct Walk {
  std::map<device::TextureId, Texture> textures;
  std::map<device::BufferId, std::vector<std::byte>> buffers;
  std::vector<Frame> frames;  ///< those that draw anything
};

/// Walks through the demo level with the engine on the reference device, and takes down what its renderer is told.
Walk demoWalk();

}  // namespace ql::bench
