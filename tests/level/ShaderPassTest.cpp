// Faces whose textures have shaders, and the sky.
#include "RunningLevel.h"
#include "mesh/MeshRecord.h"
#include "render/Subsystems.h"
#include "render/shaders/Shaders.h"
#include "support/PictureFiles.h"
#include "support/TinyQ3Level.h"

#include <array>
#include <cstring>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ql::level {
namespace {

using testing::ElementsAre;

class ShaderPass : public RunningLevel {
 protected:
  ShaderPass() { render::startSubsystems(context); }
  /// Loads the small level with a script; all its faces are listed in every frame.
  void load(const std::string& script, bool sky = false) {
    test::put("scripts/all.shader", script);
    level->loadShaderDirectory("scripts");
    loadBytes(test::TinyQ3Level().bytes(), "tiny.bsp");
    level->setParameters(true, false, 1, sky);
  }
};

// Vertices 0, 6 and 12 are the floors and the ceiling, 18 the curve; the eastern floor and the curve have
// textures/base/stone.
constexpr const char* kStone = "textures/base/stone\n{\n";

TEST_F(ShaderPass, DrawsRunsStageByStageAfterThePlainFaces) {
  load(std::string(kStone) +
       "{\nmap $texture\n}\n{\nmap $lightmap\nblendFunc filter\n}\n{\nmap $texture\nblendFunc what\ntcMod scale 2 "
       "3\ntcMod "
       "scroll 0.5 0.25\n}\n}\n");
  machine.clock->now = 20000;
  const Lines draws = render({"DrawPrimitive"});
  const Lines plain(draws.begin(), draws.begin() + 4), staged(draws.begin() + 4, draws.end());
  EXPECT_THAT(plain, testing::Each(testing::AnyOf("DrawPrimitive(4, 0, 2)", "DrawPrimitive(4, 12, 2)")));
  ASSERT_EQ(staged.size(), 6U) << testing::PrintToString(draws);
  EXPECT_EQ((std::set<std::string>(staged.begin(), staged.begin() + 2)),
            (std::set<std::string>{"DrawPrimitive(4, 6, 2)", "DrawPrimitive(4, 18, 8)"}));
  EXPECT_EQ(Lines(staged.begin() + 2, staged.begin() + 4), Lines(staged.begin(), staged.begin() + 2));
  EXPECT_EQ(context.facesThisFrame, 4U);

  const Lines blending = render({"SetRenderState"});
  const Lines stages(blending.end() - 7, blending.end());
  EXPECT_THAT(stages, ElementsAre("SetRenderState(27, 0)", "SetRenderState(27, 4294967295)", "SetRenderState(19, 9)",
                                  "SetRenderState(20, 1)", "SetRenderState(27, 4294967295)", "SetRenderState(19, 2)",
                                  "SetRenderState(20, 2)"));
  const Lines coordinates = render({"SetTextureStageState"});
  EXPECT_THAT(Lines(coordinates.end() - 12, coordinates.end()),
              ElementsAre("SetTextureStageState(0, 11, 0)", "SetTextureStageState(0, 24, 0)",  // the face's own
                          "SetTextureStageState(0, 11, 0)", "SetTextureStageState(0, 11, 1)",  // its light
                          "SetTextureStageState(0, 24, 0)",                                    //
                          "SetTextureStageState(0, 11, 0)", "SetTextureStageState(0, 11, 196608)",
                          "SetTextureStageState(0, 24, 2)",                                    // scaled and scrolling
                          "SetTextureStageState(0, 24, 0)", "SetTextureStageState(0, 11, 0)",  // after the run
                          "SetTextureStageState(0, 24, 0)", "SetTextureStageState(0, 11, 0)"));
  math::Mat4 moved;
  for (const recording::Recorder::Call& call : recorder.calls())
    if (call.name == "SetTransform" && call.values[0] == "16" && moved.m11 != 2)
      std::memcpy(&moved, call.blobs[0].data(), sizeof moved);
  EXPECT_EQ((std::array{moved.m11, moved.m22, moved.m41, moved.m42}), (std::array{2.0f, 3.0f, 5.0f, 10.0f}));
}

TEST_F(ShaderPass, ShowsTheFrameOfTheMoment) {
  const std::vector<std::byte> red = test::bmpFile({.width = 4, .height = 4}, std::vector<std::byte>(48));
  for (const char* name : {"a.bmp", "b.bmp", "c.bmp"})
    test::put(name, {reinterpret_cast<const char*>(red.data()), red.size()});
  load(std::string(kStone) + "{\nanimMap 2 a.bmp b.bmp c.bmp\n}\n}\n");
  std::vector<std::string> shown;
  for (const std::uint32_t ticks : {30000u, 30499u, 30500u, 31000u, 31500u}) {
    machine.clock->now = ticks;
    const Lines textures = render({"SetTexture"});
    shown.push_back(textures.back());
  }
  EXPECT_EQ(shown[0], shown[1]);
  EXPECT_NE(shown[1], shown[2]);
  EXPECT_NE(shown[2], shown[3]);
  EXPECT_NE(shown[0], shown[3]);
  EXPECT_EQ(shown[0], shown[4]);
}

TEST_F(ShaderPass, TheSkyIsASphereAroundTheCamera) {
  load(std::string(kStone) + "surfaceparm sky\n{\nmap $texture\n}\n}\n", true);
  constexpr const char* kSphere = "DrawPrimitive(4, 0, 264)";
  const Lines draws = render({"DrawPrimitive"});
  ASSERT_EQ(draws.size(), 5U) << "two plain faces in two passes, none of the sky's faces, and the sphere";
  EXPECT_EQ(draws.back(), kSphere);
  const std::shared_ptr<mesh::MeshHandle> sky = mesh::findMesh(context, "BSPSky");
  ASSERT_TRUE(sky);
  mesh::MeshRecord& record = mesh::meshRecord(context, sky->slot);
  EXPECT_FALSE(record.enabled);
  EXPECT_TRUE(record.sphereMapping);
  context.cameraPosition = {1, 2, 3};
  render({});
  EXPECT_EQ(record.position, (math::Vec3{1, 2, 3}));
  level->setParameters(true, false, 1, false);
  EXPECT_THAT(render({"DrawPrimitive"}), testing::Not(testing::Contains(kSphere))) << "switched off";
}

}  // namespace
}  // namespace ql::level
