/// @file
/// A display without a screen, and a back end that keeps the packets it is given. For tests that link platform_device
/// and platform_recording.
#pragma once

#include "platform/device/Direct3D.h"
#include "platform/recording/NullBackEnd.h"

#include <memory>
#include <string>
#include <vector>

namespace ql::test {

struct FakeWindow : device::Window {
  Size size{640, 480};
  int pumped = 0;
  std::vector<std::pair<bool, Size>> modes;
  Size clientSize() const override { return size; }
  bool visible() const override { return false; }
  void show(const device::Picture&) override {}
  void pump() override { ++pumped; }
  void setTitle(const std::string&) override {}
  bool closeRequested() const override { return false; }
  void setMode(bool fullScreen, Size wanted) override { modes.emplace_back(fullScreen, wanted); }
};

struct FakeDisplay : device::Display {
  device::DisplayMode desktop{1024, 768, 60, 22};
  std::uint32_t adapterCount() const override { return 1; }
  std::string adapterName(std::uint32_t) const override { return "fake"; }
  std::vector<device::DisplayMode> modes(std::uint32_t) const override { return {desktop}; }
  device::DisplayMode desktopMode(std::uint32_t) const override { return desktop; }
  std::shared_ptr<device::Window> createWindow() override { return std::make_shared<FakeWindow>(); }
  std::shared_ptr<device::Window> adoptWindow(std::intptr_t) override { return nullptr; }
  void pump() override {}
  void messageBox(const std::string&, const std::string&) override {}
};

/// Keeps every draw and clear with the state that was in force.
struct SpyBackEnd : recording::NullBackEnd {
  struct Draw {
    device::DrawPacket packet;
    device::State state;
    std::vector<std::byte> vertices;
  };
  struct Clear {
    std::vector<device::PixelRect> rects;
    std::uint32_t flags;
  };
  std::vector<Draw> draws;
  std::vector<Clear> clears;
  device::Capabilities& caps() { return capabilities_; }
  void draw(const device::DrawPacket& packet) override {
    draws.push_back({packet, *packet.state, {packet.vertices.begin(), packet.vertices.end()}});
    draws.back().packet.vertices = {};
    NullBackEnd::draw(packet);
  }
  void clear(device::TargetId target, std::span<const device::PixelRect> rects, std::uint32_t flags,
             std::uint32_t color, float z) override {
    clears.push_back({{rects.begin(), rects.end()}, flags});
    NullBackEnd::clear(target, rects, flags, color, z);
  }
};

inline device::PresentParameters parameters(std::uint32_t width, std::uint32_t height,
                                            device::Format format = device::Format::X8R8G8B8) {
  device::PresentParameters p;
  p.backBufferWidth = width;
  p.backBufferHeight = height;
  p.backBufferFormat = format;
  return p;
}

}  // namespace ql::test
