#include "platform/software/Passes.h"

#include <utility>

namespace ql::software {

void Passes::finish(Target& target) {
  settle();
  const Target::Rows rows = target.beginWrite();
  frame_->prepare(target);
  frame_->drawTiles(target, rows, {0, 0, target.width(), target.height()});
  target.endWrite();
  frame_->reset(statistics_);
}

void Passes::start(Target& target, std::unique_ptr<TextureCopy> copy) {
  settle();
  const Target::Rows rows = target.beginWrite();
  frame_->prepare(target);
  copy_ = std::move(copy);
  go(target, rows, {});
}

void Passes::finishArea(Target& target, const Box& area) {
  const Box whole{0, 0, target.width(), target.height()};
  if (intersect(area, whole) == whole) return finish(target);
  settle();
  const Target::Rows rows = target.beginWrite();
  frame_->prepare(target);
  frame_->drawTiles(target, rows, area);
  go(target, rows, area);
}

void Passes::copy(Target& target, TextureCopy& copy) {
  settle();
  frame_->copy(target, copy);
}

// The tiles that an area touches have been drawn already.
void Passes::go(Target& target, const Target::Rows& rows, const Box& without) {
  running_ = std::exchange(frame_, &frames_[frame_ == &frames_[0] ? 1 : 0]);
  target_ = &target;
  tiles_ = [this, rows, without](std::uint32_t index, unsigned worker) {
    const auto tile = static_cast<std::int32_t>(index);
    if (intersect(Frame::tileArea(*target_, tile), without).empty())
      running_->drawTile(*target_, rows, tile, worker, copy_.get());
  };
  crew_.pool.start(Frame::tiles(target), tiles_);
}

void Passes::settle() {
  if (!running_) return;
  crew_.pool.join();
  target_->endWrite();
  if (copy_) copy_->finish();
  running_->reset(statistics_);
  running_ = nullptr;
  target_ = nullptr;
  copy_ = nullptr;
}

}  // namespace ql::software
