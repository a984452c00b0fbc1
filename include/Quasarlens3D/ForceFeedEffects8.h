/// @file
/// The effects of a controller.
#ifndef QUASARLENS3D_FORCEFEEDEFFECTS8_H
#define QUASARLENS3D_FORCEFEEDEFFECTS8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/ForceFeedEffect8.h>
#include <Quasarlens3D/Handle.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Quasarlens3D {

namespace Detail {
struct ForceFeedEffectsObject;
}
class GameController8;

/// The effects that an open controller can play, by key their names; see GameController8.RefreshForceFeedEffects.
class QUASARLENS3D_API ForceFeedEffects8 : public Detail::Handle<Detail::ForceFeedEffectsObject> {
 public:
  /// Nothing.
  ForceFeedEffects8() noexcept;
  ForceFeedEffects8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  std::int32_t Count() const;
  /// @param Index from 1 @throws Error 9 outside 1 to Count
  ForceFeedEffect8 Item(std::int32_t Index) const;
  /// @param Key in any letter case @throws Error 5 when there is no such key
  ForceFeedEffect8 Item(const std::string& Key) const;
  /// @throws Error as Item
  void Remove(std::int32_t Index);
  void Remove(const std::string& Key);
  void Clear();
  /// The items as they are now, for loops.
  std::vector<ForceFeedEffect8> NewEnum() const;
  /// The controller; nothing when it is gone.
  GameController8 Parent() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
