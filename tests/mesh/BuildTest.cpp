// Vertices, groups, flat pieces and their limits.
#include "MeshTest.h"

#include <functional>
#include <string>
#include <vector>

namespace ql::mesh {
namespace {

using test::engineErrorOf;

struct Building : test::MeshTest {};

TEST_F(Building, ANewMeshIsEmptyWithOneGroup) {
  EXPECT_EQ(record().name, "Mesh1");
  EXPECT_EQ(record().groupCount, 1);
  EXPECT_EQ(record().groups.size(), 2U);
  EXPECT_EQ(record().groups[1].count, 0);
  EXPECT_EQ(record().vertexType, kNormalVertices);
  EXPECT_EQ(record().primitiveType, kTriangleList);
  EXPECT_EQ(record().cullMode, 1);
  EXPECT_EQ(record().scale, math::Vec3({1, 1, 1}));
  EXPECT_TRUE(record().enabled && record().inUse && record().matrixDirty);
  expectSpare();
}

TEST_F(Building, SlotsAreFreedWithTheLastHandleAndTakenAgain) {
  auto second = allocateMesh(context, "Second"), third = allocateMesh(context);
  addVertices(3);
  MeshRecord& freed = meshRecord(context, second->slot);
  second.reset();
  EXPECT_FALSE(freed.inUse || freed.enabled);
  EXPECT_EQ(freed.name, "");
  EXPECT_EQ(freed.groupCount, 0);
  EXPECT_EQ(allocateMesh(context)->slot, 2) << "the first free slot, not a new one";
  EXPECT_EQ(meshCount(context), 3);
  EXPECT_EQ(meshRecord(context, third->slot).name, "Mesh3");
  EXPECT_EQ(engineErrorOf([&] { meshRecord(context, 4); }), engine::kSubscript);
  EXPECT_EQ(engineErrorOf([&] { meshRecord(context, 0); }), engine::kSubscript);
}

TEST_F(Building, VerticesGoToBothListsAndTheCurrentGroup) {
  EXPECT_EQ(addVertex(context, *handle, {1, 2, 3, 4, 5, 6, 7, 8, 7, 8}, 0x11223344), 1);
  EXPECT_EQ(addVertex(context, *handle, vertexOf(9), -1), 2);
  EXPECT_EQ(place(0), math::Vec3({1, 2, 3}));
  EXPECT_EQ(normal(0), math::Vec3({4, 5, 6}));
  EXPECT_EQ(record().normalVertices[0].tv1, 8);
  const math::ColorVertex& colored = record().colorVertices[0];
  EXPECT_EQ(colored.diffuse, 0x11223344);
  EXPECT_EQ(colored.specular, 0);
  EXPECT_EQ(colored.tu, 7);
  EXPECT_EQ(colored.tu1, 7);
  EXPECT_EQ(record().groups[1].indices, (std::vector<std::int16_t>{0, 1}));
  expectSpare();
}

// One row per way through the groups: what is done, and the first vertex and number of vertices of each group then.
struct GroupCase {
  const char* name;
  std::function<void(test::MeshTest&)> operations;
  std::vector<std::array<std::int16_t, 2>> groups;
};
void face(test::MeshTest& t, std::int32_t vertices) {
  addFace(t.context, *t.handle, 0, true);
  t.addVertices(vertices);
}
void point(test::MeshTest& t, std::int16_t group) { setGroupPointer(t.context, *t.handle, group); }

TEST_F(Building, GroupsAreRunsOfVertices) {
  const GroupCase cases[] = {
      {"faces come after the first group", [](auto& t) { face(t, 3), face(t, 4); }, {{0, 0}, {0, 3}, {3, 4}}},
      {"the first group keeps what it has", [](auto& t) { t.addVertices(2), face(t, 3); }, {{0, 2}, {2, 3}}},
      {"the last group but one becomes the last, emptied",
       [](auto& t) { face(t, 3), face(t, 4), point(t, 2); },
       {{0, 0}, {7, 0}}},
      {"an earlier group only becomes current",
       [](auto& t) { face(t, 3), face(t, 4), point(t, 1), t.addVertices(1); },
       {{0, 1}, {0, 3}, {3, 4}}},
      {"a group far beyond makes those between",
       [](auto& t) { t.addVertices(1), point(t, 4); },
       {{0, 1}, {0, 0}, {0, 0}, {1, 0}}},
      {"group 0 empties the list", [](auto& t) { t.addVertices(2), point(t, 0), t.addVertices(1); }, {}},
  };
  for (const GroupCase& row : cases) {
    handle = allocateMesh(context);
    row.operations(*this);
    ASSERT_EQ(record().groupCount, static_cast<std::int16_t>(row.groups.size())) << row.name;
    ASSERT_EQ(record().groups.size(), row.groups.size() + 1) << row.name;
    for (std::size_t g = 0; g < row.groups.size(); ++g) {
      EXPECT_EQ(record().groups[g + 1].start, row.groups[g][0]) << row.name << ", group " << g + 1;
      EXPECT_EQ(record().groups[g + 1].count, row.groups[g][1]) << row.name << ", group " << g + 1;
    }
    EXPECT_EQ(record().groups[0].start, 0) << row.name;
    expectSpare();
  }
}

// One row per piece: its corners in order, its normals, its tiling of 2 across and 3 up, and the primitive type then.
struct PieceCase {
  const char* name;
  std::function<void(test::MeshTest&)> build;
  std::vector<math::Vec3> corners, normals;
  std::int16_t primitive;
};
constexpr Tiling kTwoByThree{2, 3};

TEST_F(Building, FlatPieces) {
  const std::array<math::Vec3, 4> points{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}}};
  const std::array<math::Vec3, 3> corner{points[0], points[1], points[2]};
  const math::Vec3 x{1, 0, 0}, down{0, -1, 0}, none;
  const PieceCase cases[] = {
      {"wall",
       [](auto& t) {
         addWall(t.context, *t.handle, 7, {0, 0, 2, 5}, {10, 1, 2, 5}, kTwoByThree);
       },
       {{0, 2, 0}, {0, 7, 0}, {10, 2, 1}, {10, 7, 1}},
       {x, x, none, x},
       kTriangleStrip},
      {"sloped wall",
       [](auto& t) {
         addSlopedWall(t.context, *t.handle, 7, {0, 0, 2, 5}, {10, 1, 3, 6}, kTwoByThree);
       },
       {{0, 2, 0}, {0, 7, 0}, {10, 3, 1}, {10, 9, 1}},
       {none, none, none, none},
       kTriangleList},
      {"floor",
       [](auto& t) { addFloor(t.context, *t.handle, 7, 0, 1, 10, 11, 4, kTwoByThree); },
       {{0, 4, 1}, {0, 4, 11}, {10, 4, 1}, {10, 4, 11}},
       {down, down, down, down},
       kTriangleStrip},
      {"quad",
       [&](auto& t) { addQuad(t.context, *t.handle, 7, points, kTwoByThree); },
       {points[0], points[1], points[2], points[3]},
       {x, x, x, x},
       kTriangleStrip},
      {"triangle",
       [&](auto& t) { addTriangle(t.context, *t.handle, 7, corner, kTwoByThree); },
       {points[0], points[1], points[2]},
       {x, x, x},
       kTriangleList},
  };
  const float u[] = {0.06f, 0.06f, 2.94f, 2.94f}, v[] = {0.04f, 1.96f, 0.04f, 1.96f};
  for (const PieceCase& row : cases) {
    handle = allocateMesh(context);
    row.build(*this);
    ASSERT_EQ(record().vertexCount, static_cast<std::int32_t>(row.corners.size())) << row.name;
    for (std::size_t i = 0; i < row.corners.size(); ++i) {
      EXPECT_EQ(place(i), row.corners[i]) << row.name << " " << i;
      EXPECT_EQ(normal(i), row.normals[i]) << row.name << " " << i;
      EXPECT_FLOAT_EQ(record().normalVertices[i].tu, u[i]) << row.name << " " << i;
      EXPECT_FLOAT_EQ(record().normalVertices[i].tv, v[i]) << row.name << " " << i;
      EXPECT_EQ(record().colorVertices[i].diffuse, -1) << row.name << " " << i;
    }
    EXPECT_EQ(record().primitiveType, row.primitive) << row.name;
    EXPECT_EQ(record().groupCount, 2) << row.name;
    EXPECT_EQ(record().groups[2].texture, 7) << row.name;
    EXPECT_EQ(record().groups[2].lightmap, kLightmapWanted) << row.name;
  }
}

