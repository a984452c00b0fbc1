// Lines of the log, each on disk when the call returns. "keptOpen" is the floor: a file that stays open, flushed after
// each line.
#include "diagnostics/Log.h"

#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;

constexpr char kMessage[] = "TEXTURE : textures/base/stone.jpg loaded 256x256 STATE : OK";

std::int64_t linesOf(const std::filesystem::path& file) {
  const std::string text = test::contents(file);
  return std::count(text.begin(), text.end(), '\n');
}

void writeLine(benchmark::State& state) {
  const test::TemporaryFolder folder;
  diagnostics::Log log(folder.path() / "log.txt");
  log.start();
  const std::int64_t banner = linesOf(log.path());
  for (auto _ : state) log.write(kMessage);
  if (linesOf(log.path()) != banner + state.iterations()) state.SkipWithError("lines are missing");
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(writeLine);

void keptOpen(benchmark::State& state) {
  const test::TemporaryFolder folder;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen("log.txt", "wb"), &std::fclose);
  for (auto _ : state) {
    std::fprintf(file.get(), "01-01-2026 00:00:00 | %s\r\n", kMessage);
    std::fflush(file.get());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(keptOpen);

}  // namespace
