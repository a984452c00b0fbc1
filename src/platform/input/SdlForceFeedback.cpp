#include "platform/input/SdlForceFeedback.h"

#include "platform/input/SdlEffect.h"

#include <algorithm>
#include <map>
#include <utility>

#include <SDL.h>

namespace ql::input {
namespace {

/// The two motors of a gamepad of which SDL knows nothing but how to rumble.
class SdlRumble final : public ForceFeedback {
 public:
  explicit SdlRumble(std::shared_ptr<SDL_Joystick> joystick) : joystick_(std::move(joystick)) {}
  ~SdlRumble() override { stopAll(); }
  SdlRumble(const SdlRumble&) = delete;
  SdlRumble& operator=(const SdlRumble&) = delete;

  std::uint32_t kinds() const override { return effectBit(EffectKind::Rumble); }
  int create(const Effect& effect) override {
    if (effect.kind != EffectKind::Rumble) return -1;
    effects_[next_] = effect;
    return next_++;
  }
  bool change(int effect, const Effect& values) override {
    const auto found = effects_.find(effect);
    if (found == effects_.end()) return false;
    found->second = values;
    return effect != playing_ || play();
  }
  void destroy(int effect) override {
    stop(effect);
    effects_.erase(effect);
  }
  bool start(int effect, std::int32_t iterations) override {
    if (!effects_.contains(effect)) return false;
    playing_ = effect;
    iterations_ = iterations;
    return play();
  }
  void stop(int effect) override {
    if (effect == playing_) stopAll();
  }
  bool running(int effect) const override {
    return effect == playing_ && (end_ == SDL_HAPTIC_INFINITY || SDL_GetTicks() < end_);
  }
  void stopAll() override {
    playing_ = -1;
    SDL_JoystickRumble(joystick_.get(), 0, 0, 0);
  }
  bool pause(bool) override { return false; }
  bool setGain(std::int32_t gain) override {
    gain_ = std::clamp(gain, 0, kFullForce);
    return playing_ < 0 || play();
  }

 private:
  bool play() {
    Effect effect = effects_[playing_];
    effect.gain = static_cast<std::int32_t>(std::int64_t{std::clamp(effect.gain, 0, kFullForce)} * gain_ / kFullForce);
    const SdlEffect values(effect);
    const std::uint32_t once = values.value.leftright.length;
    constexpr std::uint32_t kLongest = 24 * 60 * 60 * 1000;
    const bool endless = once == SDL_HAPTIC_INFINITY || iterations_ < 0;
    const auto length = endless ? kLongest
                                : static_cast<std::uint32_t>(std::min<std::uint64_t>(
                                      std::uint64_t{once} * static_cast<std::uint32_t>(iterations_), kLongest));
    end_ = endless ? SDL_HAPTIC_INFINITY : SDL_GetTicks() + length;
    return SDL_JoystickRumble(joystick_.get(), values.value.leftright.large_magnitude,
                              values.value.leftright.small_magnitude, length) == 0;
  }

  std::shared_ptr<SDL_Joystick> joystick_;
  std::map<int, Effect> effects_;
  int next_ = 0, playing_ = -1;
  std::int32_t iterations_ = 1, gain_ = kFullForce;
  std::uint32_t end_ = 0;  ///< SDL's ticks
};

}  // namespace

std::unique_ptr<ForceFeedback> openSdlForceFeedback(const std::shared_ptr<SDL_Joystick>& joystick) {
  if (std::unique_ptr<ForceFeedback> motors = SdlForceFeedback::open(joystick)) return motors;
  if (SDL_JoystickHasRumble(joystick.get()) != SDL_TRUE) return nullptr;
  return std::make_unique<SdlRumble>(joystick);
}

std::unique_ptr<SdlForceFeedback> SdlForceFeedback::open(std::shared_ptr<SDL_Joystick> joystick) {
  if (SDL_JoystickIsHaptic(joystick.get()) != SDL_TRUE) return nullptr;
  SDL_Haptic* haptic = SDL_HapticOpenFromJoystick(joystick.get());
  if (haptic == nullptr) return nullptr;
  return std::unique_ptr<SdlForceFeedback>(new SdlForceFeedback(std::move(joystick), haptic));
}

SdlForceFeedback::SdlForceFeedback(std::shared_ptr<SDL_Joystick> joystick, SDL_Haptic* haptic)
    : joystick_(std::move(joystick)), haptic_(haptic), kinds_(kindsOf(SDL_HapticQuery(haptic))) {}

SdlForceFeedback::~SdlForceFeedback() { SDL_HapticClose(haptic_); }

int SdlForceFeedback::create(const Effect& effect) {
  if ((kinds_ & effectBit(effect.kind)) == 0) return -1;
  SdlEffect values(effect);
  const int made = SDL_HapticNewEffect(haptic_, &values.value);
  if (made >= 0) effects_.insert(made);
  return made;
}

bool SdlForceFeedback::change(int effect, const Effect& values) {
  SdlEffect changed(values);
  return effects_.contains(effect) && SDL_HapticUpdateEffect(haptic_, effect, &changed.value) == 0;
}

void SdlForceFeedback::destroy(int effect) {
  if (effects_.erase(effect) != 0) SDL_HapticDestroyEffect(haptic_, effect);
}

bool SdlForceFeedback::start(int effect, std::int32_t iterations) {
  const std::uint32_t times = iterations < 0 ? SDL_HAPTIC_INFINITY : static_cast<std::uint32_t>(iterations);
  return effects_.contains(effect) && SDL_HapticRunEffect(haptic_, effect, times) == 0;
}

void SdlForceFeedback::stop(int effect) {
  if (effects_.contains(effect)) SDL_HapticStopEffect(haptic_, effect);
}

bool SdlForceFeedback::running(int effect) const {
  return effects_.contains(effect) && SDL_HapticGetEffectStatus(haptic_, effect) == 1;
}

void SdlForceFeedback::stopAll() { SDL_HapticStopAll(haptic_); }
bool SdlForceFeedback::pause(bool on) { return (on ? SDL_HapticPause(haptic_) : SDL_HapticUnpause(haptic_)) == 0; }
bool SdlForceFeedback::setGain(std::int32_t gain) {
  return SDL_HapticSetGain(haptic_, std::clamp(gain, 0, kFullForce) / (kFullForce / 100)) == 0;
}

}  // namespace ql::input
