/// @file
/// Session files made by hand. For tests that link input.
#pragma once

#include "input/SessionRecords.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace ql::test {

using input::records::Tag;

/// Records one after another; each call adds one.
class SessionFile {
 public:
  explicit SessionFile(const std::string& note = "", std::uint64_t version = input::records::kVersion)
      : bytes_(input::records::kIdentifier) {
    input::records::putNumber(bytes_, version);
    input::records::putNumber(bytes_, note.size());
    bytes_ += note;
  }
  /// A record of numbers.
  SessionFile& add(Tag tag, std::initializer_list<std::uint64_t> numbers = {}) {
    input::records::putTag(bytes_, tag);
    for (const std::uint64_t number : numbers) input::records::putNumber(bytes_, number);
    return *this;
  }
  SessionFile& attached(std::uint32_t id, std::uint8_t axes, std::uint8_t buttons, std::uint8_t hats,
                        const std::string& instance = "{0}") {
    add(Tag::Attached, {id});
    for (const std::string& text : {std::string("Stick"), std::string("Stick"), std::string("{P}"), instance})
      input::records::putText(bytes_, text);
    for (const std::uint64_t number :
         {std::uint64_t{0}, std::uint64_t{axes}, std::uint64_t{buttons}, std::uint64_t{hats}, std::uint64_t{1}})
      input::records::putNumber(bytes_, number);
    return *this;
  }
  SessionFile& raw(const std::string& bytes) {
    bytes_ += bytes;
    return *this;
  }
  const std::string& text() const { return bytes_; }
  std::vector<std::byte> bytes() const {
    const auto* first = reinterpret_cast<const std::byte*>(bytes_.data());
    return {first, first + bytes_.size()};
  }

 private:
  std::string bytes_;
};

/// Every kind of record, in two frames.
inline SessionFile wholeSession() {
  SessionFile file("a note");
  file.add(Tag::Ticks, {2, 20000, 0, 32, 2}).add(Tag::Keys, {2}).raw("\xC8\x1E").add(Tag::Mouse, {6, 3, 240, 5});
  file.add(Tag::Focus, {1}).attached(4, 2, 9, 1).add(Tag::State, {4, 2000, 1}).raw({3, 5, 1}).add(Tag::Sample);
  file.add(Tag::Motors, {4, 0x1FFF}).add(Tag::Size, {640, 480}).add(Tag::Frame);
  file.add(Tag::Ticks, {1, 32, 0}).add(Tag::Keys, {1, 30}).add(Tag::Sample).add(Tag::Detached, {4}).add(Tag::Sample);
  return file.add(Tag::Size, {320, 200}).add(Tag::Frame).add(Tag::End);
}

}  // namespace ql::test
