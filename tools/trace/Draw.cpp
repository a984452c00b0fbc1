// Drawing a trace again: on one device, or on two and comparing.
#include "Commands.h"
#include "Open.h"
#include "Pictures.h"
#include "Progress.h"
#include "walk/TextFile.h"

#include <algorithm>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace ql::trace {
namespace {

using recording::Replayer;
using recording::Trace;
using Json = nlohmann::ordered_json;

bool wanted(const Options& options, std::uint64_t frame) {
  return options.frames.holds(frame) && (frame - options.frames.first) % static_cast<std::uint64_t>(options.every) == 0;
}

Json countsOf(const Replayer& replayer) {
  const Replayer::Counts& counts = replayer.counts();
  return {{"calls", counts.calls}, {"refused", counts.refused}, {"unknown", counts.unknown}};
}

void warn(const Options& options, const Trace& trace, const Replayer& replayer) {
  if (options.talk == Talk::Quiet) return;
  if (!trace.complete()) fmt::print(stderr, "ql-trace: the trace was cut off after {} whole frames\n", trace.frames());
  if (const std::uint64_t unknown = replayer.counts().unknown; unknown > 0)
    fmt::print(stderr, "ql-trace: {} records of unknown names were passed over\n", unknown);
}

Json reportOf(const Options& options, const Trace& trace) {
  return {{"trace", options.traces.front().string()}, {"complete", trace.complete()}, {"frames", Json::array()}};
}

void finish(const Options& options, const Json& report) {
  if (options.json) walk::writeText(*options.json, report.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

}  // namespace

ExitCode replay(const Options& options) {
  const Trace trace = openTrace(options.traces.front());
  makeFolder(options.out);
  const auto replayer = replayerOn(options.devices.front(), trace);
  Progress progress("drawing", options.talk != Talk::Quiet);
  Json report = reportOf(options, trace);
  report["device"] = nameOf(options.devices.front());
  std::uint64_t written = 0;
  for (std::uint64_t frame = 0; frame <= options.frames.last && replayer->nextFrame(); ++frame) {
    progress.at(frame + 1, trace.frames());
    if (!wanted(options, frame)) continue;
    const std::string name = fmt::format("frame-{:04}.png", frame);
    writePicture(options.out / name, imageOf(replayer->picture()));
    report["frames"].push_back({{"frame", frame}, {"picture", name}});
    ++written;
  }
  report["counts"] = countsOf(*replayer);
  warn(options, trace, *replayer);
  finish(options, report);
  if (options.talk != Talk::Quiet && options.json != "-")
    fmt::print("{} of {} frames: {}\n", written, trace.frames(), options.out.string());
  return ExitCode::Success;
}

ExitCode diff(const Options& options) {
  const Trace trace = openTrace(options.traces.front());
  makeFolder(options.out);
  const std::string names[] = {nameOf(options.devices[0]), nameOf(options.devices[1])};
  const auto a = replayerOn(options.devices[0], trace), b = replayerOn(options.devices[1], trace);
  const bool print = options.talk != Talk::Quiet && options.json != "-";
  Progress progress("comparing", options.talk != Talk::Quiet);
  Json report = reportOf(options, trace);
  report["devices"] = names;
  double worstMean = 0;
  int worst = 0;
  std::uint64_t beyond = 0;
  for (std::uint64_t frame = 0; frame <= options.frames.last && a->nextFrame() && b->nextFrame(); ++frame) {
    progress.at(frame + 1, trace.frames());
    if (!wanted(options, frame)) continue;
    const images::Image left = imageOf(a->picture()), right = imageOf(b->picture());
    const Difference apart = differenceOf(left, right);
    const std::string stem = (options.out / fmt::format("frame-{:04}-", frame)).string();
    writePicture(stem + "a-" + names[0] + ".png", left);
    writePicture(stem + "b-" + names[1] + ".png", right);
    writePicture(stem + "difference.png", apart.picture);
    const bool within = apart.mean <= options.tolerance && apart.largest <= options.maximum.value_or(255);
    report["frames"].push_back(
        {{"frame", frame}, {"mean", apart.mean}, {"maximum", apart.largest}, {"within", within}});
    worstMean = std::max(worstMean, apart.mean);
    worst = std::max(worst, apart.largest);
    if (!within) ++beyond;
    if (print && (!within || options.talk == Talk::Verbose))
      fmt::print("frame {}: mean {:.4f}, maximum {}{}\n", frame, apart.mean, apart.largest, within ? "" : " - beyond");
  }
  report["mean"] = worstMean;
  report["maximum"] = worst;
  report["beyond"] = beyond;
  report["counts"] = {{"a", countsOf(*a)}, {"b", countsOf(*b)}};
  warn(options, trace, *a);
  finish(options, report);
  if (print)
    fmt::print("{} and {}, {} frames: largest mean {:.4f}, maximum {}, {} beyond the tolerance: {}\n", names[0],
               names[1], report["frames"].size(), worstMean, worst, beyond, options.out.string());
  return beyond == 0 ? ExitCode::Success : ExitCode::Differ;
}

}  // namespace ql::trace
