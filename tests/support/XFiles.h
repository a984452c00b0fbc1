/// @file
/// Small X files made in memory: one description, written as text, as binary tokens, or compressed. Programs that
/// include this link ZLIB::ZLIB.
#pragma once

#include "support/PictureFiles.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <zlib.h>

namespace ql::test {

enum class XKind { Text, Binary, CompressedText, CompressedBinary };

/// Writes the body of a file. Objects are opened and closed; numbers are given in the lists that binary files keep.
class XWriter {
 public:
  /// @param realBytes of binary files, 4 or 8
  explicit XWriter(bool binary, std::size_t realBytes = 4) : binary_(binary), realBytes_(realBytes) {}

  XWriter& open(std::string_view kind, std::string_view name = "") {
    word(kind);
    if (!name.empty()) word(name);
    return brace(true);
  }
  XWriter& close() { return brace(false); }
  XWriter& ints(std::initializer_list<std::uint32_t> values) { return ints(std::span(values.begin(), values.size())); }
  XWriter& reals(std::initializer_list<float> values) { return reals(std::span(values.begin(), values.size())); }
  XWriter& ints(std::span<const std::uint32_t> values) {
    if (binary_) bytes_.u16(6).u32(values.size());
    for (const std::uint32_t value : values) binary_ ? bytes_.u32(value) : bytes_.text(std::to_string(value) + ";");
    return *this;
  }
  XWriter& reals(std::span<const float> values) {
    if (binary_) bytes_.u16(7).u32(values.size());
    for (const float value : values) {
      char text[32];
      std::snprintf(text, sizeof text, "%.9g,", static_cast<double>(value));
      if (!binary_)
        bytes_.text(text);
      else if (realBytes_ == 8)
        bytes_.put(std::bit_cast<std::uint64_t>(static_cast<double>(value)), 8);
      else
        bytes_.u32(std::bit_cast<std::uint32_t>(value));
    }
    return *this;
  }
  /// A quoted text; text files double its backslashes.
  XWriter& quoted(std::string_view value) {
    if (binary_) {
      bytes_.u16(2).u32(value.size()).text(value).u16(20);
      return *this;
    }
    std::string escaped;
    for (const char c : value) escaped += c == '\\' ? "\\\\" : std::string(1, c);
    bytes_.text("\"" + escaped + "\";");
    return *this;
  }
  XWriter& refer(std::string_view name) {
    brace(true);
    word(name);
    return brace(false);
  }
  /// template NAME <16 bytes> with one member.
  XWriter& declare(std::string_view name, std::initializer_list<int> guid) {
    if (!binary_) {
      bytes_.text("template ").text(name).text(" {\n <");
      constexpr int kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
      for (std::size_t i = 0; i < 16; ++i) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned>(guid.begin()[kOrder[i]]));
        bytes_.text(digits).text(i == 3 || i == 5 || i == 7 || i == 9 ? "-" : "");
      }
      bytes_.text(">\n DWORD count;\n [...]\n}\n");
      return *this;
    }
    bytes_.u16(31);
    word(name);
    bytes_.u16(10).u16(5);
    for (const int byte : guid) bytes_.u8(static_cast<std::uint64_t>(byte));
    bytes_.u16(41);
    word("count");
    bytes_.u16(20).u16(14).u16(18).u16(18).u16(18).u16(15).u16(11);
    return *this;
  }
  XWriter& raw(std::string_view text) {
    bytes_.text(text);
    return *this;
  }
  std::vector<std::byte> take() { return bytes_.take(); }

 private:
  XWriter& word(std::string_view text) {
    binary_ ? bytes_.u16(1).u32(text.size()).text(text) : bytes_.text(text).text(" ");
    return *this;
  }
  XWriter& brace(bool open) {
    binary_ ? bytes_.u16(open ? 10 : 11) : bytes_.text(open ? "{\n" : "}\n");
    return *this;
  }
  bool binary_;
  std::size_t realBytes_;
  FileBytes bytes_;
};

