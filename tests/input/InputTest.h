/// @file
/// An engine with devices that the test moves by hand.
#pragma once

#include "engine/Engine.h"
#include "engine/PointerState.h"
#include "input/InputEngine.h"
#include "support/FakeMachine.h"
#include "support/TestPlatform.h"

#include <memory>

#include <gtest/gtest.h>

namespace ql::test {

/// The back buffer is 640 x 480, in the engine's own window.
class InputTest : public testing::Test {
 protected:
  InputTest() : context_(machine_.platform()) {
    input::startInput(context_, devices_);
    engine::startEngine(context_);
  }
  void startDevice(bool fullScreen = false) {
    engine::setEngineMode(context_, 640, 480, 32, false, 0);
    ASSERT_TRUE(engine::initialize(context_, fullScreen ? engine::kFullScreen : engine::kOwnWindow));
    machine_.clearLog();
  }
  void frame() {
    engine::clear(context_);
    engine::renderToScreen(context_);
  }
  const input::InputState& state() { return context_.get<input::InputState>(); }
  std::pair<int, int> absolute() { return {state().absoluteX, state().absoluteY}; }
  std::pair<int, int> relative() { return {state().relativeX, state().relativeY}; }

  TestMachine machine_;
  std::shared_ptr<FakeMachine> devices_ = std::make_shared<FakeMachine>();
  engine::EngineContext context_;
};

/// The number of the error that an operation throws; 0 when it throws none.
template <class Operation>
std::int32_t errorNumber(Operation&& operation) {
  try {
    operation();
  } catch (const engine::EngineError& error) {
    return error.number;
  }
  return 0;
}

}  // namespace ql::test
