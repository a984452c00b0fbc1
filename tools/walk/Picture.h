/// @file
/// Pictures: writing them, and a sheet of small ones.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace walk {

/// Rows from the top, each pixel 0xXXRRGGBB.
struct Picture {
  std::uint32_t width = 0, height = 0;
  std::vector<std::uint32_t> pixels;
};

/// @throws Failure Unreadable when it cannot be written
void writePng(const std::filesystem::path& file, const Picture& picture);

/// Gathers small versions of equally large pictures.
class ContactSheet {
 public:
  void add(const Picture& picture);
  bool empty() const { return small_.empty(); }
  /// All of them in a grid, in order.
  Picture sheet() const;

 private:
  std::vector<Picture> small_;
};

}  // namespace walk
