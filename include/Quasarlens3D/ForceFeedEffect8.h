/// @file
/// What a controller can play.
#ifndef QUASARLENS3D_FORCEFEEDEFFECT8_H
#define QUASARLENS3D_FORCEFEEDEFFECT8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct ForceFeedEffectObject;
}
class ForceFeedEffects8;

/// Types of effects.
enum CONST_QL_EFFECT_TYPE : std::int32_t {
  ql_ALL = 0,
  ql_CONSTANTFORCE = 1,
  ql_RAMPFORCE = 2,
  ql_PERIODIC = 3,     ///< square, sine, triangle, two sawtooths
  ql_CONDITION = 4,    ///< spring, damper, inertia, friction
  ql_CUSTOMFORCE = 5,  ///< samples of the host's
  ql_HARDWARE = 255    ///< the device's own: the two motors of a gamepad
};

/// Describes an effect of a controller.
class QUASARLENS3D_API ForceFeedEffect8 : public Detail::Handle<Detail::ForceFeedEffectObject> {
 public:
  /// Nothing.
  ForceFeedEffect8() noexcept;
  ForceFeedEffect8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Its name.
  std::string Key() const;
  ForceFeedEffects8 Parent() const;
  std::string EffectName() const;
  /// "{...}", for GameController8.CreateForceFeedEffect.
  std::string Guid() const;
  /// CONST_QL_EFFECT_TYPE.
  std::int32_t EffectType() const;
  /// Which fields of QL_EFFECT_INFO the effect takes, as bits: duration 1, sample period 2, gain 4, trigger button 8,
  /// trigger interval 16, direction 64, envelope 128, the type's own 256, start delay 512.
  std::int32_t StaticParams() const;
  /// Which of them can change while it plays.
  std::int32_t DynamicParams() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
