// What reaches a draw: values, versions, sources.
#include "platform/device/Device.h"
#include "support/FakeDisplay.h"

#include <bit>
#include <cmath>
#include <set>

#include <gtest/gtest.h>

using namespace ql::device;
using ql::test::parameters;

namespace {

constexpr std::array<std::byte, 320> kVertices{};

struct DeviceState : ::testing::Test {
  std::shared_ptr<ql::test::SpyBackEnd> spy = std::make_shared<ql::test::SpyBackEnd>();
  Device device{spy, DeviceType::Reference, parameters(64, 48)};
  const ql::test::SpyBackEnd::Draw& draw() {
    device.setVertexShader(0x142);
    device.beginScene();
    device.drawPrimitiveUP(PrimitiveType::TriangleList, 1, kVertices, 24);
    device.endScene();
    return spy->draws.back();
  }
};

TEST_F(DeviceState, EveryStateReachesItsOwnFieldOfADraw) {
  // Values that mean something to every state, different from the one before.
  State expected;
  std::set<std::uint32_t> numbers;
  forEachRenderState(expected.render, [&](RenderState number, const char* name, std::uint32_t& field) {
    EXPECT_TRUE(numbers.insert(static_cast<std::uint32_t>(number)).second) << name;
    field = field == 1 ? 2 : 1;
    device.setRenderState(number, field);
    EXPECT_EQ(device.getRenderState(number), field) << name;
  });
  for (std::uint32_t stage = 0; stage < kStageStates; ++stage) {
    StageStates values;
    StageStates& fields = stage < kStages ? expected.stages[stage] : values;
    forEachStageState(fields, [&](StageState number, const char* name, std::uint32_t& field) {
      if (number == StageState::ResultArg) return;  // has one meaning only
      field = field == 1 ? 2 : 1;
      device.setTextureStageState(stage, number, field);
      EXPECT_EQ(device.getTextureStageState(stage, number), field) << name << " of stage " << stage;
    });
  }
  const State& seen = draw().state;
  EXPECT_EQ(seen.render, expected.render);
  EXPECT_EQ(seen.stages, expected.stages);
}

TEST_F(DeviceState, ValuesWithoutMeaningAreKeptButNeverDrawn) {
  const auto nan = std::bit_cast<std::uint32_t>(std::nanf(""));
  const std::pair<RenderState, std::uint32_t> rows[] = {{RenderState::CullMode, 0}, {RenderState::ZFunc, 9},
                                                        {RenderState::SrcBlend, 0}, {RenderState::DestBlend, 14},
                                                        {RenderState::FogEnd, nan}, {RenderState::BlendOp, 0xFFFFFFFF}};
  for (const auto& [state, value] : rows) {
    device.setRenderState(state, value);
    EXPECT_EQ(device.getRenderState(state), value);
  }
  device.setTextureStageState(0, StageState::ColorOp, 27);
  device.setTextureStageState(1, StageState::AddressU, 0);
  EXPECT_EQ(device.getTextureStageState(0, StageState::ColorOp), 27u);
  const State fresh;
  EXPECT_EQ(draw().state.render, fresh.render);
  EXPECT_EQ(draw().state.stages, fresh.stages);
}

TEST_F(DeviceState, VersionsGrowOnlyWithADifference) {
  const std::uint64_t start = draw().packet.stateVersion;
  device.setRenderState(RenderState::ZEnable, device.getRenderState(RenderState::ZEnable));
  device.setTransform(Transform::View, device.getTransform(Transform::View));
  device.setMaterial(device.getMaterial());
  device.setLight(7, device.getLight(7));
  device.setTextureStageState(5, StageState::ColorOp, 4);  // a stage that draws do not have
  device.setRenderState(RenderState::CullMode, 77);
  EXPECT_EQ(draw().packet.stateVersion, start);
  std::uint64_t last = start;
  const auto grew = [&](const char* what) {
    const std::uint64_t now = draw().packet.stateVersion;
    EXPECT_GT(now, last) << what;
    last = now;
  };
  device.setRenderState(RenderState::ZEnable, 0);
  grew("render state");
  device.setTextureStageState(1, StageState::ColorOp, 4);
  grew("stage state");
  device.setTransform(Transform::Texture1, {});
  grew("transform");
  device.lightEnable(100, true);
  grew("light");
  device.setViewport({0, 0, 10, 10, 0, 1});
  grew("viewport");
}

TEST_F(DeviceState, PacketsNameTheirSource) {
  const auto buffer = device.createVertexBuffer(24 * 10, 0, 0x142, Pool::Managed);
  const auto texture = device.createTexture(4, 4, 1, 0, Format::R5G6B5, Pool::Managed);
  device.setTexture(1, texture);
  device.setVertexShader(0x142);
  device.setStreamSource(0, buffer, 24);
  device.beginScene();
  device.drawPrimitive(PrimitiveType::TriangleFan, 4, 4);  // vertices 4 to 9: to the last byte
  device.drawPrimitive(PrimitiveType::TriangleFan, 100, 0);
  device.drawPrimitiveUP(PrimitiveType::LineStrip, 3, std::span(kVertices).first(32 * 3 + 24), 32);
  device.drawPrimitiveUP(PrimitiveType::LineStrip, 0, {}, 24);
  ASSERT_EQ(spy->draws.size(), 2u) << "draws of nothing stay here";
  const DrawPacket& fan = spy->draws[0].packet;
  EXPECT_EQ(fan.buffer, buffer->id());
  EXPECT_EQ(fan.firstVertex, 4u);
  EXPECT_EQ(fan.vertexCount, 6u);
  EXPECT_EQ(fan.textures[1], texture->id());
  EXPECT_EQ(spy->draws[1].packet.buffer, BufferId::None);
  EXPECT_EQ(spy->draws[1].vertices.size(), 32u * 3 + 24) << "the last vertex needs no full stride";
}

TEST_F(DeviceState, VertexFormatSizes) {
  const std::pair<std::uint32_t, std::uint32_t> rows[] = {{0x142, 24}, {0x1C2, 28}, {0x1C4, 32}, {0x212, 40},
                                                          {0x2C2, 36}, {0x002, 12}, {0x822, 80}};
  for (const auto& [format, size] : rows) EXPECT_EQ(vertexSize(format), size) << std::hex << format;
}

TEST_F(DeviceState, ClearsReachTheViewportOnly) {
  device.clear({}, 7, 0, 1, 0);
  ASSERT_EQ(spy->clears.size(), 1u);
  EXPECT_TRUE(spy->clears[0].rects.empty());
  EXPECT_EQ(spy->clears[0].flags, 3u);
  device.setViewport({8, 8, 16, 16, 0, 1});
  device.clear({}, 1, 0, 1, 0);
  const PixelRect rects[] = {{0, 0, 10, 10}, {30, 30, 5, 5}, {20, 20, 0xFFFFFFFF, 0xFFFFFFFF}};
  device.clear(rects, 1, 0, 1, 0);
  device.clear(std::span(rects).subspan(1, 1), 1, 0, 1, 0);  // nothing of it is visible: must not become everything
  device.clear({}, 4, 0, 1, 0);
  ASSERT_EQ(spy->clears.size(), 3u);
  const auto same = [](const PixelRect& a, const PixelRect& b) {
    return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
  };
  ASSERT_EQ(spy->clears[1].rects.size(), 1u);
  EXPECT_TRUE(same(spy->clears[1].rects[0], {8, 8, 16, 16}));
  ASSERT_EQ(spy->clears[2].rects.size(), 2u);
  EXPECT_TRUE(same(spy->clears[2].rects[0], {8, 8, 2, 2}));
  EXPECT_TRUE(same(spy->clears[2].rects[1], {20, 20, 4, 4}));
}

TEST_F(DeviceState, ResetKeepsStatesAndEndsTheOldBackBuffer) {
  const auto window = std::make_shared<ql::test::FakeWindow>();
  const auto old = device.getBackBuffer(0);
  device.setRenderState(RenderState::Lighting, 0);
  device.setViewport({0, 0, 20, 20, 0, 1});
  PresentParameters p = parameters(0, 0);
  p.deviceWindow = window;
  device.reset(p);
  EXPECT_EQ(device.presentParameters().backBufferWidth, 640u) << "the window's client area";
  EXPECT_EQ(device.getRenderState(RenderState::Lighting), 0u);
  EXPECT_EQ(device.getViewport().width, 20);
  EXPECT_THROW(old->lock(), DeviceError);
  EXPECT_EQ(device.getBackBuffer(0)->description().height, 480u);
  device.reset(parameters(10, 10));
  EXPECT_EQ(device.getViewport().width, 10) << "a viewport that no longer fits becomes the whole target";
  ASSERT_EQ(window->modes.size(), 1u);
  EXPECT_THROW(device.reset(parameters(0, 0)), DeviceError);
  EXPECT_EQ(device.getBackBuffer(0)->lock().pitch, 40u) << "a refused reset changes nothing";
}

TEST_F(DeviceState, RenderTargetsTakeDrawingAndTheViewport) {
  const auto texture = device.createTexture(32, 16, 1, kUsageRenderTarget, Format::R5G6B5, Pool::Default);
  const TargetId target = spy->createTextureTarget(texture->id(), 0);
  device.setRenderTarget(target, 32, 16);
  EXPECT_EQ(draw().packet.target, target);
  EXPECT_EQ(device.getViewport().height, 16);
  device.clear({}, 1, 0xFFFFFFFF, 1, 0);
  EXPECT_EQ(texture->readLevel(0), std::vector<std::byte>(32 * 16 * 2, std::byte{0xFF}));
  device.setRenderTarget(TargetId::None, 0, 0);
  EXPECT_NE(draw().packet.target, target);
  EXPECT_EQ(device.getViewport().height, 48);
}

}  // namespace
