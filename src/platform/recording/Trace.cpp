#include "platform/recording/Trace.h"

#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <utility>

#include <zlib.h>

namespace ql::recording {

using host::Fault;
using host::FileFault;

namespace {

// Blobs that a cursor keeps for the next frame.
constexpr std::size_t kKeptBytes = std::size_t{64} << 20;

const Bytef* input(std::span<const std::byte> bytes) { return reinterpret_cast<const Bytef*>(bytes.data()); }
Bytef* output(std::vector<std::byte>& bytes) { return reinterpret_cast<Bytef*>(bytes.data()); }

bool nameCharacter(std::byte b) {
  const auto c = std::to_integer<char>(b);
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

}  // namespace

/// The stream that runs through the blocks of records.
struct TraceCursor::Inflater {
  z_stream stream{};
  Inflater() {
    if (inflateInit(&stream) != Z_OK) throw std::bad_alloc();
  }
  ~Inflater() { inflateEnd(&stream); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  /// Whether a piece gives exactly so many bytes.
  bool inflatePiece(std::span<const std::byte> piece, std::size_t size, std::vector<std::byte>& out) {
    out.resize(size + 1);                               // room for what must not come
    stream.next_in = const_cast<Bytef*>(input(piece));  // NOLINT(cppcoreguidelines-pro-type-const-cast): zlib's type
    stream.avail_in = static_cast<uInt>(piece.size());
    stream.next_out = output(out);
    stream.avail_out = static_cast<uInt>(out.size());
    int result = Z_OK;
    while (result == Z_OK && stream.avail_in > 0) result = inflate(&stream, Z_SYNC_FLUSH);
    const bool exact = result == Z_OK && stream.avail_in == 0 && stream.avail_out == 1;
    out.resize(size);
    return exact;
  }
};

Trace::Trace(std::vector<std::byte> file) : file_(std::move(file)) {
  index();
  // One pass over all records checks them and finds the last whole frame.
  std::uint64_t whole = 0, all = 0;
  TraceCursor cursor(*this);
  while (cursor.read()) {
    ++all;
    if (cursor.frame_ == frames_) continue;
    frames_ = cursor.frame_;
    whole = all;
  }
  records_ = complete_ ? all : whole;
}

Trace Trace::open(const std::filesystem::path& file) { return Trace(host::readFile(file.string())); }

void Trace::index() {
  const host::ByteReader reader(file_);
  if (reader.range(0, kTraceMagic.size(), "trace").size() != kTraceMagic.size() ||
      std::memcmp(file_.data(), kTraceMagic.data(), kTraceMagic.size()) != 0)
    throw FileFault(Fault::BadIdentifier, "trace identifier", 0, std::to_integer<std::uint64_t>(file_[0]), 'Q');
  version_ = reader.at<TraceHeader>(0, "trace header").version;
  if (version_ != kTraceVersion) throw FileFault(Fault::BadVersion, "trace", 8, version_, kTraceVersion);

  for (std::uint64_t at = sizeof(TraceHeader); !complete_;) {
    if (file_.size() - at < sizeof(BlockHeader)) return;
    const auto header = reader.at<BlockHeader>(at, "trace block");
    const std::uint64_t start = at;
    at += sizeof header;
    const bool known = header.kind == kRecordBlock || header.kind == kBlobBlock || header.kind == kEndBlock;
    if (!known || header.reserved != std::array<std::uint8_t, 3>{})
      throw FileFault(Fault::Unsupported, "trace block", start, header.kind);
    const std::uint32_t largest = header.kind == kRecordBlock ? kMaxRecordBlock
                                  : header.kind == kBlobBlock ? kMaxBlob
                                                              : 0;
    const std::uint64_t possible = std::min<std::uint64_t>(largest, (header.stored + 1) * kMaxInflation);
    if (header.size > possible) throw FileFault(Fault::BadSize, "trace block", start, header.size, possible);
    if (header.stored > file_.size() - at) return;
    const auto payload = reader.range(at, header.stored, "trace block");
    if (crc32(0, input(payload), static_cast<uInt>(payload.size())) != header.check)
      throw FileFault(Fault::BadEncoding, "trace block", start);
    if (header.kind == kEndBlock)
      complete_ = true;
    else
      (header.kind == kRecordBlock ? blocks_ : blobs_).push_back({at, header.stored, header.size});
    at += header.stored;
  }
}

std::vector<std::byte> Trace::blob(std::uint32_t number) const {
  const Block& block = blobs_.at(number);
  std::vector<std::byte> bytes(block.size);
  uLongf size = block.size;
  const std::span<const std::byte> stored = std::span(file_).subspan(block.at, block.stored);
  std::byte none{};  // zlib wants somewhere to write, even nothing
  Bytef* to = bytes.empty() ? reinterpret_cast<Bytef*>(&none) : output(bytes);
  if (uncompress(to, &size, input(stored), block.stored) != Z_OK || size != block.size)
    throw FileFault(Fault::BadEncoding, "trace blob", block.at);
  return bytes;
}

TraceCursor::TraceCursor(const Trace& trace) : trace_(trace), inflater_(std::make_unique<Inflater>()) {}
TraceCursor::~TraceCursor() = default;

void TraceCursor::fault(const char* what, std::uint64_t got, std::uint64_t limit) const {
  throw FileFault(Fault::BadReference, what, trace_.blocks_[block_ - 1].at, got, limit);
}

bool TraceCursor::nextBlock() {
  if (block_ == trace_.blocks_.size()) return false;
  const Trace::Block& block = trace_.blocks_[block_++];
  if (!inflater_->inflatePiece(std::span(trace_.file_).subspan(block.at, block.stored), block.size, raw_))
    throw FileFault(Fault::BadEncoding, "trace records", block.at);
  at_ = 0;
  return true;
}

std::span<const std::byte> TraceCursor::take(std::uint64_t count, std::uint64_t limit) {
  const std::uint64_t left = raw_.size() - at_;
  if (count > std::min(left, limit)) fault("length in a trace record", count, std::min(left, limit));
  const auto taken = std::span<const std::byte>(raw_).subspan(at_, count);
  at_ += taken.size();
  return taken;
}

std::uint8_t TraceCursor::byte() { return std::to_integer<std::uint8_t>(take(1, 1)[0]); }

std::uint64_t TraceCursor::number() {
  std::uint64_t value = 0;
  for (int shift = 0; shift < 64; shift += 7) {
    const std::uint8_t piece = byte();
    value |= std::uint64_t{piece & 0x7Fu} << shift;
    if (piece < 0x80) return value;
  }
  fault("number in a trace record", 10, 9);
}

void TraceCursor::define() {
  if (signatures_.size() >= kMaxSignatures) fault("signature", signatures_.size(), kMaxSignatures);
  Signature signature;
  const std::uint8_t origin = byte();
  if (origin > 1) fault("origin of a signature", origin, 2);
  signature.origin = Origin{origin};
  const auto name = take(number(), kMaxName);
  if (name.empty() || !std::ranges::all_of(name, nameCharacter)) fault("name of a signature", 0, 0);
  signature.name.assign(reinterpret_cast<const char*>(name.data()), name.size());
  for (const std::byte type : take(number(), kMaxValues)) {
    if (type > std::byte{4}) fault("type in a signature", std::to_integer<std::uint64_t>(type), 5);
    signature.types.push_back(ValueType{std::to_integer<std::uint8_t>(type)});
  }
  signatures_.push_back(std::move(signature));
}

TraceValue TraceCursor::value(ValueType type) {
  switch (type) {
    case ValueType::Integer: {
      const std::uint64_t coded = number();
      return static_cast<std::int64_t>(coded >> 1 ^ (0 - (coded & 1)));
    }
    case ValueType::Real: {
      std::array<std::byte, 4> four{};
      std::ranges::copy(take(4, 4), four.begin());
      return std::bit_cast<float>(four);
    }
    case ValueType::Text: {
      const auto text = take(number(), kMaxText);
      return std::string_view(reinterpret_cast<const char*>(text.data()), text.size());
    }
    case ValueType::Bytes:
      return take(number(), kMaxInline);
    case ValueType::Blob:
      break;
  }
  const std::uint64_t blob = number();
  if (blob >= trace_.blobs_.size()) fault("blob of a trace record", blob, trace_.blobs_.size());
  return BlobReference{static_cast<std::uint32_t>(blob), trace_.blobs_[blob].size};
}

bool TraceCursor::read() {
  for (;;) {
    while (at_ == raw_.size())
      if (!nextBlock()) return false;
    const std::uint64_t which = number();
    if (which == 0) {
      define();
      continue;
    }
    if (which > signatures_.size()) fault("signature of a trace record", which, signatures_.size());
    const Signature& signature = signatures_[which - 1];
    record_.origin = signature.origin;
    record_.name = signature.name;
    record_.number = count_++;
    record_.frame = frame_;
    record_.values.clear();
    for (const ValueType type : signature.types) record_.values.push_back(value(type));
    if (signature.origin == Origin::Call && signature.name == kFrameEnd) ++frame_;
    return true;
  }
}

const TraceRecord* TraceCursor::next() {
  for (; keptBytes_ > kKeptBytes; keptOrder_.pop_front()) {
    const auto oldest = kept_.find(keptOrder_.front());
    keptBytes_ -= oldest->second.size();
    kept_.erase(oldest);
  }
  return count_ < trace_.records_ && read() ? &record_ : nullptr;
}

std::span<const std::byte> TraceCursor::bytes(const TraceValue& value) {
  if (const auto* here = std::get_if<std::span<const std::byte>>(&value)) return *here;
  const auto& blob = std::get<BlobReference>(value);
  const auto known = kept_.find(blob.number);
  if (known != kept_.end()) return known->second;
  std::vector<std::byte> read = trace_.blob(blob.number);
  keptBytes_ += read.size();
  keptOrder_.push_back(blob.number);
  return kept_.emplace(blob.number, std::move(read)).first->second;
}

}  // namespace ql::recording
