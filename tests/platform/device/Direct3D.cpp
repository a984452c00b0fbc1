// The root object: format checks, capabilities, the making of devices.
#include "platform/device/Direct3D.h"

#include "platform/recording/Recorder.h"
#include "support/FakeDisplay.h"

#include <gtest/gtest.h>

using namespace ql::device;
using ql::test::parameters;

namespace {

struct RootObject : ::testing::Test {
  std::shared_ptr<ql::test::FakeDisplay> display = std::make_shared<ql::test::FakeDisplay>();
  std::shared_ptr<ql::test::FakeWindow> window = std::make_shared<ql::test::FakeWindow>();
  int made = 0;
  Direct3D direct3D{display, {{DeviceType::Reference, [this](const PresentParameters&) {
                                 ++made;
                                 return std::make_shared<ql::test::SpyBackEnd>();
                               }}}};
};

TEST_F(RootObject, FormatTable) {
  struct Row {
    Format adapter;
    std::uint32_t usage;
    ResourceType resource;
    Format format;
    bool supported;
  };
  constexpr auto kSurface = ResourceType::Surface, kTexture = ResourceType::Texture;
  const Row rows[] = {{Format::R5G6B5, 2, kSurface, Format::D16, true},
                      {Format::A8R8G8B8, 2, kSurface, Format::D32, true},
                      {Format::X8R8G8B8, 2, kSurface, Format::D24S8, true},
                      {Format::X8R8G8B8, 2, kSurface, Format::R5G6B5, false},
                      {Format::L8, 2, kSurface, Format::D16, false},
                      {Format::R5G6B5, 2, kTexture, Format::D16, false},
                      {Format::R5G6B5, 0, kTexture, Format::R8G8B8, false},
                      {Format::R5G6B5, 0, kTexture, Format::A4R4G4B4, true},
                      {Format::R5G6B5, 0, kTexture, Format::P8, false},
                      {Format::R5G6B5, 1, kTexture, Format::A4R4G4B4, false},
                      {Format::R5G6B5, 1, kTexture, Format::R5G6B5, true},
                      {Format::R5G6B5, 3, kTexture, Format::R5G6B5, false},
                      {Format::R5G6B5, 0, ResourceType::VertexBuffer, Format::R5G6B5, false}};
  for (const Row& row : rows)
    for (const DeviceType type : {DeviceType::Hardware, DeviceType::Reference})
      EXPECT_EQ(direct3D.checkDeviceFormat(0, type, row.adapter, row.usage, row.resource, row.format), row.supported)
          << static_cast<int>(row.format) << " usage " << row.usage;
}

TEST_F(RootObject, WhatCreateDeviceRefuses) {
  struct Row {
    const char* name;
    std::uint32_t adapter;
    DeviceType type;
    std::uint32_t flags;
    PresentParameters parameters;
    std::uint32_t code;  // 0: made
  };
  PresentParameters full = parameters(16384, 2, Format::R5G6B5);
  full.windowed = false;
  const Row rows[] = {
      {"window", 0, DeviceType::Reference, 0x20, parameters(64, 48), 0},
      {"window of its client size", 0, DeviceType::Reference, 0x20, parameters(0, 0, Format::Unknown), 0},
      {"full screen of any size", 0, DeviceType::Reference, 0x20, full, 0},
      {"another adapter", 1, DeviceType::Reference, 0x20, parameters(64, 48), kErrorInvalidCall},
      {"no such device", 0, DeviceType::Hardware, 0x20, parameters(64, 48), kErrorNotAvailable},
      {"window of another format", 0, DeviceType::Reference, 0x20, parameters(64, 48, Format::R5G6B5),
       kErrorInvalidCall},
      {"too large", 0, DeviceType::Reference, 0x20, parameters(64, 16385), kErrorInvalidCall},
      {"no vertex processing", 0, DeviceType::Reference, 0, parameters(64, 48), kErrorInvalidCall},
      {"both kinds", 0, DeviceType::Reference, 0x60, parameters(64, 48), kErrorInvalidCall},
      {"hardware processing that is not there", 0, DeviceType::Reference, 0x40, parameters(64, 48), kErrorInvalidCall},
  };
  for (const Row& row : rows) {
    std::uint32_t code = 0;
    try {
      const auto device = direct3D.createDevice(row.adapter, row.type, window, row.flags, row.parameters);
      EXPECT_EQ(device->presentParameters().deviceWindow, window);
      EXPECT_GT(device->presentParameters().backBufferWidth, 0u);
    } catch (const DeviceError& error) {
      code = error.code;
    }
    EXPECT_EQ(code, row.code) << row.name;
  }
  EXPECT_TRUE(window->modes.at(2).first) << "full screen";
  EXPECT_EQ(window->modes.at(1).second.width, 640u);
}

TEST_F(RootObject, CapabilitiesNeedOneBackEndOnly) {
  direct3D.getDeviceCaps(0, DeviceType::Reference);
  direct3D.getDeviceCaps(0, DeviceType::Reference);
  EXPECT_EQ(made, 1);
  EXPECT_THROW(direct3D.getDeviceCaps(0, DeviceType::Hardware), DeviceError);
}

TEST_F(RootObject, CallsAreRecordedInOrderWithTheirValues) {
  ql::recording::Recorder recorder;
  direct3D.setCallSink(&recorder);
  direct3D.getDeviceCaps(0, DeviceType::Reference);
  const auto device = direct3D.createDevice(0, DeviceType::Reference, window, 0x20, parameters(64, 48));
  recorder.clear();
  const auto texture = device->createTexture(4, 4, 1, 0, Format::R5G6B5, Pool::Managed);
  device->clear({}, 3, 0xFF102030, 1.0f, 0);
  device->beginScene();
  device->setTexture(0, texture);
  device->setTexture(1, nullptr);
  device->setRenderState(RenderState::Ambient, 0xFFFFFFFF);
  device->setTextureStageState(0, StageState::MinFilter, 2);
  device->setVertexShader(0x1C4);
  device->setTransform(Transform::World, ql::math::identity());
  const std::array<std::byte, 96> triangle{};
  device->drawPrimitiveUP(PrimitiveType::TriangleList, 1, triangle, 32);
  EXPECT_THROW(device->drawPrimitive(PrimitiveType::TriangleList, 0, 1), DeviceError);
  device->endScene();
  device->present();
  const std::vector<std::string> expected = {
      "CreateTexture(4, 4, 1, 0, 23, 1)",
      "Clear(0, #0:cbf29ce484222325, 3, 4279246896, 1, 0)",
      "BeginScene()",
      "SetTexture(0, " + std::to_string(static_cast<std::uint32_t>(texture->id())) + ")",
      "SetTexture(1, 0)",
      "SetRenderState(139, 4294967295)",
      "SetTextureStageState(0, 17, 2)",
      "SetVertexShader(452)",
  };
  const auto lines = recorder.lines();
  ASSERT_EQ(lines.size(), expected.size() + 5);
  EXPECT_TRUE(std::equal(expected.begin(), expected.end(), lines.begin())) << ::testing::PrintToString(lines);
  const auto& transform = recorder.calls()[expected.size()];
  EXPECT_EQ(transform.values[0], "256");
  ASSERT_EQ(transform.blobs.size(), 1u);
  EXPECT_EQ(transform.blobs[0].size(), 64u);
  EXPECT_EQ(recorder.lines({"DrawPrimitive", "Present"}),
            (std::vector<std::string>{"DrawPrimitive(4, 0, 1)", "Present()"}));
  EXPECT_EQ(window->pumped, 1);
}

}  // namespace
