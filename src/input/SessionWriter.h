/// @file
/// Writing a session of input: what the devices said and what the clock said, in order.
#pragma once

#include "input/SessionReader.h"
#include "platform/input/Machine.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace ql::input {

/// Writes while the session goes on. A frame is in the file when it has ended.
class SessionWriter {
 public:
  /// @param note a text of the host's own, cut at kLongestNote bytes @throws FileFault when the file cannot be made
  SessionWriter(const std::filesystem::path& file, const std::string& note);

  /// The clock was read.
  void tick(std::uint32_t value);
  /// The devices were read.
  void sample(const Snapshot& snapshot);
  /// The motors of a controller were opened.
  void motors(std::uint32_t controller, std::uint32_t kinds);
  /// A frame was presented. @param size of the window
  void endFrame(const ClientSize& size);
  /// Ends the file. @return whether all of it was written
  bool finish();

 private:
  void writeTicks();
  void writeControllers(const Snapshot& snapshot);

  std::ofstream file_;
  std::string pending_;                                         ///< not yet in the file
  std::vector<std::pair<std::uint32_t, std::uint64_t>> ticks_;  ///< readings, and how often they came again
  std::uint32_t lastTick_ = 0;
  Snapshot before_;
  ClientSize size_;
};

}  // namespace ql::input
