/// @file
/// JPG files made in memory by the JPEG library's encoder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <turbojpeg.h>

namespace ql::test {

/// @param format,sampling,flags the library's TJPF_, TJSAMP_ and TJFLAG_ numbers
inline std::vector<std::byte> jpgFile(std::span<const std::uint32_t> pixels, int width, int height, int format,
                                      int sampling, int flags, int quality = 95) {
  unsigned char* out = nullptr;
  unsigned long size = 0;
  const tjhandle encoder = tjInitCompress();
  tjCompress2(encoder, reinterpret_cast<const unsigned char*>(pixels.data()), width, 0, height, format, &out, &size,
              sampling, quality, flags);
  const auto* bytes = reinterpret_cast<const std::byte*>(out);
  std::vector<std::byte> file(bytes, bytes + size);
  tjFree(out);
  tjDestroy(encoder);
  return file;
}

}  // namespace ql::test
