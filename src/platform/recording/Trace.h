/// @file
/// Reading trace files.
#pragma once

#include "platform/recording/TraceFormat.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ql::recording {

/// Bytes that stand apart from the records; TraceCursor::bytes reads them.
struct BlobReference {
  std::uint32_t number = 0;
  std::uint32_t size = 0;
};
using TraceValue = std::variant<std::int64_t, float, std::string_view, std::span<const std::byte>, BlobReference>;

/// One call or effect. Texts and bytes are valid until the cursor that gave it moves on.
struct TraceRecord {
  Origin origin = Origin::Call;
  std::string_view name;
  std::vector<TraceValue> values;
  std::uint64_t number = 0;  ///< of the record in its trace, from 0
  std::uint64_t frame = 0;   ///< that it belongs to, from 0; a Present is the last call of its frame
};

/// A trace file in memory. Everything but the contents of blobs is checked when it is opened; blobs stay compressed.
class Trace {
 public:
  /// A file that ends too early is a trace up to its last whole frame.
  /// @throws host::FileFault for a file of another kind and for damage
  explicit Trace(std::vector<std::byte> file);
  /// @throws host::FileFault as above, and when it cannot be read
  static Trace open(const std::filesystem::path& file);

  std::uint32_t version() const { return version_; }
  std::size_t size() const { return file_.size(); }  ///< of the file, bytes
  /// Whether the recording was finished, rather than cut off.
  bool complete() const { return complete_; }
  std::uint64_t frames() const { return frames_; }
  std::uint64_t records() const { return records_; }
  std::size_t blobs() const { return blobs_.size(); }
  /// The bytes of a blob. @throws host::FileFault BadEncoding
  std::vector<std::byte> blob(std::uint32_t number) const;

 private:
  friend class TraceCursor;
  struct Block {
    std::uint64_t at = 0;  ///< of the payload in the file
    std::uint32_t stored = 0, size = 0;
  };
  void index();

  std::vector<std::byte> file_;
  std::vector<Block> blocks_, blobs_;
  std::uint32_t version_ = 0;
  bool complete_ = false;
  std::uint64_t frames_ = 0, records_ = 0;
};

/// Goes through the records of a trace, which must outlive it.
class TraceCursor {
 public:
  explicit TraceCursor(const Trace& trace);
  ~TraceCursor();
  TraceCursor(const TraceCursor&) = delete;
  TraceCursor& operator=(const TraceCursor&) = delete;

  /// The next record; null after the last one.
  const TraceRecord* next();
  /// Bytes of a value that is bytes, wherever they stand; valid until next. Those used last are kept.
  /// @throws host::FileFault BadEncoding
  std::span<const std::byte> bytes(const TraceValue& value);

 private:
  friend class Trace;
  struct Signature {
    Origin origin{};
    std::string name;
    std::vector<ValueType> types;
  };
  struct Inflater;
  bool read();
  bool nextBlock();
  void define();
  TraceValue value(ValueType type);
  std::uint8_t byte();
  std::uint64_t number();
  std::span<const std::byte> take(std::uint64_t count, std::uint64_t limit);
  [[noreturn]] void fault(const char* what, std::uint64_t got, std::uint64_t limit) const;

  const Trace& trace_;
  std::unique_ptr<Inflater> inflater_;
  std::size_t block_ = 0;  ///< the next one
  std::vector<std::byte> raw_;
  std::size_t at_ = 0;                ///< in raw_
  std::deque<Signature> signatures_;  ///< names stay where they are
  TraceRecord record_;
  std::uint64_t count_ = 0, frame_ = 0;
  std::map<std::uint32_t, std::vector<std::byte>> kept_;
  std::deque<std::uint32_t> keptOrder_;
  std::size_t keptBytes_ = 0;
};

}  // namespace ql::recording
