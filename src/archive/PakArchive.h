/// @file
/// PAK archives: one may be open; loaders have a file copied out of it before they open it and removed afterwards.
#pragma once

#include "diagnostics/Log.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <vector>

namespace ql::archive {

/// A directory entry as the engine uses it.
struct PakEntry {
  std::string name;         ///< up to 56 characters, cut at its NUL and trimmed
  std::int32_t offset = 0;  ///< of the file's bytes in the archive
  std::int32_t size = 0;    ///< bytes
};

/// What the header and the directory of an archive say.
struct PakDirectory {
  std::int32_t identifier = 0, directoryOffset = 0, directoryLength = 0;
  std::int32_t fileCount = 0;     ///< directory length / 64, rounded down
  std::vector<PakEntry> entries;  ///< as many as are listed, at most 4097; slots past the end of the file are empty
};
/// Reads header and directory of an archive in memory. @throws host::FileFault
PakDirectory parsePakDirectory(std::span<const std::byte> bytes);

/// The archive manager.
class PakArchive {
 public:
  explicit PakArchive(diagnostics::Log& log);
  void open(const std::string& fileName);
  void close();
  bool isOpen() const;
  const PakDirectory& directory() const;

  /// Makes a file available on disk: when it does not exist and the open archive lists it, it is copied into the
  /// current directory and name becomes the copy's name; the empty string when it is not listed. Nothing without an
  /// archive.
  void expand(std::string& name);
  /// Removes the copy that expand made under this name (exact letter case).
  void deleteExpanded(const std::string& name);
  /// Appends a backslash when absent and makes the folder current. @throws host::FileFault Missing
  void setSearchDirectory(std::string& path);

 private:
  diagnostics::Log& log_;
  PakDirectory directory_;
  std::ifstream file_;
  bool open_ = false;
  std::string expandedName_;
  bool expandedPending_ = false;
};

}  // namespace ql::archive
