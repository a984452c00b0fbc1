#include "platform/opengl/Content.h"
#include "platform/software/CopyCases.h"

#include <random>
#include <string>

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using device::Format;

std::vector<std::byte> noise(std::size_t bytes, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::byte> out(bytes);
  for (std::byte& b : out) b = static_cast<std::byte>(random());
  return out;
}

// What both devices give back must be the same to the bit, unused bits included.
TEST_F(OpenGL, PixelsComeBackAsTheyWentIn) {
  for (const Format format : {Format::A8R8G8B8, Format::X8R8G8B8, Format::R5G6B5, Format::X1R5G5B5, Format::A1R5G5B5,
                              Format::A4R4G4B4, Format::X4R4G4B4, Format::A8, Format::L8, Format::A8L8}) {
    const std::shared_ptr<device::BackEnd> reference = software::createBackEnd();
    for (const auto& [width, height] : {std::pair{16u, 16u}, {13u, 7u}, {1u, 5u}}) {
      const std::string name = std::to_string(code(format)) + " " + std::to_string(width);
      const device::TextureDescription description{width, height, 3, format, device::isTargetFormat(format)};
      const device::TextureId here = hardware()->createTexture(description),
                              there = reference->createTexture(description);
      for (const std::uint32_t level : {0u, 2u}) {
        const std::size_t size = std::size_t{std::max(width >> level, 1u)} * std::max(height >> level, 1u);
        const std::vector<std::byte> pixels = noise(size * device::bytesPerPixel(format), width + level);
        hardware()->uploadTexture(here, level, pixels);
        reference->uploadTexture(there, level, pixels);
      }
      for (std::uint32_t level = 0; level < 3; ++level)
        EXPECT_EQ(hardware()->readTexture(here, level), reference->readTexture(there, level)) << name << " " << level;
      if (device::isTargetFormat(format)) {
        const device::TargetId target = hardware()->createTextureTarget(here, 0);
        EXPECT_EQ(hardware()->readPixels(target, {0, 0, width, height}), reference->readTexture(there, 0)) << name;
        hardware()->destroyTarget(target);
      }
      hardware()->destroyTexture(here);
    }
  }
}

TEST_F(OpenGL, CopiesOfTargetsAreTheSame) {
  const std::shared_ptr<device::BackEnd> reference = software::createBackEnd();
  for (const CopyCase& c : copyCases()) {
    const CopyResult here = copied(*hardware(), c), there = copied(*reference, c);
    ASSERT_EQ(here.picture, there.picture) << c.name();
    for (std::size_t i = 0; i < there.levels.size(); ++i)
      ASSERT_EQ(here.levels[i], there.levels[i]) << c.name() << ", level " << i;
  }
}

TEST_F(OpenGL, TargetsTakePixelsInPart) {
  for (const Format format : {Format::A8R8G8B8, Format::X8R8G8B8, Format::R5G6B5, Format::A1R5G5B5}) {
    Scene reference(20, 10, format), gl(hardware(), 20, 10, format);
    const device::PixelRect rect{3, 2, 7, 5};
    const std::vector<std::byte> pixels = noise(35 * device::bytesPerPixel(format), 5);
    for (Scene* s : {&reference, &gl}) {
      s->clear(0xFF336699);
      s->backEnd->writePixels(s->target, rect, pixels);
      s->rectangle(5, 4, 9, 9, 0xFF00FF00);
    }
    EXPECT_EQ(gl.pixels(), reference.pixels()) << code(format);
    const device::PixelRect part{4, 3, 9, 4};
    EXPECT_EQ(gl.backEnd->readPixels(gl.target, part), reference.backEnd->readPixels(reference.target, part));
  }
}