/// The body in blocks as compressed files have them, each referring to the ones before.
inline std::vector<std::byte> deflated(std::span<const std::byte> body, std::size_t blockSize) {
  FileBytes out;
  out.u32(body.size() + 16);
  for (std::size_t at = 0; at < body.size(); at += blockSize) {
    const std::span<const std::byte> block = body.subspan(at, std::min(blockSize, body.size() - at));
    std::vector<std::byte> packed(compressBound(static_cast<uLong>(block.size())) + 64);
    z_stream stream{};
    if (deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) std::abort();
    const std::size_t window = std::min<std::size_t>(at, 32768);
    if (window > 0)
      deflateSetDictionary(&stream, reinterpret_cast<const Bytef*>(body.data() + at - window),
                           static_cast<uInt>(window));
    stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(block.data()));
    stream.avail_in = static_cast<uInt>(block.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END) std::abort();
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    out.u16(block.size()).u16(packed.size() + 2).text("CK").add(packed);
  }
  return out.take();
}

/// Header and body. @param blockSize of compressed kinds
inline std::vector<std::byte> xFile(XKind kind, std::span<const std::byte> body, std::size_t realBytes = 4,
                                    std::size_t blockSize = 32768) {
  constexpr std::string_view kKinds[] = {"txt ", "bin ", "tzip", "bzip"};
  FileBytes file;
  file.text("xof 0303").text(kKinds[static_cast<std::size_t>(kind)]).text(realBytes == 8 ? "0064" : "0032");
  if (kind == XKind::Text || kind == XKind::Binary) return file.add(body).take();
  return file.add(deflated(body, blockSize)).take();
}

/// A file with all that is read: a template by another name, a material that is referred to, frames in frames, a mesh
/// whose normals split a vertex, a face of four corners, objects that are skipped.
inline std::vector<std::byte> tinyX(XKind kind, std::size_t realBytes = 4, std::size_t blockSize = 32768) {
  XWriter out(kind == XKind::Binary || kind == XKind::CompressedBinary, realBytes);
  out.declare("Gitter", {0x44, 0xAB, 0x82, 0x3D, 0xDA, 0x62, 0xCF, 0x11, 0xAB, 0x39, 0, 0x20, 0xAF, 0x71, 0xE4, 0x33});
  out.open("AnimTicksPerSecond").ints({24}).close();
  out.open("Material", "Red").reals({1, 0, 0, 0.5F}).reals({8}).reals({0.25F, 0.25F, 0.25F}).reals({0, 0, 0.5F});
  out.open("TextureFilename").quoted("art\\red.bmp").close().close();
  out.open("Frame", "Outer");
  out.open("FrameTransformMatrix").reals({2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 10, 0, 0, 1}).close();
  out.open("Frame", "Inner");
  out.open("FrameTransformMatrix").reals({0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 5, 0, 1}).close();
  // Two faces over the edge from (0, 0, 0) to (1, 0, 0), upright and flat: the edge's corners have two normals each.
  out.open("Gitter", "Fold").ints({5});
  out.reals({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1});
  out.ints({2, 4, 0, 1, 2, 3, 3, 0, 1, 4});
  out.open("MeshNormals").ints({2}).reals({0, 0, -1, 0, 1, 0}).ints({2, 4, 0, 0, 0, 0, 3, 1, 1, 1}).close();
  out.open("MeshTextureCoords").ints({5}).reals({0, 0, 1, 0, 1, 1, 0, 1, 0, 0.5F}).close();
  out.open("MeshVertexColors").ints({1, 0}).reals({1, 1, 1, 1}).close();
  out.open("MeshMaterialList").ints({2, 2, 1, 0});
  out.open("Material", "Plain").reals({0, 1, 0, 1}).reals({0}).reals({0, 0, 0}).reals({0, 0, 0}).close();
  out.refer("Red").close();
  out.close().close().close();
  const std::vector<std::byte> body = out.take();
  return xFile(kind, body, realBytes, blockSize);
}

}  // namespace ql::test
