#include "RenderTest.h"
#include "render/Lights.h"

#include <cstring>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace ql::render {
namespace {

constexpr std::string_view kSet = "SetLight", kEnable = "LightEnable";

struct Lights : test::RenderTest {
  /// The light that the last SetLight loaded.
  device::Light loaded() {
    device::Light light;
    for (const recording::Recorder::Call& call : recorder.calls())
      if (call.name == kSet) std::memcpy(&light, call.blobs.at(0).data(), sizeof light);
    return light;
  }
  /// The calls of lights since the last look: names with their first value, and of LightEnable the second.
  std::vector<std::string> calls() {
    std::vector<std::string> out;
    for (const recording::Recorder::Call& call : recorder.calls())
      if (call.name == kSet || call.name == kEnable)
        out.push_back(call.name + " " + call.values.at(0) + (call.name == kEnable ? " " + call.values.at(1) : ""));
    forget();
    return out;
  }
};
using Calls = std::vector<std::string>;

std::vector<float> numbers(const device::Light& light) {
  std::vector<float> out(sizeof light / sizeof(float) - 1);
  std::memcpy(out.data(), &light.diffuse, out.size() * sizeof(float));
  return out;
}

TEST_F(Lights, AreLoadedAndSwitchedOn) {
  EXPECT_EQ(createPointLight(context, {1, 2, 3}, 40, {.1f, .2f, .3f, .4f}), 1);
  EXPECT_EQ(loaded().type, 1U);
  EXPECT_EQ(numbers(loaded()), (std::vector<float>{.1f, .2f, .3f, .4f, 0, 0,  0, 0, .1f, .2f, .3f, .4f, 1,
                                                   2,   3,   0,   0,   0, 40, 0, 1, 0,   0,   0,   0}));
  EXPECT_EQ(calls(), (Calls{"SetLight 1", "LightEnable 1 1"}));
  EXPECT_EQ(createDirectionalLight(context, {0, -1, 0}, {1, 1, 1, 1}), 2);
  EXPECT_EQ(loaded().type, 3U);
  EXPECT_EQ(loaded().direction, math::Vec3({0, -1, 0}));
  EXPECT_EQ(loaded().attenuation0, 1);
  EXPECT_EQ(loaded().attenuation1, 1);
  EXPECT_EQ(calls(), (Calls{"SetLight 2", "LightEnable 2 1"}));
}

TEST_F(Lights, ADeletedLightIsNothingOnTheDeviceAndIsTakenAgain) {
  createPointLight(context, {1, 2, 3}, 40, {1, 0, 0, 1});
  createPointLight(context, {}, 40, {1, 1, 1, 1});
  forget();
  deleteLight(context, 1);
  EXPECT_EQ(loaded().type, 0U);
  EXPECT_EQ(numbers(loaded()), std::vector<float>(25, 0.0f));
  EXPECT_EQ(calls(), (Calls{"SetLight 1", "LightEnable 1 0"}));
  EXPECT_EQ(createDirectionalLight(context, {1, 0, 0}, {0, 1, 0, 1}), 1);
  EXPECT_EQ(loaded().position, math::Vec3({1, 2, 3})) << "the record keeps what the new light does not set";
  EXPECT_EQ(loaded().range, 40);
  enableLight(context, 1, false);
  EXPECT_EQ(createPointLight(context, {}, 1, {}), 3) << "a light that is off keeps its index";
}

TEST_F(Lights, ChangesReachTheDeviceAtOnce) {
  createPointLight(context, {}, 1, {});
  forget();
  changeLight(context, 1, [](device::Light& light) { light.range = 9, light.falloff = 2; });
  EXPECT_EQ(loaded().range, 9);
  EXPECT_EQ(loaded().falloff, 2);
  EXPECT_EQ(calls(), Calls{"SetLight 1"});
  changeLight(context, 50, [](device::Light& light) { light.range = 3; });
  EXPECT_EQ(loaded().type, 0U) << "a light that was never made lights nothing";
  EXPECT_EQ(context.device->getLight(50).range, 3);
}

TEST_F(Lights, ANewDeviceGetsThem) {
  createPointLight(context, {}, 7, {1, 1, 1, 1});
  createDirectionalLight(context, {0, 0, 1}, {1, 1, 1, 1});
  enableLight(context, 2, false);
  deleteLight(context, 1);
  createPointLight(context, {}, 8, {1, 1, 1, 1});
  ASSERT_TRUE(engine::initialize(context, engine::kFullScreen));
  EXPECT_EQ(context.device->getLight(1).range, 8);
  EXPECT_TRUE(context.device->getLightEnable(1));
  EXPECT_EQ(context.device->getLight(2).type, 3U);
  EXPECT_FALSE(context.device->getLightEnable(2));
}

TEST_F(Lights, FailuresChangeNothing) {
  for (std::int16_t i = 1; i <= kMaxLights; ++i) EXPECT_EQ(createPointLight(context, {}, 1, {}), i);
  forget();
  const auto change = [](device::Light& light) { light.range = 5; };
  const std::pair<const char*, std::function<void()>> failing[] = {
      {"a light too many", [&] { createPointLight(context, {}, 1, {}); }},
      {"a direction too many", [&] { createDirectionalLight(context, {}, {}); }},
      {"index -1", [&] { changeLight(context, -1, change); }},
      {"index 101", [&] { changeLight(context, 101, change); }},
      {"deleting 101", [&] { deleteLight(context, 101); }},
      {"switching 101", [&] { enableLight(context, 101, true); }},
  };
  const auto numberOf = [](const std::function<void()>& operation) {
    try {
      operation();
    } catch (const engine::EngineError& error) {
      return error.number;
    }
    return 0;
  };
  for (const auto& [name, operation] : failing) {
    EXPECT_EQ(numberOf(operation), engine::kSubscript) << name;
    EXPECT_EQ(calls(), Calls{}) << name;
  }
  context.device.reset();
  const LightEntry before = context.get<LightTable>().entries[1];
  EXPECT_EQ(numberOf([&] { deleteLight(context, 1); }), engine::kNotSet);
  EXPECT_EQ(numberOf([&] { changeLight(context, 1, change); }), engine::kNotSet);
  EXPECT_TRUE(context.get<LightTable>().entries[1].used);
  EXPECT_EQ(context.get<LightTable>().entries[1].record.range, before.record.range);
}

}  // namespace
}  // namespace ql::render
