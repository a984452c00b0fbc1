#include "render/Effects.h"
#include "render/RenderTest.h"

#include <bit>
#include <cstring>
#include <limits>

namespace ql::render {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Vertex = Quasarlens3D::TransformedLitVertex;

struct Effects : test::RenderTest {
  /// One frame that takes so many milliseconds; the colours of the boxes over it.
  std::vector<std::uint32_t> frame(std::uint32_t milliseconds) {
    machine.clock->now += milliseconds;
    engine::clear(context);
    recorder.clear();
    engine::renderToScreen(context);
    std::vector<std::uint32_t> colors;
    for (const recording::Recorder::Call& call : recorder.calls()) {
      if (call.name != "DrawPrimitiveUP") continue;
      Vertex corners[4];
      EXPECT_EQ(call.blobs.at(0).size(), sizeof corners);
      std::memcpy(corners, call.blobs[0].data(), sizeof corners);
      EXPECT_EQ(corners[3].x, 640);
      EXPECT_EQ(corners[3].y, 480);
      colors.push_back(static_cast<std::uint32_t>(corners[0].diffuse));
    }
    return colors;
  }
  const EffectState& state() { return context.get<EffectState>(); }
};

TEST_F(Effects, FadesEndOnTheirLastFrame) {
  frame(20);
  startFade(context, Fade::Out, 1000);
  for (int i = 1; i <= 50; ++i) {
    ASSERT_TRUE(state().fadeActive) << i;
    const auto colors = frame(20);
    ASSERT_EQ(colors.size(), 1u) << i;
    EXPECT_NEAR(colors[0] >> 24, i * 5.1, 0.51) << i;
    EXPECT_EQ(colors[0] & 0xFFFFFF, 0u);
  }
  EXPECT_FALSE(state().fadeActive);
  EXPECT_THAT(frame(20), IsEmpty());

  startFade(context, Fade::In, 90);
  EXPECT_THAT(frame(45), ElementsAre(0x80000000u));
  EXPECT_THAT(frame(45), ElementsAre(0u));
  EXPECT_FALSE(state().fadeActive);

  startFade(context, Fade::In, 0);
  EXPECT_THAT(frame(20), ElementsAre(0u)) << "no time at all";
  EXPECT_FALSE(state().fadeActive);
  startFade(context, Fade::Out, std::numeric_limits<float>::quiet_NaN());
  frame(20);
  EXPECT_FALSE(state().fadeActive);
}

TEST_F(Effects, LongFramesCountAsTwoHundredMilliseconds) {
  startFade(context, Fade::Out, 1000);
  engine::clear(context);
  context.elapsedMs = 500;
  stepEffects(context);
  EXPECT_EQ(context.elapsedMs, 200);
  EXPECT_EQ(state().fadeElapsed, 200);
  stopFade(context);
  context.elapsedMs = 500;
  stepEffects(context);
  EXPECT_EQ(context.elapsedMs, 500) << "nothing runs";
}

TEST_F(Effects, OneStopsTheOther) {
  frame(20);
  startFade(context, Fade::In, 1000);
  startFlash(context, 1, 0.5f, 0);
  EXPECT_FALSE(state().fadeActive);
  EXPECT_THAT(frame(100), ElementsAre(0xCCFF8000u)) << "half a second in all";
  startFade(context, Fade::Out, 1000);
  EXPECT_FALSE(state().flashActive);
  EXPECT_THAT(frame(100), ElementsAre(0x1A000000u));
  stopFade(context);
  EXPECT_THAT(frame(100), IsEmpty());
  startFlash(context, 0, 0, 1);
  stopFlash(context);
  EXPECT_THAT(frame(100), IsEmpty());
  EXPECT_THROW(startFlash(context, std::numeric_limits<float>::quiet_NaN(), 0, 0), std::domain_error);
  EXPECT_FALSE(state().flashActive);
}

TEST_F(Effects, TheHostsStatesSurviveThem) {
  device::Device& device = *context.device;
  device.setRenderState(device::RenderState::Lighting, 1);
  device.setRenderState(device::RenderState::AlphaBlendEnable, 0);
  device.setRenderState(device::RenderState::DestBlend, 2);
  device.setRenderState(device::RenderState::CullMode, 3);
  const auto texture = device.createTexture(2, 2, 1, 0, device::Format::A8R8G8B8, device::Pool::Managed);
  device.setTexture(0, texture);
  device.setVertexShader(0x142);
  startFade(context, Fade::Out, 1000);
  EXPECT_EQ(frame(100).size(), 1u);
  EXPECT_EQ(device.getRenderState(device::RenderState::Lighting), 1u);
  EXPECT_EQ(device.getRenderState(device::RenderState::AlphaBlendEnable), 0u);
  EXPECT_EQ(device.getRenderState(device::RenderState::DestBlend), 2u);
  EXPECT_EQ(device.getRenderState(device::RenderState::CullMode), 3u);
  EXPECT_EQ(device.getTexture(0), texture);
  EXPECT_EQ(device.getVertexShader(), 0x142u);
}

TEST_F(Effects, GammaScalesTheRamp) {
  struct Case {
    float gamma;
    std::uint16_t at1, at128, at255;
  };
  for (const Case& row : {Case{1, 255, 32640, 65025},
                          {2, 510, 65280, 65535},
                          {0.5f, 128, 16320, 32512},
                          {0, 0, 0, 0},
                          {-1, 0, 0, 0},
                          {std::numeric_limits<float>::quiet_NaN(), 0, 0, 0}}) {
    changeGamma(context, row.gamma);
    const device::GammaRamp ramp = context.device->getGammaRamp();
    EXPECT_EQ(ramp.red[1], row.at1) << row.gamma;
    EXPECT_EQ(ramp.green[128], row.at128) << row.gamma;
    EXPECT_EQ(ramp.blue[255], row.at255) << row.gamma;
  }
}

TEST_F(Effects, FogIsWrittenWholeEvenWhenItIsOff) {
  const auto bits = [](float value) { return std::to_string(std::bit_cast<std::uint32_t>(value)); };
  const auto rest = [&](bool on, float start, float end, float density) {
    return std::vector<std::string>{on ? "SetRenderState(28, 4294967295)" : "SetRenderState(28, 0)",
                                    "SetRenderState(34, 4286611456)", "SetRenderState(36, " + bits(start) + ")",
                                    "SetRenderState(37, " + bits(end) + ")",
                                    "SetRenderState(38, " + bits(density) + ")"};
  };
  const math::Color4 olive{0.5f, 0.5f, 0, 0};
  setFog(context, {true, olive, 0.25f, 10, 90}, false);
  std::vector<std::string> expected = rest(true, 10, 90, 0.25f);
  expected.insert(expected.begin(), "SetRenderState(140, 3)");
  EXPECT_EQ(recorder.lines(), expected);
  EXPECT_TRUE(context.fogEnabled);

  recorder.clear();
  setFog(context, {false, olive, 1}, true);
  expected = rest(false, 1, 1000, 1);
  expected.insert(expected.begin(), {"SetRenderState(140, 0)", "SetRenderState(35, 3)"});
  EXPECT_EQ(recorder.lines(), expected);
  EXPECT_FALSE(context.fogEnabled);
}

}  // namespace
}  // namespace ql::render
