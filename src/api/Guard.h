/// @file
/// The way from a public operation to the object behind its handle.
#pragma once

#include "api/Context.h"
#include "api/Objects.h"

#include <Quasarlens3D/Error.h>
#include <Quasarlens3D/Handle.h>

#include <memory>
#include <utility>

namespace ql::api {

/// Throws the exception in flight as Error. Call it inside a catch block.
[[noreturn]] void rethrowAsError();
[[noreturn]] void throwNotSet();

/// Runs an operation; what fails inside reaches the host as Error.
template <class Operation>
decltype(auto) guard(Operation&& operation) {
  try {
    return std::forward<Operation>(operation)();
  } catch (...) {
    rethrowAsError();
  }
}

}  // namespace ql::api

namespace Quasarlens3D::Detail {

struct Access {
  /// The object of a handle. @throws Error 91 for nothing and for an object of an engine that ended
  template <class Object>
  static Object& live(const Handle<Object>& handle) {
    if (!handle.object_ || handle.object_->context != ql::api::context()) ql::api::throwNotSet();
    return *handle.object_;
  }
  template <class Object>
  static const std::shared_ptr<Object>& pointer(const Handle<Object>& handle) {
    return handle.object_;
  }
  /// A handle to an object.
  template <class Public, class Object>
  static Public make(std::shared_ptr<Object> object) {
    return Public(std::move(object));
  }
  template <class... Args, class... Values>
  static void raise(Event<Args...>& event, Values&&... values) {
    event.Raise(std::forward<Values>(values)...);
  }
};

}  // namespace Quasarlens3D::Detail

namespace ql::api {

using Quasarlens3D::Detail::Access;

/// Runs an operation on the object of a handle.
template <class Object, class Operation>
decltype(auto) call(const Quasarlens3D::Detail::Handle<Object>& handle, Operation&& operation) {
  return guard([&]() -> decltype(auto) { return std::forward<Operation>(operation)(Access::live(handle)); });
}

/// Makes the object of a creatable class.
template <class Object>
std::shared_ptr<Object> create() {
  return guard([] { return std::make_shared<Object>(); });
}

}  // namespace ql::api
