#include "platform/recording/TraceText.h"

#include "platform/device/State.h"
#include "platform/recording/Numbers.h"

#include <cstring>
#include <optional>

namespace ql::recording {

using namespace device;

namespace {

std::optional<std::string> nameOf(const TraceRecord& record, std::size_t at, std::int64_t value) {
  std::optional<std::string> found;
  const auto look = [&](auto number, const char* name, std::uint32_t) {
    if (static_cast<std::int64_t>(number) == value) found = name;
  };
  if (record.name == "SetRenderState" && at == 0) {
    const RenderStates states;
    forEachRenderState(states, look);
  } else if (record.name == "SetTextureStageState" && at == 1) {
    const StageStates states;
    forEachStageState(states, look);
  } else if (record.name == "SetTransform" && at == 0) {
    if (value == 2) return "view";
    if (value == 3) return "projection";
    if (value == 256) return "world";
    if (value == 16 || value == 17) return "texture" + digits(value - 16);
  } else if (record.name.starts_with("DrawPrimitive") && at == 0) {
    constexpr std::array kNames{"points", "lines", "lineStrip", "triangles", "triangleStrip", "triangleFan"};
    if (value >= 1 && value <= 6) return kNames[static_cast<std::size_t>(value - 1)];
  }
  return found;
}

/// Bytes as the floats that they are, the first one as an integer for lights.
std::string floats(std::span<const std::byte> bytes, bool startsWithInteger) {
  std::string text = "[";
  for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
    if (at > 0) text += ' ';
    if (at == 0 && startsWithInteger) {
      std::uint32_t value = 0;
      std::memcpy(&value, bytes.data(), 4);
      text += digits(value);
    } else {
      float value = 0;
      std::memcpy(&value, bytes.data() + at, 4);
      text += digits(value);
    }
  }
  return text + "]";
}

std::string quoted(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) out += c >= 0 && c < ' ' ? '?' : c;
  return out + '"';
}

}  // namespace

std::string lineOf(TraceCursor& cursor, const TraceRecord& record) {
  std::string line = record.origin == Origin::Effect ? "-> " : "";
  line.append(record.name).append(1, '(');
  for (std::size_t i = 0; i < record.values.size(); ++i) {
    if (i > 0) line += ", ";
    const TraceValue& value = record.values[i];
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
      line += nameOf(record, i, *integer).value_or(digits(*integer));
    } else if (const auto* real = std::get_if<float>(&value)) {
      line += digits(*real);
    } else if (const auto* text = std::get_if<std::string_view>(&value)) {
      line += quoted(*text);
    } else {
      const auto bytes = cursor.bytes(value);
      const bool numbers = record.name == "SetTransform" || record.name == "SetMaterial" || record.name == "SetLight";
      line += numbers && bytes.size() <= kMaxInline ? floats(bytes, record.name == "SetLight") : mark(bytes);
    }
  }
  return line + ")";
}

}  // namespace ql::recording
