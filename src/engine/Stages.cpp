#include "engine/Stages.h"

#include "engine/EngineError.h"
#include "platform/device/Device.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>

namespace ql::engine {
namespace {

constexpr std::array<const char*, device::kWorkSteps> kStepNames{"vertices", "binning", "tiles"};

std::int64_t now() { return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count(); }

/// The JSON array format of trace events: complete events with a begin and a duration in microseconds, a row ("tid")
/// for the frames and one for each thread.
class StageFile {
 public:
  explicit StageFile(const std::filesystem::path& path)
      : out_(path, std::ios::binary | std::ios::trunc), start_(now()), frameBegin_(start_) {
    out_ << "[\n";
    row(0, "frames");
  }
  bool good() const { return out_.good(); }

  void frame(device::BackEnd& backEnd) {
    const std::int64_t end = now();
    event(("frame " + std::to_string(frame_++)).c_str(), 0, frameBegin_, end);
    frameBegin_ = end;
    for (const device::WorkSpan& span : backEnd.takeSpans()) {
      for (; rows_ <= span.thread; ++rows_) row(rows_ + 1, "thread " + std::to_string(rows_));
      event(kStepNames[static_cast<std::size_t>(span.step)], span.thread + 1, span.begin, span.end);
    }
  }

  bool finish() {
    out_ << "\n]\n";
    return static_cast<bool>(out_.flush());
  }

 private:
  void row(std::uint32_t row, const std::string& name) {
    begin();
    out_ << R"({"name":"thread_name","ph":"M","pid":1,"tid":)" << row << R"(,"args":{"name":")" << name << "\"}}";
  }
  void event(const char* name, std::uint32_t row, std::int64_t from, std::int64_t to) {
    // Digits only: a stream would follow the locale.
    const auto microseconds = [](std::int64_t ns) {
      std::array<char, 40> text{};
      const auto positive = static_cast<long long>(std::max<std::int64_t>(ns, 0));
      std::snprintf(text.data(), text.size(), "%lld.%03lld", positive / 1000, positive % 1000);
      return std::string(text.data());
    };
    begin();
    out_ << R"({"name":")" << name << R"(","ph":"X","pid":1,"tid":)" << row << R"(,"ts":)"
         << microseconds(from - start_) << R"(,"dur":)" << microseconds(to - from) << '}';
  }
  void begin() {
    if (!first_) out_ << ",\n";
    first_ = false;
  }

  std::ofstream out_;
  std::int64_t start_, frameBegin_;
  std::uint64_t frame_ = 0;
  std::uint32_t rows_ = 0;  ///< threads that have a row
  bool first_ = true;
};

struct CurrentStages {
  std::unique_ptr<StageFile> file;
  bool registered = false;
};

void endOfFrame(EngineContext& context) {
  CurrentStages& current = context.get<CurrentStages>();
  if (current.file && context.device) current.file->frame(*context.device->backEnd());
}

}  // namespace

bool startStages(EngineContext& context, const std::string& fileName) {
  if (!context.direct3D) throw EngineError(kNotSet, "no engine object");
  stopStages(context);
  CurrentStages& current = context.get<CurrentStages>();
  auto file = std::make_unique<StageFile>(host::pathForWriting(fileName));
  if (!file->good()) {
    context.log.write("STAGES : Error during creating : " + fileName);
    return false;
  }
  current.file = std::move(file);
  if (!current.registered) {
    context.frameSteps.add(FrameStage::EndOfFrame, [&context] { endOfFrame(context); });
    context.deviceSteps.add(DeviceStage::Created, [&context] {
      if (context.get<CurrentStages>().file) context.device->backEnd()->keepSpans(true);
    });
  }
  current.registered = true;
  if (context.device) context.device->backEnd()->keepSpans(true);
  return true;
}

bool stopStages(EngineContext& context) {
  CurrentStages& current = context.get<CurrentStages>();
  if (!current.file) return false;
  const bool whole = current.file->finish();
  if (!whole) context.log.write("STAGES : The file could not be written completely");
  current.file.reset();
  if (context.device) context.device->backEnd()->keepSpans(false);
  return whole;
}

}  // namespace ql::engine
