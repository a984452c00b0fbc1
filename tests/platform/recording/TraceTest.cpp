// Trace files: what is written is read, and damaged ones say so.
#include "platform/host/Fault.h"
#include "platform/recording/Recorder.h"
#include "platform/recording/Trace.h"
#include "platform/recording/TraceText.h"
#include "platform/recording/TraceWriter.h"
#include "support/TemporaryFolder.h"
#include "support/TraceFile.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include <gtest/gtest.h>

namespace ql::test {
namespace {

using namespace recording;
using device::CallValue;

std::vector<std::string> linesOf(const Trace& trace) {
  std::vector<std::string> lines;
  TraceCursor cursor(trace);
  while (const TraceRecord* record = cursor.next()) lines.push_back(lineOf(cursor, *record));
  return lines;
}

std::vector<std::byte> fileBytes(const std::string& name) {
  const std::string text = contents(name);
  return {bytesOf(text).begin(), bytesOf(text).end()};
}

std::optional<host::Fault> faultOf(std::vector<std::byte> bytes) {
  try {
    const Trace trace(std::move(bytes));
    linesOf(trace);
    return std::nullopt;
  } catch (const host::FileFault& fault) {
    return fault.id;
  }
}

class TraceFiles : public testing::Test {
 protected:
  TemporaryFolder folder_;
};

TEST_F(TraceFiles, HoldEveryKindOfValueAndStoreLongBytesOnce) {
  std::string large(100'000, 'x'), other = large;
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * i >> 7);
  other.back() = 'y';
  const std::array<CallValue, 8> values{std::int64_t{-1},
                                        std::numeric_limits<std::int64_t>::min(),
                                        std::numeric_limits<std::int64_t>::max(),
                                        0.1f,
                                        -std::numeric_limits<float>::infinity(),
                                        std::string_view("a \x1b[b"),
                                        std::span<const std::byte>(),
                                        bytesOf(large)};
  Recorder recorder;
  {
    TraceWriter writer("all.qltrace");
    for (int frame = 0; frame < 3; ++frame) {
      for (device::CallSink* sink : std::initializer_list<device::CallSink*>{&recorder, &writer}) {
        sink->call("Everything", values);
        sink->call("Everything", std::span(values).first(2));  // other values are another signature
        sink->call("Present", {});
      }
      writer.effect("Other", std::array<CallValue, 1>{bytesOf(other)});
    }
    EXPECT_TRUE(writer.finish());
    writer.call("Late", {});
  }
  const Trace trace = Trace::open("all.qltrace");
  EXPECT_TRUE(trace.complete());
  EXPECT_EQ(trace.frames(), 3u);
  EXPECT_EQ(trace.blobs(), 2u);
  EXPECT_LT(trace.size(), 130'000u);
  std::vector<std::string> calls, effects;
  for (const std::string& line : linesOf(trace)) (line.starts_with("-> ") ? effects : calls).push_back(line);
  std::vector<std::string> expected = recorder.lines();
  for (std::string& line : expected)
    if (const std::size_t escape = line.find('\x1b'); escape != std::string::npos) line[escape] = '?';
  EXPECT_EQ(calls, expected);
  EXPECT_EQ(effects.size(), 3u);
  TraceCursor cursor(trace);
  const TraceRecord* first = cursor.next();
  ASSERT_NE(first, nullptr);
  EXPECT_TRUE(std::ranges::equal(cursor.bytes(first->values[7]), bytesOf(large)));
}

TEST_F(TraceFiles, CutAnywhereHoldTheirWholeFrames) {
  const std::string vertices(300, 'v');
  {
    TraceWriter writer("whole.qltrace");
    for (std::int64_t frame = 0; frame < 3; ++frame) {
      writer.call("Clear", std::array<CallValue, 1>{frame});
      writer.call("DrawPrimitiveUP", std::array<CallValue, 1>{bytesOf(vertices)});
      writer.call("Present", {});
    }
    writer.call("After", {});
  }
  const std::vector<std::byte> good = fileBytes("whole.qltrace");
  std::uint64_t frames = 0;
  for (std::size_t n = 0; n < good.size(); ++n) {
    std::vector<std::byte> cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(n));
    if (n < sizeof(TraceHeader)) {
      EXPECT_EQ(faultOf(std::move(cut)), host::Fault::Truncated) << n;
      continue;
    }
    const Trace trace(std::move(cut));
    EXPECT_FALSE(trace.complete());
    EXPECT_EQ(trace.records(), trace.frames() * 3) << n;
    EXPECT_EQ(linesOf(trace).size(), trace.records()) << n;
    EXPECT_GE(trace.frames(), frames) << n;
    frames = trace.frames();
  }
  EXPECT_EQ(frames, 3u);
  EXPECT_EQ(Trace(good).records(), 10u);
}

TEST_F(TraceFiles, ReplacedBytesAreFound) {
  {
    TraceWriter writer("good.qltrace");
    const std::string vertices(300, 'v');
    writer.call("DrawPrimitiveUP", std::array<CallValue, 2>{bytesOf(vertices), 1.5f});
    writer.call("Present", {});
  }
  const std::vector<std::byte> good = fileBytes("good.qltrace");
  for (std::size_t at = 0; at < good.size(); ++at) {
    std::vector<std::byte> bad = good;
    bad[at] ^= std::byte{0x55};
    // A wrong length can make the file look cut off: then less of it is there.
    const bool silent = !faultOf(bad);
    EXPECT_TRUE(!silent || !Trace(bad).complete()) << at;
  }
}

TEST(Trace, DamageIsNamed) {
  const std::string def = signature(false, "A", "0"), call = number(1) + integer(5);
  using host::Fault;
  const struct {
    const char* name;
    TraceFile file;
    std::optional<Fault> fault;
  } rows[] = {
      {"good", TraceFile().records(def + call).end(), std::nullopt},
      {"good, with a blob", TraceFile().blob("bytes").records(signature(false, "A", "4") + "\1" + number(0)).end(),
       std::nullopt},
      {"unknown kind of block", TraceFile().block('X', "", 0), Fault::Unsupported},
      {"promises more than deflate can give", TraceFile().records(def, 1'000'000), Fault::BadSize},
      {"promises more than it gives", TraceFile().records(def, def.size() + 1), Fault::BadEncoding},
      {"promises less than it gives", TraceFile().records(def, def.size() - 1), Fault::BadEncoding},
      {"no deflate stream", TraceFile().block(kRecordBlock, "?????", 5), Fault::BadEncoding},
      {"blob that is none",
       TraceFile().block(kBlobBlock, "?????", 5).records(signature(false, "A", "4") + "\1" + number(0)).end(),
       Fault::BadEncoding},
      {"signature that was not defined", TraceFile().records(def + number(2)).end(), Fault::BadReference},
      {"blob that is not there", TraceFile().records(signature(false, "A", "4") + "\1" + number(0)).end(),
       Fault::BadReference},
      {"record past its block", TraceFile().records(def + number(1)).end(), Fault::BadReference},
      {"endless number", TraceFile().records(def + number(1) + std::string(10, '\xFF') + '\0').end(),
       Fault::BadReference},
      {"bytes longer than records hold",
       TraceFile().records(signature(false, "A", "3") + "\1" + number(257) + std::string(257, 'b')).end(),
       Fault::BadReference},
      {"text past its block", TraceFile().records(signature(false, "A", "2") + "\1" + number(9) + "short").end(),
       Fault::BadReference},
      {"name with control characters", TraceFile().records(signature(false, "\x1b[", "")).end(), Fault::BadReference},
      {"no name", TraceFile().records(signature(false, "", "")).end(), Fault::BadReference},
      {"unknown type", TraceFile().records(signature(false, "A", "5")).end(), Fault::BadReference},
      {"neither call nor effect", TraceFile().records(std::string("\0\2\1A\0", 5)).end(), Fault::BadReference},
      {"more values than calls have", TraceFile().records(signature(false, "A", std::string(65, '0'))).end(),
       Fault::BadReference},
  };
  for (const auto& row : rows) EXPECT_EQ(faultOf(row.file.bytes()), row.fault) << row.name;
  std::vector<std::byte> other = TraceFile().end().bytes();
  other[8] = std::byte{2};
  EXPECT_EQ(faultOf(other), Fault::BadVersion);
  other[0] = std::byte{'X'};
  EXPECT_EQ(faultOf(other), Fault::BadIdentifier);
}

TEST(Trace, TooManySignaturesAreRefused) {
  std::string records;
  for (std::size_t i = 0; i <= kMaxSignatures; ++i) records += signature(false, std::to_string(i), "");
  EXPECT_EQ(faultOf(TraceFile().records(records).end().bytes()), host::Fault::BadReference);
}

TEST_F(TraceFiles, WhereNothingCanBeWrittenFail) {
  put("file", "");
  for (const auto& [name, fault] :
       {std::pair{"none/a.qltrace", host::Fault::FolderMissing},
        std::pair{"file/a.qltrace", host::Fault::FolderMissing}, std::pair{".", host::Fault::Unreadable}}) {
    try {
      const TraceWriter writer(name);
      ADD_FAILURE() << name;
    } catch (const host::FileFault& caught) {
      EXPECT_EQ(caught.id, fault) << name;
    }
  }
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no full disk to write to";
  TraceWriter full("/dev/full");
  for (int i = 0; i < 10'000; ++i) full.call("Present", {});
  EXPECT_FALSE(full.finish()) << "the device goes on, the trace says that it is not whole";
}

}  // namespace
}  // namespace ql::test
