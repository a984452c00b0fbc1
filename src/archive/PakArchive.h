/// @file
/// PAK archives: one may be open; loaders have a file copied out of it before they open it and removed afterwards.
#pragma once

#include "archive/PakDirectory.h"
#include "diagnostics/Log.h"

#include <filesystem>
#include <fstream>
#include <string>

namespace ql::archive {

/// The archive manager. Only setSearchDirectory throws; everything else reports through the log.
class PakArchive {
 public:
  explicit PakArchive(diagnostics::Log& log);

  /// Opens an archive and lists it. While one is open this fails and closes it.
  void open(const std::string& fileName);
  void close();
  bool isOpen() const { return file_.is_open(); }
  /// What the open archive lists.
  const PakDirectory& directory() const { return directory_; }

  /// Makes a file available on disk: when it does not exist and the open archive lists it, it is copied into the
  /// current directory and name becomes the copy's name; the empty string when it is not listed. Nothing without an
  /// archive. The copy never replaces a file that was there before: it gets another name then (`wall~1.jpg`).
  void expand(std::string& name);
  /// Removes the copy that expand made last, when name is its name (exact letter case).
  void deleteExpanded(const std::string& name);
  /// Appends a backslash when absent and makes the folder current. @throws host::FileFault FolderMissing
  void setSearchDirectory(std::string& path);

 private:
  /// The name that the copy of an entry gets in the current directory.
  std::string nameForCopy(const PakEntry& entry, const std::string& bareName) const;
  void copyOut(const PakEntry& entry, const std::filesystem::path& target);

  /// The last copy that was made and not removed.
  struct Copy {
    std::string name;            ///< as handed to the loader; empty when there is none
    std::filesystem::path path;  ///< absolute: the current directory may change before the copy is removed
    std::string entryName;       ///< what it is a copy of
  };

  diagnostics::Log& log_;
  PakDirectory directory_;
  std::ifstream file_;
  Copy copy_;
};

}  // namespace ql::archive
