// Spheres, teapots, solid letters, and meshes of subsets.
#include "platform/fonts/FontFace.h"
#include "platform/recording/Recorder.h"
#include "platform/utility/Shapes.h"
#include "platform/utility/SubsetMesh.h"
#include "platform/utility/Tessellate.h"
#include "platform/utility/TextMesh.h"
#include "support/FakeDisplay.h"

#include <array>
#include <cmath>
#include <map>
#include <numbers>
#include <string>

#include <gtest/gtest.h>

using namespace ql::utility;
using ql::device::DeviceError;
using ql::fonts::Contour;
using ql::math::Vec3;

namespace {

/// What every solid must be: its triangles face outwards with their normals, and each edge has two.
struct Solidity {
  double volume = 0;
  int inward = 0;     ///< corners whose normal does not point to the side that the triangle shows
  int openEdges = 0;  ///< directed edges that no triangle runs back along
  int badNormals = 0;
};
Solidity examine(const SubsetMesh& mesh) {
  Solidity found;
  std::map<std::array<float, 6>, int> edges;
  const auto vertices = mesh.vertices();
  const auto indices = mesh.indices();
  for (std::size_t i = 0; i < indices.size(); i += 3) {
    const SubsetVertex* corners[] = {&vertices[indices[i]], &vertices[indices[i + 1]], &vertices[indices[i + 2]]};
    const Vec3 a = corners[0]->position, b = corners[1]->position, c = corners[2]->position;
    found.volume += static_cast<double>(ql::math::dot(a, ql::math::cross(b, c))) / 6;
    const Vec3 face = ql::math::cross(ql::math::subtract(b, a), ql::math::subtract(c, a));
    for (int k = 0; k < 3; ++k) {
      const Vec3 from = corners[k]->position, to = corners[(k + 1) % 3]->position;
      if (ql::math::dot(face, corners[k]->normal) < 0) ++found.inward;
      ++edges[{from.x, from.y, from.z, to.x, to.y, to.z}];
      --edges[{to.x, to.y, to.z, from.x, from.y, from.z}];
    }
  }
  for (const auto& [edge, surplus] : edges) found.openEdges += surplus > 0 ? surplus : 0;
  for (const SubsetVertex& vertex : vertices)
    if (std::abs(ql::math::length(vertex.normal) - 1) > 1e-3f) ++found.badNormals;
  return found;
}

void expectSolid(const SubsetMesh& mesh, int openEdges, const std::string& name) {
  const Solidity found = examine(mesh);
  EXPECT_EQ(found.inward, 0) << name;
  EXPECT_EQ(found.openEdges, openEdges) << name;
  EXPECT_EQ(found.badNormals, 0) << name;
  EXPECT_GT(found.volume, 0) << name;
}

TEST(Solids, SpheresAreClosed) {
  for (const auto& [slices, stacks] : {std::array{3, 2}, {16, 12}, {5, 40}}) {
    const auto sphere = createSphere(2, slices, stacks);
    EXPECT_EQ(sphere->vertices().size(), static_cast<std::size_t>(sphereVertexCount(slices, stacks)));
    EXPECT_EQ(sphere->triangleCount(), static_cast<std::size_t>(2 * slices * (stacks - 1)));
    expectSolid(*sphere, 0, std::to_string(slices));
    for (const SubsetVertex& vertex : sphere->vertices()) {
      EXPECT_NEAR(ql::math::length(vertex.position), 2, 1e-5f);
      EXPECT_TRUE(vertex.tu >= 0 && vertex.tu <= 1 && vertex.tv >= 0 && vertex.tv <= 1);
    }
  }
  EXPECT_NEAR(examine(*createSphere(1, 100, 100)).volume, 4 * std::numbers::pi / 3, 0.01);
}

TEST(Solids, TheTeapotIsOpenAtTheRimTheLidAndTheTubesEndsOnly) {
  const auto teapot = createTeapot();
  // Four quarters of eight pieces at the rim and at the lid; two halves of eight at both ends of both tubes.
  expectSolid(*teapot, 32 + 32 + 4 * 16, "teapot");
  const Box box = teapot->boundingBox();
  EXPECT_FLOAT_EQ(box.minimum.y, -box.maximum.y);
  EXPECT_FLOAT_EQ(box.minimum.z, -1);
  EXPECT_FLOAT_EQ(box.minimum.x, -1.5f);
  EXPECT_GT(box.maximum.x, 1.6f) << "the spout";
}

double areaOf(const Area& area) {
  double sum = 0;
  for (std::size_t i = 0; i < area.triangles.size(); i += 3) {
    const auto &a = area.points[area.triangles[i]], &b = area.points[area.triangles[i + 1]],
               &c = area.points[area.triangles[i + 2]];
    sum += static_cast<double>((b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y)) / 2;
  }
  return sum;
}
Contour square(float at, float size, bool counterClockwise = true) {
  Contour line{{at, at}, {at + size, at}, {at + size, at + size}, {at, at + size}};
  if (!counterClockwise) line = Contour(line.rbegin(), line.rend());
  return line;
}

// One row per way that lines can lie: what area they enclose and how many borders it has.
struct AreaCase {
  const char* name;
  std::vector<Contour> lines;
  double area;
  std::size_t borders;
};
TEST(Solids, AreasAreWhatLinesWindAround) {
  const AreaCase cases[] = {
      {"a square", {square(0, 10)}, 100, 1},
      {"the other way round", {square(0, 10, false)}, 100, 1},
      {"a hole", {square(0, 10), square(2, 4, false)}, 84, 2},
      {"an island in the hole", {square(0, 10), square(1, 8, false), square(3, 2)}, 40, 3},
      {"no hole: the same direction", {square(0, 10), square(2, 4)}, 100, 1},
      {"two that cross", {square(0, 10), square(5, 10)}, 175, 1},
      {"a bow tie", {{{0, 0}, {10, 10}, {10, 0}, {0, 10}}}, 50, 2},
      {"no area", {{{0, 0}, {10, 0}, {5, 0}}}, 0, 0},
      {"nothing", {}, 0, 0},
  };
  for (const AreaCase& row : cases) {
    const Area area = areaInside(row.lines);
    EXPECT_NEAR(areaOf(area), row.area, 1e-3) << row.name;
    EXPECT_EQ(area.borders.size(), row.borders) << row.name;
  }
}

TEST(Solids, LettersAreClosed) {
  for (const char* face : {"DejaVu Sans", "DejaVu Serif", "DejaVu Sans Mono"})
    for (const bool slanted : {false, true}) {
      const ql::fonts::FontRequest font{.face = face, .bold = slanted, .italic = slanted};
      const auto text = createText(font, "O8g%&@ \xC3\x84\xC3\xB1 Teapot", 1, 40);
      expectSolid(*text, 0, face);
      const Box box = text->boundingBox();
      EXPECT_EQ(box.minimum.z, -40);
      EXPECT_EQ(box.maximum.z, 0);
    }
  // A finer outline encloses the same, nearly.
  const double coarse = examine(*createText({}, "Og", 10, 40)).volume;
  const double fine = examine(*createText({}, "Og", 0.5f, 40)).volume;
  EXPECT_NEAR(coarse / fine, 1, 0.05);
}

TEST(Solids, LettersStandOnLines) {
  const Box one = createText({}, "H", 1, 0)->boundingBox(), two = createText({}, "H\r\nH", 1, 0)->boundingBox(),
            wide = createText({}, "HHH", 1, 0)->boundingBox();
  EXPECT_FLOAT_EQ(one.minimum.y, 0) << "the baseline";
  EXPECT_NEAR(one.maximum.y, 73, 2) << "of an em of 100";
  EXPECT_FLOAT_EQ(two.maximum.y, one.maximum.y);
  EXPECT_NEAR(two.minimum.y, -116, 3);
  EXPECT_FLOAT_EQ(two.maximum.x, one.maximum.x);
  EXPECT_GT(wide.maximum.x, 2.5f * one.maximum.x);
  EXPECT_EQ(one.minimum.z, one.maximum.z);
}

TEST(Solids, WrongNumbersAreInvalidCalls) {
  EXPECT_THROW(createSphere(-1, 8, 8), DeviceError);
  EXPECT_THROW(createSphere(NAN, 8, 8), DeviceError);
  EXPECT_THROW(createSphere(1, 1, 8), DeviceError);
  EXPECT_THROW(createSphere(1, 8, -8), DeviceError);
  EXPECT_THROW(createText({}, "", 1, 40), DeviceError);
  EXPECT_THROW(createText({}, " \n ", 1, 40), DeviceError);
  EXPECT_THROW(createText({}, "x", -1, 40), DeviceError);
  EXPECT_THROW(createText({}, "x", 1, INFINITY), DeviceError);
  const std::vector<SubsetVertex> three(3);
  EXPECT_THROW(SubsetMesh(three, {0, 1, 3}), DeviceError);
  EXPECT_THROW(SubsetMesh(three, {0, 1}), DeviceError);
  EXPECT_THROW(SubsetMesh(three, {0, 1, 2}, {0, 1}), DeviceError);
  EXPECT_THROW(SubsetMesh(three, {0, 1, 2}, {kLargestSubset + 1}), DeviceError);
}

TEST(Solids, SubsetsAreDrawnFromOneBuffer) {
  ql::recording::Recorder recorder;
  const std::vector<SubsetVertex> corners(6);
  SubsetMesh mesh(corners, {0, 1, 2, 3, 4, 5, 0, 2, 4}, {3, 0, 3});
  EXPECT_EQ(mesh.subsetCount(), 4U);
  for (int round = 0; round < 2; ++round) {  // a new device gets a buffer of its own
    ql::device::Device device(ql::recording::createNullBackEnd(), ql::device::DeviceType::Reference,
                              ql::test::parameters(8, 8));
    device.setCallSink(&recorder);
    device.beginScene();
    recorder.clear();
    mesh.drawSubset(device, 3);
    mesh.drawSubset(device, 0);
    mesh.drawSubset(device, 1);
    mesh.drawSubset(device, 9);
    EXPECT_EQ(recorder.lines({"CreateVertexBuffer"}).size(), 1U);
    EXPECT_EQ(recorder.lines({"SetVertexShader", "DrawPrimitive"}),
              (std::vector<std::string>{"SetVertexShader(274)", "DrawPrimitive(4, 3, 2)", "SetVertexShader(274)",
                                        "DrawPrimitive(4, 0, 1)"}));
    device.setCallSink(nullptr);
  }
}

TEST(Solids, SmoothNormalsAreMiddles) {
  // Two squares that meet at a right angle along the y axis.
  const auto at = [](float x, float y, float z) { return SubsetVertex{{x, y, z}, {}, 0, 0}; };
  SubsetMesh mesh({at(0, 0, 0), at(0, 1, 0), at(1, 0, 0), at(1, 1, 0), at(0, 0, 1), at(0, 1, 1)},
                  {0, 1, 2, 2, 1, 3, 0, 4, 1, 1, 4, 5});
  mesh.computeNormals();
  EXPECT_EQ(mesh.vertices()[3].normal, Vec3({0, 0, -1}));
  EXPECT_EQ(mesh.vertices()[5].normal, Vec3({-1, 0, 0}));
  const Vec3 edge = mesh.vertices()[0].normal;
  EXPECT_LT(edge.x, 0);
  EXPECT_LT(edge.z, 0);
  EXPECT_EQ(edge.y, 0);
}

}  // namespace
