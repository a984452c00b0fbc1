/// @file
/// The motors of a controller.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace ql::input {

/// Kinds of effects. Rumble drives the two motors of a gamepad.
enum class EffectKind : std::uint8_t {
  Constant,
  Ramp,
  Square,
  Sine,
  Triangle,
  SawtoothUp,
  SawtoothDown,
  Spring,
  Damper,
  Inertia,
  Friction,
  Custom,
  Rumble
};
inline constexpr std::uint32_t kEffectKinds = 13;
inline constexpr std::uint32_t effectBit(EffectKind kind) { return 1u << static_cast<std::uint32_t>(kind); }

inline constexpr std::int32_t kFullForce = 10'000;
inline constexpr std::int32_t kForever = -1;  ///< a duration, a number of iterations

/// How a force grows at its start and goes at its end.
struct Envelope {
  std::int32_t attackLevel = 0, attackTime = 0, fadeLevel = 0, fadeTime = 0;  ///< 0 to 10000; microseconds
};

/// A force that depends on an axis.
struct Condition {
  std::int32_t center = 0;                                        ///< -10000 to 10000
  std::int32_t positiveCoefficient = 0, negativeCoefficient = 0;  ///< -10000 to 10000
  std::int32_t positiveSaturation = 0, negativeSaturation = 0;    ///< 0 to 10000
  std::int32_t deadBand = 0;                                      ///< 0 to 10000
};

/// An effect. Times are microseconds, forces -10000 to 10000, angles hundredths of a degree.
struct Effect {
  EffectKind kind = EffectKind::Constant;
  std::int32_t duration = 1'000'000, delay = 0;
  std::int32_t gain = kFullForce;
  std::int32_t triggerButton = -1, triggerInterval = 0;  ///< -1: none
  std::int32_t direction = 0;                            ///< where the force comes from, clockwise from ahead
  bool useEnvelope = false;
  Envelope envelope;
  std::int32_t magnitude = 0;                        ///< constant, periodic; the strong motor of a rumble
  std::int32_t rampStart = 0, rampEnd = 0;           ///< ramp
  std::int32_t offset = 0, phase = 0, period = 0;    ///< periodic
  std::int32_t weakMagnitude = 0;                    ///< the weak motor of a rumble
  std::array<Condition, 2> conditions;               ///< of x and y
  std::int32_t channels = 1, samplePeriod = 10'000;  ///< custom
  std::vector<std::int32_t> samples;                 ///< custom; channels interleaved
};

/// An open connection to the motors. When the controller goes, operations fail quietly.
class ForceFeedback {
 public:
  virtual ~ForceFeedback() = default;
  /// Bits of the kinds that can be played.
  virtual std::uint32_t kinds() const = 0;
  /// @return a number for the operations below; negative when the device refuses
  virtual int create(const Effect& effect) = 0;
  /// New values for an effect of the same kind. @return whether the device took them
  virtual bool change(int effect, const Effect& values) = 0;
  virtual void destroy(int effect) = 0;
  /// @param iterations kForever or at least 1
  virtual bool start(int effect, std::int32_t iterations) = 0;
  virtual void stop(int effect) = 0;
  virtual bool running(int effect) const = 0;
  virtual void stopAll() = 0;
  /// Holds what is played, or goes on. @return whether the device can
  virtual bool pause(bool on) = 0;
  /// Strength of everything. @param gain 0 to 10000
  virtual bool setGain(std::int32_t gain) = 0;
};

}  // namespace ql::input
