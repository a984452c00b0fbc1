/// @file
/// Input devices that a test moves by hand, and motors that keep what they are told. For tests that link
/// platform_input.
#pragma once

#include "platform/input/Machine.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ql::test {

/// What motors were told, in order; it outlives them.
struct MotorLog {
  std::vector<std::string> lines;
  std::map<int, input::Effect> effects;
  std::size_t room = 4;  ///< effects that they can hold
};

/// Motors behind the interface of real ones.
class FakeMotors final : public input::ForceFeedback {
 public:
  FakeMotors(std::shared_ptr<MotorLog> log, std::uint32_t kinds) : log_(std::move(log)), kinds_(kinds) {}
  ~FakeMotors() override { say("closed"); }
  FakeMotors(const FakeMotors&) = delete;
  FakeMotors& operator=(const FakeMotors&) = delete;

  std::uint32_t kinds() const override { return kinds_; }
  int create(const input::Effect& effect) override {
    if ((kinds_ & input::effectBit(effect.kind)) == 0 || log_->effects.size() >= log_->room) return -1;
    int number = 0;
    while (log_->effects.contains(number)) ++number;
    log_->effects[number] = effect;
    say("create " + std::to_string(number));
    return number;
  }
  bool change(int effect, const input::Effect& values) override {
    log_->effects[effect] = values;
    say("change " + std::to_string(effect));
    return true;
  }
  void destroy(int effect) override {
    log_->effects.erase(effect);
    say("destroy " + std::to_string(effect));
  }
  bool start(int effect, std::int32_t iterations) override {
    playing_[effect] = true;
    say("start " + std::to_string(effect) + " " + std::to_string(iterations));
    return true;
  }
  void stop(int effect) override {
    playing_[effect] = false;
    say("stop " + std::to_string(effect));
  }
  bool running(int effect) const override {
    const auto found = playing_.find(effect);
    return found != playing_.end() && found->second;
  }
  void stopAll() override {
    playing_.clear();
    say("stop all");
  }
  bool pause(bool on) override { return say(on ? "pause" : "continue"); }
  bool setGain(std::int32_t gain) override { return say("gain " + std::to_string(gain)); }

 private:
  bool say(const std::string& line) { return log_->lines.push_back(line), true; }
  std::shared_ptr<MotorLog> log_;
  std::uint32_t kinds_;
  std::map<int, bool> playing_;
};

/// A snapshot that the test changes; a refresh hands out what it is then.
class FakeMachine final : public input::Machine {
 public:
  FakeMachine() { now.focus = true; }
  const input::Snapshot& refresh() override {
    ++refreshes;
    taken_ = now;
    if (!listed) taken_.controllers.clear();
    return taken_;
  }
  const input::Snapshot& snapshot() const override { return taken_; }
  bool mouseConnected() const override { return true; }
  void grabMouse(bool on) override { grabbed = on; }
  bool showControlPanel() override { return false; }
  void listControllers() override { listed = true; }
  std::unique_ptr<input::ForceFeedback> openForceFeedback(std::uint32_t id) override {
    const auto* controller = taken_.find(id);
    if (controller == nullptr || !controller->info->forceFeedback) return nullptr;
    return std::make_unique<FakeMotors>(motors, motorKinds);
  }

  void press(std::size_t key, bool down = true) { now.keys.at(key) = down ? input::kPressed : std::uint8_t{0}; }
  void moveMouse(std::int32_t x, std::int32_t y) {
    now.mouse.x += x;
    now.mouse.y += y;
  }
  /// Attaches a controller. @return its state
  input::ControllerState& attach(std::uint32_t id, std::uint8_t axes, std::uint8_t buttons, std::uint8_t hats = 0,
                                 bool forceFeedback = false, const std::string& instance = "{FIRST}") {
    input::ControllerInfo info;
    info.id = id;
    info.product = info.instance = "Stick";
    info.productGuid = "{PRODUCT}";
    info.instanceGuid = instance;
    info.axes = axes;
    info.buttons = buttons;
    info.hats = hats;
    info.forceFeedback = forceFeedback;
    now.controllers.push_back({std::make_shared<const input::ControllerInfo>(info), {}});
    return now.controllers.back().state;
  }
  void detach(std::uint32_t id) {
    std::erase_if(now.controllers, [id](const auto& controller) { return controller.info->id == id; });
  }
  input::ControllerState& stick(std::uint32_t id) {
    return std::find_if(now.controllers.begin(), now.controllers.end(),
                        [id](const auto& controller) { return controller.info->id == id; })
        ->state;
  }

  input::Snapshot now;  ///< what the next refresh takes
  int refreshes = 0;
  bool grabbed = false, listed = false;
  std::uint32_t motorKinds = (1u << input::kEffectKinds) - 1;
  std::shared_ptr<MotorLog> motors = std::make_shared<MotorLog>();

 private:
  input::Snapshot taken_;
};

}  // namespace ql::test
