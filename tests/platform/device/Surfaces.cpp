// Pixels: formats, locks, copies.
#include "platform/device/Device.h"
#include "support/FakeDisplay.h"

#include <cstring>

#include <gtest/gtest.h>

using namespace ql::device;
using ql::test::parameters;

namespace {

TEST(Formats, EveryStoredValueSurvivesTheWayThroughArgb) {
  struct Row {
    Format format;
    std::uint32_t unused;  // bits that carry nothing
  };
  const Row rows[] = {{Format::R5G6B5, 0},   {Format::X1R5G5B5, 0x8000}, {Format::A1R5G5B5, 0},
                      {Format::A4R4G4B4, 0}, {Format::X4R4G4B4, 0xF000}, {Format::A8, 0xFF00},
                      {Format::L8, 0xFF00},  {Format::A8L8, 0}};
  for (const Row& row : rows)
    for (std::uint32_t value = 0; value <= 0xFFFF; ++value)
      ASSERT_EQ(fromArgb(row.format, toArgb(row.format, value)), value & ~row.unused)
          << "format " << static_cast<int>(row.format) << " value " << value;
}

TEST(Formats, KnownColours) {
  struct Row {
    Format format;
    std::uint32_t argb, value, back;
  };
  const Row rows[] = {
      {Format::R5G6B5, 0xFFFFFFFF, 0xFFFF, 0xFFFFFFFF},     {Format::R5G6B5, 0x00FF0000, 0xF800, 0xFFFF0000},
      {Format::R5G6B5, 0xFF848284, 0x8410, 0xFF848284},     {Format::A1R5G5B5, 0x7F0000FF, 0x001F, 0x000000FF},
      {Format::A1R5G5B5, 0x800000FF, 0x801F, 0xFF0000FF},   {Format::A4R4G4B4, 0x88112233, 0x8123, 0x88112233},
      {Format::X8R8G8B8, 0x12345678, 0x345678, 0xFF345678}, {Format::A8R8G8B8, 0x12345678, 0x12345678, 0x12345678},
      {Format::R8G8B8, 0x12345678, 0x345678, 0xFF345678},   {Format::A8, 0x12345678, 0x12, 0x12000000},
      {Format::A8L8, 0x12FFFFFF, 0x12FF, 0x12FFFFFF},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(fromArgb(row.format, row.argb), row.value) << static_cast<int>(row.format);
    EXPECT_EQ(toArgb(row.format, row.value), row.back) << static_cast<int>(row.format);
  }
}

std::vector<std::byte> counting(std::size_t bytes) {
  std::vector<std::byte> all(bytes);
  for (std::size_t i = 0; i < bytes; ++i) all[i] = static_cast<std::byte>(i);
  return all;
}

TEST(Surfaces, LocksCopyAPartAndWriteItBack) {
  const auto spy = std::make_shared<ql::test::SpyBackEnd>();
  Device device(spy, DeviceType::Reference, parameters(8, 8));
  const auto texture = device.createTexture(8, 8, 0, 0, Format::X8R8G8B8, Pool::Managed);
  EXPECT_EQ(texture->levelCount(), 4u);
  const std::pair<const char*, std::shared_ptr<Surface>> surfaces[] = {
      {"image", device.createImageSurface(8, 8, Format::X8R8G8B8)},
      {"texture", surfaceLevel(texture, 0)},
      {"back buffer", device.getBackBuffer(0)}};
  for (const auto& [name, surface] : surfaces) {
    const std::vector<std::byte> picture = counting(8 * 8 * 4);
    LockedRect all = surface->lock();
    ASSERT_EQ(all.bytes.size(), picture.size()) << name;
    EXPECT_EQ(all.pitch, 32u);
    std::ranges::copy(picture, all.bytes.begin());
    surface->unlock();
    LockedRect part = surface->lock(PixelRect{3, 2, 2, 3});
    EXPECT_EQ(part.bytes[part.pitch], picture[3 * 32 + 3 * 4]) << name << ": second row of the part";
    std::ranges::fill(part.bytes, std::byte{0xEE});
    surface->unlock();
    LockedRect look = surface->lock({}, true);
    for (std::size_t i = 0; i < picture.size(); ++i) {
      const std::size_t x = i / 4 % 8, y = i / 32;
      const bool inPart = x >= 3 && x < 5 && y >= 2 && y < 5;
      ASSERT_EQ(look.bytes[i], inPart ? std::byte{0xEE} : picture[i]) << name << " byte " << i;
    }
    std::ranges::fill(look.bytes, std::byte{0});
    surface->unlock();
    EXPECT_EQ(surface->read({3, 2, 1, 1})[0], std::byte{0xEE}) << name << ": a read-only lock writes nothing";
  }
}

TEST(Surfaces, CopiesGoToTheirPoints) {
  Device device(std::make_shared<ql::test::SpyBackEnd>(), DeviceType::Reference, parameters(8, 8));
  const auto source = device.createImageSurface(4, 4, Format::X8R8G8B8);
  source->write({0, 0, 4, 4}, counting(64));
  const auto back = device.getBackBuffer(0);
  device.copyRects(source, {}, back, {});
  EXPECT_EQ(back->read({0, 0, 4, 4}), counting(64));
  const PixelRect rects[] = {{1, 1, 2, 2}, {3, 3, 1, 1}};
  const std::array<std::uint32_t, 2> points[] = {{6, 6}, {0, 7}};
  device.copyRects(source, rects, back, points);
  EXPECT_EQ(back->read({6, 6, 2, 2}), source->read(rects[0]));
  EXPECT_EQ(back->read({0, 7, 1, 1}), source->read(rects[1]));
  device.copyRects(source, rects, back, {});
  EXPECT_EQ(back->read({3, 3, 1, 1}), source->read(rects[1])) << "without points: where they were";
  // Onto itself, overlapping: the source is what it was before.
  const PixelRect left{0, 0, 3, 4};
  const std::array<std::uint32_t, 2> right[] = {{1, 0}};
  const auto before = source->read(left);
  device.copyRects(source, std::span(&left, 1), source, right);
  EXPECT_EQ(source->read({1, 0, 3, 4}), before);
}

TEST(Surfaces, TargetsAreCopiedToLevelsOfTheirSizeOnly) {
  Device device(std::make_shared<ql::test::SpyBackEnd>(), DeviceType::Reference, parameters(8, 8));
  const auto texture = device.createTexture(8, 4, 0, 0, Format::R5G6B5, Pool::Managed);
  const auto own = device.createTexture(4, 2, 0, kUsageRenderTarget, Format::X8R8G8B8, Pool::Default);
  const TargetId target = device.createTarget(4, 2, Format::X8R8G8B8), onto = device.createTextureTarget(own, 0);
  device.writeTarget(target, std::vector<std::byte>(32, std::byte{0x83}));
  device.copyTarget(target, texture, 1);
  for (const std::uint32_t level : {1u, 2u, 3u})
    EXPECT_EQ(texture->readLevel(level)[1], std::byte{0x84}) << "0x838383 is nearest to 0x8410";
  device.copyTarget(target, own, 0);
  EXPECT_EQ(own->readLevel(2)[2], std::byte{0x83});
  EXPECT_THROW(device.copyTarget(target, texture, 0), DeviceError) << "of another size";
  EXPECT_THROW(device.copyTarget(target, texture, 4), DeviceError) << "no level";
  EXPECT_THROW(device.copyTarget(target, nullptr, 0), DeviceError);
  EXPECT_THROW(device.copyTarget(onto, own, 0), DeviceError) << "to itself";
  EXPECT_THROW(device.copyTarget(TargetId{99}, texture, 1), DeviceError);
  Device other(std::make_shared<ql::test::SpyBackEnd>(), DeviceType::Reference, parameters(8, 8));
  EXPECT_THROW(other.copyTarget(other.createTarget(4, 2, Format::X8R8G8B8), own, 0), DeviceError) << "not its texture";
}

TEST(Surfaces, ResourcesEndWithTheirHandles) {
  const auto spy = std::make_shared<ql::test::SpyBackEnd>();
  std::shared_ptr<Surface> level;
  {
    Device device(spy, DeviceType::Reference, parameters(8, 8));
    auto texture = device.createTexture(4, 4, 1, 0, Format::L8, Pool::Managed);
    device.setTexture(0, texture);
    level = surfaceLevel(std::move(texture), 0);
    const auto buffer = device.createVertexBuffer(16, 0, 0, Pool::Default);
  }
  EXPECT_EQ(level->read({0, 0, 4, 4}).size(), 16u) << "a surface keeps its texture";
  level = nullptr;
  EXPECT_TRUE(spy->empty());
}

}  // namespace
