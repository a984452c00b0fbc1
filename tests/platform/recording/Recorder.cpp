// Calls as lines of text.
#include "platform/recording/Recorder.h"

#include <array>
#include <limits>

#include <gtest/gtest.h>

using ql::device::CallValue;

namespace {

TEST(Recorder, WritesEveryKindOfValue) {
  std::array bytes{std::byte{'a'}};
  const std::array<CallValue, 7> values{std::int64_t{-1},
                                        std::int64_t{4294967295},
                                        0.1f,
                                        std::numeric_limits<float>::infinity(),
                                        std::string_view("a b"),
                                        std::span<const std::byte>(bytes),
                                        std::span<const std::byte>()};
  ql::recording::Recorder recorder;
  recorder.call("First", values);
  bytes[0] = std::byte{'b'};  // values end with their call; what was kept must not
  recorder.call("Second", {});
  recorder.call("First", std::span(values).subspan(5, 1));
  EXPECT_EQ(recorder.lines(), (std::vector<std::string>{
                                  "First(-1, 4294967295, 0.1, inf, \"a b\", #1:af63dc4c8601ec8c, #0:cbf29ce484222325)",
                                  "Second()", "First(#1:af63df4c8601f1a5)"}));
  EXPECT_EQ(recorder.lines({"Second"}), std::vector<std::string>{"Second()"});
  ASSERT_EQ(recorder.calls()[0].blobs.size(), 2u);
  EXPECT_EQ(recorder.calls()[0].blobs[0], std::vector{std::byte{'a'}});
  recorder.clear();
  EXPECT_TRUE(recorder.lines().empty());
}

}  // namespace
