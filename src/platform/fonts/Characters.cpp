#include "platform/fonts/FontFace.h"
#include "platform/host/Files.h"

namespace ql::fonts {

std::u32string characters(std::string_view text) {
  std::u32string out;
  // What comes back is valid UTF-8: a lead byte says how many bytes of six bits follow.
  for (const char c : host::toUtf8(text)) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xC0) == 0x80)
      out.back() = out.back() << 6 | (byte & 0x3Fu);
    else
      out.push_back(byte < 0x80 ? byte : byte & (byte >= 0xF0 ? 0x07u : byte >= 0xE0 ? 0x0Fu : 0x1Fu));
  }
  return out;
}

}  // namespace ql::fonts
