/// @file
/// Trace files made by hand, so that each row of a test shows its defect. Programs that include this link zlib and the
/// module platform_recording.
#pragma once

#include "platform/recording/TraceFormat.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <zlib.h>

namespace ql::test {

/// A trace of one block of records after any blobs.
class TraceFile {
 public:
  /// @param blob its bytes, before compression
  TraceFile& blob(const std::string& bytes) {
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    std::string packed(size, '\0');
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
             static_cast<uLong>(bytes.size()));
    packed.resize(size);
    return block(recording::kBlobBlock, packed, bytes.size());
  }
  /// Raw records. @param promised bytes that the block says it holds, when not as many as it does
  TraceFile& records(const std::string& bytes, std::size_t promised = ~std::size_t{0}) {
    z_stream stream{};
    deflateInit(&stream, Z_BEST_SPEED);
    std::string packed(deflateBound(&stream, static_cast<uLong>(bytes.size())) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_SYNC_FLUSH);
    packed.resize(packed.size() - stream.avail_out);
    deflateEnd(&stream);
    return block(recording::kRecordBlock, packed, promised == ~std::size_t{0} ? bytes.size() : promised);
  }
  TraceFile& block(std::uint8_t kind, const std::string& payload, std::size_t size) {
    recording::BlockHeader header;
    header.kind = kind;
    header.stored = static_cast<std::uint32_t>(payload.size());
    header.size = static_cast<std::uint32_t>(size);
    header.check = static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(payload.data()), static_cast<uInt>(payload.size())));
    add(&header, sizeof header);
    add(payload.data(), payload.size());
    return *this;
  }
  TraceFile& end() { return block(recording::kEndBlock, "", 0); }
  std::vector<std::byte> bytes() const { return file_; }

  TraceFile() {
    const recording::TraceHeader header;
    add(&header, sizeof header);
  }

 private:
  void add(const void* bytes, std::size_t size) {
    const auto* first = static_cast<const std::byte*>(bytes);
    file_.insert(file_.end(), first, first + size);
  }
  std::vector<std::byte> file_;
};

/// The definition of a signature. @param types a digit for each value: 0 integer, 1 real, 2 text, 3 bytes, 4 blob
inline std::string signature(bool effect, std::string_view name, std::string_view types) {
  std::string out{'\0', effect ? '\1' : '\0', static_cast<char>(name.size())};
  out.append(name).append(1, static_cast<char>(types.size()));
  for (const char type : types) out += static_cast<char>(type - '0');
  return out;
}

/// A number as records have it.
inline std::string number(std::uint64_t value) {
  std::string out;
  for (; value >= 0x80; value >>= 7) out += static_cast<char>(value | 0x80);
  return out + static_cast<char>(value);
}
inline std::string integer(std::int64_t value) {
  return number(static_cast<std::uint64_t>(value) << 1 ^ static_cast<std::uint64_t>(value >> 63));
}

}  // namespace ql::test
