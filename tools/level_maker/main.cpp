#include "Description.h"
#include "MadeFiles.h"
#include "Maker.h"

#include <filesystem>
#include <iostream>
#include <thread>

#include <CLI/CLI.hpp>

namespace {

namespace fs = std::filesystem;

enum ExitCode { kOk = 0, kDiffers = 1, kUsage = 2, kUnreadable = 3, kMalformed = 4 };

int check(const ql::maker::Files& files, const fs::path& folder) {
  int result = kOk;
  for (const auto& [name, bytes] : files)
    if (!ql::maker::isSame(folder / name, bytes, name)) result = kDiffers;
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Makes a level (level file, lightmaps, textures, camera paths) from its description."};
  std::string description;
  std::string out;
  std::string compare;
  std::string quality = "final";
  unsigned threads = std::max(1U, std::thread::hardware_concurrency());
  bool quiet = false;
  app.add_option("description", description, "the level's description")->required();
  auto* outOption = app.add_option("--out", out, "folder to write maps/, textures/ and scripts/ into");
  auto* checkOption = app.add_option(
      "--check", compare, "write nothing; compare with the files in this folder (exit code 1 when they differ)");
  outOption->excludes(checkOption);
  app.add_option("--threads", threads, "threads to use (results do not depend on it)")->check(CLI::Range(1U, 256U));
  app.add_option("--quality", quality, "draft is quick and coarse")->check(CLI::IsMember({"draft", "final"}));
  app.add_flag("--quiet", quiet, "say nothing but errors");
  app.set_version_flag("--version", "ql-make-level 1.0");
  try {
    app.parse(argc, argv);
    if (outOption->count() + checkOption->count() == 0) throw CLI::RequiredError("--out or --check");
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kOk : kUsage;
  }
  const auto text = ql::maker::readFile(description);
  if (!text) {
    std::cerr << "cannot read " << description << "\n";
    return kUnreadable;
  }
  ql::maker::MakeOptions options;
  options.quality = quality == "draft" ? ql::maker::Quality::Draft : ql::maker::Quality::Final;
  options.threads = threads;
  if (!quiet) options.report = [](const std::string& line) { std::cerr << line << "\n"; };
  try {
    const ql::maker::Files files = ql::maker::makeFiles(*text, options);
    if (checkOption->count() > 0) return check(files, compare);
    for (const auto& [name, bytes] : files) {
      if (ql::maker::writeFile(fs::path(out) / name, bytes)) continue;
      std::cerr << "cannot write " << (fs::path(out) / name).string() << "\n";
      return kUnreadable;
    }
  } catch (const ql::maker::DescriptionFault& fault) {
    std::cerr << description << ": " << fault.what() << "\n";
    return kMalformed;
  } catch (const ql::maker::LeakFault& fault) {
    std::cerr << description << ": " << fault.what() << "\n";
    return kMalformed;
  }
  return kOk;
}
