/// @file
/// Options of our own beside Google Benchmark's.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

namespace ql::bench {

/// Takes `--name value` for the names given out of the command line and hands the rest to Google Benchmark. Names that
/// were not on the command line keep their values. @return false when something is left that nobody knows
inline bool readArguments(int argc, char** argv, std::map<std::string, std::string, std::less<>>& values) {
  int kept = 1;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    const auto known = argument.starts_with("--") ? values.find(argument.substr(2)) : values.end();
    if (known != values.end() && i + 1 < argc)
      known->second = argv[++i];
    else
      argv[kept++] = argv[i];
  }
  benchmark::Initialize(&kept, argv);
  return !benchmark::ReportUnrecognizedArguments(kept, argv);
}

}  // namespace ql::bench
