/// @file
/// A joystick, gamepad or wheel.
#ifndef QUASARLENS3D_GAMECONTROLLER8_H
#define QUASARLENS3D_GAMECONTROLLER8_H

#include <Quasarlens3D/Event.h>
#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/ForceFeedEffects8.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Quasarlens3D {

namespace Detail {
struct GameControllerObject;
struct InputDeviceHandleObject;
struct PlayedEffectObject;
}  // namespace Detail

/// How Initialize reads the device: with the fields of QL_JOYSTATE or of QL_JOYSTATE2. Both are always filled.
enum CONST_QL_JOYSTICK_DATAFORMAT : std::int32_t { eDIJoyStick1 = 3, eDIJoyStick2 = 4 };

/// The state of a controller. Axes are 0 to 10000, 5000 in the middle; those that it lacks are 0. Points of view are
/// hundredths of a degree clockwise from ahead, -1 in the middle. Buttons are 128 when pressed, else 0.
struct QL_JOYSTATE {
  std::int32_t x = 0, y = 0, z = 0;
  std::int32_t RotationX = 0, RotationY = 0, RotationZ = 0;
  std::int32_t Slider0 = 0, Slider1 = 0;
  std::int32_t PointOfView0 = -1, PointOfView1 = -1, PointOfView2 = -1, PointOfView3 = -1;
  std::array<std::uint8_t, 32> Buttons{};
};

/// QL_JOYSTATE with more buttons, and what only special devices measure: all of that is 0.
struct QL_JOYSTATE2 {
  std::int32_t x = 0, y = 0, z = 0;
  std::int32_t RotationX = 0, RotationY = 0, RotationZ = 0;
  std::int32_t Slider0 = 0, Slider1 = 0;
  std::int32_t PointOfView0 = -1, PointOfView1 = -1, PointOfView2 = -1, PointOfView3 = -1;
  std::array<std::uint8_t, 128> Buttons{};
  std::int32_t TorqueX = 0, TorqueY = 0, TorqueZ = 0;
  std::int32_t ForceX = 0, ForceY = 0, ForceZ = 0;
  std::int32_t AngularVelocityX = 0, AngularVelocityY = 0, AngularVelocityZ = 0;
  std::int32_t vx = 0, vy = 0, vz = 0, vslider0 = 0, vslider1 = 0;
  std::int32_t fslider0 = 0, fslider1 = 0;
  std::int32_t ax = 0, ay = 0, az = 0, arx = 0, ary = 0, arz = 0, aslider0 = 0, aslider1 = 0;
};

/// What an open controller has.
struct QL_CONTROLLER_CAPS {
  std::int32_t Flags = 0;       ///< bits: 1 attached, 256 force feedback
  std::int32_t DeviceType = 0;  ///< as GameController8.ControllerType
  std::int32_t Axes = 0, Buttons = 0, POVs = 0;
};

/// A force that depends on an axis. All -10000 to 10000, saturations and the dead band from 0.
struct QL_EFFECT_CONDITION {
  std::int32_t Offset = 0;
  std::int32_t PositiveCoefficient = 0, NegativeCoefficient = 0;
  std::int32_t PositiveSaturation = 0, NegativeSaturation = 0;
  std::int32_t DeadBand = 0;
};

/// The values of an effect; each type uses its own. Times are microseconds, forces -10000 to 10000, angles hundredths
/// of a degree. Values beyond their range are clamped to it.
struct QL_EFFECT_INFO {
  std::int32_t Duration = 1000000;  ///< -1: until stopped
  std::int32_t StartDelay = 0;
  std::int32_t Gain = 10000;        ///< 0 to 10000
  std::int32_t TriggerButton = -1;  ///< the button that plays it, from 0; -1: none
  std::int32_t TriggerRepeatInterval = 0;
  std::int32_t Direction = 0;  ///< where the force comes from, clockwise from ahead

  Boolean UseEnvelope = False;
  std::int32_t AttackLevel = 0, AttackTime = 0, FadeLevel = 0, FadeTime = 0;  ///< levels 0 to 10000

  std::int32_t Magnitude = 0;      ///< constant and periodic effects; the strong motor of a gamepad
  std::int32_t WeakMagnitude = 0;  ///< the weak motor of a gamepad
  std::int32_t RampStart = 0, RampEnd = 0;
  std::int32_t Offset = 0, Phase = 0, Period = 100000;  ///< periodic effects
  QL_EFFECT_CONDITION ConditionX, ConditionY;
};

/// Bits of GameController8.Initialize: one of the first two with one of the others.
enum CONST_QL_COOPERATIVE_LEVEL : std::int32_t {
  QL_EXCLUSIVE = 1,
  QL_NONEXCLUSIVE = 2,
  QL_FOREGROUND = 4,  ///< silent while another program has the focus
  QL_BACKGROUND = 8
};

/// Commands of GameController8.SendForceFeedbackCommand.
enum CONST_QL_FORCEFEEDBACK_COMMAND : std::int32_t {
  QL_FF_RESET = 1,  ///< stops and removes all effects
  QL_FF_STOPALL = 2,
  QL_FF_PAUSE = 4,
  QL_FF_CONTINUE = 8,
  QL_FF_ACTUATORSON = 0x10,
  QL_FF_ACTUATORSOFF = 0x20  ///< effects go on without force
};