TEST_F(Building, LimitsAreErrorsThatChangeNothing) {
  addVertices(kMaxVertices - 2);
  EXPECT_EQ(engineErrorOf([&] { addWall(context, *handle, 0, {}, {}, {}); }), engine::kOverflow);
  EXPECT_EQ(record().groupCount, 1) << "no group without its vertices";
  addVertices(2);
  EXPECT_EQ(record().groups[1].count, kMaxVertices);
  EXPECT_EQ(record().groups[1].indices.back(), kMaxVertices - 1);
  EXPECT_EQ(engineErrorOf([&] { addVertices(1); }), engine::kOverflow);
  EXPECT_EQ(record().vertexCount, kMaxVertices);
  expectSpare();

  setGroupPointer(context, *handle, 32767);
  EXPECT_EQ(record().groups[32767].start, 32767);
  EXPECT_EQ(engineErrorOf([&] { addFace(context, *handle, 0, true); }), engine::kOverflow);
  EXPECT_EQ(record().groupCount, 32767);
  EXPECT_EQ(engineErrorOf([&] { setGroupPointer(context, *handle, -1); }), engine::kSubscript);
  EXPECT_EQ(handle->currentGroup, 32767);

  handle = allocateMesh(context);
  handle->currentGroup = 2;  // of a mesh that held more groups
  EXPECT_EQ(engineErrorOf([&] { addVertices(1); }), engine::kSubscript);
  EXPECT_EQ(record().vertexCount, 0);
  // A shape may have more vertices than groups can start after.
  record().vertexCount = 40000;
  EXPECT_EQ(engineErrorOf([&] { addFace(context, *handle, 0, true); }), engine::kOverflow);
  EXPECT_EQ(record().groups[1].start, 0);
}

