#include "input/SessionReader.h"

#include "input/SessionRecords.h"

#include <algorithm>
#include <memory>

namespace ql::input {
namespace {

using namespace records;
using host::Fault;

constexpr std::uint32_t kLargestSide = 65'535;
constexpr std::size_t kMostMotors = 4096;

void readKeys(Cursor& cursor, Snapshot& snapshot) {
  for (std::size_t left = cursor.count("keys", 1); left > 0; --left) {
    std::uint8_t& key = snapshot.keys[cursor.byte("key")];
    key = key != 0 ? std::uint8_t{0} : kPressed;
  }
}

void readMouse(Cursor& cursor, MouseTotals& mouse) {
  for (std::int32_t* total : {&mouse.x, &mouse.y, &mouse.z}) {
    const auto step = static_cast<std::uint32_t>(cursor.signedNumber("mouse step"));
    *total = static_cast<std::int32_t>(static_cast<std::uint32_t>(*total) + step);
  }
  const std::uint32_t buttons = cursor.number("mouse buttons", 15);
  for (std::size_t i = 0; i < mouse.buttons.size(); ++i)
    mouse.buttons[i] = ((buttons >> i) & 1) != 0 ? kPressed : std::uint8_t{0};
}

using Controllers = std::vector<AttachedController>;

Controllers::iterator find(Controllers& controllers, std::uint32_t id) {
  return std::find_if(controllers.begin(), controllers.end(), [id](const auto& c) { return c.info->id == id; });
}
AttachedController& known(Cursor& cursor, Controllers& controllers) {
  const std::uint32_t id = cursor.number("controller", 0xFFFFFFFF);
  const auto found = find(controllers, id);
  if (found == controllers.end()) cursor.fail(Fault::BadReference, "controller", id, controllers.size());
  return *found;
}

void readAttached(Cursor& cursor, Controllers& controllers) {
  if (controllers.size() >= kMostControllers)
    cursor.fail(Fault::BadSize, "controllers", controllers.size() + 1, kMostControllers);
  auto info = std::make_shared<ControllerInfo>();
  info->id = cursor.number("controller", 0xFFFFFFFF);
  if (find(controllers, info->id) != controllers.end())
    cursor.fail(Fault::BadReference, "controller twice", info->id, controllers.size());
  for (std::string* text : {&info->product, &info->instance, &info->productGuid, &info->instanceGuid})
    *text = cursor.text("controller name");
  info->kind = static_cast<ControllerKind>(
      cursor.number("controller kind", static_cast<std::uint32_t>(ControllerKind::Supplement)));
  info->axes = static_cast<std::uint8_t>(cursor.number("axes", kMostAxes));
  info->buttons = static_cast<std::uint8_t>(cursor.number("buttons", kMostButtons));
  info->hats = static_cast<std::uint8_t>(cursor.number("hats", kMostHats));
  info->forceFeedback = cursor.number("motors", 1) != 0;
  controllers.push_back({std::move(info), {}});
}

void readState(Cursor& cursor, Controllers& controllers) {
  AttachedController& controller = known(cursor, controllers);
  ControllerState& state = controller.state;
  for (std::size_t i = 0; i < controller.info->axes; ++i) {
    const std::int32_t axis = cursor.signedNumber("axis");
    if (axis < -32'768 || axis > 32'767) cursor.fail(Fault::BadSize, "axis", static_cast<std::uint32_t>(axis), 32'767);
    state.axes[i] = static_cast<std::int16_t>(axis);
  }
  for (std::size_t i = 0; i < controller.info->hats; ++i) state.hats[i] = cursor.byte("hat");
  for (std::size_t i = 0; i < controller.info->buttons; i += 8) {
    const std::uint8_t eight = cursor.byte("buttons");
    for (std::size_t bit = 0; bit < 8 && i + bit < controller.info->buttons; ++bit)
      state.buttons[i + bit] = ((eight >> bit) & 1) != 0;
  }
}

}  // namespace

SessionReader::SessionReader(std::vector<std::byte> file) : file_(std::move(file)) {
  Cursor cursor(file_, 0);
  for (const char expected : kIdentifier)
    if (cursor.byte("identifier") != static_cast<std::uint8_t>(expected))
      cursor.fail(Fault::BadIdentifier, "identifier", 0, 0);
  const std::uint64_t version = cursor.number("version");
  if (version != kVersion) cursor.fail(Fault::BadVersion, "version", version, kVersion);
  note_ = cursor.text("note", kLongestNote);
  start_ = cursor.at();
  check();
  now_.at = next_.at = start_;
  boundary_ = advance(next_);
}

void SessionReader::check() {
  end_ = file_.size();
  State state;
  state.at = start_;
  std::size_t whole = start_;
  try {
    for (Boundary boundary; (boundary = advance(state)) != Boundary::End;) {
      if (boundary != Boundary::Frame) continue;
      if (++frames_ == 1) firstSize_ = state.size;
      whole = state.at;
    }
    complete_ = true;
  } catch (const host::FileFault& fault) {
    if (fault.id != Fault::Truncated || frames_ == 0) throw;
  }
  if (frames_ == 0) throw host::FileFault(Fault::Truncated, "session frames", start_, 0, 1);
  end_ = whole;
}

SessionReader::Boundary SessionReader::advance(State& state) {
  state.ticks.clear();
  Cursor cursor(file_, state.at);
  const auto boundary = [&](Boundary reached) {
    state.at = cursor.at();
    return reached;
  };
  Controllers& controllers = state.snapshot.controllers;
  for (;;) {
    const std::uint8_t tag = cursor.byte("record");
    switch (static_cast<Tag>(tag)) {
      case Tag::Ticks:
        for (std::size_t left = cursor.count("ticks", 2); left > 0; --left) {
          state.lastTick += static_cast<std::uint32_t>(cursor.signedNumber("tick"));
          state.ticks.emplace_back(state.lastTick, cursor.number("tick count"));
        }
        break;
      case Tag::Keys:
        readKeys(cursor, state.snapshot);
        break;
      case Tag::Mouse:
        readMouse(cursor, state.snapshot.mouse);
        break;
      case Tag::Focus:
        state.snapshot.focus = cursor.number("focus", 1) != 0;
        break;
      case Tag::Attached:
        readAttached(cursor, controllers);
        break;
      case Tag::Detached:
        controllers.erase(controllers.begin() + (&known(cursor, controllers) - controllers.data()));
        break;
      case Tag::State:
        readState(cursor, controllers);
        break;
      case Tag::Motors: {
        const std::uint32_t id = cursor.number("controller", 0xFFFFFFFF);
        motors_[id] = cursor.number("kinds of effects", (1u << kEffectKinds) - 1);
        if (motors_.size() > kMostMotors) cursor.fail(Fault::BadSize, "motors", motors_.size(), kMostMotors);
        break;
      }
      case Tag::Sample:
        return boundary(Boundary::Sample);
      case Tag::Size:
        state.size.width = cursor.number("width", kLargestSide);
        state.size.height = cursor.number("height", kLargestSide);
        break;
      case Tag::Frame:
        return boundary(Boundary::Frame);
      case Tag::End:
        return boundary(Boundary::End);
      default:
        cursor.fail(Fault::Unsupported, "record", tag, static_cast<std::uint8_t>(Tag::End));
    }
  }
}

std::optional<std::uint32_t> SessionReader::motors(std::uint32_t controller) const {
  const auto found = motors_.find(controller);
  return found == motors_.end() ? std::nullopt : std::optional(found->second);
}

std::uint32_t SessionReader::tick() {
  while (run_ < next_.ticks.size() && used_ > next_.ticks[run_].second) {
    ++run_;
    used_ = 0;
  }
  if (run_ == next_.ticks.size()) return ++lastRead_;
  ++used_;
  return lastRead_ = next_.ticks[run_].first;
}

void SessionReader::pass() {
  now_ = next_;
  lastRead_ = now_.lastTick;
  run_ = 0;
  used_ = 0;
  next_.ticks.clear();
  boundary_ = ended() && !complete_ ? Boundary::End : advance(next_);
}

void SessionReader::sample() {
  if (boundary_ == Boundary::Sample) pass();
}

void SessionReader::endFrame() {
  while (boundary_ == Boundary::Sample) pass();
  if (boundary_ == Boundary::Frame) pass();
}

}  // namespace ql::input
