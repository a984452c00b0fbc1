/// @file
/// The compression of X files: blocks of up to 32 KB, each a deflate stream that may refer to the block before.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ql::xfile {

/// Bytes that compressed data may grow to: far above what text and vertices reach.
constexpr std::uint64_t inflateLimit(std::uint64_t compressed) { return compressed * 16 + (std::uint64_t{16} << 20); }

/// What follows the 16-byte header of a compressed file, as it was before it was compressed.
/// @throws host::FileFault BadEncoding, Truncated, TooLarge
std::vector<std::byte> inflateBlocks(std::span<const std::byte> file);

}  // namespace ql::xfile