TEST_F(Building, AMeshOfManyVerticesGrowsInDoublingSteps) {
  std::size_t moves = 0;
  const math::NormalVertex* at = nullptr;
  for (std::int32_t i = 0; i < 32000; ++i) {
    addVertices(1);
    if (record().normalVertices.data() != at) ++moves;
    at = record().normalVertices.data();
  }
  EXPECT_LT(moves, 20U) << "growing by one each time would be quadratic";
}

TEST_F(Building, VerticesMoveAndTakeColours) {
  addVertices(3);
  addFace(context, *handle, 0, false);
  EXPECT_EQ(record().groups[2].lightmap, kNoLightmap);
  addVertices(3);
  moveVertex(context, *handle, 1, 0, {9, 9, 9}, false);
  moveVertex(context, *handle, 1, 2, {1, 2, 3}, true);
  EXPECT_EQ(place(1), math::Vec3({9, 9, 9}));
  EXPECT_EQ(place(4), math::Vec3({5, 4.1f + 2, 4.2f + 3}));
  struct Wrong {
    std::int16_t vertex, group;
  };
  for (const Wrong& wrong : {Wrong{7, 0}, {-1, 0}, {4, 2}, {0, 3}, {0, -1}})
    EXPECT_EQ(engineErrorOf([&] { moveVertex(context, *handle, wrong.vertex, wrong.group, {}, false); }),
              engine::kSubscript)
        << wrong.vertex << " of group " << wrong.group;

  setColor(context, *handle, 5, 2);
  EXPECT_EQ(record().colorVertices[2].diffuse, 5);
  EXPECT_NE(record().colorVertices[1].diffuse, 5);
  for (const std::int32_t wrong : {-2, 7})
    EXPECT_EQ(engineErrorOf([&] { setColor(context, *handle, 1, wrong); }), engine::kSubscript) << wrong;
  setColor(context, *handle, 6, -1);
  for (const math::ColorVertex& vertex : record().colorVertices) EXPECT_EQ(vertex.diffuse, 6);
  addVertices(1);
  expectSpare();
}

