/// @file
/// The layout of trace files. For this folder's own sources, and for tests that make damaged ones.
///
/// A file is a header and blocks; all numbers are little-endian. A block is a BlockHeader and its payload:
///
///   'R'  records: a piece of one deflate stream that runs through all blocks of this kind, flushed at each block's end
///   'B'  a blob: bytes of a call, as a deflate stream of its own; the first is number 0. It stands before the records
///        that name it
///   'E'  the end of a trace that was finished; empty
///
/// Records never run from one block into the next. A record starts with a number: 0 defines the next signature, n is a
/// call with signature n - 1, followed by its values. Numbers are varints: 7 bits a byte, the lowest first, the high
/// bit set on all but the last.
///
///   signature  Origin (1 byte), length and bytes of the name, count and ValueTypes (1 byte each) of the values
///   Integer    a varint of zigzag coding (0, -1, 1, -2, ...)
///   Real       4 bytes
///   Text       length and bytes
///   Bytes      length and bytes
///   Blob       number of a blob
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ql::recording {

inline constexpr std::array<char, 8> kTraceMagic{'Q', 'L', 'T', 'R', 'A', 'C', 'E', '\n'};
inline constexpr std::uint32_t kTraceVersion = 1;

struct TraceHeader {
  std::array<char, 8> magic = kTraceMagic;
  std::uint32_t version = kTraceVersion;
};
static_assert(sizeof(TraceHeader) == 12);

inline constexpr std::uint8_t kRecordBlock = 'R', kBlobBlock = 'B', kEndBlock = 'E';

struct BlockHeader {
  std::uint8_t kind = kEndBlock;
  std::array<std::uint8_t, 3> reserved{};  ///< 0
  std::uint32_t stored = 0;                ///< bytes of the payload
  std::uint32_t size = 0;                  ///< bytes that the payload inflates to
  std::uint32_t check = 0;                 ///< CRC-32 of the payload
};
static_assert(sizeof(BlockHeader) == 16);

/// Who told of it: the device before it acted, or what came of it.
enum class Origin : std::uint8_t { Call = 0, Effect = 1 };
enum class ValueType : std::uint8_t { Integer = 0, Real = 1, Text = 2, Bytes = 3, Blob = 4 };

inline constexpr std::size_t kMaxName = 64, kMaxValues = 64, kMaxText = 4096, kMaxSignatures = 4096;
/// Bytes up to this many stand in their record, more become a blob.
inline constexpr std::size_t kMaxInline = 256;
inline constexpr std::uint32_t kMaxRecordBlock = 1 << 20, kMaxBlob = 1 << 30;

/// Deflate makes at most this many bytes of one, and a few more where a stream ends: larger promises are false.
inline constexpr std::uint64_t kMaxInflation = 1032;

/// The call that ends a frame.
inline constexpr std::string_view kFrameEnd = "Present";

}  // namespace ql::recording
