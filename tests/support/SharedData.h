/// @file
/// Real files from elsewhere, which stand beside the project on some machines only.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace ql::test {

inline std::filesystem::path sharedData() { return QL_SHARED_DATA_DIR; }
inline bool haveSharedData() { return std::filesystem::exists(sharedData() / "MANIFEST.json"); }

/// Every regular file below a folder of the shared data, in name order.
inline std::vector<std::filesystem::path> sharedFiles(const std::string& folder) {
  std::vector<std::filesystem::path> files;
  if (!std::filesystem::exists(sharedData() / folder)) return files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(sharedData() / folder))
    if (entry.is_regular_file()) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace ql::test

/// Skips the test where the shared files are absent.
#define QL_NEED_SHARED_DATA() \
  if (!ql::test::haveSharedData()) GTEST_SKIP() << "skipped: no shared data at " << ql::test::sharedData()
