#include "engine/OpenTarget.h"
#include "platform/software/SoftwareBackEnd.h"
#include "render/Camera.h"
#include "render/RenderSurface.h"
#include "render/RenderTest.h"
#include "render/Screen.h"

#include <cmath>
#include <stdexcept>

namespace ql::render {
namespace {

using device::Transform;

constexpr std::uint32_t kRed = 0xFFFF0000;

struct Surfaces : test::RenderTest {
  Surfaces() {
    context.platform.backEnds[device::DeviceType::Reference] = [](const device::PresentParameters&) {
      return std::shared_ptr<device::BackEnd>(software::createBackEnd({.threads = 1}));
    };
  }
  std::unique_ptr<RenderSurface> make(std::int32_t width, std::int32_t height) {
    return std::make_unique<RenderSurface>(context, width, height);
  }
  /// Everything that a surface borrows.
  std::vector<float> view() const {
    std::vector<float> all;
    const auto add = [&](const auto& value) {
      const auto* first = reinterpret_cast<const float*>(&value);
      all.insert(all.end(), first, first + sizeof value / sizeof(float));
    };
    add(context.frustumPlanes);
    add(context.cameraPosition);
    add(context.cameraLookAt);
    add(context.viewMatrix);
    add(context.projectionMatrix);
    add(context.device->getTransform(Transform::View));
    add(context.device->getTransform(Transform::Projection));
    const math::Viewport at = context.device->getViewport();
    all.insert(all.end(), {static_cast<float>(at.width), static_cast<float>(context.viewport.width)});
    return all;
  }
  std::uint32_t pixel(const RenderSurface& surface, std::uint32_t x, std::uint32_t y) {
    const TextureEntry& entry = context.get<TextureTable>().entries.at(surface.texture()->index);
    const auto level = device::surfaceLevel(entry.texture, 0);
    std::uint32_t argb = 0;
    device::toArgb(level->description().format, level->read({x, y, 1, 1}), {&argb, 1});
    return argb & 0xFFFFFF;
  }
};

TEST_F(Surfaces, HaveAnEntryOfTheTableAndTheirOwnProjection) {
  std::int32_t width = 256, height = 128;
  const RenderSurface surface(context, width, height);
  EXPECT_EQ(width, 256);
  const TextureEntry& entry = context.get<TextureTable>().entries.at(surface.texture()->index);
  EXPECT_EQ(entry.name, "No need");
  EXPECT_EQ(entry.width, 256);
  EXPECT_EQ(entry.texture->description().height, 128u);
  width = -1;
  height = 100000;
  const RenderSurface adjusted(context, width, height);
  EXPECT_EQ(width, 256);
  EXPECT_EQ(height, 4096);
  EXPECT_NE(adjusted.texture(), surface.texture());
  deleteTexture(context, *surface.texture());
  EXPECT_EQ(surface.texture(), nullptr) << "the host took it away";
  make(16, 16);
  EXPECT_EQ(surface.texture(), nullptr) << "its slot is another's now";
}

TEST_F(Surfaces, BorrowTheEnginesViewAndGiveItBack) {
  setCamera(context, {10, 20, 30}, {10, 20, 40});
  engine::clear(context);
  engine::renderToScreen(context);
  const auto surface = make(64, 32);
  surface->setCamera({0, 5, 0}, {0, 5, 10});
  const auto before = view();
  surface->startRender();
  EXPECT_EQ(context.cameraPosition, (math::Vec3{0, 5, 0}));
  EXPECT_EQ(context.cameraLookAt, (math::Vec3{0, 5, 10}));
  EXPECT_NEAR(context.device->getTransform(Transform::Projection).m11,
              context.device->getTransform(Transform::Projection).m22 / 2, 1e-6f)
      << "a picture twice as wide as high";
  EXPECT_EQ(context.device->getTransform(Transform::View).m42, -5);
  EXPECT_TRUE(checkPointVisibility(context, {0, 5, 100}));
  EXPECT_FALSE(checkPointVisibility(context, {0, 5, -100})) << "behind";
  EXPECT_FALSE(checkPointVisibility(context, {0, 5, 600})) << "too far";
  EXPECT_FALSE(checkPointVisibility(context, {0, 400, 100})) << "above";
  surface->setCamera({1, 2, 3}, {4, 5, 6});
  surface->endRender();
  EXPECT_EQ(view(), before);
}

TEST_F(Surfaces, PlanesHoldEverythingThatThePictureShows) {
  struct Case {
    math::Vec3 position, lookAt;
    float aspect;
  };
  for (const Case& row : {Case{{0, 0, 0}, {0, 0, 1}, 0.75f},
                          {{5, 6, 7}, {9, 6, 7}, 0.5f},
                          {{5, 6, 7}, {9, -3, 2}, 2},
                          {{0, 50, 0}, {0, 40, 1}, 1},
                          {{0, 0, 0}, {0, -1, 0}, 1}}) {
    const auto planes = surfacePlanes(row.position, row.lookAt, 1.57f, row.aspect);
    for (const math::Plane& plane : planes) EXPECT_NEAR(std::hypot(plane.a, plane.b, plane.c), 1, 1e-5f);
    if (row.lookAt.y == -1) continue;  // no such view: up and ahead are parallel
    const math::Mat4 back = math::inverse(math::multiply(math::lookAt(row.position, row.lookAt, {0, 1, 0}),
                                                         math::perspective(1.57f, row.aspect, 1, 500)));
    for (const float x : {-0.99f, 0.0f, 0.99f})
      for (const float y : {-0.99f, 0.99f})
        for (const float depth : {0.1f, 0.99f, 0.9999f})
          for (const math::Plane& plane : planes)
            EXPECT_GT(math::distance(plane, math::transformPoint({x, y, depth}, back)), 0) << x << y << depth;
  }
}

TEST_F(Surfaces, TakeThePictureAndLeaveTheFrameAlone) {
  const auto surface = make(32, 16);
  Screen screen(context);
  for (int round = 0; round < 2; ++round) {
    surface->startRender();
    screen.drawFilledBox({4, 2, 12, 10}, static_cast<std::int32_t>(kRed), false);
    surface->endRender();
    EXPECT_EQ(pixel(*surface, 4, 2), 0xFF0000u);
    EXPECT_EQ(pixel(*surface, 11, 9), 0xFF0000u);
    EXPECT_EQ(pixel(*surface, 12, 9), 0u);
    EXPECT_EQ(pixel(*surface, 3, 2), 0u);
  }
  engine::clear(context);
  EXPECT_THROW(surface->startRender(), device::DeviceError) << "inside a frame";
  EXPECT_EQ(context.device->getViewport().width, 640);
  screen.drawPoint(1, 1, -1);
  engine::renderToScreen(context);
  EXPECT_THROW(surface->endRender(), device::DeviceError) << "nothing was begun";
}

TEST_F(Surfaces, LeftOpenAreEndedByWhatComesNext) {
  setCamera(context, {10, 20, 30}, {10, 20, 40});
  engine::clear(context);
  engine::renderToScreen(context);
  auto surface = make(32, 16), other = make(16, 16);
  const auto before = view();
  const std::pair<const char*, std::function<void()>> next[] = {
      {"its own start",
       [&] {
         surface->startRender();
         surface->endRender();
       }},
      {"another surface",
       [&] {
         other->startRender();
         other->endRender();
       }},
      {"a frame",
       [&] {
         engine::clear(context);
         engine::renderToScreen(context);
       }},
      {"a reset", [&] { engine::resetDevice(context); }},
      {"its end", [&] { surface = make(32, 16); }},
  };
  for (const auto& [name, step] : next) {
    SCOPED_TRACE(name);
    surface->startRender();
    EXPECT_NE(view(), before);
    EXPECT_NO_THROW(step());
    EXPECT_EQ(view(), before);
    EXPECT_FALSE(context.get<engine::OpenTarget>().end);
    EXPECT_THROW(surface->endRender(), device::DeviceError);
  }
  // The scene ends behind its back: the error is told and the view is back all the same.
  surface->startRender();
  context.device->endScene();
  EXPECT_THROW(surface->endRender(), device::DeviceError);
  EXPECT_EQ(view(), before);
}

TEST_F(Surfaces, AThrowInTheMiddleLeavesTheNextFrameWhole) {
  const auto surface = make(32, 16);
  Screen screen(context);
  try {
    surface->startRender();
    screen.drawFilledBox({0, 0, 32, 16}, static_cast<std::int32_t>(kRed), false);
    throw std::runtime_error("the host's own");
  } catch (const std::runtime_error&) {
    // The host goes on with its next frame.
  }
  engine::clear(context);
  screen.drawFilledBox({0, 0, 640, 480}, -1, false);
  const device::SurfaceDescription frame = context.device->getBackBuffer(0)->description();
  std::uint32_t argb = 0;
  device::toArgb(frame.format, context.device->getBackBuffer(0)->read({600, 400, 1, 1}), {&argb, 1});
  EXPECT_EQ(argb & 0xFFFFFF, 0xFFFFFFu) << "the frame is drawn on the screen, all of it";
  engine::renderToScreen(context);
  EXPECT_EQ(pixel(*surface, 20, 10), 0xFF0000u) << "the texture has what was drawn before the throw";
}

TEST_F(Surfaces, LiveThroughANewDevice) {
  const auto surface = make(32, 16);
  surface->startRender();
  context.device->setCallSink(nullptr);
  ASSERT_TRUE(engine::initialize(context, engine::kFullScreen));
  surface->startRender();
  context.device->clear({}, 1, kRed, 1, 0);
  surface->endRender();
  EXPECT_EQ(pixel(*surface, 5, 5), 0xFF0000u);
  const TextureEntry& entry = context.get<TextureTable>().entries.at(surface->texture()->index);
  EXPECT_EQ(entry.texture->backEnd(), context.device->backEnd());
}

}  // namespace
}  // namespace ql::render
