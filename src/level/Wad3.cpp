#include "level/Wad3.h"

#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <cstring>

namespace ql::level {
namespace {

constexpr std::string_view kIdentifier = "WAD3";
constexpr std::uint32_t kLargestSide = 4096;
constexpr std::size_t kColors = 256;
/// The smallest level has 1/8 of the sides; between it and the palette stands the number of colours.
constexpr std::uint64_t kSmallestPart = 8, kColorCountBytes = 2;

struct Header {
  std::array<char, 4> identifier{};
  std::uint32_t entries = 0, directory = 0;
};
struct EntryRecord {
  std::uint32_t offset = 0, diskSize = 0, size = 0;
  std::uint8_t type = 0, compression = 0;
  std::uint16_t padding = 0;
  std::array<char, 16> name{};
};
static_assert(sizeof(Header) == 12 && sizeof(EntryRecord) == 32);

}  // namespace

bool isWad3(std::span<const std::byte> bytes) {
  return bytes.size() >= kIdentifier.size() && std::memcmp(bytes.data(), kIdentifier.data(), kIdentifier.size()) == 0;
}

std::vector<WadEntry> parseWad3(std::span<const std::byte> bytes) {
  const host::ByteReader reader(bytes);
  const auto header = reader.at<Header>(0, "package header");
  if (!isWad3(bytes))
    throw host::FileFault(host::Fault::BadIdentifier, "package identifier", 0,
                          reader.at<std::uint32_t>(0, "package identifier"), 0x33444157);
  std::vector<WadEntry> entries;
  for (const EntryRecord& record : reader.table<EntryRecord>(header.directory, header.entries, "package directory")) {
    if (record.offset > bytes.size() || record.diskSize > bytes.size() - record.offset) continue;
    entries.push_back(
        {std::string(host::fieldText(record.name)), record.offset, record.diskSize, record.type, record.compression});
  }
  return entries;
}

const WadEntry* findWadEntry(const std::vector<WadEntry>& entries, std::string_view name) {
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const WadEntry& entry) {
    return entry.type == kWadTexture && entry.compression == 0 && host::equalIgnoringCase(entry.name, name);
  });
  return found == entries.end() ? nullptr : &*found;
}

images::Image decodeMipTexture(std::span<const std::byte> bytes) {
  const host::ByteReader reader(bytes);
  const auto texture = reader.at<MipTexture>(0, "texture header");
  if (texture.levels[0] == 0)
    throw host::FileFault(host::Fault::Unsupported, "texture without pixels", 0, texture.levels[0]);
  for (const std::uint32_t side : {texture.width, texture.height})
    if (side == 0 || side > kLargestSide)
      throw host::FileFault(host::Fault::BadSize, "texture side", 0, side, kLargestSide);
  const std::span<const std::byte> pixels =
      reader.range(texture.levels[0], std::uint64_t{texture.width} * texture.height, "texture pixels");
  const std::uint64_t smallest =
      std::uint64_t{texture.width / kSmallestPart} * std::uint64_t{texture.height / kSmallestPart};
  const std::span<const std::byte> palette =
      reader.range(texture.levels[3] + smallest + kColorCountBytes, kColors * 3, "texture palette");
  const bool cutOut = texture.name[0] == kCutOutMark;
  std::array<std::uint32_t, kColors> colors{};
  for (std::size_t i = 0; i < kColors; ++i) {
    const auto channel = [&](std::size_t c) { return std::to_integer<std::uint32_t>(palette[3 * i + c]); };
    colors[i] = 0xFF000000U | channel(0) << 16 | channel(1) << 8 | channel(2);
  }
  if (cutOut) colors.back() = 0;
  images::Image image{texture.width, texture.height, {}, cutOut};
  image.pixels.resize(pixels.size());
  std::ranges::transform(pixels, image.pixels.begin(),
                         [&](std::byte pixel) { return colors[std::to_integer<std::size_t>(pixel)]; });
  return image;
}

}  // namespace ql::level
