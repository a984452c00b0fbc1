// What input costs a frame: sampling keyboard and mouse, and two controllers, through SDL. A frame at 60 Hz has 16.67
// milliseconds. On an X server the pointer is asked for, too.
#include "engine/Engine.h"
#include "input/InputEngine.h"
#include "platform/input/OpenMachine.h"
#include "platform/window/OpenDisplay.h"
#include "support/TestPlatform.h"

#include <chrono>
#include <memory>
#include <vector>

#include <SDL.h>
#include <benchmark/benchmark.h>

namespace {

using namespace ql;

constexpr double kFrameSeconds = 1.0 / 60;

struct Sticks {
  explicit Sticks(int count) {
    for (int i = 0; i < count; ++i) {
      const int index = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_GAMECONTROLLER, 6, 16, 1);
      sticks.push_back(SDL_JoystickOpen(index));
    }
  }
  ~Sticks() {
    for (SDL_Joystick* stick : sticks) SDL_JoystickClose(stick);
    while (SDL_NumJoysticks() > 0 && SDL_JoystickDetachVirtual(0) == 0) {
    }
  }
  Sticks(const Sticks&) = delete;
  Sticks& operator=(const Sticks&) = delete;
  std::vector<SDL_Joystick*> sticks;
};

/// @param state range 0: controllers
void sample(benchmark::State& state) {
  const std::unique_ptr<device::Display> display = window::openDisplay();
  engine::EngineContext context(test::makeTestPlatform());
  input::startInput(context, input::openMachine());
  engine::startEngine(context);
  engine::setEngineMode(context, 640, 480, 32, false, 0);
  engine::initialize(context, engine::kOwnWindow);
  input::InputEngine input(context);
  input.controllers()->enumerate();
  const Sticks sticks(static_cast<int>(state.range(0)));
  input.controllers()->enumerate();
  if (input.controllers()->list().count() < state.range(0)) return state.SkipWithError("no controllers");
  for (const auto& controller : input.controllers()->list().items()) controller->initialize(10);

  SDL_Event key{};
  key.type = SDL_KEYDOWN;
  key.key.keysym.scancode = SDL_SCANCODE_W;
  SDL_PushEvent(&key);
  std::int16_t axis = 0;
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    for (SDL_Joystick* stick : sticks.sticks) SDL_JoystickSetVirtualAxis(stick, 0, axis);
    axis = static_cast<std::int16_t>(axis + 77);
    input::sampleInput(context);
    for (const auto& controller : input.controllers()->due()) controller->update();
  }
  const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
  if (!input.isKeyPressed(17)) state.SkipWithError("the key is not pressed");
  state.counters["percent of a frame"] =
      100 * spent.count() / (kFrameSeconds * static_cast<double>(state.iterations()));
}
BENCHMARK(sample)->Arg(0)->Arg(2);

}  // namespace
