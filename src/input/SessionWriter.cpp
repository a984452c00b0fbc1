#include "input/SessionWriter.h"

#include "input/SessionRecords.h"
#include "platform/host/Files.h"

#include <algorithm>

namespace ql::input {

using namespace records;

SessionWriter::SessionWriter(const std::filesystem::path& file, const std::string& note)
    : file_(file, std::ios::binary | std::ios::trunc) {
  if (!file_) {
    const bool noFolder = file.has_parent_path() && !std::filesystem::is_directory(file.parent_path());
    throw host::FileFault(noFolder ? host::Fault::FolderMissing : host::Fault::Unreadable, file.string());
  }
  pending_ = kIdentifier;
  putNumber(pending_, kVersion);
  const std::string kept = note.substr(0, kLongestNote);
  putNumber(pending_, kept.size());
  pending_ += kept;
}

void SessionWriter::tick(std::uint32_t value) {
  if (!ticks_.empty() && ticks_.back().first == value)
    ++ticks_.back().second;
  else
    ticks_.emplace_back(value, 0);
}

void SessionWriter::writeTicks() {
  if (ticks_.empty()) return;
  putTag(pending_, Tag::Ticks);
  putNumber(pending_, ticks_.size());
  for (const auto& [value, again] : ticks_) {
    putSigned(pending_, static_cast<std::int32_t>(value - lastTick_));
    putNumber(pending_, again);
    lastTick_ = value;
  }
  ticks_.clear();
}

void SessionWriter::sample(const Snapshot& now) {
  writeTicks();
  if (now.keys != before_.keys) {
    std::string codes;
    for (std::size_t code = 0; code < now.keys.size(); ++code)
      if (now.keys[code] != before_.keys[code]) codes += static_cast<char>(code);
    putTag(pending_, Tag::Keys);
    putNumber(pending_, codes.size());
    pending_ += codes;
  }
  if (now.mouse != before_.mouse) {
    putTag(pending_, Tag::Mouse);
    const auto step = [&](std::int32_t MouseTotals::*total) {
      putSigned(pending_, static_cast<std::int32_t>(static_cast<std::uint32_t>(now.mouse.*total) -
                                                    static_cast<std::uint32_t>(before_.mouse.*total)));
    };
    step(&MouseTotals::x);
    step(&MouseTotals::y);
    step(&MouseTotals::z);
    std::uint32_t buttons = 0;
    for (std::size_t i = 0; i < now.mouse.buttons.size(); ++i) buttons |= (now.mouse.buttons[i] != 0 ? 1u : 0u) << i;
    putNumber(pending_, buttons);
  }
  if (now.focus != before_.focus) {
    putTag(pending_, Tag::Focus);
    putNumber(pending_, now.focus ? 1 : 0);
  }
  writeControllers(now);
  putTag(pending_, Tag::Sample);
  before_ = now;
}

void SessionWriter::writeControllers(const Snapshot& now) {
  for (const AttachedController& old : before_.controllers)
    if (now.find(old.info->id) == nullptr) {
      putTag(pending_, Tag::Detached);
      putNumber(pending_, old.info->id);
    }
  for (const AttachedController& controller : now.controllers) {
    const ControllerInfo& info = *controller.info;
    const AttachedController* old = before_.find(info.id);
    if (old == nullptr) {
      putTag(pending_, Tag::Attached);
      putNumber(pending_, info.id);
      for (const std::string* text : {&info.product, &info.instance, &info.productGuid, &info.instanceGuid})
        putText(pending_, *text);
      for (const std::uint8_t number :
           {static_cast<std::uint8_t>(info.kind), info.axes, info.buttons, info.hats, std::uint8_t{info.forceFeedback}})
        putNumber(pending_, number);
    }
    if (controller.state == (old != nullptr ? old->state : ControllerState{})) continue;
    putTag(pending_, Tag::State);
    putNumber(pending_, info.id);
    for (std::size_t i = 0; i < info.axes; ++i) putSigned(pending_, controller.state.axes[i]);
    for (std::size_t i = 0; i < info.hats; ++i) pending_ += static_cast<char>(controller.state.hats[i]);
    for (std::size_t i = 0; i < info.buttons; i += 8) {
      std::uint32_t eight = 0;
      for (std::size_t bit = 0; bit < 8 && i + bit < info.buttons; ++bit)
        eight |= (controller.state.buttons[i + bit] ? 1u : 0u) << bit;
      pending_ += static_cast<char>(eight);
    }
  }
}

void SessionWriter::motors(std::uint32_t controller, std::uint32_t kinds) {
  writeTicks();
  putTag(pending_, Tag::Motors);
  putNumber(pending_, controller);
  putNumber(pending_, kinds);
}

void SessionWriter::endFrame(const ClientSize& size) {
  writeTicks();
  if (size != size_) {
    putTag(pending_, Tag::Size);
    putNumber(pending_, size.width);
    putNumber(pending_, size.height);
    size_ = size;
  }
  putTag(pending_, Tag::Frame);
  file_ << pending_;
  file_.flush();
  pending_.clear();
}

bool SessionWriter::finish() {
  writeTicks();
  putTag(pending_, Tag::End);
  file_ << pending_;
  pending_.clear();
  file_.close();
  return !file_.fail();
}

}  // namespace ql::input