/// The open device of a controller.
class QUASARLENS3D_API InputDeviceObject : public Detail::Handle<Detail::InputDeviceHandleObject> {
 public:
  /// Nothing.
  InputDeviceObject() noexcept;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

/// An effect on a controller. It is removed with its last reference. After the controller was closed or went, its
/// operations do nothing.
class QUASARLENS3D_API ForceEffectObject : public Detail::Handle<Detail::PlayedEffectObject> {
 public:
  /// Nothing.
  ForceEffectObject() noexcept;
  ForceEffectObject(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// @param Iterations how often; -1: until stopped @return whether the device plays it
  Boolean Start(std::int32_t Iterations = 1);
  void Stop();
  Boolean IsPlaying() const;
  /// New values. @return whether the device took them
  Boolean SetParameters(const QL_EFFECT_INFO& EffectInfo);
  std::string GetEffectGuid() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

/// A game controller. Initialize opens it; from then on its Change event comes whenever messages are handled (in
/// Quasarlens8.RenderToScreen and Pause, and in Poll) and any controller had something new. A controller that is
/// unplugged keeps its last state and raises nothing; when it comes back it is taken up again.
///
/// The n-th axis of a device is the n-th of x, y, z, RotationX, RotationY, RotationZ, Slider0, Slider1.
class QUASARLENS3D_API GameController8 : public Detail::Handle<Detail::GameControllerObject> {
 public:
  /// Nothing.
  GameController8() noexcept;
  GameController8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Its GuidInstance.
  std::string Key() const;
  std::string ProductName() const;
  std::string InstanceName() const;
  /// "{...}", the same for all devices of a kind.
  std::string GuidProduct() const;
  /// "{...}", another for each device; the same again when a device comes back.
  std::string GuidInstance() const;
  /// The number of the force-feedback driver, "{...}", all zeros without force feedback.
  std::string FFDriver() const;
  /// 20 joystick, 21 gamepad, 22 wheel, 23 flight stick, 28 other.
  std::int32_t ControllerType() const;
  /// 1: general desktop devices.
  std::int16_t UsagePage() const;
  /// 4 joystick, 5 gamepad.
  std::int16_t Usage() const;
  /// The open device; nothing before Initialize.
  InputDeviceObject DirectInputDevice() const;
  /// Whether Initialize opened it.
  Boolean InUse() const;

  /// CONST_QL_JOYSTICK_DATAFORMAT. @throws Error 5 for another number
  std::int32_t DataFormat() const;
  void DataFormat(std::int32_t Format);
  /// Opens the device: x and y get a dead zone of 10 % around the middle and reach their ends at 95 % of the way, all
  /// axes the range 0 to 10000. Then raises Initialized. What fails raises OnError, too.
  /// @param CoOpLevel bits of CONST_QL_COOPERATIVE_LEVEL
  /// @throws Error 5 for an impossible level, 0x80040154 when the controller is not attached
  void Initialize(std::int32_t CoOpLevel = QL_NONEXCLUSIVE | QL_BACKGROUND);
  /// Closes the device, with its effects, and raises UnInitialized; nothing when it is not open.
  void UnloadController();
  /// Handles messages once and reads the device: the Change events of all controllers come from it.
  void Poll();
  QL_JOYSTATE ControllerState() const;
  QL_JOYSTATE2 ControllerStateAdvanced() const;
  /// All 0 before Initialize.
  QL_CONTROLLER_CAPS Capabilities() const;
  /// Which of x, y, z, RotationX, RotationY, RotationZ, Slider0, Slider1 there are; none before Initialize.
  std::array<Boolean, 8> GetAxis() const;
  /// 0 before Initialize.
  std::int32_t GetButtonCount() const;
  /// Whether the device is attached now.
  Boolean IsConnected() const;

  /// Fills ForceFeedEffects with what the open device can play. @param eEffectType CONST_QL_EFFECT_TYPE
  void RefreshForceFeedEffects(std::int32_t eEffectType = ql_ALL);
  ForceFeedEffects8 ForceFeedEffects() const;
  /// Makes an effect on the device, which plays nothing yet; nothing when the device is not open.
  /// @param EffectGuid ForceFeedEffect8.Guid, or a name: "GUID_Sine", ...
  /// @throws Error 0x80040154 when the device has no such effect, 0x80040201 when it takes no further one; OnError
  ForceEffectObject CreateForceFeedEffect(const std::string& EffectGuid, const QL_EFFECT_INFO& EffectInfo);
  /// As CreateForceFeedEffect, with forces of the host's. @param Channels 1 or 2 axes
  /// @param SamplePeriod microseconds @param nSamples of each channel @param SampleData forces, channels interleaved
  /// @throws Error 9 when SampleData has less than Channels times nSamples
  ForceEffectObject CreateCustomForceFeedEffect(const QL_EFFECT_INFO& EffectInfo, std::int32_t Channels,
                                                std::int32_t SamplePeriod, std::int32_t nSamples,
                                                const std::vector<std::int32_t>& SampleData);
  /// @param Flags CONST_QL_FORCEFEEDBACK_COMMAND @return 0 @throws Error 5 for another number
  std::int32_t SendForceFeedbackCommand(std::int32_t Flags);
  /// Bits: 1 no effects, 2 nothing plays, 4 paused, 16 actuators on, 32 off, 0x80000000 the device is gone; 0 without
  /// an open device that has motors.
  std::int32_t GetForceFeedbackState() const;

  /// Raised after each reading of the device.
  Event<>& Change() const;
  Event<>& Initialized() const;
  Event<>& UnInitialized() const;
  /// ErrNum, ErrDescription and ErrLocation (the operation) of what failed.
  Event<std::int32_t, const std::string&, const std::string&>& OnError() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
