/// @file
/// The motors of a controller through SDL.
#pragma once

#include "platform/input/ForceFeedback.h"

#include <cstdint>
#include <memory>
#include <set>

struct _SDL_Haptic;    // NOLINT(bugprone-reserved-identifier): the name is not ours
struct _SDL_Joystick;  // NOLINT(bugprone-reserved-identifier): the name is not ours

namespace ql::input {

/// The motors of a controller; nothing when it has none.
std::unique_ptr<ForceFeedback> openSdlForceFeedback(const std::shared_ptr<_SDL_Joystick>& joystick);

/// Motors that play effects of many kinds.
class SdlForceFeedback final : public ForceFeedback {
 public:
  /// Nothing when the controller has none.
  static std::unique_ptr<SdlForceFeedback> open(std::shared_ptr<_SDL_Joystick> joystick);
  ~SdlForceFeedback() override;
  SdlForceFeedback(const SdlForceFeedback&) = delete;
  SdlForceFeedback& operator=(const SdlForceFeedback&) = delete;

  std::uint32_t kinds() const override { return kinds_; }
  int create(const Effect& effect) override;
  bool change(int effect, const Effect& values) override;
  void destroy(int effect) override;
  bool start(int effect, std::int32_t iterations) override;
  void stop(int effect) override;
  bool running(int effect) const override;
  void stopAll() override;
  bool pause(bool on) override;
  bool setGain(std::int32_t gain) override;

 private:
  SdlForceFeedback(std::shared_ptr<_SDL_Joystick> joystick, _SDL_Haptic* haptic);
  std::shared_ptr<_SDL_Joystick> joystick_;
  _SDL_Haptic* haptic_;
  std::uint32_t kinds_;
  std::set<int> effects_;
};

}  // namespace ql::input
