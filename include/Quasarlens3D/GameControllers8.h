/// @file
/// The game controllers of this machine.
#ifndef QUASARLENS3D_GAMECONTROLLERS8_H
#define QUASARLENS3D_GAMECONTROLLERS8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/GameController8.h>
#include <Quasarlens3D/Handle.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Quasarlens3D {

namespace Detail {
struct GameControllersObject;
}
class InputEngine8;

/// The attached game controllers, by key their GuidInstance; InputEngine8.GameControllers.
class QUASARLENS3D_API GameControllers8 : public Detail::Handle<Detail::GameControllersObject> {
 public:
  /// Nothing.
  GameControllers8() noexcept;
  GameControllers8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Fills the list with what is attached now. Controllers of the list before, open ones too, are no longer updated.
  void GetControllers();
  std::int32_t Count() const;
  /// @param Index from 1 @throws Error 9 outside 1 to Count
  GameController8 Item(std::int32_t Index) const;
  /// @param Key in any letter case @throws Error 5 when there is no such key
  GameController8 Item(const std::string& Key) const;
  /// @throws Error as Item
  void Remove(std::int32_t Index);
  void Remove(const std::string& Key);
  void Clear();
  /// The items as they are now, for loops.
  std::vector<GameController8> NewEnum() const;
  /// The input engine; nothing when it is gone.
  InputEngine8 Parent() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
