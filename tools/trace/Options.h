/// @file
/// The command line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace ql::trace {

enum class Command { Record, Show, Replay, Compare, Diff };
enum class DeviceKind { Reference, Hardware };
enum class Talk { Quiet, Normal, Verbose };

struct FrameRange {
  std::uint64_t first = 0, last = std::numeric_limits<std::uint64_t>::max();
  bool holds(std::uint64_t frame) const { return frame >= first && frame <= last; }
};

struct Options {
  Command command{};
  std::vector<std::filesystem::path> traces;
  std::vector<std::string> walk;   ///< record: the walk's own words
  std::vector<std::string> names;  ///< show: of calls; empty: all
  FrameRange frames;
  int every = 1;                    ///< frames from one picture to the next
  std::vector<DeviceKind> devices;  ///< one, for diff two
  std::filesystem::path out = "out/trace";
  std::optional<std::string> json;  ///< file, or "-" for standard output
  double tolerance = 1;             ///< diff: the largest mean difference of a channel, of 255
  std::optional<int> maximum;       ///< diff: the largest difference of any channel
  Talk talk = Talk::Normal;
};

/// Nothing when the program has said what was asked of it (help, version) and is done.
/// @throws Failure with ExitCode::Usage
std::optional<Options> parseOptions(int argc, char** argv);

/// "ref" or "hal".
const char* nameOf(DeviceKind kind);

}  // namespace ql::trace
