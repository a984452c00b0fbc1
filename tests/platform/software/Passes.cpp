// Frames that are under way while others take draws: nobody may see when which is carried out.
#include "Scene.h"

#include <random>

#include <gtest/gtest.h>

namespace ql::test {
namespace {

using device::Format;
using device::TargetId;
using device::TextureId;

constexpr std::uint32_t kSide = 150;  // three tiles, the last one cut

/// Targets and textures that draw on each other, driven by random numbers: equal seeds give equal calls.
class Workshop {
 public:
  Workshop(unsigned threads, unsigned seed)
      : scene_(kSide, kSide, Format::A8R8G8B8, threads), backEnd_(*scene_.backEnd), random_(seed) {
    scene_.state.render.zEnable = 0;
    scene_.state.stages[0].magFilter = 2;
    plain_ = scene_.state.stages[0];
    scene_.replaceByTexture();
    textured_ = scene_.state.stages[0];
    for (const bool drawnOn : {false, false, true, true}) {
      textures_.push_back(backEnd_.createTexture({kSide, kSide, 3, Format::X8R8G8B8, drawnOn}));
      if (drawnOn) targets_.push_back(backEnd_.createTextureTarget(textures_.back(), 0));
    }
    targets_.push_back(scene_.target);
    targets_.push_back(backEnd_.createTarget(kSide, kSide, Format::X8R8G8B8));
  }

  /// One call. @return what it gave
  std::vector<std::byte> step() {
    const TargetId target = targets_[any(targets_.size())];
    const std::size_t which = any(textures_.size());
    const TextureId texture = textures_[which];
    switch (any(12)) {
      case 0:
        backEnd_.clear(target, {}, device::kClearTarget, any(0x1000000), 1);
        return {};
      case 1:
        if (which >= 2 && target == targets_[which - 2]) return {};  // onto itself
        backEnd_.copyToTexture(target, texture, 0);
        return {};
      case 2:
        return backEnd_.readPixels(target, part());
      case 3:
        return backEnd_.readTexture(texture, any(3));
      case 4: {
        const std::vector<std::uint32_t> pixels(std::size_t{kSide} * kSide, any(0x1000000));
        backEnd_.uploadTexture(texture, 0, std::as_bytes(std::span(pixels)));
        return {};
      }
      case 5: {
        const device::PixelRect rect = part();
        const std::vector<std::uint32_t> pixels(std::size_t{rect.width} * rect.height, any(0x1000000));
        backEnd_.writePixels(target, rect, std::as_bytes(std::span(pixels)));
        return {};
      }
      case 6:
        if (which >= 2) return {};
        backEnd_.destroyTexture(texture);
        textures_[which] = backEnd_.createTexture({kSide, kSide, 3, Format::R5G6B5, false});
        return {};
      default:
        draw(target, any(3) == 0 ? TextureId::None : texture);
        return {};
    }
  }
  std::vector<std::byte> all() {
    std::vector<std::byte> out;
    for (const TargetId target : targets_)
      for (const std::byte b : backEnd_.readPixels(target, {0, 0, kSide, kSide})) out.push_back(b);
    return out;
  }

 private:
  std::uint32_t any(std::size_t count) { return static_cast<std::uint32_t>(random_() % count); }
  device::PixelRect part() {
    const std::uint32_t x = any(kSide), y = any(kSide);
    return {x, y, 1 + any(kSide - x), 1 + any(kSide - y)};
  }
  void draw(TargetId target, TextureId texture) {
    scene_.target = target;
    scene_.textures[0] = texture;
    scene_.state.stages[0] = texture == TextureId::None ? plain_ : textured_;
    const device::PixelRect r = part();
    scene_.rectangle(static_cast<float>(r.x), static_cast<float>(r.y), static_cast<float>(r.x + r.width),
                     static_cast<float>(r.y + r.height), 0xFF000000 | any(0x1000000));
  }

  Scene scene_;
  device::BackEnd& backEnd_;
  std::mt19937 random_;
  device::StageStates plain_, textured_;
  std::vector<TargetId> targets_;
  std::vector<TextureId> textures_;
};

TEST(Passes, AnyOrderOfCallsGivesWhatOneThreadGives) {
  for (unsigned seed = 0; seed < 40; ++seed) {
    Workshop one(1, seed), several(3, seed);
    for (int i = 0; i < 150; ++i) ASSERT_EQ(several.step(), one.step()) << "seed " << seed << " call " << i;
    ASSERT_EQ(several.all(), one.all()) << "seed " << seed;
  }
}

}  // namespace
}  // namespace ql::test
