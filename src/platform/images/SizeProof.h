/// @file
/// What a picture's header promises, proven before pixels are allocated.
#pragma once

#include "platform/images/Image.h"

#include <cstdint>

namespace ql::images {

/// The rule for every decoder: decoded pixels never take more than 64 MB plus four times the file. 64 MB are exactly
/// 4096 × 4096 pixels of four bytes, so every texture up to that size loads however well it is compressed; a larger one
/// loads when its file is large too, and a header that lies costs a bounded amount.
///
/// Compressed formats add their own bound, since a file of a hundred bytes cannot hold 4096 × 4096 pixels either: a
/// format states how many pixels a byte can carry at most (a run of 255 in two bytes, deflate's 1032 : 1, one bit for
/// an 8 × 8 block). Pictures of up to kFreePixels pass without that test, so that odd but honest files (a run-length
/// file that only skips rows, say) load.
///
/// The JPEG library keeps the coefficients of progressive files beside the pixels: two bytes for each sample, so at
/// most 8 bytes per pixel more.
inline constexpr std::uint64_t kFreeBytes = 64u << 20;
inline constexpr std::uint64_t kFreePixels = 1u << 20;

/// @param pixelsPerByte the most pixels that one byte of the file can stand for
/// @throws host::FileFault BadSize for an empty picture or a side over kMaxSide, TooLarge for pixels over the bounds
/// above
void proveSize(std::uint64_t width, std::uint64_t height, std::uint64_t fileSize, std::uint64_t pixelsPerByte);

/// An opaque black picture. The size must have been proven.
Image blankImage(std::uint32_t width, std::uint32_t height);

}  // namespace ql::images
