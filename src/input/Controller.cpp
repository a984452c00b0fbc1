#include "input/Controller.h"

#include "input/AxisRange.h"
#include "input/DeviceCodes.h"
#include "input/InputState.h"

#include <algorithm>

namespace ql::input {
namespace {

constexpr std::int32_t kCapsAttached = 1, kCapsForceFeedback = 256;
constexpr AxisRange kMainAxes{.deadZone = 1000, .saturation = 9500, .minimum = 0, .maximum = 10'000};  // x, y
constexpr AxisRange kOtherAxes{.minimum = 0, .maximum = 10'000};
constexpr std::size_t kMainAxesCount = 2;

/// A hat's bits (1 up, 2 right, 4 down, 8 left) as an angle.
std::int32_t hatAngle(std::uint8_t hat) {
  switch (hat) {
    case 1:
      return 0;
    case 3:
      return 4'500;
    case 2:
      return 9'000;
    case 6:
      return 13'500;
    case 4:
      return 18'000;
    case 12:
      return 22'500;
    case 8:
      return 27'000;
    case 9:
      return 31'500;
    default:
      return -1;
  }
}

bool oneOf(std::int32_t bits, std::int32_t a, std::int32_t b) { return ((bits & a) != 0) != ((bits & b) != 0); }

}  // namespace

Controller::Controller(engine::EngineContext& context, std::shared_ptr<const ControllerInfo> info)
    : context_(context), info_(std::move(info)) {
  state_.hats.fill(-1);
}

std::int32_t Controller::type() const {
  switch (info_->kind) {
    case ControllerKind::Joystick:
      return 20;
    case ControllerKind::Gamepad:
      return 21;
    case ControllerKind::Wheel:
      return 22;
    case ControllerKind::FlightStick:
      return 23;
    case ControllerKind::Supplement:
      return 28;
  }
  return 20;
}

void Controller::initialize(std::int32_t cooperativeLevel) {
  if (!oneOf(cooperativeLevel, kExclusive, kNonExclusive) || !oneOf(cooperativeLevel, kForeground, kBackground))
    throw engine::EngineError(engine::kInvalidArgument, "no cooperative level: " + std::to_string(cooperativeLevel));
  refreshInput(context_);
  const AttachedController* attached = attachment();
  if (attached == nullptr) throw deviceError(kDeviceNotRegistered, "the controller is not attached");
  cooperativeLevel_ = cooperativeLevel;
  open(*attached);
  caps_ = {kCapsAttached | (info_->forceFeedback ? kCapsForceFeedback : 0), type(), info_->axes, info_->buttons,
           info_->hats};
  for (std::size_t i = 0; i < kMostAxes; ++i) axesPresent_[i] = i < info_->axes;
  read(attached->state);
  inUse_ = true;
}

void Controller::open(const AttachedController& attached) {
  motors_.reset();
  attachmentId_ = attached.info->id;
  lost_ = false;
  if (std::unique_ptr<ForceFeedback> device = context_.get<InputState>().machine->openForceFeedback(attachmentId_))
    motors_ = std::make_shared<Motors>(std::move(device));
}

bool Controller::unload() {
  const bool wasOpen = inUse_;
  motors_.reset();
  caps_ = {};
  axesPresent_ = {};
  inUse_ = lost_ = false;
  return wasOpen;
}

const AttachedController* Controller::attachment() const {
  const Snapshot& now = context_.get<InputState>().machine->snapshot();
  const auto found = std::find_if(now.controllers.begin(), now.controllers.end(), [&](const auto& attached) {
    return attached.info->instanceGuid == info_->instanceGuid;
  });
  return found == now.controllers.end() ? nullptr : &*found;
}

bool Controller::update() {
  if (!inUse_) return false;
  const AttachedController* attached = attachment();
  const bool heard = (cooperativeLevel_ & kBackground) != 0 || context_.get<InputState>().machine->snapshot().focus;
  const bool same = attached != nullptr && attached->info->id == attachmentId_;
  if (!same || lost_ || !heard) {
    lost_ = !same || !heard;
    if (attached != nullptr && !same) open(*attached);
    return false;
  }
  read(attached->state);
  return true;
}

void Controller::read(const ControllerState& raw) {
  for (std::size_t i = 0; i < info_->axes; ++i)
    state_.axes[i] = (i < kMainAxesCount ? kMainAxes : kOtherAxes).value(raw.axes[i]);
  for (std::size_t i = 0; i < info_->hats; ++i) state_.hats[i] = hatAngle(raw.hats[i]);
  for (std::size_t i = 0; i < info_->buttons; ++i) state_.buttons[i] = raw.buttons[i] ? kPressed : std::uint8_t{0};
}

bool Controller::isConnected() const {
  refreshInput(context_);
  return attachment() != nullptr;
}

std::vector<const EffectEntry*> Controller::effectsOf(std::int32_t type) const {
  std::vector<const EffectEntry*> found;
  if (!motors_) return found;
  for (const EffectEntry& effect : effectTable())
    if ((type == kAllEffects || type == effect.type) && motors_->plays(effect.kind)) found.push_back(&effect);
  return found;
}

std::shared_ptr<PlayedEffect> Controller::createEffect(const std::string& guid, const Effect& effect) {
  if (!inUse_) return nullptr;
  const EffectEntry* entry = findEffect(guid);
  if (entry == nullptr || !motors_)
    throw deviceError(kDeviceNotRegistered, "the controller has no effect with the number " + guid);
  return std::make_shared<PlayedEffect>(motors_, *entry, effect);
}

std::shared_ptr<PlayedEffect> Controller::createCustomEffect(Effect effect, std::int32_t channels,
                                                             std::int32_t samplePeriod, std::int32_t samples,
                                                             std::span<const std::int32_t> data) {
  if (!inUse_) return nullptr;
  if (channels < 1 || channels > 2)
    throw engine::EngineError(engine::kInvalidArgument, "no number of channels: " + std::to_string(channels));
  const std::int64_t wanted = std::int64_t{channels} * std::max(samples, 0);
  if (wanted > static_cast<std::int64_t>(data.size()))
    throw engine::EngineError(engine::kSubscript, "there are fewer samples than " + std::to_string(wanted));
  effect.channels = channels;
  effect.samplePeriod = samplePeriod;
  effect.samples.assign(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(wanted));
  return createEffect("GUID_CustomForce", effect);
}

void Controller::command(std::int32_t command) {
  if (motors_) motors_->command(command);
}

std::int32_t Controller::motorsState() const {
  if (!inUse_ || !motors_) return 0;
  const bool gone = attachment() == nullptr || attachment()->info->id != attachmentId_;
  return motors_->state() | (gone ? static_cast<std::int32_t>(kStateLost) : 0);
}

}  // namespace ql::input
