/// @file
/// Drawing the pixels of a frame while the next one already takes draws.
#pragma once

#include "platform/software/Crew.h"
#include "platform/software/Frame.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

namespace ql::software {

/// Of two frames one takes draws while the pixels of the other may be under way: the other threads draw its tiles, and
/// the caller joins them when it needs a result. Only one is under way at a time, so that frames are carried out in the
/// order of their draws: what draws on a target is finished before what was drawn later reads it.
class Passes {
 public:
  /// @param statistics to add what was done to
  Passes(unsigned threads, const KernelSet& kernels, device::Statistics& statistics)
      : crew_(threads, kernels), frames_{Frame(crew_), Frame(crew_)}, statistics_(statistics) {}
  ~Passes() { settle(); }
  Passes(const Passes&) = delete;
  Passes& operator=(const Passes&) = delete;

  /// The frame that takes draws.
  Frame& frame() { return *frame_; }
  Meter& meter() { return crew_.meter; }
  /// Whether something that is under way draws on this.
  bool drawOn(const Target& target) const { return target_ == &target; }
  bool drawOn(const Texture& texture) const {
    return (target_ && target_->texture() == &texture) || (copy_ && &copy_->texture() == &texture);
  }

  /// Carries out what the frame holds.
  void finish(Target& target);
  /// Carries it out but for the pixels, which are then under way. @param copy is made with them; null: none
  void start(Target& target, std::unique_ptr<TextureCopy> copy = nullptr);
  /// Carries it out with the pixels of an area; all others are then under way.
  void finishArea(Target& target, const Box& area);
  /// Copies a target that nothing waits for.
  void copy(Target& target, TextureCopy& copy);
  /// Finishes what is under way.
  void settle();

 private:
  void go(Target& target, const Target::Rows& rows, const Box& without);

  Crew crew_;
  std::array<Frame, 2> frames_;
  Frame* frame_ = &frames_[0];
  // What is under way.
  Frame* running_ = nullptr;
  Target* target_ = nullptr;
  std::unique_ptr<TextureCopy> copy_;
  std::function<void(std::uint32_t, unsigned)> tiles_;
  device::Statistics& statistics_;
};

}  // namespace ql::software