TEST_F(Building, NormalsAreFlat) {
  const auto add = [&](std::initializer_list<math::Vec3> places) {
    for (const math::Vec3& p : places) addVertex(context, *handle, {p.x, p.y, p.z, 7, 7, 7, 0, 0, 0, 0}, 0);
  };
  const math::Vec3 back{0, 0, -1}, right{1, 0, 0}, old{7, 7, 7};
  add({{0, 0, 0}, {0, 2, 0}, {2, 0, 0}, {0, 0, 0}, {0, 0, -1}, {0, -1, 0}, {5, 5, 5}});
  computeNormals(context, *handle);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(normal(i), back) << i;
  for (std::size_t i = 3; i < 6; ++i) EXPECT_EQ(normal(i), math::negate(right)) << i;
  EXPECT_EQ(normal(6), old) << "one vertex is no triangle";

  record().primitiveType = kTriangleStrip;
  addFace(context, *handle, 0, true);
  add({{0, 0, 0}, {0, 1, 0}, {0, 0, 1}, {9, 9, 9}});
  computeNormals(context, *handle);
  for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(normal(i), back) << i << ": a strip has its first triangle's";
  for (std::size_t i = 7; i < 11; ++i) EXPECT_EQ(normal(i), right) << i;
  expectSpare();
}

TEST_F(Building, BoundsAreScaledAndHoldTheOrigin) {
  computeBounds(context, *handle);
  EXPECT_FALSE(record().boundsValid) << "nothing to bound";
  addVertex(context, *handle, {10, 10, 10, 0, 0, 0, 0, 0, 0, 0}, 0);
  addVertex(context, *handle, {20, 10, 10, 0, 0, 0, 0, 0, 0, 0}, 0);
  record().scale = {1, 2, 3};
  computeBounds(context, *handle);
  EXPECT_TRUE(record().boundsValid);
  EXPECT_EQ(record().boxMin, math::Vec3());
  EXPECT_EQ(record().boxMax, math::Vec3({20, 20, 30}));
  EXPECT_GE(record().sphereRadius, 3 * 10.0f) << "the radius follows the largest scale";
  addVertices(1);
  EXPECT_EQ(record().boxMax, math::Vec3({20, 20, 30})) << "bounds do not follow the vertices";
}

TEST_F(Building, ChildrenAreLinkedAndLetGo) {
  auto a = allocateMesh(context), b = allocateMesh(context);
  addChild(context, *handle, *a);
  addChild(context, *a, *b);
  EXPECT_EQ(record().children, (std::vector<std::int16_t>{a->slot}));
  EXPECT_EQ(meshRecord(context, b->slot).parent, a->slot);
  for (const MeshHandle* above : {handle.get(), a.get(), b.get()})
    EXPECT_EQ(engineErrorOf([&] { addChild(context, *b, *above); }), engine::kInvalidArgument)
        << "drawing children would never end";
  addChild(context, *handle, *b);  // twice below the same mesh is no circle
  deleteChildren(context, *handle);
  EXPECT_TRUE(record().children.empty());
  EXPECT_EQ(meshRecord(context, a->slot).parent, 0);
  EXPECT_TRUE(meshRecord(context, a->slot).enabled);
  EXPECT_EQ(meshRecord(context, a->slot).children.size(), 1U);
}

TEST_F(Building, OptimizingChangesNothing) {
  addVertices(7);
  record().primitiveType = kTriangleStrip;
  const std::vector<MeshGroup> groups = record().groups;
  optimize(context, *handle);
  EXPECT_EQ(record().vertexCount, 7);
  EXPECT_EQ(record().groups[1].indices, groups[1].indices);
  context.device.reset();
  EXPECT_EQ(engineErrorOf([&] { optimize(context, *handle); }), engine::kNotSet);
}

}  // namespace
}  // namespace ql::mesh
