#include "level/FaceBuilder.h"
#include "level/Q3Bsp.h"
#include "platform/host/Fault.h"
#include "support/TinyQ3Level.h"

#include <chrono>
#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

namespace ql::level {
namespace {

using test::TinyQ3Level;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();

TEST(Q3Bsp, ReadsEveryTableOfAGoodLevel) {
  const TinyQ3Level tiny;
  const std::vector<std::byte> file = tiny.bytes();
  const Q3Bsp level = parseQ3Bsp(file);
  EXPECT_EQ(level.repairs.count, 0U) << level.repairs.first;
  EXPECT_EQ(level.entities, tiny.entities);
  EXPECT_EQ(level.textures.size(), 2U);
  ASSERT_EQ(level.faces.size(), 5U);
  EXPECT_EQ(level.leaves.size(), 4U);
  EXPECT_EQ(level.lightmapCount(), 1);
  EXPECT_EQ(level.visibility.clusterCount, 2);
  EXPECT_EQ(level.nodes[0].children, (std::array{~2, ~1}));
  EXPECT_EQ(level.vertices[0].position, (std::array{128.0f, -128.0f, 0.0f})) << "x is negated";
  EXPECT_EQ(level.faces[TinyQ3Level::kFlare].lightmap, -1) << "-3 in the file: a face without a lightmap";
}

// One row per damage: what the file says, what must be left of it.
struct Damage {
  const char* name;
  std::function<void(TinyQ3Level&)> damage;
  std::function<bool(const Q3Bsp&)> neutralised;
};

void PrintTo(const Damage& damage, std::ostream* out) { *out << damage.name; }

class Q3BspDamage : public testing::TestWithParam<Damage> {};

TEST_P(Q3BspDamage, IsNeutralised) {
  TinyQ3Level tiny;
  GetParam().damage(tiny);
  const std::vector<std::byte> file = tiny.bytes();
  const Q3Bsp level = parseQ3Bsp(file);
  EXPECT_TRUE(GetParam().neutralised(level));
  EXPECT_GT(level.repairs.count, 0U);
  EXPECT_FALSE(level.repairs.first.empty());
  for (std::int32_t precision = 0; precision <= 2; ++precision) buildFaces(level, precision);
}

bool emptyFace(const Q3Bsp& level, std::size_t face) {
  return buildFaces(level, kCurveHigh).records[face].triangleCount == 0;
}
using Tiny = TinyQ3Level;

INSTANTIATE_TEST_SUITE_P(
    References, Q3BspDamage,
    testing::Values(
        Damage{"face texture past the end", [](Tiny& l) { l.faces[0].texture = 2; },
               [](const Q3Bsp& l) { return l.faces[0].texture == -1; }},
        Damage{"face texture negative", [](Tiny& l) { l.faces[0].texture = -1; },
               [](const Q3Bsp& l) { return l.faces[0].texture == -1; }},
        Damage{"face lightmap past the end", [](Tiny& l) { l.faces[0].lightmap = 1; },
               [](const Q3Bsp& l) { return l.faces[0].lightmap == -1; }},
        Damage{"mesh vertices past the end", [](Tiny& l) { l.faces[0].firstMeshVertex = 1; },
               [](const Q3Bsp& l) { return emptyFace(l, 0); }},
        Damage{"mesh vertices whose end wraps", [](Tiny& l) { l.faces[0].firstMeshVertex = kHuge; },
               [](const Q3Bsp& l) { return emptyFace(l, 0); }},
        Damage{"negative mesh vertex count", [](Tiny& l) { l.faces[0].meshVertexCount = -6; },
               [](const Q3Bsp& l) { return emptyFace(l, 0); }},
        Damage{"patch with bad mesh vertices", [](Tiny& l) { l.faces[Tiny::kCurve].meshVertexCount = 99; },
               [](const Q3Bsp& l) { return emptyFace(l, Tiny::kCurve); }},
        Damage{"mesh vertex past the vertices", [](Tiny& l) { l.meshVertices[4] = 99; },
               [](const Q3Bsp& l) { return emptyFace(l, 0) && emptyFace(l, 2); }},
        Damage{"mesh vertex before the vertices", [](Tiny& l) { l.meshVertices[4] = -1; },
               [](const Q3Bsp& l) { return emptyFace(l, 0) && !emptyFace(l, 1); }},
        Damage{"first vertex past the vertices", [](Tiny& l) { l.faces[1].firstVertex = kHuge; },
               [](const Q3Bsp& l) { return emptyFace(l, 1); }},
        Damage{"patch of an even side",
               [](Tiny& l) {
                 l.faces[Tiny::kCurve].patchSize = {4, 3};
               },
               [](const Q3Bsp& l) { return emptyFace(l, Tiny::kCurve); }},
        Damage{"patch without a side",
               [](Tiny& l) {
                 l.faces[Tiny::kCurve].patchSize = {0, 3};
               },
               [](const Q3Bsp& l) { return emptyFace(l, Tiny::kCurve); }},
        Damage{"patch of a negative side",
               [](Tiny& l) {
                 l.faces[Tiny::kCurve].patchSize = {-3, -3};
               },
               [](const Q3Bsp& l) { return emptyFace(l, Tiny::kCurve); }},
        Damage{"patch larger than the vertices",
               [](Tiny& l) {
                 l.faces[Tiny::kCurve].patchSize = {3, 99};
               },
               [](const Q3Bsp& l) { return emptyFace(l, Tiny::kCurve); }},
        Damage{"patch whose size wraps",
               [](Tiny& l) {
                 l.faces[Tiny::kCurve].patchSize = {kHuge, kHuge};
               },
               [](const Q3Bsp& l) { return emptyFace(l, Tiny::kCurve); }},
        Damage{"position not a number", [](Tiny& l) { l.vertices[0].position[1] = kNan; },
               [](const Q3Bsp& l) {
                 return l.vertices[0].position == std::array{128.0f, 0.0f, 0.0f};
               }},
        Damage{"texture coordinate infinite", [](Tiny& l) { l.vertices[0].texture[0] = -INFINITY; },
               [](const Q3Bsp& l) { return l.vertices[0].texture[0] == 0; }},
        Damage{"plane not a number", [](Tiny& l) { l.planes[0].distance = kNan; },
               [](const Q3Bsp& l) { return l.planes[0].normal[0] == 0; }},
        Damage{"leaf face past the faces", [](Tiny& l) { l.leafFaces[1] = 5; },
               [](const Q3Bsp& l) {
                 return l.leafFaces == std::vector<std::int32_t>{0, 1, 2, 3, 4} && l.leaves[1].leafFaceCount == 1 &&
                        l.leaves[2].firstLeafFace == 1 && l.leaves[2].leafFaceCount == 4;
               }},
        Damage{"leaf face negative", [](Tiny& l) { l.leafFaces[5] = -1; },
               [](const Q3Bsp& l) { return l.leaves[2].leafFaceCount == 3; }},
        Damage{"leaf's faces past the end", [](Tiny& l) { l.leaves[2].leafFaceCount = 99; },
               [](const Q3Bsp& l) { return l.leaves[2].leafFaceCount == 4; }},
        Damage{"leaf's faces before the start", [](Tiny& l) { l.leaves[2].firstLeafFace = -2; },
               [](const Q3Bsp& l) { return l.leaves[2].firstLeafFace == 0 && l.leaves[2].leafFaceCount == 2; }},
        Damage{"leaf's faces wrap", [](Tiny& l) { l.leaves[2].firstLeafFace = l.leaves[2].leafFaceCount = kHuge; },
               [](const Q3Bsp& l) { return l.leaves[2].leafFaceCount == 0; }},
        Damage{"leaf cluster past the rows", [](Tiny& l) { l.leaves[2].cluster = 2; },
               [](const Q3Bsp& l) { return l.leaves[2].cluster == -1; }},
        Damage{"model's faces past the end", [](Tiny& l) { l.models[0].firstFace = 1; },
               [](const Q3Bsp& l) { return l.models[0].faceCount == 0; }},
        Damage{"node plane past the planes", [](Tiny& l) { l.nodes[0].plane = 1; },
               [](const Q3Bsp& l) { return l.nodes[0].plane == 0 && l.nodes[0].children[0] == kNoChild; }},
        Damage{"node child past the nodes", [](Tiny& l) { l.nodes[0].children[0] = 1; },
               [](const Q3Bsp& l) {
                 return l.nodes[0].children == std::array{kNoChild, ~1};
               }},
        Damage{"node child past the leaves", [](Tiny& l) { l.nodes[0].children[1] = ~4; },
               [](const Q3Bsp& l) {
                 return l.nodes[0].children == std::array{~2, kNoChild};
               }},
        Damage{"node that is its own child", [](Tiny& l) { l.nodes[0].children[0] = 0; },
               [](const Q3Bsp& l) {
                 return l.nodes[0].children == std::array{kNoChild, ~1};
               }},
        Damage{"nodes in a circle",
               [](Tiny& l) {
                 l.nodes[0].children[0] = 1;
                 l.nodes.push_back(l.nodes[0]);
                 l.nodes[1].children = {0, ~1};
               },
               [](const Q3Bsp& l) { return l.nodes[0].children[0] == 1 && l.nodes[1].children[0] == kNoChild; }}));

// Visibility that cannot be right counts as none: everything may be seen.
TEST(Q3Bsp, DropsVisibilityThatDoesNotFit) {
  struct Case {
    const char* name;
    std::int32_t clusters, bytesPerCluster;
  };
  for (const Case& c : {Case{"more rows than the lump holds", 3, 1}, Case{"rows too short for the clusters", 2, 0},
                        Case{"negative count", -2, 1}, Case{"product that wraps", kHuge, kHuge}}) {
    TinyQ3Level tiny;
    tiny.clusters = c.clusters;
    tiny.bytesPerCluster = c.bytesPerCluster;
    const std::vector<std::byte> file = tiny.bytes();
    EXPECT_EQ(parseQ3Bsp(file).visibility.clusterCount, 0) << c.name;
  }
}

TEST(Q3Bsp, ReportsLumpsThatAreNotThere) {
  struct Case {
    const char* name;
    Lump lump;
    bool length;
    std::uint32_t value;
    bool readable;
  };
  const std::vector<std::byte> good = TinyQ3Level().bytes();
  for (const Case& c : {Case{"vertices start past the end", Lump::Vertices, false, 0xFFFFFFFF, false},
                        Case{"faces longer than the file", Lump::Faces, true, 0xFFFFFFFF, false},
                        Case{"lightmaps end past the end", Lump::Lightmaps, true, 100000, false},
                        Case{"half a record is no record", Lump::Planes, true, 15, true},
                        Case{"an empty lump may stand anywhere", Lump::Effects, false, 0xFFFFFFFF, true},
                        Case{"lumps that are not read are not looked at", Lump::Brushes, true, 0xFFFFFFFF, true},
                        Case{"lumps may overlap", Lump::Planes, false, 0, true}}) {
    const std::vector<std::byte> file = test::poked(good, test::directoryAt(c.lump) + (c.length ? 4 : 0), c.value);
    try {
      parseQ3Bsp(file);
      EXPECT_TRUE(c.readable) << c.name;
    } catch (const host::FileFault& fault) {
      EXPECT_FALSE(c.readable) << c.name << ": " << fault.what();
      EXPECT_EQ(fault.id, host::Fault::Truncated) << c.name;
    }
  }
}

TEST(Q3Bsp, RefusesEveryPrefix) {
  TinyQ3Level tiny;
  tiny.lightmaps.clear();
  const std::vector<std::byte> good = tiny.bytes();
  ASSERT_NO_THROW(parseQ3Bsp(good));
  for (std::size_t n = 0; n < good.size(); ++n) {
    const std::vector<std::byte> cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(n));
    EXPECT_THROW(parseQ3Bsp(cut), host::FileFault) << n;
  }
}

// Few bytes must not become many: neither by lumps that all cover the whole file, nor by faces that share vertices.
TEST(Q3Bsp, BoundsWhatAFileCanAllocate) {
  TinyQ3Level overlapping;
  overlapping.lightmaps.resize(4U << 20);
  std::vector<std::byte> file = overlapping.bytes();
  for (std::size_t lump = 0; lump < kLumps; ++lump) {
    file = test::poked(std::move(file), 8 + 8 * lump, 0);
    file = test::poked(std::move(file), 12 + 8 * lump, static_cast<std::uint32_t>(overlapping.lightmaps.size()));
  }
  EXPECT_THROW(parseQ3Bsp(file), host::FileFault);

  TinyQ3Level meshes, patches;
  meshes.meshVertices.resize(6000, 0);
  for (auto& face : meshes.faces) face.meshVertexCount = 6000;
  for (int i = 0; i < 2000; ++i) meshes.faces.push_back(meshes.faces[0]);
  for (int i = 0; i < 10000; ++i) patches.faces.push_back(patches.faces[TinyQ3Level::kCurve]);
  for (const TinyQ3Level& level : {meshes, patches}) {
    file = level.bytes();
    const BuiltFaces built = buildFaces(parseQ3Bsp(file), kCurveHigh);
    EXPECT_LE(built.vertices.size(), vertexLimit(file.size()));
    EXPECT_GT(built.vertices.size(), vertexLimit(file.size()) / 2);
  }
}

// Each of these would take minutes with a walk of every range for every reference.
TEST(Q3Bsp, TakesLinearTime) {
  TinyQ3Level tiny;
  tiny.leafFaces.assign(100000, 0);
  tiny.leaves.assign(20000, {0, 0, {}, {}, 0, 100000, 0, 0});
  tiny.meshVertices.assign(100000, 0);
  tiny.faces.resize(20000, tiny.faces[0]);
  for (auto& face : tiny.faces) face.meshVertexCount = 100000;
  tiny.nodes.resize(100000, tiny.nodes[0]);
  for (std::size_t i = 0; i + 1 < tiny.nodes.size(); ++i)
    tiny.nodes[i].children = {static_cast<std::int32_t>(i + 1), static_cast<std::int32_t>(i + 1)};
  const std::vector<std::byte> file = tiny.bytes();
  const Q3Bsp level = parseQ3Bsp(file);
  std::int64_t listed = 0;
  for (const Q3Leaf& leaf : level.leaves) listed += leaf.leafFaceCount;
  EXPECT_LE(listed, 400000);
}

}  // namespace
}  // namespace ql::level