struct ShownWindow : device::Window {
  std::vector<std::uint32_t> shown;
  bool seen = true;
  Size clientSize() const override { return {8, 8}; }
  bool visible() const override { return seen; }
  void show(const device::Picture& picture) override {
    shown.clear();
    for (std::uint32_t y = 0; y < picture.height; ++y)
      for (std::uint32_t x = 0; x < picture.width; ++x)
        shown.push_back(picture.pixels[y * picture.pitch + x] & 0xFFFFFF);
  }
  void pump() override {}
  void setTitle(const std::string&) override {}
  bool closeRequested() const override { return false; }
  void setMode(bool, Size) override {}
};

TEST_F(OpenGL, ShowsThePictureTopRowFirst) {
  for (const Format format : {Format::X8R8G8B8, Format::R5G6B5}) {
    Scene s(hardware(), 8, 8, format);
    s.clear(0xFF0000FF);
    s.rectangle(0, 0, 8, 1, 0xFFFF0000);
    ShownWindow window;
    s.backEnd->present(s.target, &window);
    ASSERT_EQ(window.shown.size(), 64u);
    EXPECT_EQ(window.shown[7], 0xFF0000u);
    EXPECT_EQ(window.shown[8], 0x0000FFu);
    window.seen = false;
    window.shown.clear();
    s.backEnd->present(s.target, &window);
    EXPECT_TRUE(window.shown.empty());
  }
}

TEST_F(OpenGL, ATextureIsWrittenAgainAfterAnotherWasDrawn) {
  Scene s(hardware(), 8, 8);
  const std::vector<std::uint32_t> red(4, 0xFFFF0000), green(4, 0xFF00FF00), blue(4, 0xFF0000FF);
  const device::TextureId still = s.texture(2, 2, green), changing = s.texture(2, 2, red);
  s.replaceByTexture();
  s.textures[0] = still;
  s.fill(0);
  s.pixels();  // drawn, with its texture in the first stage
  s.backEnd->uploadTexture(changing, 0, std::as_bytes(std::span(blue)));
  s.fill(0);
  EXPECT_EQ(s.pixel(3, 3), green[0]);
  s.textures[0] = changing;
  s.fill(0);
  EXPECT_EQ(s.pixel(3, 3), blue[0]);
}

TEST_F(OpenGL, VertexBuffersChangeBetweenDraws) {
  Scene s(hardware(), 32, 8);
  const std::vector<ScreenVertex> corners{{0, 0, 0, 1, 0xFFFF0000},  {16, 0, 0, 1, 0xFFFF0000},
                                          {16, 8, 0, 1, 0xFFFF0000}, {0, 0, 0, 1, 0xFFFF0000},
                                          {16, 8, 0, 1, 0xFFFF0000}, {0, 8, 0, 1, 0xFFFF0000}};
  // One vertex in front is skipped; the stride is larger than the vertex, the last time beyond what drivers must take.
  for (const std::uint32_t stride : {32u, 40u, 45u, 3000u}) {
    s.clear(0);
    const device::BufferId buffer = s.backEnd->createBuffer(std::size_t{stride} * 7);
    device::DrawPacket packet;
    packet.target = s.target;
    packet.state = &s.state;
    packet.stateVersion = 1000 + stride;
    packet.primitiveCount = 2;
    packet.vertexCount = 6;
    packet.vertexFormat = kScreenFormat;
    packet.stride = stride;
    packet.buffer = buffer;
    packet.firstVertex = 1;
    for (int half = 0; half < 2; ++half) {
      for (std::size_t i = 0; i < 6; ++i) {
        ScreenVertex v = corners[i];
        v.x += static_cast<float>(half) * 16;
        if (half) v.diffuse = 0xFF00FF00;
        s.backEnd->uploadBuffer(buffer, (i + 1) * stride, std::as_bytes(std::span(&v, 1)));
      }
      s.backEnd->draw(packet);
    }
    EXPECT_EQ(s.pixel(3, 3), 0xFFFF0000u) << stride;
    EXPECT_EQ(s.pixel(20, 3), 0xFF00FF00u) << stride;
    s.backEnd->destroyBuffer(buffer);
  }
}

}  // namespace
}  // namespace ql::test
