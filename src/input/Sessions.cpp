#include "input/Sessions.h"

#include "engine/Engine.h"
#include "input/InputState.h"
#include "input/SessionReader.h"
#include "input/SessionWriter.h"
#include "platform/host/Files.h"

#include <memory>
#include <set>
#include <utility>

namespace ql::input {
namespace {

constexpr std::uint64_t kLargestFile = std::uint64_t{1} << 30;

/// Passes everything on and writes it down.
class RecordingMachine final : public Machine {
 public:
  RecordingMachine(std::shared_ptr<Machine> machine, std::shared_ptr<SessionWriter> writer)
      : machine_(std::move(machine)), writer_(std::move(writer)) {}
  const Snapshot& refresh() override {
    const Snapshot& now = machine_->refresh();
    writer_->sample(now);
    return now;
  }
  const Snapshot& snapshot() const override { return machine_->snapshot(); }
  bool mouseConnected() const override { return machine_->mouseConnected(); }
  void grabMouse(bool on) override { machine_->grabMouse(on); }
  bool showControlPanel() override { return machine_->showControlPanel(); }
  void listControllers() override { machine_->listControllers(); }
  std::unique_ptr<ForceFeedback> openForceFeedback(std::uint32_t id) override {
    std::unique_ptr<ForceFeedback> motors = machine_->openForceFeedback(id);
    if (motors) writer_->motors(id, motors->kinds());
    return motors;
  }

 private:
  std::shared_ptr<Machine> machine_;
  std::shared_ptr<SessionWriter> writer_;
};

/// Motors that play nothing.
class StillMotors final : public ForceFeedback {
 public:
  explicit StillMotors(std::uint32_t kinds) : kinds_(kinds) {}
  std::uint32_t kinds() const override { return kinds_; }
  int create(const Effect& effect) override { return (kinds_ & effectBit(effect.kind)) != 0 ? next_++ : -1; }
  bool change(int, const Effect&) override { return true; }
  void destroy(int effect) override { running_.erase(effect); }
  bool start(int effect, std::int32_t) override { return running_.insert(effect), true; }
  void stop(int effect) override { running_.erase(effect); }
  bool running(int effect) const override { return running_.contains(effect); }
  void stopAll() override { running_.clear(); }
  bool pause(bool) override { return true; }
  bool setGain(std::int32_t) override { return true; }

 private:
  std::uint32_t kinds_;
  int next_ = 0;
  std::set<int> running_;
};

/// Says what a session says.
class ReplayMachine final : public Machine {
 public:
  explicit ReplayMachine(std::shared_ptr<SessionReader> reader) : reader_(std::move(reader)) {}
  const Snapshot& refresh() override {
    reader_->sample();
    return reader_->snapshot();
  }
  const Snapshot& snapshot() const override { return reader_->snapshot(); }
  bool mouseConnected() const override { return true; }
  void grabMouse(bool) override {}
  bool showControlPanel() override { return false; }
  void listControllers() override {}
  std::unique_ptr<ForceFeedback> openForceFeedback(std::uint32_t id) override {
    const std::optional<std::uint32_t> kinds = reader_->motors(id);
    return kinds ? std::make_unique<StillMotors>(*kinds) : nullptr;
  }

 private:
  std::shared_ptr<SessionReader> reader_;
};

/// The session in progress, if any.
struct Session {
  std::shared_ptr<SessionWriter> writer;
  std::shared_ptr<SessionReader> reader;
  std::shared_ptr<Machine> machine;  ///< of before
  host::TickSource ticks;            ///< of before
};

void begin(engine::EngineContext& context, Session session, std::shared_ptr<Machine> machine, host::TickSource ticks) {
  session.machine = context.get<InputState>().machine;
  session.ticks = std::exchange(context.platform.ticks, std::move(ticks));
  replaceMachine(context, std::move(machine));
  context.get<Session>() = std::move(session);
}

host::TickSource recorded(host::TickSource ticks, std::shared_ptr<SessionWriter> writer) {
  return [source = std::move(ticks), to = std::move(writer)] {
    const std::uint32_t now = source();
    to->tick(now);
    return now;
  };
}

ClientSize sizeOf(const engine::EngineContext& context) {
  if (!context.focusWindow) return {};
  const device::Window::Size size = context.focusWindow->clientSize();
  return {size.width, size.height};
}

void followSize(engine::EngineContext& context, const ClientSize& size) {
  const bool own = !context.focusWindow || context.focusWindow == context.internalWindow;
  if (!own || context.fullScreen || size.width == 0 || size.height == 0 || sizeOf(context) == size) return;
  engine::internalWindow(context).setMode(false, {size.width, size.height});
}

}  // namespace

bool startRecording(engine::EngineContext& context, const std::string& fileName, const std::string& note) {
  stopSession(context);
  try {
    Session session;
    session.writer = std::make_shared<SessionWriter>(host::pathForWriting(fileName), note);
    auto machine = std::make_shared<RecordingMachine>(context.get<InputState>().machine, session.writer);
    host::TickSource ticks = recorded(context.platform.ticks, session.writer);
    begin(context, std::move(session), std::move(machine), std::move(ticks));
    return true;
  } catch (const host::FileFault& fault) {
    context.log.writeError("INPUT : Error during recording : " + fileName, fault.what(), fault.number());
    return false;
  }
}

bool startReplay(engine::EngineContext& context, const std::string& fileName) {
  stopSession(context);
  try {
    Session session;
    session.reader = std::make_shared<SessionReader>(host::readFile(fileName, kLargestFile));
    auto machine = std::make_shared<ReplayMachine>(session.reader);
    host::TickSource ticks = [reader = session.reader] { return reader->tick(); };
    followSize(context, session.reader->firstSize());
    begin(context, std::move(session), std::move(machine), std::move(ticks));
    return true;
  } catch (const host::FileFault& fault) {
    context.log.writeError("INPUT : Error during replay : " + fileName, fault.what(), fault.number());
    return false;
  }
}

bool stopSession(engine::EngineContext& context) {
  Session session = std::exchange(context.get<Session>(), {});
  if (!session.writer && !session.reader) return false;
  replaceMachine(context, session.machine);
  context.platform.ticks = std::move(session.ticks);
  if (session.reader) return session.reader->complete();
  const bool whole = session.writer->finish();
  if (!whole) context.log.write("INPUT : The session could not be written completely");
  return whole;
}

bool replayEnded(engine::EngineContext& context) {
  const Session& session = context.get<Session>();
  return session.reader && session.reader->ended();
}

std::string sessionNote(engine::EngineContext& context) {
  const Session& session = context.get<Session>();
  return session.reader ? session.reader->note() : std::string();
}

void endSessionFrame(engine::EngineContext& context) {
  Session& session = context.get<Session>();
  if (session.writer) session.writer->endFrame(sizeOf(context));
  if (!session.reader) return;
  session.reader->endFrame();
  followSize(context, session.reader->size());
}

void setClock(engine::EngineContext& context, host::TickSource ticks) {
  Session& session = context.get<Session>();
  if (session.reader) {
    session.ticks = std::move(ticks);
  } else if (session.writer) {
    session.ticks = ticks;
    context.platform.ticks = recorded(std::move(ticks), session.writer);
  } else {
    context.platform.ticks = std::move(ticks);
  }
}

}  // namespace ql::input
