/// @file
/// Reading a session of input: what the devices said and what the clock said, in order.
#pragma once

#include "platform/input/Machine.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ql::input {

/// Of a window's client area, pixels; 0 when unknown.
struct ClientSize {
  std::uint32_t width = 0, height = 0;
  bool operator==(const ClientSize&) const = default;
};

inline constexpr std::size_t kLongestNote = 65'536;

/// Reads a session step by step. Everything is checked when it is opened.
class SessionReader {
 public:
  /// A file that ends too early is a session up to its last whole frame.
  /// @throws FileFault for another kind of file, a damaged one, or one without a whole frame
  explicit SessionReader(std::vector<std::byte> file);

  const std::string& note() const { return note_; }
  std::uint32_t frames() const { return frames_; }
  /// Whether the file has its end.
  bool complete() const { return complete_; }
  ClientSize firstSize() const { return firstSize_; }
  /// The kinds of effects of a controller's motors, once they were opened.
  std::optional<std::uint32_t> motors(std::uint32_t controller) const;

  /// The next reading of the clock. More readings than there were go on by a millisecond each.
  std::uint32_t tick();
  /// Goes on to the next reading of the devices; stays at the last one of a frame.
  void sample();
  /// Goes on to the next frame.
  void endFrame();
  /// All frames are over.
  bool ended() const { return now_.at >= end_; }
  /// As of the last reading.
  const Snapshot& snapshot() const { return now_.snapshot; }
  /// As of the last frame's end.
  const ClientSize& size() const { return now_.size; }

 private:
  enum class Boundary : std::uint8_t { Sample, Frame, End };
  /// What the records up to a boundary add up to.
  struct State {
    std::size_t at = 0;  ///< in the file
    Snapshot snapshot;
    ClientSize size;
    std::uint32_t lastTick = 0;
    std::vector<std::pair<std::uint32_t, std::uint64_t>> ticks;  ///< since the boundary before; how often again
  };

  void check();
  /// Reads up to the next boundary.
  Boundary advance(State& state);
  /// Makes the next boundary the last one.
  void pass();

  std::vector<std::byte> file_;
  std::string note_;
  std::uint32_t frames_ = 0;
  bool complete_ = false;
  std::size_t start_ = 0, end_ = 0;  ///< of the whole frames
  ClientSize firstSize_;
  std::map<std::uint32_t, std::uint32_t> motors_;
  State now_, next_;                   ///< as of the last boundary; as of the next one
  Boundary boundary_ = Boundary::End;  ///< what the next one is
  std::size_t run_ = 0;                ///< place in next_.ticks
  std::uint64_t used_ = 0;             ///< readings of that run
  std::uint32_t lastRead_ = 0;
};

}  // namespace ql::input
