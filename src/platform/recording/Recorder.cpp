#include "platform/recording/Recorder.h"

#include "platform/recording/NullBackEnd.h"
#include "platform/recording/Numbers.h"

#include <algorithm>

namespace ql::recording {

std::string Recorder::Call::line() const {
  std::string text = name + "(";
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) text += ", ";
    text += values[i];
  }
  return text + ")";
}

void Recorder::call(std::string_view name, std::span<const device::CallValue> values) {
  Call& made = calls_.emplace_back();
  made.name = name;
  for (const device::CallValue& value : values) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
      made.values.push_back(digits(*integer));
    } else if (const auto* real = std::get_if<float>(&value)) {
      made.values.push_back(digits(*real));
    } else if (const auto* word = std::get_if<std::string_view>(&value)) {
      made.values.push_back('"' + std::string(*word) + '"');
    } else {
      const auto bytes = std::get<std::span<const std::byte>>(value);
      made.values.push_back(mark(bytes));
      made.blobs.emplace_back(bytes.begin(), bytes.end());
    }
  }
}

std::vector<std::string> Recorder::lines() const {
  std::vector<std::string> all;
  for (const Call& made : calls_) all.push_back(made.line());
  return all;
}

std::vector<std::string> Recorder::lines(std::initializer_list<std::string_view> names) const {
  std::vector<std::string> some;
  for (const Call& made : calls_)
    if (std::ranges::find(names, made.name) != names.end()) some.push_back(made.line());
  return some;
}

std::shared_ptr<device::BackEnd> createNullBackEnd() { return std::make_shared<NullBackEnd>(); }

}  // namespace ql::recording
