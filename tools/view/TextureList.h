/// @file
/// The textures that a file carries: a package's, a Half-Life level's own, an archive's pictures.
#pragma once

#include "FileKind.h"
#include "platform/images/Image.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace view {

class TextureList {
 public:
  /// @param kind Package, Archive or Level @throws walk::Failure Unreadable; Malformed, also when there are none
  TextureList(Kind kind, const std::filesystem::path& file);

  std::size_t count() const { return entries_.size(); }
  /// As the file has it: UTF-8 or Windows-1252.
  const std::string& name(std::size_t index) const { return entries_[index].name; }
  /// @throws std::exception when the texture cannot be read
  ql::images::Image decode(std::size_t index) const;

 private:
  struct Entry {
    std::string name;
    std::function<ql::images::Image()> decode;
  };
  void addPackage();
  void addLevel();
  void addArchive();

  std::vector<std::byte> bytes_;
  std::vector<Entry> entries_;
};

}  // namespace view
