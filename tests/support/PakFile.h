/// @file
/// Small PAK archives in memory.
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>

namespace ql::test {

inline void poke(std::string& bytes, std::size_t at, std::int32_t value) {
  std::memcpy(bytes.data() + at, &value, sizeof value);
}

/// An archive: header, the files' bytes, the directory at the end.
struct PakFile {
  struct Member {
    std::string name, bytes;
  };
  PakFile(std::initializer_list<Member> members) : bytes("PACK01234567") {
    std::string directory;
    for (const Member& member : members) {
      std::string entry = member.name.substr(0, 56);
      entry.resize(64);
      poke(entry, 56, static_cast<std::int32_t>(bytes.size()));
      poke(entry, 60, static_cast<std::int32_t>(member.bytes.size()));
      directory += entry;
      bytes += member.bytes;
    }
    directoryAt = bytes.size();
    poke(bytes, 4, static_cast<std::int32_t>(directoryAt));
    poke(bytes, 8, static_cast<std::int32_t>(directory.size()));
    bytes += directory;
  }
  std::string bytes;
  std::size_t directoryAt = 0;
};

}  // namespace ql::test
