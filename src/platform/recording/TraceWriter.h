/// @file
/// Writing what happens on a device to a file.
#pragma once

#include "platform/device/CallSink.h"

#include <filesystem>
#include <memory>
#include <span>
#include <string_view>

namespace ql::recording {

/// Writes every call and effect, as they come, to a trace file; bytes that come again are stored once. All frames up to
/// the last Present are on disk when that returns, so a program's abrupt end loses the frame in progress only. A full
/// disk never fails the device: the rest of the trace is then missing.
class TraceWriter final : public device::CallSink {
 public:
  /// Starts the file; one that exists is replaced. @throws host::FileFault FolderMissing, Unreadable
  explicit TraceWriter(const std::filesystem::path& file);
  ~TraceWriter() override;  ///< finishes
  TraceWriter(const TraceWriter&) = delete;
  TraceWriter& operator=(const TraceWriter&) = delete;

  void call(std::string_view name, std::span<const device::CallValue> values) override;
  void effect(std::string_view name, std::span<const device::CallValue> values) override;
  /// Marks the trace as whole; what comes afterwards is ignored. @return whether everything was written
  bool finish() noexcept;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ql::recording
