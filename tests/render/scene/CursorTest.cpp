#include "engine/PointerState.h"
#include "render/RenderTest.h"
#include "render/scene/Cursor.h"
#include "render/scene/Scene.h"

#include <cstring>

namespace ql::render::scene {
namespace {

struct Cursors : test::RenderTest {
  void SetUp() override {
    RenderTest::SetUp();
    startScenes(context);
    picture("arrow.bmp", 4, 4, 0xFFFFFF);
    context.get<engine::PointerState>() = {100, 50, true};
  }
  /// The rectangle that a frame draws: left, top, right, bottom; nothing when it draws none.
  std::vector<float> drawnInFrame() {
    engine::clear(context);
    recorder.clear();
    engine::renderToScreen(context);
    for (const recording::Recorder::Call& call : recorder.calls()) {
      if (call.name != "DrawPrimitiveUP") continue;
      Quasarlens3D::TransformedLitVertex first, last;
      std::memcpy(&first, call.blobs.at(0).data(), sizeof first);
      std::memcpy(&last, call.blobs[0].data() + 3 * sizeof last, sizeof last);
      return {first.x, first.y, last.x, last.y};
    }
    return {};
  }
};

TEST_F(Cursors, AreDrawnWhereThePointerIsUntilHidden) {
  EXPECT_TRUE(drawnInFrame().empty());
  std::string file = "arrow.bmp";
  loadCursor(context, file, 0, 32, 16);
  const std::vector<float> drawn = drawnInFrame();
  ASSERT_EQ(drawn.size(), 4u);
  EXPECT_NEAR(drawn[0], 100, 1);
  EXPECT_NEAR(drawn[1], 50, 1);
  EXPECT_FLOAT_EQ(drawn[2] - drawn[0], 32);
  EXPECT_FLOAT_EQ(drawn[3] - drawn[1], 16);
  setCursor(context, nullptr, 1, 1);
  EXPECT_TRUE(drawnInFrame().empty());
  const TextureHandle other{1};
  setCursor(context, &other, 8, 8);
  EXPECT_FLOAT_EQ(drawnInFrame().at(2) - drawnInFrame().at(0), 8);
}

TEST_F(Cursors, NeverStopAFrame) {
  const TextureHandle outside{99};
  setCursor(context, &outside, 8, 8);
  EXPECT_TRUE(drawnInFrame().empty());
  const TextureHandle none{0};
  setCursor(context, &none, 8, 8);
  EXPECT_TRUE(drawnInFrame().empty()) << "no texture named Cursor";
  std::string file = "missing.bmp";
  loadCursor(context, file, 0, 32, 16);
  EXPECT_FALSE(drawnInFrame().empty()) << "plain, without its picture";
  context.get<engine::PointerState>().known = false;
  EXPECT_TRUE(drawnInFrame().empty()) << "no input engine";
}

}  // namespace
}  // namespace ql::render::scene
