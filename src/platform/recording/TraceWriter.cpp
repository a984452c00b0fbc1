#include "platform/recording/TraceWriter.h"

#include "platform/host/Fault.h"
#include "platform/recording/TraceFormat.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include <zlib.h>

namespace ql::recording {
namespace {

// Traces are written while a host's program runs: time counts more than the last percents.
constexpr int kLevel = 3;
constexpr std::size_t kFlushAt = 256 * 1024;
static_assert(kFlushAt + kMaxValues * kMaxText < kMaxRecordBlock);

/// Tells contents apart. 128 bits and the size: that two of a session's arrays meet by accident is not to be feared.
struct Digest {
  std::uint64_t size = 0, a = 0, b = 0;
  bool operator==(const Digest&) const = default;
};
struct DigestHash {
  std::size_t operator()(const Digest& digest) const { return static_cast<std::size_t>(digest.a); }
};

Digest digestOf(std::span<const std::byte> bytes) {
  Digest d{bytes.size(), 0x9E3779B97F4A7C15u, 0xC2B2AE3D27D4EB4Fu};
  const auto mix = [&d](std::uint64_t word) {
    d.a = (d.a ^ word) * 0xFF51AFD7ED558CCDu;
    d.a ^= d.a >> 32;
    d.b = std::rotl(d.b + word * 0x87C37B91114253D5u, 31) * 0x4CF5AD432745937Fu;
  };
  std::uint64_t word = 0;
  std::size_t at = 0;
  for (; bytes.size() - at >= sizeof word; at += sizeof word) {
    std::memcpy(&word, bytes.data() + at, sizeof word);
    mix(word);
  }
  word = 0;
  if (at < bytes.size()) std::memcpy(&word, bytes.data() + at, bytes.size() - at);
  mix(word);
  mix(d.size);
  return d;
}

using Bytes = std::vector<std::uint8_t>;

void putNumber(Bytes& out, std::uint64_t value) {
  for (; value >= 0x80; value >>= 7) out.push_back(static_cast<std::uint8_t>(value | 0x80));
  out.push_back(static_cast<std::uint8_t>(value));
}

template <class Range>
void putBytes(Bytes& out, const Range& bytes) {
  putNumber(out, bytes.size());
  const auto* first = reinterpret_cast<const std::uint8_t*>(bytes.data());
  out.insert(out.end(), first, first + bytes.size());
}

}  // namespace

struct TraceWriter::Impl {
  std::ofstream file;
  Bytes records;  ///< of the block that is being gathered
  std::map<std::string, std::uint64_t, std::less<>> signatures;
  std::unordered_map<Digest, std::uint64_t, DigestHash> blobs;
  z_stream stream{};
  bool failed = false, finished = false;

  explicit Impl(const std::filesystem::path& path) : file(path, std::ios::binary | std::ios::trunc) {
    if (!file) {
      std::error_code ignored;
      const bool folder = !path.has_parent_path() || std::filesystem::is_directory(path.parent_path(), ignored);
      throw host::FileFault(folder ? host::Fault::Unreadable : host::Fault::FolderMissing, "trace");
    }
    if (deflateInit(&stream, kLevel) != Z_OK) throw std::bad_alloc();
  }
  ~Impl() { deflateEnd(&stream); }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  void put(const void* bytes, std::size_t size) {
    file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
  }

  void putBlock(std::uint8_t kind, const Bytes& payload, std::size_t stored, std::size_t size) {
    BlockHeader header;
    header.kind = kind;
    header.stored = static_cast<std::uint32_t>(stored);
    header.size = static_cast<std::uint32_t>(size);
    header.check = static_cast<std::uint32_t>(crc32(0, payload.data(), static_cast<uInt>(stored)));
    put(&header, sizeof header);
    put(payload.data(), stored);
  }

