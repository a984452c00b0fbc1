#include "archive/PakDirectory.h"

#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <array>

namespace ql::archive {
namespace {

struct HeaderRecord {
  std::int32_t identifier, directoryOffset, directoryLength;
};
struct EntryRecord {
  std::array<char, 56> name;
  std::int32_t offset, size;
};
static_assert(sizeof(HeaderRecord) == 12 && sizeof(EntryRecord) == 64);

constexpr std::size_t kSlots = 4097;
constexpr std::size_t kSlotBytes = kSlots * sizeof(EntryRecord);

std::string entryName(const EntryRecord& record, std::uint64_t offset) {
  std::string_view name = host::fieldText(record.name);
  if (name.size() == record.name.size())
    throw host::FileFault(host::Fault::BadSize, "entry name", offset, name.size(), name.size() - 1);
  name.remove_prefix(std::min(name.find_first_not_of(' '), name.size()));
  return std::string(name.substr(0, name.find_last_not_of(' ') + 1));
}

HeaderRecord parseHeader(std::span<const std::byte> bytes) {
  const auto header = host::ByteReader(bytes).at<HeaderRecord>(0, "archive header");
  if (header.directoryOffset < 0)
    throw host::FileFault(host::Fault::BadReference, "archive directory", offsetof(HeaderRecord, directoryOffset),
                          static_cast<std::uint32_t>(header.directoryOffset), INT32_MAX);
  return header;
}

/// @param slots the file's bytes from the directory offset on, filled up with zeros
PakDirectory parseSlots(const HeaderRecord& header, std::span<const std::byte> slots) {
  PakDirectory directory{header.identifier, header.directoryOffset, header.directoryLength, 0, {}, {}};
  // An arithmetic shift rounds down for negative lengths, too.
  directory.fileCount = header.directoryLength >> 6;
  const std::size_t listed = std::min(static_cast<std::size_t>(std::max(directory.fileCount, 0)), kSlots);

  const host::ByteReader reader(slots);
  for (std::size_t i = 0; i < kSlots; ++i) {
    const auto record = reader.at<EntryRecord>(i * sizeof(EntryRecord), "directory entry");
    const auto position = static_cast<std::uint64_t>(header.directoryOffset) + i * sizeof(EntryRecord);
    std::string name = entryName(record, position);
    if (i >= listed) continue;
    directory.firstByName.try_emplace(host::foldCase(name), i);
    directory.entries.push_back({std::move(name), record.offset, record.size});
  }
  return directory;
}

}  // namespace

const PakEntry* PakDirectory::find(std::string_view name) const {
  const auto found = firstByName.find(host::foldCase(name));
  return found == firstByName.end() ? nullptr : &entries[found->second];
}

PakDirectory readPakDirectory(std::istream& archive) {
  const auto read = [&archive](std::int32_t offset, std::span<std::byte> out) {
    archive.clear();
    archive.seekg(offset);
    archive.read(reinterpret_cast<char*>(out.data()), static_cast<std::streamsize>(out.size()));
    if (archive.bad()) throw host::FileFault(host::Fault::Unreadable, "archive");
    return static_cast<std::size_t>(archive.gcount());
  };
  std::array<std::byte, sizeof(HeaderRecord)> head{};
  const HeaderRecord header = parseHeader(std::span(head).first(read(0, head)));
  std::vector<std::byte> slots(kSlotBytes);
  read(header.directoryOffset, slots);
  return parseSlots(header, slots);
}

PakDirectory parsePakDirectory(std::span<const std::byte> bytes) {
  const HeaderRecord header = parseHeader(bytes);
  std::vector<std::byte> slots(kSlotBytes);
  host::ByteReader(bytes).copyZeroFilled(static_cast<std::uint64_t>(header.directoryOffset), slots);
  return parseSlots(header, slots);
}

}  // namespace ql::archive
