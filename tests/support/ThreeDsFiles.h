/// @file
/// Small 3D Studio files made in memory.
#pragma once

#include "support/PictureFiles.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace ql::test {

/// One chunk: its header and what it holds, in order.
inline std::vector<std::byte> chunk3ds(std::uint16_t id, const std::vector<std::vector<std::byte>>& parts) {
  FileBytes body;
  for (const std::vector<std::byte>& part : parts) body.add(part);
  const std::vector<std::byte> inner = body.take();
  return FileBytes().u16(id).u32(6 + inner.size()).add(inner).take();
}
inline std::vector<std::byte> zeroEnded(std::string_view text) { return FileBytes().text(text).u8(0).take(); }
inline std::vector<std::byte> floats3ds(std::size_t perItem, const std::vector<float>& values) {
  FileBytes out;
  out.u16(values.size() / perItem);
  for (const float value : values) out.u32(std::bit_cast<std::uint32_t>(value));
  return out.take();
}
inline std::vector<std::byte> faces3ds(const std::vector<std::array<std::uint16_t, 3>>& faces) {
  FileBytes out;
  out.u16(faces.size());
  for (const auto& f : faces) out.u16(f[0]).u16(f[1]).u16(f[2]).u16(7);
  return out.take();
}
inline std::vector<std::byte> color3ds(std::uint16_t which, int red, int green, int blue) {
  return chunk3ds(which, {chunk3ds(0x0011, {raw({red, green, blue})})});
}

/// The parts of a file with two objects, for a test to change one of them.
struct Tiny3ds {
  std::vector<std::byte> positions = chunk3ds(0x4110, {floats3ds(3, {0, 0, 0, 4, 0, 0, 0, 4, 0, 0, 0, 4})});
  std::vector<std::byte> coordinates = chunk3ds(0x4140, {floats3ds(2, {0, 0.25F, 1, 0, 0, 1, 0.5F, 0.5F})});
  std::vector<std::byte> faceMaterial = chunk3ds(0x4130, {zeroEnded("Brick"), FileBytes().u16(1).u16(0).take()});
  std::vector<std::byte> faces = faces3ds({{0, 1, 2}, {0, 3, 1}});
  std::vector<std::byte> map =
      chunk3ds(0xA200, {chunk3ds(0x0030, {FileBytes().u16(100).take()}), chunk3ds(0xA300, {zeroEnded("BRICK.BMP")}),
                        chunk3ds(0xA354, {FileBytes().u32(0).take()})});
  std::vector<std::byte> between;  ///< chunks between the materials and the objects
  bool coordinatesFirst = true;

  std::vector<std::byte> bytes() const {
    const std::vector<std::byte> material =
        chunk3ds(0xAFFF, {chunk3ds(0xA000, {zeroEnded("Brick")}), color3ds(0xA010, 51, 102, 153),
                          color3ds(0xA020, 1, 2, 3), color3ds(0xA030, 255, 0, 255), map});
    const std::vector<std::byte> faceList = chunk3ds(0x4120, {faces, faceMaterial});
    const std::vector<std::byte> box =
        chunk3ds(0x4100, coordinatesFirst ? std::vector{positions, coordinates, faceList}
                                          : std::vector{positions, faceList, coordinates});
    const std::vector<std::byte> plain = chunk3ds(0x4100, {positions, chunk3ds(0x4160, {FileBytes().zeros(48).take()}),
                                                           chunk3ds(0x4120, {faces3ds({{1, 2, 3}})})});
    return chunk3ds(0x4D4D, {chunk3ds(0x0002, {FileBytes().u32(3).take()}),
                             chunk3ds(0x3D3D, {chunk3ds(0x3D3E, {FileBytes().u32(3).take()}), material, between,
                                               chunk3ds(0x4000, {zeroEnded("Box"), box}),
                                               chunk3ds(0x4000, {zeroEnded("Plain"), plain})})});
  }
};

}  // namespace ql::test
