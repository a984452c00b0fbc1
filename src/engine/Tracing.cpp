#include "engine/Tracing.h"

#include "engine/EngineError.h"
#include "platform/host/Files.h"
#include "platform/recording/TraceWriter.h"

#include <memory>

namespace ql::engine {
namespace {

/// Lets go of the devices before the writer ends.
class Tracing {
 public:
  Tracing(EngineContext& context, const std::string& fileName)
      : context_(context), writer_(host::pathForWriting(fileName)) {
    if (context.device) {
      context.device->describe(writer_);
      context.device->setCallSink(&writer_);
    }
    context.direct3D->setCallSink(&writer_);
  }
  ~Tracing() {
    if (context_.direct3D) context_.direct3D->setCallSink(nullptr);
    if (context_.device) context_.device->setCallSink(nullptr);
  }
  Tracing(const Tracing&) = delete;
  Tracing& operator=(const Tracing&) = delete;
  bool finish() { return writer_.finish(); }

 private:
  EngineContext& context_;
  recording::TraceWriter writer_;
};

/// The trace in progress, if any.
struct CurrentTrace {
  std::unique_ptr<Tracing> tracing;
};

}  // namespace

bool startTrace(EngineContext& context, const std::string& fileName) {
  if (!context.direct3D) throw EngineError(kNotSet, "no engine object");
  stopTrace(context);
  try {
    context.get<CurrentTrace>().tracing = std::make_unique<Tracing>(context, fileName);
    return true;
  } catch (const host::FileFault& fault) {
    context.log.writeError("TRACE : Error during creating : " + fileName, fault.what(), fault.number());
    return false;
  }
}

bool stopTrace(EngineContext& context) {
  CurrentTrace& current = context.get<CurrentTrace>();
  if (!current.tracing) return false;
  const bool whole = current.tracing->finish();
  if (!whole) context.log.write("TRACE : The file could not be written completely");
  current.tracing.reset();
  return whole;
}

}  // namespace ql::engine
