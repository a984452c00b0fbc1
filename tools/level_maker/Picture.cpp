#include "Picture.h"

#include <memory>
#include <stdexcept>

#include <turbojpeg.h>

namespace ql::maker {

std::vector<std::uint8_t> encodeTarga(const Picture& picture, TargaKind kind) {
  const bool packed = kind == TargaKind::RunLength32;
  const auto low = [](int v) { return static_cast<std::uint8_t>(v & 255); };
  const auto high = [](int v) { return static_cast<std::uint8_t>(v >> 8); };
  std::vector<std::uint8_t> out{0,
                                0,
                                static_cast<std::uint8_t>(packed ? 10 : 2),
                                0,
                                0,
                                0,
                                0,
                                0,
                                0,
                                0,
                                0,
                                0,
                                low(picture.width),
                                high(picture.width),
                                low(picture.height),
                                high(picture.height),
                                static_cast<std::uint8_t>(packed ? 32 : 24),
                                static_cast<std::uint8_t>(packed ? 8 : 0)};
  const auto put = [&](const Rgba& p) {
    out.insert(out.end(), {p.b, p.g, p.r});
    if (packed) out.push_back(p.a);
  };
  const auto width = static_cast<std::size_t>(picture.width);
  for (int y = picture.height - 1; y >= 0; --y) {
    const Rgba* row = &picture.pixels[static_cast<std::size_t>(y) * width];
    if (!packed) {
      for (std::size_t x = 0; x < width; ++x) put(row[x]);
      continue;
    }
    for (std::size_t x = 0; x < width;) {  // packets of up to 128 pixels that never cross rows
      std::size_t run = 1;
      while (x + run < width && run < 128 && row[x + run] == row[x]) ++run;
      if (run > 1) {
        out.push_back(static_cast<std::uint8_t>(127 + run));
        put(row[x]);
        x += run;
        continue;
      }
      std::size_t count = 1;
      while (x + count < width && count < 128 && !(x + count + 1 < width && row[x + count] == row[x + count + 1]))
        ++count;
      out.push_back(static_cast<std::uint8_t>(count - 1));
      for (std::size_t i = 0; i < count; ++i) put(row[x + i]);
      x += count;
    }
  }
  return out;
}

std::vector<std::uint8_t> encodeJpeg(const Picture& picture, int quality) {
  struct Close {
    void operator()(void* handle) const { tjDestroy(handle); }
  };
  const std::unique_ptr<void, Close> encoder(tjInitCompress());
  if (!encoder) throw std::runtime_error("the JPEG encoder is not available");
  std::vector<std::uint8_t> out(tjBufSize(picture.width, picture.height, TJSAMP_420));
  unsigned char* buffer = out.data();
  unsigned long size = out.size();
  // The accurate transform gives the same bits with and without vector instructions.
  const int failed = tjCompress2(encoder.get(), reinterpret_cast<const unsigned char*>(picture.pixels.data()),
                                 picture.width, 0, picture.height, TJPF_RGBA, &buffer, &size, TJSAMP_420, quality,
                                 TJFLAG_NOREALLOC | TJFLAG_ACCURATEDCT);
  if (failed != 0) throw std::runtime_error(tjGetErrorStr2(encoder.get()));
  out.resize(size);
  return out;
}

}  // namespace ql::maker
