#include "Options.h"

#include "Failure.h"

#include <charconv>
#include <string_view>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace ql::trace {
namespace {

FrameRange parseFrames(const std::string& text) {
  FrameRange range;
  const char* const end = text.data() + text.size();
  const auto [afterFirst, error] = std::from_chars(text.data(), end, range.first);
  bool good = error == std::errc() && afterFirst != text.data();
  if (good && afterFirst == end) {
    range.last = range.first;
  } else if (good && *afterFirst == '-' && afterFirst + 1 != end) {
    const auto [afterLast, lastError] = std::from_chars(afterFirst + 1, end, range.last);
    good = lastError == std::errc() && afterLast == end && range.last >= range.first;
  } else {
    good = good && *afterFirst == '-';
  }
  if (!good) throw Failure(ExitCode::Usage, fmt::format("--frames: '{}' is not A, A- or A-B", text));
  return range;
}

std::vector<DeviceKind> parseDevices(const std::string& text, std::size_t count) {
  std::vector<DeviceKind> kinds;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view word = rest.substr(0, rest.find(','));
    if (word != "ref" && word != "hal")
      throw Failure(ExitCode::Usage, fmt::format("--device: '{}' is neither ref nor hal", word));
    kinds.push_back(word == "ref" ? DeviceKind::Reference : DeviceKind::Hardware);
    rest.remove_prefix(std::min(rest.size(), word.size() + 1));
  }
  if (kinds.size() != count)
    throw Failure(ExitCode::Usage, fmt::format("--device: '{}' names {} devices, not {}", text, kinds.size(), count));
  return kinds;
}

}  // namespace

const char* nameOf(DeviceKind kind) { return kind == DeviceKind::Reference ? "ref" : "hal"; }

std::optional<Options> parseOptions(int argc, char** argv) {
  Options options;
  std::string frames, device;
  bool quiet = false, verbose = false;
  CLI::App app("Records what a device is told, and shows, draws again and compares such traces.", "ql-trace");
  app.set_version_flag("--version", "ql-trace " QL_VERSION);
  app.require_subcommand(1);
  const auto command = [&](const char* name, const char* what, int traces) {
    CLI::App* sub = app.add_subcommand(name, what);
    if (traces > 0)
      sub->add_option(traces == 1 ? "TRACE" : "TRACES", options.traces, "trace files")
          ->required()
          ->expected(traces)
          ->type_name("FILE");
    auto* quietFlag = sub->add_flag("--quiet", quiet, "say nothing but errors");
    sub->add_flag("--verbose", verbose, "say more")->excludes(quietFlag);
    return sub;
  };
  const auto framesOption = [&](CLI::App* sub) {
    sub->add_option("--frames", frames, "frames A, A- or A-B, from 0; default: all")->type_name("A-B");
  };
  const auto pictureOptions = [&](CLI::App* sub) {
    framesOption(sub);
    sub->add_option("--every", options.every, "one picture in N frames")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1, 1'000'000));
    sub->add_option("--out", options.out, "folder for the pictures")->type_name("DIR")->capture_default_str();
    sub->add_option("--json", options.json, "file for the figures, - for standard output")->type_name("FILE");
  };

  CLI::App* record = app.add_subcommand("record", "Walks through a level as ql-walk does and writes a trace");
  record->prefix_command();  // the rest is ql-walk's
  record->footer(
      "ql-trace record TRACE [LEVEL] [OPTIONS]: what follows TRACE is handed to ql-walk: a level, --frames, --size, "
      "--device, --poses, ...");

  CLI::App* show = command("show", "Prints the calls of a trace, frame by frame", 1);
  framesOption(show);
  show->add_option("--name", options.names, "only calls of this name; may be repeated")->type_name("NAME");

  CLI::App* replay = command("replay", "Draws the frames of a trace", 1);
  pictureOptions(replay);
  replay->add_option("--device", device, "ref (software) or hal (hardware)")->type_name("KIND")->default_str("ref");

  CLI::App* compare = command("compare", "Says where two traces first differ", 2);

  CLI::App* diff = command("diff", "Draws a trace on two devices and shows how the pictures differ", 1);
  pictureOptions(diff);
  diff->add_option("--device", device, "the two devices")->type_name("KIND,KIND")->default_str("ref,hal");
  diff->add_option("--tolerance", options.tolerance, "largest mean difference of a frame's channels, of 255")
      ->type_name("MEAN")
      ->capture_default_str()
      ->check(CLI::Range(0.0, 255.0));
  diff->add_option("--maximum", options.maximum, "largest difference of any channel; default: any")
      ->type_name("N")
      ->check(CLI::Range(0, 255));

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {  // help, version
    app.exit(success);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw Failure(ExitCode::Usage, error.what());
  }
  options.command = *record    ? Command::Record
                    : *show    ? Command::Show
                    : *replay  ? Command::Replay
                    : *compare ? Command::Compare
                               : Command::Diff;
  if (*record) {
    options.walk = record->remaining();
    if (options.walk.empty() || options.walk.front().starts_with('-'))
      throw Failure(ExitCode::Usage, "record: the trace file to write comes first");
    options.traces.emplace_back(options.walk.front());
    options.walk.erase(options.walk.begin());
  }
  if (!frames.empty()) options.frames = parseFrames(frames);
  if (*replay) options.devices = parseDevices(device.empty() ? "ref" : device, 1);
  if (*diff) options.devices = parseDevices(device.empty() ? "ref,hal" : device, 2);
  options.talk = quiet ? Talk::Quiet : verbose ? Talk::Verbose : Talk::Normal;
  return options;
}

}  // namespace ql::trace
