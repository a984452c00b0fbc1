#include "platform/host/ByteReader.h"

#include <algorithm>

namespace ql::host {

void ByteReader::copyZeroFilled(std::uint64_t offset, std::span<std::byte> out) const {
  const std::size_t from = static_cast<std::size_t>(std::min<std::uint64_t>(offset, size()));
  const std::size_t present = std::min(out.size(), size() - from);
  std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(from), present, out.begin());
  std::fill(out.begin() + static_cast<std::ptrdiff_t>(present), out.end(), std::byte{0});
}

void ByteReader::throwTruncated(std::uint64_t offset, std::uint64_t length, std::string_view what) const {
  throw FileFault(Fault::Truncated, std::string(what), offset, length, size());
}

std::string_view fieldText(std::span<const char> field) {
  const std::string_view text(field.data(), field.size());
  return text.substr(0, text.find('\0'));
}

}  // namespace ql::host
