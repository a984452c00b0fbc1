/// @file
/// Lists whose items can have a key.
#pragma once

#include "engine/EngineError.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ql::input {

/// Objects in the order they were added, found by their place from 1 or by their key, whatever its letter case.
template <class T>
class KeyedCollection {
 public:
  std::int32_t count() const { return static_cast<std::int32_t>(entries_.size()); }
  /// @throws EngineError 9 outside 1 to count
  const std::shared_ptr<T>& at(std::int32_t place) const { return entries_[index(place)].second; }
  /// @throws EngineError 5 when there is no such key
  const std::shared_ptr<T>& at(std::string_view key) const { return entries_[index(key)].second; }
  /// @param key empty: none @throws EngineError 5 when another item has the key
  void add(std::shared_ptr<T> item, const std::string& key) {
    if (!key.empty() && find(key) < entries_.size())
      throw engine::EngineError(engine::kInvalidArgument, "the key is in use: " + key);
    entries_.emplace_back(key, std::move(item));
  }
  /// @throws EngineError as at
  template <class Place>
  void remove(const Place& place) {
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index(place)));
  }
  void clear() { entries_.clear(); }
  std::vector<std::shared_ptr<T>> items() const {
    std::vector<std::shared_ptr<T>> all;
    all.reserve(entries_.size());
    for (const auto& entry : entries_) all.push_back(entry.second);
    return all;
  }

 private:
  std::size_t find(std::string_view key) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const auto& entry) {
      return !entry.first.empty() && host::equalIgnoringCase(entry.first, key);
    });
    return static_cast<std::size_t>(found - entries_.begin());
  }
  std::size_t index(std::int32_t place) const {
    if (place < 1 || place > count())
      throw engine::EngineError(engine::kSubscript, "Subscript out of range: " + std::to_string(place));
    return static_cast<std::size_t>(place - 1);
  }
  std::size_t index(std::string_view key) const {
    const std::size_t found = find(key);
    if (found == entries_.size())
      throw engine::EngineError(engine::kInvalidArgument, "there is no item with the key " + std::string(key));
    return found;
  }

  std::vector<std::pair<std::string, std::shared_ptr<T>>> entries_;
};

}  // namespace ql::input
