#include "platform/images/Image.h"

#include "platform/host/Files.h"
#include "platform/images/Decoders.h"

#include <limits>
#include <utility>

namespace ql::images {
namespace {

using host::ByteReader;
using host::Fault;
using host::FileFault;

bool startsWith(std::span<const std::byte> file, std::string_view identifier) {
  return file.size() >= identifier.size() && std::memcmp(file.data(), identifier.data(), identifier.size()) == 0;
}

ImageFormat identify(const ByteReader& file, std::string_view name) {
  const std::span<const std::byte> bytes = file.bytes();
  if (startsWith(bytes, "BM")) return ImageFormat::Bmp;
  if (startsWith(bytes, "\xFF\xD8\xFF")) return ImageFormat::Jpg;
  if (startsWith(bytes, "\x89PNG\r\n\x1A\n")) return ImageFormat::Png;
  if (startsWith(bytes, "DDS ")) return ImageFormat::Dds;
  constexpr std::string_view kEnding = ".tga";
  const bool named =
      name.size() >= kEnding.size() && host::equalIgnoringCase(name.substr(name.size() - kEnding.size()), kEnding);
  if (named || endsAsTga(file)) return ImageFormat::Tga;
  throw FileFault(Fault::BadIdentifier, "picture identifier", 0, file.at<std::uint16_t>(0, "picture identifier"));
}

}  // namespace

ImageInfo inspect(std::span<const std::byte> bytes, std::string_view name) {
  const ByteReader file(bytes);
  switch (identify(file, name)) {
    case ImageFormat::Bmp:
      return inspectBmp(file);
    case ImageFormat::Jpg:
      return inspectJpg(file);
    case ImageFormat::Tga:
      return inspectTga(file);
    case ImageFormat::Png:
      return inspectPng(file);
    case ImageFormat::Dds:
      return inspectDds(file);
  }
  return {};
}

std::vector<Image> decodeLevels(std::span<const std::byte> bytes, std::string_view name) {
  const ByteReader file(bytes);
  if (identify(file, name) == ImageFormat::Dds) return decodeDds(file, std::numeric_limits<std::uint32_t>::max());
  std::vector<Image> levels;
  levels.push_back(decode(bytes, name));
  return levels;
}

Image decode(std::span<const std::byte> bytes, std::string_view name) {
  const ByteReader file(bytes);
  switch (identify(file, name)) {
    case ImageFormat::Bmp:
      return decodeBmp(file);
    case ImageFormat::Jpg:
      return decodeJpg(file);
    case ImageFormat::Tga:
      return decodeTga(file);
    case ImageFormat::Png:
      return decodePng(file);
    case ImageFormat::Dds:
      return std::move(decodeDds(file, 1).front());
  }
  return {};
}

}  // namespace ql::images
