#include "platform/xfile/Inflate.h"

#include "platform/host/ByteReader.h"

#include <algorithm>
#include <array>

#include <zlib.h>

namespace ql::xfile {
namespace {

constexpr std::size_t kHeaderSize = 16, kLargestBlock = 32768;

/// A decoder of raw deflate streams.
class Inflater {
 public:
  Inflater() {
    if (inflateInit2(&stream_, -MAX_WBITS) != Z_OK) throw std::bad_alloc();
  }
  ~Inflater() { inflateEnd(&stream_); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  /// Whether a block decodes to exactly the bytes of out. @param before what was decoded last
  bool block(std::span<const std::byte> in, std::span<const std::byte> before, std::span<std::byte> out) {
    inflateReset(&stream_);
    if (!before.empty() && inflateSetDictionary(&stream_, bytes(before), static_cast<uInt>(before.size())) != Z_OK)
      return false;
    // The decoder only reads its input, though its interface does not say so.
    stream_.next_in = const_cast<Bytef*>(bytes(in));
    stream_.avail_in = static_cast<uInt>(in.size());
    stream_.next_out = reinterpret_cast<Bytef*>(out.data());
    stream_.avail_out = static_cast<uInt>(out.size());
    const int result = inflate(&stream_, Z_FINISH);
    return result == Z_STREAM_END && stream_.avail_out == 0;
  }

 private:
  static const Bytef* bytes(std::span<const std::byte> span) { return reinterpret_cast<const Bytef*>(span.data()); }
  z_stream stream_{};
};

}  // namespace

std::vector<std::byte> inflateBlocks(std::span<const std::byte> file) {
  const host::ByteReader reader(file);
  // The size before compression counts the header too.
  const auto whole = reader.at<std::uint32_t>(kHeaderSize, "compressed size");
  const std::uint64_t limit = inflateLimit(file.size());
  if (whole > limit) throw host::FileFault(host::Fault::TooLarge, "compressed data", kHeaderSize, whole, limit);

  Inflater inflater;
  std::vector<std::byte> out;
  std::size_t at = kHeaderSize + sizeof whole;
  while (at < file.size() && out.size() + kHeaderSize < whole) {
    const auto [plain, packed] = reader.at<std::array<std::uint16_t, 2>>(at, "compressed block");
    at += 4;
    const std::span<const std::byte> block = reader.range(at, packed, "compressed block");
    const bool marked = packed >= 2 && block[0] == std::byte{'C'} && block[1] == std::byte{'K'};
    const std::uint64_t left = whole - kHeaderSize - out.size();
    if (!marked || plain > kLargestBlock || plain > left)
      throw host::FileFault(host::Fault::BadEncoding, "compressed block", at);
    const std::size_t done = out.size(), window = std::min(done, kLargestBlock);
    out.resize(done + plain);
    const std::span<std::byte> all(out);
    if (!inflater.block(block.subspan(2), all.subspan(done - window, window), all.subspan(done)))
      throw host::FileFault(host::Fault::BadEncoding, "compressed block", at);
    at += packed;
  }
  return out;
}

}  // namespace ql::xfile
