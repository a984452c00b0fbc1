#include "platform/images/Decoders.h"
#include "platform/images/SizeProof.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <png.h>

namespace ql::images {
namespace {

using host::ByteReader;
using host::Fault;
using host::FileFault;

constexpr std::uint64_t kHeaderAt = 16;        // after the signature and the chunk's length and name
constexpr std::uint64_t kDeflateRatio = 1032;  // deflate's best
constexpr png_alloc_size_t kChunkLimit = 1u << 20;

struct Header {
  std::uint32_t width = 0, height = 0, depth = 0, colorType = 0, samples = 1;
};

std::uint32_t bigEndian32(const ByteReader& file, std::uint64_t at, const char* what) {
  std::uint32_t value = 0;
  for (const std::byte b : file.range(at, 4, what)) value = value << 8 | std::to_integer<std::uint32_t>(b);
  return value;
}

Header readHeader(const ByteReader& file) {
  file.range(kHeaderAt, 13, "PNG header");
  if (std::memcmp(&file.bytes()[kHeaderAt - 4], "IHDR", 4) != 0)
    throw FileFault(Fault::BadIdentifier, "PNG header chunk", kHeaderAt - 4);
  Header h;
  h.width = bigEndian32(file, kHeaderAt, "width");
  h.height = bigEndian32(file, kHeaderAt + 4, "height");
  h.depth = file.at<std::uint8_t>(kHeaderAt + 8, "sample depth");
  h.colorType = file.at<std::uint8_t>(kHeaderAt + 9, "colour type");
  constexpr std::array<std::uint8_t, 7> kSamples = {1, 0, 3, 1, 2, 0, 4};
  if (h.colorType >= kSamples.size() || kSamples[h.colorType] == 0)
    throw FileFault(Fault::BadEncoding, "colour type", kHeaderAt + 9, h.colorType, 6);
  h.samples = kSamples[h.colorType];
  if (h.depth == 0 || h.depth > 16) throw FileFault(Fault::BadSize, "sample depth", kHeaderAt + 8, h.depth, 16);
  proveSize(h.width, h.height, file.size(), std::max<std::uint64_t>(1, kDeflateRatio * 8 / (h.depth * h.samples)));
  return h;
}

/// One reading of a file. The library reports errors by a long jump, so the functions that call it hold no object with
/// a destructor and keep their values here.
struct Session {
  std::span<const std::byte> bytes;
  std::size_t at = 0;
  png_structp png = nullptr;
  png_infop info = nullptr;
  std::array<char, 96> message{};
  bool alpha = false;
  int passes = 1;

  explicit Session(std::span<const std::byte> file) : bytes(file) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { png_destroy_read_struct(&png, &info, nullptr); }
};

void onError(png_structp png, png_const_charp text) {
  auto* session = static_cast<Session*>(png_get_error_ptr(png));
  std::strncpy(session->message.data(), text, session->message.size() - 1);
  png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

void onRead(png_structp png, png_bytep out, std::size_t count) {
  auto* session = static_cast<Session*>(png_get_io_ptr(png));
  if (count > session->bytes.size() - session->at) png_error(png, "the file ends too early");
  std::memcpy(out, session->bytes.data() + session->at, count);
  session->at += count;
}

/// Reads everything before the pixels and asks for blue, green, red, alpha bytes. @return false after an error
bool beginReading(Session& s) {
  s.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &s, onError, onWarning);
  if (s.png == nullptr) return false;
  s.info = png_create_info_struct(s.png);
  if (s.info == nullptr) return false;
  if (setjmp(png_jmpbuf(s.png)) != 0) return false;  // NOLINT: the library's way to report errors
  png_set_read_fn(s.png, &s, onRead);
  png_set_user_limits(s.png, kMaxSide, kMaxSide);
  png_set_chunk_malloc_max(s.png, kChunkLimit);
  // Colours are taken as stored: no gamma, no profiles, no text.
  png_set_keep_unknown_chunks(s.png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
  png_read_info(s.png, s.info);
  s.alpha = (png_get_color_type(s.png, s.info) & PNG_COLOR_MASK_ALPHA) != 0 ||
            png_get_valid(s.png, s.info, PNG_INFO_tRNS) != 0;
  png_set_expand(s.png);
  png_set_scale_16(s.png);
  png_set_gray_to_rgb(s.png);
  png_set_bgr(s.png);
  png_set_add_alpha(s.png, 0xFF, PNG_FILLER_AFTER);
  s.passes = png_set_interlace_handling(s.png);
  png_read_update_info(s.png, s.info);
  return true;
}

/// @return false after an error
bool readRows(Session& s, Image& image) {
  if (setjmp(png_jmpbuf(s.png)) != 0) return false;  // NOLINT
  if (png_get_rowbytes(s.png, s.info) != std::size_t{image.width} * sizeof(std::uint32_t))
    png_error(s.png, "unexpected row size");
  for (int pass = 0; pass < s.passes; ++pass)
    for (std::uint32_t y = 0; y < image.height; ++y)
      png_read_row(s.png, reinterpret_cast<png_bytep>(&image.at(0, y)), nullptr);
  return true;
}

}  // namespace

ImageInfo inspectPng(const ByteReader& file) {
  const Header h = readHeader(file);
  return {.format = ImageFormat::Png,
          .width = h.width,
          .height = h.height,
          .bitsPerPixel = h.depth * h.samples,
          .mipLevels = 1,
          .compressed = true};
}

Image decodePng(const ByteReader& file) {
  const Header h = readHeader(file);
  Session session(file.bytes());
  if (!beginReading(session))
    throw FileFault(Fault::BadEncoding, std::string("PNG header: ") + session.message.data(), session.at);
  Image image = blankImage(h.width, h.height);
  image.hasAlpha = session.alpha;
  if (!readRows(session, image))
    throw FileFault(Fault::BadEncoding, std::string("PNG data: ") + session.message.data(), session.at);
  return image;
}

}  // namespace ql::images
