#include "Commands.h"
#include "Open.h"
#include "platform/recording/TraceText.h"

#include <algorithm>
#include <optional>

#include <fmt/format.h>

namespace ql::trace {

ExitCode show(const Options& options) {
  const recording::Trace trace = openTrace(options.traces.front());
  if (options.talk != Talk::Quiet)
    fmt::print("# version {}, {} frames, {} records, {} blobs, {} bytes{}\n", trace.version(), trace.frames(),
               trace.records(), trace.blobs(), trace.size(), trace.complete() ? "" : ", cut off");
  recording::TraceCursor cursor(trace);
  std::optional<std::uint64_t> frame;
  while (const recording::TraceRecord* record = cursor.next()) {
    if (record->frame > options.frames.last) break;
    if (!options.frames.holds(record->frame)) continue;
    if (!options.names.empty() && std::ranges::find(options.names, record->name) == options.names.end()) continue;
    if (frame != record->frame) fmt::print("frame {}\n", record->frame);
    frame = record->frame;
    if (options.talk == Talk::Verbose) fmt::print("{:>8}", record->number);
    fmt::print("  {}\n", recording::lineOf(cursor, *record));
  }
  return ExitCode::Success;
}

}  // namespace ql::trace
