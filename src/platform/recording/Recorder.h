/// @file
/// A record of device calls that tests and reports read.
#pragma once

#include "platform/device/BackEnd.h"
#include "platform/device/CallSink.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ql::recording {

/// Keeps every call as a line "name(value, value, ...)": integers in decimal, floats with the digits that identify
/// them, texts quoted, bytes as "#" + their count + ":" + a 64-bit hash in hexadecimal (raw bytes are kept beside the
/// line).
class Recorder : public device::CallSink {
 public:
  struct Call {
    std::string name;
    std::vector<std::string> values;
    std::vector<std::vector<std::byte>> blobs;  ///< the raw bytes of the values that are bytes, in order
    std::string line() const;
  };
  void call(std::string_view name, std::span<const device::CallValue> values) override;
  const std::vector<Call>& calls() const { return calls_; }
  std::vector<std::string> lines() const;
  /// Lines of the calls with one of these names, in order.
  std::vector<std::string> lines(std::initializer_list<std::string_view> names) const;
  void clear() { calls_.clear(); }

 private:
  std::vector<Call> calls_;
};

/// A back end that draws nothing and remembers what it was told: for tests of call order and values without pictures.
/// Targets read as the colour of their last clear.
std::shared_ptr<device::BackEnd> createNullBackEnd();

}  // namespace ql::recording
