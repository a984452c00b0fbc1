#include "Commands.h"
#include "Open.h"
#include "platform/recording/TraceText.h"

#include <algorithm>
#include <bit>

#include <fmt/format.h>

namespace ql::trace {
namespace {

using namespace recording;

bool isBytes(const TraceValue& value) {
  return std::holds_alternative<BlobReference>(value) || std::holds_alternative<std::span<const std::byte>>(value);
}

bool equal(TraceCursor& aCursor, const TraceValue& a, TraceCursor& bCursor, const TraceValue& b) {
  if (isBytes(a) && isBytes(b)) return std::ranges::equal(aCursor.bytes(a), bCursor.bytes(b));
  if (a.index() != b.index()) return false;
  if (const auto* integer = std::get_if<std::int64_t>(&a)) return *integer == std::get<std::int64_t>(b);
  if (const auto* text = std::get_if<std::string_view>(&a)) return *text == std::get<std::string_view>(b);
  // As bits: what is no number equals itself.
  return std::bit_cast<std::uint32_t>(std::get<float>(a)) == std::bit_cast<std::uint32_t>(std::get<float>(b));
}

bool equal(TraceCursor& aCursor, const TraceRecord& a, TraceCursor& bCursor, const TraceRecord& b) {
  if (a.origin != b.origin || a.name != b.name || a.values.size() != b.values.size()) return false;
  for (std::size_t i = 0; i < a.values.size(); ++i)
    if (!equal(aCursor, a.values[i], bCursor, b.values[i])) return false;
  return true;
}

}  // namespace

ExitCode compare(const Options& options) {
  const Trace first = openTrace(options.traces[0]), second = openTrace(options.traces[1]);
  TraceCursor a(first), b(second);
  for (;;) {
    const TraceRecord* left = a.next();
    const TraceRecord* right = b.next();
    if (!left && !right) break;
    if (left && right && equal(a, *left, b, *right)) continue;
    const TraceRecord& at = left ? *left : *right;
    fmt::print("frame {}, record {}\n< {}\n> {}\n", at.frame, at.number, left ? lineOf(a, *left) : "(the end)",
               right ? lineOf(b, *right) : "(the end)");
    return ExitCode::Differ;
  }
  if (options.talk != Talk::Quiet) fmt::print("equal: {} frames, {} records\n", first.frames(), first.records());
  return ExitCode::Success;
}

}  // namespace ql::trace
