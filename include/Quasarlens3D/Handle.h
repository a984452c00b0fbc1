/// @file
/// What all public objects have in common: they are references to shared objects.
#ifndef QUASARLENS3D_HANDLE_H
#define QUASARLENS3D_HANDLE_H

#include <Quasarlens3D/Export.h>

#include <cstddef>
#include <memory>
#include <utility>

namespace Quasarlens3D {

namespace Detail {

struct Access;

/// A public object is a handle: copying it copies the reference, and what it refers to lives as long as anyone, the
/// host or the engine, refers to it. A handle can refer to nothing: assign nullptr, test with `if (handle)`. Using
/// nothing, or a handle that was made before the current engine object, throws Error 91.
template <class Object>
class Handle {
 public:
  Handle(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)

  /// Whether the handle refers to an object.
  explicit operator bool() const noexcept { return object_ != nullptr; }
  /// Whether two handles refer to the same object, or both to nothing.
  friend bool operator==(const Handle& a, const Handle& b) noexcept { return a.object_ == b.object_; }
  friend bool operator!=(const Handle& a, const Handle& b) noexcept { return a.object_ != b.object_; }

 protected:
  Handle() noexcept = default;
  explicit Handle(std::shared_ptr<Object> object) noexcept : object_(std::move(object)) {}

 private:
  friend struct Access;
  std::shared_ptr<Object> object_;
};

}  // namespace Detail

}  // namespace Quasarlens3D

#endif
