/// @file
/// A host's mouse cursors.
#ifndef QUASARLENS3D_MOUSECURSORS8_H
#define QUASARLENS3D_MOUSECURSORS8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/MouseCursor8.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Quasarlens3D {

namespace Detail {
struct MouseCursorsObject;
}
class InputEngine8;

/// Cursors that a host keeps, in order and by key; InputEngine8.MouseCursors.
class QUASARLENS3D_API MouseCursors8 : public Detail::Handle<Detail::MouseCursorsObject> {
 public:
  /// Nothing.
  MouseCursors8() noexcept;
  MouseCursors8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Adds a new cursor and returns it. @param MCursor its picture; may be nothing @param Key "": none
  /// @throws Error 5 when the key is in use
  MouseCursor8 Add(const SurfaceObject& MCursor, const std::string& Key = "");
  std::int32_t Count() const;
  /// @param Index from 1 @throws Error 9 outside 1 to Count
  MouseCursor8 Item(std::int32_t Index) const;
  /// @param Key in any letter case @throws Error 5 when there is no such key
  MouseCursor8 Item(const std::string& Key) const;
  /// @throws Error as Item
  void Remove(std::int32_t Index);
  void Remove(const std::string& Key);
  void Clear();
  /// The items as they are now, for loops.
  std::vector<MouseCursor8> NewEnum() const;
  /// The input engine; nothing when it is gone.
  InputEngine8 Parent() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
