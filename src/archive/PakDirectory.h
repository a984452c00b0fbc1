/// @file
/// The directory of a PAK archive: a 12-byte header that points to entries of 64 bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ql::archive {

/// A directory entry as the engine uses it. Offset and size are unchecked.
struct PakEntry {
  std::string name;         ///< up to 55 characters, cut at its NUL and trimmed of blanks
  std::int32_t offset = 0;  ///< of the file's bytes in the archive
  std::int32_t size = 0;    ///< bytes
};

/// What the header and the directory of an archive say.
struct PakDirectory {
  std::int32_t identifier = 0, directoryOffset = 0, directoryLength = 0;
  std::int32_t fileCount = 0;     ///< directory length / 64, rounded down
  std::vector<PakEntry> entries;  ///< as many as are listed, at most 4097; slots past the end of the file are empty

  /// The first entry of this name, ignoring case; nothing when none is listed.
  const PakEntry* find(std::string_view name) const;

  std::unordered_map<std::string, std::size_t> firstByName;  ///< by case-folded name
};

/// Reads header and directory of an archive, whatever else its size. All 4097 slots from the directory offset on must
/// hold a terminated name, listed or not; those past the end of the file read as zeros.
/// @throws host::FileFault
PakDirectory readPakDirectory(std::istream& archive);
/// The same from an archive in memory.
PakDirectory parsePakDirectory(std::span<const std::byte> bytes);

}  // namespace ql::archive
