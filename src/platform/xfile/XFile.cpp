#include "platform/xfile/XFile.h"

#include "platform/host/ByteReader.h"
#include "platform/xfile/Inflate.h"
#include "platform/xfile/Objects.h"
#include "platform/xfile/Tokens.h"

#include <array>
#include <cstring>
#include <string_view>

namespace ql::xfile {
namespace {

/// "xof 0303txt 0032": magic, version, kind, bits of a real number.
struct Header {
  std::array<char, 4> magic{}, version{}, kind{}, realBits{};
};
static_assert(sizeof(Header) == 16);

std::string_view text(const std::array<char, 4>& field) { return {field.data(), field.size()}; }
std::uint32_t number(const std::array<char, 4>& field) {
  std::uint32_t value = 0;
  std::memcpy(&value, field.data(), sizeof value);
  return value;
}

}  // namespace

bool isXFile(std::span<const std::byte> bytes) {
  return bytes.size() >= sizeof(Header) && std::memcmp(bytes.data(), "xof ", 4) == 0;
}

Scene parseXFile(std::span<const std::byte> bytes) {
  const auto header = host::ByteReader(bytes).at<Header>(0, "header");
  if (text(header.magic) != "xof ")
    throw host::FileFault(host::Fault::BadIdentifier, "identifier", 0, number(header.magic), 0x20666F78);
  if (text(header.version).substr(0, 2) != "03")
    throw host::FileFault(host::Fault::BadVersion, "file", 4, number(header.version), 0x32303330);

  const std::string_view kind = text(header.kind), realBits = text(header.realBits);
  const bool packed = kind == "tzip" || kind == "bzip", binary = kind == "bin " || kind == "bzip";
  if (!packed && !binary && kind != "txt ")
    throw host::FileFault(host::Fault::Unsupported, "file", 8, number(header.kind));
  if (realBits != "0032" && realBits != "0064")
    throw host::FileFault(host::Fault::BadSize, "real number", 12, number(header.realBits), 64);

  std::vector<std::byte> inflated;
  if (packed) inflated = inflateBlocks(bytes);
  const std::span<const std::byte> body = packed ? std::span<const std::byte>(inflated) : bytes.subspan(sizeof(Header));
  return binary ? readObjects(BinaryTokens(body, realBits == "0064" ? 8 : 4)) : readObjects(TextTokens(body));
}

}  // namespace ql::xfile
