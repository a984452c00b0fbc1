// When waiting draws are carried out, and what of it others see.
#include "Scene.h"

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using device::Format;
using device::PrimitiveType;

TEST(Results, DrawnTexturesAreSampledWithWrappedEdges) {
  Scene scene(130, 130);
  const auto id = scene.backEnd->createTexture({128, 64, 2, Format::R5G6B5, true});
  const auto drawnOn = scene.backEnd->createTextureTarget(id, 0), screen = scene.target;
  scene.target = drawnOn;
  scene.state.viewport = {0, 0, 128, 64, 0, 1};
  scene.clear(0xFF0000FF);
  scene.rectangle(0, 0, 1, 64, 0xFFFF0000);
  scene.target = screen;
  scene.state.viewport = {0, 0, 130, 130, 0, 1};
  scene.textures[0] = id;
  scene.replaceByTexture();
  scene.state.stages[0].magFilter = 2;
  scene.rectangle(0, 0, 128, 64,
                  0);  // half a texel off: each pixel mixes its own and the left neighbour, over the seam
  scene.textures[0] = {};
  // Drawing on it again must not reach what was drawn from it.
  scene.target = drawnOn;
  scene.clear(0xFFFFFFFF);
  scene.target = screen;
  EXPECT_LE(difference(scene.pixel(0, 5), 0xFF80007F), 2) << std::hex << scene.pixel(0, 5);
  EXPECT_LE(difference(scene.pixel(1, 5), 0xFF80007F), 2);
  EXPECT_EQ(scene.pixel(2, 5), 0xFF0000FF);
  const auto bytes = scene.backEnd->readTexture(id, 0);
  EXPECT_THAT(bytes, testing::Each(std::byte{0xFF}));
}

TEST(Results, WaitingDrawsKeepWhatTheyWereGiven) {
  Scene scene(6, 2);
  const auto id = scene.texture(1, 1, {0xFF00FF00});
  scene.textures[0] = id;
  scene.replaceByTexture();
  scene.rectangle(0, 0, 2, 2, 0);
  const std::uint32_t red = 0xFFFF0000, blue = 0xFF0000FF;
  scene.backEnd->uploadTexture(id, 0, std::as_bytes(std::span(&red, 1)));
  scene.rectangle(2, 0, 4, 2, 0);
  scene.backEnd->uploadTexture(id, 0, std::as_bytes(std::span(&blue, 1)));
  scene.rectangle(4, 0, 6, 2, 0);
  scene.backEnd->destroyTexture(id);
  EXPECT_EQ(scene.pixels(), (std::vector<std::uint32_t>{0xFF00FF00, 0xFF00FF00, red, red, blue, blue, 0xFF00FF00,
                                                        0xFF00FF00, red, red, blue, blue}));

  // Vertex buffers likewise.
  const std::vector<ScreenVertex> left{{0, 0, 0}, {20, 0, 0}, {0, 20, 0}};
  auto& backEnd = *scene.backEnd;
  const auto buffer = backEnd.createBuffer(sizeof(ScreenVertex) * 3);
  device::DrawPacket packet;
  packet.target = scene.target;
  packet.state = &scene.state;
  packet.stateVersion = 1000;
  packet.primitiveCount = 1;
  packet.vertexCount = 3;
  packet.vertexFormat = kScreenFormat;
  packet.stride = sizeof(ScreenVertex);
  packet.buffer = buffer;
  backEnd.uploadBuffer(buffer, 0, std::as_bytes(std::span(left)));
  scene.state.stages[0] = device::State().stages[0];
  backEnd.draw(packet);
  backEnd.uploadBuffer(buffer, 0, std::vector<std::byte>(sizeof(ScreenVertex) * 3));
  backEnd.destroyBuffer(buffer);
  EXPECT_THAT(scene.pixels(), testing::Each(0xFFFFFFFF));
}

TEST(Results, ReadingTheTargetItselfSeesItAsBefore) {
  Scene scene(8, 8);
  const auto id = scene.backEnd->createTexture({8, 8, 1, Format::A8R8G8B8, true});
  scene.target = scene.backEnd->createTextureTarget(id, 0);
  scene.clear(0xFF000000);
  scene.rectangle(0, 0, 4, 8, 0xFFFFFFFF);
  scene.textures[0] = id;
  scene.replaceByTexture();
  scene.draw(
      PrimitiveType::TriangleFan,
      std::vector<ScreenVertex>{
          {0, 0, 0, 1, 0, 0, 1, 0}, {8, 0, 0, 1, 0, 0, 0, 0}, {8, 8, 0, 1, 0, 0, 0, 1}, {0, 8, 0, 1, 0, 0, 1, 1}});
  EXPECT_EQ(scene.pixel(2, 2), 0xFF000000);  // mirrored
  EXPECT_EQ(scene.pixel(6, 2), 0xFFFFFFFF);
}

class Screen final : public device::Window {
 public:
  explicit Screen(bool visible) : visible_(visible) {}
  Size clientSize() const override { return {8, 4}; }
  bool visible() const override { return visible_; }
  void show(const device::Picture& picture) override {
    shown.assign(picture.pixels, picture.pixels + picture.pitch * picture.height);
    width = picture.width;
  }
  void pump() override {}
  void setTitle(const std::string&) override {}
  bool closeRequested() const override { return false; }
  void setMode(bool, Size) override {}

  std::vector<std::uint32_t> shown;
  std::uint32_t width = 0;

 private:
  bool visible_;
};

TEST(Results, PresentShowsTheFinishedPictureInVisibleWindows) {
  for (const Format format : {Format::X8R8G8B8, Format::R5G6B5})
    for (const bool visible : {true, false}) {
      Scene scene(8, 4, format);
      scene.rectangle(0, 0, 4, 4, 0xFFFF0000);
      Screen screen(visible);
      scene.backEnd->present(scene.target, &screen);
      scene.backEnd->present(scene.target, nullptr);
      if (!visible) {
        EXPECT_TRUE(screen.shown.empty());
        continue;
      }
      ASSERT_EQ(screen.shown.size(), 32u);
      EXPECT_EQ(screen.width, 8u);
      EXPECT_EQ(screen.shown[3] & 0xFFFFFF, 0xFF0000u);
      EXPECT_EQ(screen.shown[4] & 0xFFFFFF, 0u);
    }
}

// More primitives than may wait at once: the parts are drawn in order.
TEST(Results, LongQueuesAreCarriedOutInParts) {
  Scene scene(64, 64);
  scene.state.render.zEnable = 0;
  const std::vector<ScreenVertex> points(300000, ScreenVertex{1, 1, 0});
  scene.fill(0xFF000001);
  for (int i = 0; i < 4; ++i) scene.draw(PrimitiveType::PointList, points);
  scene.fill(0xFF000002);
  EXPECT_THAT(scene.pixels(), testing::Each(0xFF000002));
}

}  // namespace
}  // namespace ql::test
