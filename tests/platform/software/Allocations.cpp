// Frames like the ones before allocate nothing, whatever they draw. Address sanitizers count allocations of their own.
#ifndef __SANITIZE_ADDRESS__
#include "Scene.h"

#include <atomic>
#include <new>

#include <gmock/gmock.h>

namespace {

std::atomic<std::uint64_t> allocations{0};

void* allocated(std::size_t bytes, std::size_t alignment) {
  ++allocations;
  void* out = nullptr;
  if (posix_memalign(&out, std::max(alignment, sizeof(void*)), std::max<std::size_t>(bytes, 1)) != 0)
    throw std::bad_alloc();
  return out;
}

}  // namespace

void* operator new(std::size_t bytes) { return allocated(bytes, __STDCPP_DEFAULT_NEW_ALIGNMENT__); }
void* operator new(std::size_t bytes, std::align_val_t a) { return allocated(bytes, static_cast<std::size_t>(a)); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }

namespace ql::test {
namespace {

using device::PrimitiveType;

TEST(Allocations, NoneAfterTheFirstFrames) {
  Scene scene(300, 200, device::Format::X8R8G8B8, 2);
  const auto texture = scene.texture(2, 2, {0xFFFFFFFF, 0xFF00FF00, 0xFFFF0000, 0xFF0000FF});
  scene.state.projection = math::perspective(1, 0.8f, 0.5f, 60);
  const std::vector<LitVertex> world{{-5, -5, 10}, {5, -5, 10}, {0, 5, -10}, {-5, 5, 20}, {5, 5, 20}, {0, -5, 30}};
  const std::vector<ScreenVertex> strip{{0, 0, 0.5f}, {90, 10, 0.5f}, {10, 90, 0.5f}, {100, 100, 0.5f}};
  const auto frame = [&] {
    scene.clear(0xFF000000);
    for (std::uint32_t i = 0; i < 200; ++i) {
      scene.textures[0] = i % 3 == 0 ? texture : device::TextureId::None;
      scene.state.render.alphaRef = i % 50;
      scene.state.render.lighting = i % 4 == 1;
      scene.state.lightEnabled[i % 5] = i % 2 == 0;
      scene.state.render.alphaBlendEnable = i % 7 == 0;
      scene.draw(i % 2 == 0 ? PrimitiveType::TriangleList : PrimitiveType::LineList, world);
      scene.draw(PrimitiveType::TriangleStrip, strip);
    }
    scene.backEnd->present(scene.target, nullptr);
  };
  for (int i = 0; i < 3; ++i) frame();
  const std::uint64_t before = allocations;
  for (int i = 0; i < 5; ++i) frame();
  EXPECT_EQ(allocations, before);
}

}  // namespace
}  // namespace ql::test

#endif
