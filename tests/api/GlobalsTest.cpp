#include "Engine.h"

#include <cmath>
#include <limits>

namespace ql::test {
namespace {

class Globals : public EngineTest {
 protected:
  Globals8 globals;
};

TEST_F(Globals, ErrorsCarryTheirNumbers) {
  constexpr float kHuge = std::numeric_limits<float>::max();
  constexpr double kBeyond = 1e300;
  const struct {
    const char* what;
    std::int32_t expected, got;
  } cases[] = {
      {"angle below the table", 9, errorOf([&] { (void)globals.CosT(-1); })},
      {"angle above the table", 9, errorOf([&] { (void)globals.SinT(361); })},
      {"angle that is not a number", 9, errorOf([&] { (void)globals.SinT(std::nanf("")); })},
      {"heading without z", 11, errorOf([&] { (void)globals.Direction2Ang(1, 0); })},
      {"component beyond a single", 6, errorOf([&] { (void)globals.ColorValue(kBeyond, 0, 0, 0); })},
      {"coordinate beyond a single", 6, errorOf([&] { (void)globals.LVertex(0, -kBeyond, 0, 0, 0, 0); })},
      {"rectangle beyond 32 bits", 6, errorOf([&] { (void)globals.REC(0, 0, 3e9, 0); })},
      {"rectangle of no number", 6, errorOf([&] { (void)globals.REC(std::nan(""), 0, 0, 0); })},
      {"sum beyond a single", 6, errorOf([&] {
         (void)globals.VAdd({kHuge, 0, 0}, {kHuge, 0, 0});
       })},
      {"infinity less infinity", 5, errorOf([&] {
         constexpr float kInfinity = std::numeric_limits<float>::infinity();
         (void)globals.VSubtract({kInfinity, 0, 0}, {kInfinity, 0, 0});
       })},
      {"texture index outside", 9, errorOf([&] { (void)globals.GetTexNameFromId(7); })},
      {"texture index below", 9, errorOf([&] { (void)globals.GetTexNameFromId(-1); })},
      {"material index outside", 9, errorOf([&] { MaterialFactory8().SetPower(9, 1); })},
      {"curve precision beyond 16 bits", 6, errorOf([&] { BSPTree8().SetCurvePrecision(70000); })},
      {"no such folder", 76, errorOf([&] { engine.SetSearchDirectory("no/such/folder"); })},
      {"no device", 91, errorOf([&] { engine.ScreenShot("a.bmp"); })},
  };
  for (const auto& row : cases) EXPECT_EQ(row.got, row.expected) << row.what;
  start();
  EXPECT_EQ(errorOf([&] { engine.ScreenShot("no/such/folder/a.bmp"); }), 76);
  EXPECT_EQ(static_cast<std::uint32_t>(errorOf([&] { engine.RenderToScreen(); })), 0x8876086Cu)
      << "a frame that was not started";
}

TEST_F(Globals, ConstructorsFillTheRecords) {
  EXPECT_EQ(globals.RGBA(1, 0, 0, 1), -65536);
  EXPECT_EQ(static_cast<std::uint32_t>(globals.RGBA(1, 1, 1, 0.5)), 0x80FFFFFFu);
  EXPECT_EQ(globals.RGBA(1.01, 0, 0, 1), 0);
  EXPECT_EQ(globals.Colorkey(QL_COLORKEY_MAGENTA), static_cast<std::int32_t>(0xFFFF00FF));
  const Rect rect = globals.REC(0.5, 1.5, -2.5, 3);
  EXPECT_EQ(rect.left, 0);
  EXPECT_EQ(rect.top, 2);
  EXPECT_EQ(rect.right, -2);
  EXPECT_EQ(rect.bottom, 3);
  for (const double color : {4278190335.0, -16776961.0}) {  // 0xFF0000FF in both notations
    const LitVertex vertex = globals.LVertex(1, 2, 3, color, 0.25, 0.75);
    EXPECT_EQ(vertex.diffuse, QL_COLORKEY_BLUE);
    EXPECT_EQ(vertex.specular, QL_COLORKEY_BLUE);
    EXPECT_EQ(vertex.tv, 0.75f);
  }
  EXPECT_EQ(globals.TLVertex(1, 2, 3, 4, 5, 6).rhw, 0.5f);
  const NormalVertex vertex = globals.Vertex2(1, 2, 3, 4, 5, 6, 7, 8, 9, 10);
  EXPECT_EQ(vertex.nx, 4);
  EXPECT_EQ(vertex.tu, 7);
  EXPECT_EQ(vertex.tv1, 10);
}

TEST_F(Globals, MathematicsFollowsItsTablesAndConventions) {
  EXPECT_EQ(globals.CosT(0.125f), globals.CosT(0)) << "halves to the even entry";
  EXPECT_NE(globals.CosT(90), 0) << "the table's own constant";
  EXPECT_NEAR(globals.Direction2Ang(1, -1), 134.9947, 1e-3);
  EXPECT_EQ(globals.VCrossProduct({1, 0, 0}, {0, 1, 0}), (Vec3{0, 0, 1}));
  EXPECT_EQ(globals.VNormalize({0, 0, 0}), (Vec3{}));
  EXPECT_EQ(globals.VModulus({3, 4, 0}), 5);
  EXPECT_EQ(globals.GetDistance3D(1, 1, 1, 3, 4, 7), 7);
  EXPECT_EQ(globals.GetDistance2D(1e200, 0, 1e200, 5), 5) << "differences are taken before they become singles";
}

TEST_F(Globals, MaterialsAreFoundByNameInAnyCase) {
  start();
  MaterialFactory8 factory;
  EXPECT_EQ(factory.CreateMaterial(), 1);
  EXPECT_EQ(factory.CreateMaterialQuick(1, 0, 0, 1, "Lava"), 2);
  EXPECT_EQ(globals.GetMat("LAVA"), 2);
  EXPECT_EQ(globals.GetMat("material1"), 1);
  EXPECT_EQ(globals.GetMat("Blank"), 0);
  factory.DeleteMaterial(2);
  EXPECT_EQ(factory.CreateMaterial("next"), 3);
  EXPECT_EQ(globals.GetSound("any") + globals.GetTerrain("any"), 0);
}

}  // namespace
}  // namespace ql::test
