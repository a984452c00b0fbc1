/// @file
/// Texture packages (WAD3) and the 8-bit textures that they and Half-Life levels hold, as plain records.
#pragma once

#include "platform/images/Image.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ql::level {

struct WadEntry {
  std::string name;              ///< as written, cut at its first NUL
  std::uint32_t offset = 0;      ///< bytes from the start of the file
  std::uint32_t size = 0;        ///< on disk
  std::uint8_t type = 0;         ///< kWadTexture: a texture with smaller levels
  std::uint8_t compression = 0;  ///< 0: none, the only kind that is read
};
inline constexpr std::uint8_t kWadTexture = 0x43;

/// The start of a texture in a package or a level.
struct MipTexture {
  std::array<char, 16> name{};
  std::uint32_t width = 0, height = 0;
  std::array<std::uint32_t, 4> levels{};  ///< where each level's pixels are, from this record; 0: not stored here
};
static_assert(sizeof(MipTexture) == 40);

/// Names that start with this have a colour that is not drawn.
inline constexpr char kCutOutMark = '{';

bool isWad3(std::span<const std::byte> bytes);
/// The directory of a package. Entries that don't lie in the file are left out.
/// @throws host::FileFault BadIdentifier, Truncated (directories longer than the file included)
std::vector<WadEntry> parseWad3(std::span<const std::byte> bytes);
/// The entry of a name, without regard to case; null when there is none.
const WadEntry* findWadEntry(const std::vector<WadEntry>& entries, std::string_view name);

/// Decodes the largest level of a texture. The last colour of a texture whose name starts with kCutOutMark becomes
/// transparent. @param bytes from the texture's record to the end of what may belong to it
/// @throws host::FileFault Truncated, BadSize; Unsupported when the pixels are not stored here
images::Image decodeMipTexture(std::span<const std::byte> bytes);

}  // namespace ql::level
