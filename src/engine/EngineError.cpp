#include "engine/EngineError.h"

#include "platform/device/DeviceError.h"
#include "platform/host/Fault.h"

#include <new>

namespace ql::engine {

EngineError currentError() {
  try {
    throw;
  } catch (const EngineError& error) {
    return error;
  } catch (const host::FileFault& fault) {
    return {fault.number(), fault.what()};
  } catch (const device::DeviceError& error) {
    return {static_cast<std::int32_t>(error.code), error.what()};
  } catch (const std::bad_alloc&) {
    return {kOutOfMemory, "Out of memory"};
  } catch (const std::out_of_range& error) {
    return {kSubscript, error.what()};
  } catch (const std::domain_error& error) {
    return {kDivisionByZero, error.what()};
  } catch (const std::overflow_error& error) {
    return {kOverflow, error.what()};
  } catch (const std::exception& error) {
    return {kInvalidArgument, error.what()};
  } catch (...) {
    return {kInvalidArgument, "Unknown error"};
  }
}

}  // namespace ql::engine
