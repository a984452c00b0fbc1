#include "api/Guard.h"
#include "engine/EngineError.h"

#include <Quasarlens3D/Error.h>

namespace Quasarlens3D {

Error::Error(std::int32_t number, const std::string& description) : std::runtime_error(description), number_(number) {}
Error::~Error() = default;

}  // namespace Quasarlens3D

namespace ql::api {

void rethrowAsError() {
  try {
    throw;
  } catch (const Quasarlens3D::Error&) {
    throw;
  } catch (...) {
    const engine::EngineError error = engine::currentError();
    throw Quasarlens3D::Error(error.number, error.what());
  }
}

void throwNotSet() { throw Quasarlens3D::Error(Quasarlens3D::QL_ERROR_NOT_SET, "Object variable not set"); }

}  // namespace ql::api
