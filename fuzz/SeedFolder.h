/// @file
/// Writing seeds where a run starts from.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace ql::test {

/// Writes the seeds into every empty folder among a fuzz program's arguments.
inline void writeSeeds(int argc, char** argv, const std::vector<std::vector<std::byte>>& seeds) {
  for (int i = 1; i < argc; ++i) {
    const std::filesystem::path folder = argv[i];
    if (!std::filesystem::is_directory(folder) || !std::filesystem::is_empty(folder)) continue;
    for (std::size_t k = 0; k < seeds.size(); ++k)
      std::ofstream(folder / ("seed-" + std::to_string(k)), std::ios::binary)
          .write(reinterpret_cast<const char*>(seeds[k].data()), static_cast<std::streamsize>(seeds[k].size()));
  }
}

}  // namespace ql::test
