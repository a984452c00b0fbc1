// What the device refuses, and that a refused call changes nothing.
#include "platform/device/Device.h"
#include "support/FakeDisplay.h"

#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

using namespace ql::device;
using ql::math::Viewport;
using ql::test::parameters;

namespace {

constexpr std::array<std::byte, 320> kVertices{};

struct Fixture {
  std::shared_ptr<ql::test::SpyBackEnd> spy = std::make_shared<ql::test::SpyBackEnd>();
  Device device{spy, DeviceType::Reference, parameters(64, 48)};
  std::shared_ptr<Surface> back = device.getBackBuffer(0);
  std::shared_ptr<Surface> image = device.createImageSurface(16, 16, Format::X8R8G8B8);
  std::shared_ptr<Surface> other = device.createImageSurface(16, 16, Format::R5G6B5);
  std::shared_ptr<VertexBuffer> buffer = device.createVertexBuffer(100, 0, 0x142, Pool::Managed);
};

// Every row throws "invalid call" on a device that is in a scene with vertex format 0x142 (24 bytes) and a stream
// source of 100 bytes (4 vertices), and leaves drawing possible.
struct Refused {
  const char* name;
  std::function<void(Fixture&)> call;
};
const Refused kRefused[] = {
    {"begin twice", [](Fixture& f) { f.device.beginScene(); }},
    {"end twice", [](Fixture& f) { f.device.endScene(), f.device.endScene(); }},
    {"present in a scene", [](Fixture& f) { f.device.present(); }},
    {"reset in a scene", [](Fixture& f) { f.device.reset(parameters(32, 32)); }},
    {"draw after the end",
     [](Fixture& f) { f.device.endScene(), f.device.drawPrimitiveUP(PrimitiveType::PointList, 1, kVertices, 24); }},
    {"draw from a buffer after the end",
     [](Fixture& f) { f.device.endScene(), f.device.drawPrimitive(PrimitiveType::PointList, 0, 1); }},
    {"no primitive type 0", [](Fixture& f) { f.device.drawPrimitiveUP(PrimitiveType{0}, 1, kVertices, 24); }},
    {"no primitive type 7", [](Fixture& f) { f.device.drawPrimitive(PrimitiveType{7}, 0, 1); }},
    {"one byte short",
     [](Fixture& f) { f.device.drawPrimitiveUP(PrimitiveType::TriangleList, 1, std::span(kVertices).first(71), 24); }},
    {"stride below the format",
     [](Fixture& f) { f.device.drawPrimitiveUP(PrimitiveType::PointList, 1, kVertices, 20); }},
    {"count that overflows 32 bits",
     [](Fixture& f) { f.device.drawPrimitiveUP(PrimitiveType::TriangleList, 0xFFFFFFFF, kVertices, 24); }},
    {"bytes that overflow 64 bits",
     [](Fixture& f) { f.device.drawPrimitiveUP(PrimitiveType::TriangleList, 0xFFFFFFFF, kVertices, 0xFFFFFFFF); }},
    {"draw without a format",
     [](Fixture& f) {
       f.device.setVertexShader(0), f.device.drawPrimitiveUP(PrimitiveType::PointList, 1, kVertices, 24);
     }},
    {"vertex past the buffer", [](Fixture& f) { f.device.drawPrimitive(PrimitiveType::TriangleStrip, 2, 1); }},
    {"first vertex far past the buffer",
     [](Fixture& f) { f.device.drawPrimitive(PrimitiveType::PointList, 0xFFFFFFFF, 0xFFFFFFFF); }},
    {"draw without a stream",
     [](Fixture& f) {
       f.device.setStreamSource(0, nullptr, 0), f.device.drawPrimitive(PrimitiveType::PointList, 0, 1);
     }},
    {"stream stride below the format",
     [](Fixture& f) {
       f.device.setStreamSource(0, f.buffer, 23), f.device.drawPrimitive(PrimitiveType::PointList, 0, 1);
     }},
    {"second stream", [](Fixture& f) { f.device.setStreamSource(1, f.buffer, 24); }},
    {"buffer of nothing", [](Fixture& f) { f.device.createVertexBuffer(0, 0, 0x142, Pool::Managed); }},
    {"write past a buffer", [](Fixture& f) { f.buffer->write(90, std::span(kVertices).first(11)); }},
    {"write far past a buffer", [](Fixture& f) { f.buffer->write(SIZE_MAX, std::span(kVertices).first(2)); }},
    {"format with two positions", [](Fixture& f) { f.device.setVertexShader(0x146); }},
    {"format without a position", [](Fixture& f) { f.device.setVertexShader(0x140); }},
    {"transformed normal", [](Fixture& f) { f.device.setVertexShader(0x114); }},
    {"nine coordinates", [](Fixture& f) { f.device.setVertexShader(0x942); }},
    {"unknown format bits", [](Fixture& f) { f.device.setVertexShader(0x10142); }},
    {"render state 10", [](Fixture& f) { f.device.setRenderState(RenderState{10}, 0); }},
    {"render state past the last", [](Fixture& f) { f.device.setRenderState(RenderState{0xFFFFFFFF}, 0); }},
    {"stage state 7", [](Fixture& f) { f.device.setTextureStageState(0, StageState{7}, 0); }},
    {"stage 8", [](Fixture& f) { f.device.setTextureStageState(8, StageState::ColorOp, 1); }},
    {"texture stage 8", [](Fixture& f) { f.device.setTexture(8, nullptr); }},
    {"transform 4", [](Fixture& f) { f.device.setTransform(Transform{4}, {}); }},
    {"light 101", [](Fixture& f) { f.device.lightEnable(101, true); }},
    {"light type 4",
     [](Fixture& f) {
       Light light;
       light.type = 4;
       f.device.setLight(0, light);
     }},
    {"viewport wider than the target",
     [](Fixture& f) {
       f.device.setViewport({1, 0, 64, 48, 0, 1});
     }},
    {"viewport left of the target",
     [](Fixture& f) {
       f.device.setViewport({-1, 0, 10, 10, 0, 1});
     }},
    {"empty viewport",
     [](Fixture& f) {
       f.device.setViewport({0, 0, 0, 10, 0, 1});
     }},
    {"viewport depth",
     [](Fixture& f) {
       f.device.setViewport({0, 0, 8, 8, 0, std::nanf("")});
     }},
    {"clear of nothing", [](Fixture& f) { f.device.clear({}, 0, 0, 1, 0); }},
    {"clear of something unknown", [](Fixture& f) { f.device.clear({}, 9, 0, 1, 0); }},
    {"clear to no depth", [](Fixture& f) { f.device.clear({}, 3, 0, std::nanf(""), 0); }},
    {"texture without a width", [](Fixture& f) { f.device.createTexture(0, 4, 1, 0, Format::R5G6B5, Pool::Managed); }},
    {"texture too high", [](Fixture& f) { f.device.createTexture(4, 4097, 1, 0, Format::R5G6B5, Pool::Managed); }},
    {"too many levels", [](Fixture& f) { f.device.createTexture(8, 4, 5, 0, Format::R5G6B5, Pool::Managed); }},
    {"texture of 3 bytes", [](Fixture& f) { f.device.createTexture(4, 4, 1, 0, Format::R8G8B8, Pool::Managed); }},
    {"depth texture", [](Fixture& f) { f.device.createTexture(4, 4, 1, 2, Format::D16, Pool::Default); }},
    {"managed target", [](Fixture& f) { f.device.createTexture(4, 4, 1, 1, Format::R5G6B5, Pool::Managed); }},
    {"luminance target", [](Fixture& f) { f.device.createTexture(4, 4, 1, 1, Format::L8, Pool::Default); }},
    {"palette surface", [](Fixture& f) { f.device.createImageSurface(4, 4, Format::P8); }},
    {"second back buffer", [](Fixture& f) { f.device.getBackBuffer(1); }},
    {"lock twice", [](Fixture& f) { f.image->lock(), f.image->lock(); }},
    {"unlock without a lock", [](Fixture& f) { f.image->unlock(); }},
    {"lock outside",
     [](Fixture& f) {
       f.image->lock(PixelRect{10, 0, 7, 1});
     }},
    {"lock that wraps around",
     [](Fixture& f) {
       f.image->lock(PixelRect{10, 0, 0xFFFFFFFF, 1});
     }},
    {"copy of nothing", [](Fixture& f) { f.device.copyRects(nullptr, {}, f.image, {}); }},
    {"copy between formats", [](Fixture& f) { f.device.copyRects(f.image, {}, f.other, {}); }},
    {"copy of a locked surface", [](Fixture& f) { f.image->lock(), f.device.copyRects(f.image, {}, f.back, {}); }},
    {"copy that does not fit", [](Fixture& f) { f.device.copyRects(f.back, {}, f.image, {}); }},
    {"copy with too few points",
     [](Fixture& f) {
       const PixelRect rects[2] = {{0, 0, 1, 1}, {1, 1, 1, 1}};
       const std::array<std::uint32_t, 2> point[1] = {{0, 0}};
       f.device.copyRects(f.image, rects, f.back, point);
     }},
};

TEST(DeviceChecks, RefuseWhatIsWrongAndStayUsable) {
  for (const Refused& row : kRefused) {
    SCOPED_TRACE(row.name);
    Fixture f;
    f.device.setVertexShader(0x142);
    f.device.setStreamSource(0, f.buffer, 24);
    f.device.beginScene();
    try {
      row.call(f);
      ADD_FAILURE() << "accepted";
    } catch (const DeviceError& error) {
      EXPECT_EQ(error.code, kErrorInvalidCall);
      EXPECT_NE(*error.what(), '\0');
    }
    EXPECT_TRUE(f.spy->draws.empty());
  }
}

TEST(DeviceChecks, ResourcesOfAnotherDeviceAreRefused) {
  Fixture a, b;
  const auto texture = b.device.createTexture(4, 4, 1, 0, Format::R5G6B5, Pool::Managed);
  EXPECT_THROW(a.device.setTexture(0, texture), DeviceError);
  EXPECT_THROW(a.device.setStreamSource(0, b.buffer, 24), DeviceError);
}

TEST(DeviceChecks, ParametersOfANewDevice) {
  struct Row {
    const char* name;
    std::function<void(PresentParameters&)> change;
    bool accepted;
  };
  const Row rows[] = {
      {"as they are", [](auto&) {}, true},
      {"largest", [](auto& p) { p.backBufferHeight = 1, p.backBufferWidth = 16384; }, true},
      {"no depth format", [](auto& p) { p.autoDepthStencilFormat = Format::Unknown; }, true},
      {"too wide", [](auto& p) { p.backBufferWidth = 16385; }, false},
      {"no height", [](auto& p) { p.backBufferHeight = 0; }, false},
      {"luminance", [](auto& p) { p.backBufferFormat = Format::L8; }, false},
      {"unknown format", [](auto& p) { p.backBufferFormat = Format{99}; }, false},
      {"colour as depth", [](auto& p) { p.autoDepthStencilFormat = Format::R5G6B5; }, false},
      {"two back buffers", [](auto& p) { p.backBufferCount = 2; }, false},
      {"multisampling", [](auto& p) { p.multiSampleType = 2; }, false},
      {"swap effect 4", [](auto& p) { p.swapEffect = 4; }, false},
  };
  for (const Row& row : rows) {
    PresentParameters p = parameters(64, 48);
    row.change(p);
    const auto spy = std::make_shared<ql::test::SpyBackEnd>();
    bool accepted = true;
    try {
      Device device(spy, DeviceType::Reference, p);
    } catch (const DeviceError& error) {
      accepted = false;
      EXPECT_EQ(error.code, kErrorInvalidCall) << row.name;
    }
    EXPECT_EQ(accepted, row.accepted) << row.name;
    EXPECT_TRUE(spy->empty()) << row.name << ": a target was left behind";
  }
}

}  // namespace
