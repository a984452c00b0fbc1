// Copying files out of an archive. "copyFile" is the floor: the same bytes from one file to another.
#include "archive/PakArchive.h"
#include "support/PakFile.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;

std::string noise(std::size_t size) {
  std::mt19937 random(1);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

void expandFromPak(benchmark::State& state) {
  const test::TemporaryFolder folder;
  const std::string bytes = noise(static_cast<std::size_t>(state.range(0)));
  test::put("a.pak", test::PakFile{{"textures/other.tga", "x"}, {"textures/wall.tga", bytes}}.bytes);
  diagnostics::Log log(folder.path() / "log.txt");
  archive::PakArchive archive(log);
  archive.open("a.pak");
  std::string name = "textures/wall.tga";
  archive.expand(name);
  if (test::contents(name) != bytes) state.SkipWithError("the copy differs");
  archive.deleteExpanded(name);
  for (auto _ : state) {
    name = "textures/wall.tga";
    archive.expand(name);
    archive.deleteExpanded(name);
  }
  if (std::filesystem::exists("wall.tga")) state.SkipWithError("the copy stays");
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(expandFromPak)->RangeMultiplier(16)->Range(4 << 10, 16 << 20);

void copyFile(benchmark::State& state) {
  const test::TemporaryFolder folder;
  test::put("a", noise(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) {
    test::put("b", test::contents("a"));
    std::filesystem::remove("b");
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(copyFile)->RangeMultiplier(16)->Range(4 << 10, 16 << 20);

void openPak(benchmark::State& state) {
  const test::TemporaryFolder folder;
  test::PakFile file{};
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    std::string entry = "textures/wall" + std::to_string(i) + ".tga";
    entry.resize(64);
    test::poke(entry, 56, 12);
    file.bytes += entry;
  }
  test::poke(file.bytes, 8, static_cast<std::int32_t>(state.range(0) * 64));
  test::put("a.pak", file.bytes);
  diagnostics::Log log(folder.path() / "log.txt");
  archive::PakArchive archive(log);
  for (auto _ : state) {
    archive.open("a.pak");
    archive.close();
  }
  if (archive.directory().entries.size() != static_cast<std::size_t>(state.range(0)))
    state.SkipWithError("not every file is listed");
}
BENCHMARK(openPak)->Arg(16)->Arg(256)->Arg(4096);

}  // namespace
