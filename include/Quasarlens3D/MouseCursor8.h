/// @file
/// A mouse cursor.
#ifndef QUASARLENS3D_MOUSECURSOR8_H
#define QUASARLENS3D_MOUSECURSOR8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/InternalObjects8.h>

#include <cstddef>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct MouseCursorObject;
}
class MouseCursors8;

/// The picture of a cursor with its key.
class QUASARLENS3D_API MouseCursor8 : public Detail::Handle<Detail::MouseCursorObject> {
 public:
  MouseCursor8();
  MouseCursor8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// A name. Changing it does not change where a list finds the cursor.
  std::string Key() const;
  void Key(const std::string& Name);
  /// The picture; nothing after creation.
  SurfaceObject MCursor() const;
  void MCursor(const SurfaceObject& Surface);
  /// The list that the cursor was added to; nothing without one.
  MouseCursors8 Parent() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