  /// Writes the records so far as a block, to the disk.
  void flush() {
    if (!records.empty()) {
      Bytes packed(deflateBound(&stream, static_cast<uLong>(records.size())) + 64);
      stream.next_in = records.data();
      stream.avail_in = static_cast<uInt>(records.size());
      stream.next_out = packed.data();
      stream.avail_out = static_cast<uInt>(packed.size());
      // A flush is complete when it leaves room.
      while (deflate(&stream, Z_SYNC_FLUSH) == Z_OK && stream.avail_out == 0) {
        const std::size_t done = packed.size();
        packed.resize(done * 2);
        stream.next_out = packed.data() + done;
        stream.avail_out = static_cast<uInt>(packed.size() - done);
      }
      putBlock(kRecordBlock, packed, packed.size() - stream.avail_out, records.size());
      records.clear();
    }
    file.flush();
  }

  std::uint64_t blobOf(std::span<const std::byte> bytes) {
    const auto [known, isNew] = blobs.try_emplace(digestOf(bytes), blobs.size());
    if (isNew) {
      uLongf stored = compressBound(static_cast<uLong>(bytes.size()));
      Bytes packed(stored);
      if (compress2(packed.data(), &stored, reinterpret_cast<const Bytef*>(bytes.data()),
                    static_cast<uLong>(bytes.size()), kLevel) != Z_OK)
        throw std::bad_alloc();
      putBlock(kBlobBlock, packed, stored, bytes.size());
    }
    return known->second;
  }

  std::uint64_t signatureOf(const std::string& signature) {
    const auto known = signatures.find(signature);
    if (known != signatures.end()) return known->second;
    putNumber(records, 0);
    records.insert(records.end(), signature.begin(), signature.end());
    return signatures.emplace(signature, signatures.size() + 1).first->second;
  }

  void record(Origin origin, std::string_view name, std::span<const device::CallValue> values) {
    name = name.substr(0, kMaxName);
    values = values.first(std::min(values.size(), kMaxValues));
    Bytes head{static_cast<std::uint8_t>(origin)};
    putBytes(head, name);
    putNumber(head, values.size());
    Bytes body;
    for (const device::CallValue& value : values) {
      ValueType type{};
      if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        type = ValueType::Integer;
        putNumber(body, static_cast<std::uint64_t>(*integer) << 1 ^ static_cast<std::uint64_t>(*integer >> 63));
      } else if (const auto* real = std::get_if<float>(&value)) {
        type = ValueType::Real;
        const auto four = std::bit_cast<std::array<std::uint8_t, 4>>(*real);
        body.insert(body.end(), four.begin(), four.end());
      } else if (const auto* text = std::get_if<std::string_view>(&value)) {
        type = ValueType::Text;
        putBytes(body, text->substr(0, kMaxText));
      } else {
        const auto bytes = std::get<std::span<const std::byte>>(value);
        type = bytes.size() <= kMaxInline ? ValueType::Bytes : ValueType::Blob;
        if (bytes.size() > kMaxBlob) throw std::length_error("bytes of a call");
        type == ValueType::Bytes ? putBytes(body, bytes) : putNumber(body, blobOf(bytes));
      }
      head.push_back(static_cast<std::uint8_t>(type));
    }
    putNumber(records, signatureOf({head.begin(), head.end()}));
    records.insert(records.end(), body.begin(), body.end());
    const bool frameEnds = origin == Origin::Call && name == kFrameEnd;
    if (frameEnds || records.size() >= kFlushAt) flush();
    failed = !file;
  }

  void tryTo(auto&& step) noexcept {
    if (failed || finished) return;
    try {
      step();
    } catch (const std::exception&) {
      failed = true;
    }
  }
};

TraceWriter::TraceWriter(const std::filesystem::path& file) : impl_(std::make_unique<Impl>(file)) {
  const TraceHeader header;
  impl_->put(&header, sizeof header);
}

TraceWriter::~TraceWriter() { finish(); }

void TraceWriter::call(std::string_view name, std::span<const device::CallValue> values) {
  impl_->tryTo([&] { impl_->record(Origin::Call, name, values); });
}

void TraceWriter::effect(std::string_view name, std::span<const device::CallValue> values) {
  impl_->tryTo([&] { impl_->record(Origin::Effect, name, values); });
}

bool TraceWriter::finish() noexcept {
  impl_->tryTo([this] {
    impl_->flush();
    impl_->putBlock(kEndBlock, {}, 0, 0);
    impl_->file.close();
    impl_->failed = !impl_->file;
  });
  impl_->finished = true;
  return !impl_->failed;
}

}  // namespace ql::recording
