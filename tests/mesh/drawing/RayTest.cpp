#include "DrawingTest.h"
#include "engine/HitTarget.h"
#include "mesh/RayIndex.h"

#include <random>

namespace ql::mesh {
namespace {

struct Rays : DrawingTest {
  /// A wall across the z axis, 10 x 10, at a distance.
  MeshHandle& makeWall(float z) {
    MeshHandle& mesh = make();
    addWall(context, mesh, 0, {-5, 0, -5, 10}, {5, 0, -5, 10}, {});
    setPosition(record(mesh), {0, 0, z});
    rebuildMatrix(context, mesh.slot);
    return mesh;
  }
  bool hits(const MeshHandle& mesh, const math::Vec3& from, const math::Vec3& to, RayTest test) {
    return collision(context, mesh.slot, from, to, test);
  }
};

TEST_F(Rays, EachKindHasItsOwnReach) {
  struct Case {
    const char* name;
    float distance;
    math::Vec3 to;
    bool box, sphere, accurate;
  };
  for (const Case& row : {Case{"near", 20, {0, 0, 1}, true, true, true},
                          {"the end only gives the direction", 29, {0, 0, 0.5f}, true, true, true},
                          {"beyond the precision", 40, {0, 0, 100}, true, true, false},
                          {"behind", 20, {0, 0, -1}, false, false, false},
                          {"past the corner, inside the sphere", 10, {5.5f, 0, 10}, false, true, false},
                          {"parallel", 20, {1, 0, 0}, false, false, false},
                          {"nowhere", 20, {0, 0, 0}, false, false, false}}) {
    MeshHandle& wall = makeWall(row.distance);
    EXPECT_EQ(hits(wall, {}, row.to, RayTest::Box), row.box) << row.name;
    EXPECT_EQ(hits(wall, {}, row.to, RayTest::Sphere), row.sphere) << row.name;
    EXPECT_EQ(hits(wall, {}, row.to, RayTest::Accurate), row.accurate) << row.name;
    EXPECT_FALSE(hits(wall, {}, row.to, RayTest::HitBoxes));
    EXPECT_FALSE(hits(wall, {}, row.to, static_cast<RayTest>(0)));
  }
}

TEST_F(Rays, AHitIsToldInTheMeshsSpace) {
  MeshHandle& wall = makeWall(20);
  setRotation(record(wall), {0, 180, 0});
  rebuildMatrix(context, wall.slot);
  ASSERT_TRUE(hits(wall, {1, 2, 0}, {1, 2, 5}, RayTest::Accurate));
  EXPECT_NEAR(context.lastHitPoint.x, -1, 1e-5);
  EXPECT_NEAR(context.lastHitPoint.y, 2, 1e-5);
  EXPECT_NEAR(context.lastHitPoint.z, 0, 1e-5);
  EXPECT_NEAR(std::abs(context.lastHitNormal.z), 100, 1e-3);
  ASSERT_FALSE(hits(wall, {1, 2, 0}, {1, 2, -5}, RayTest::Accurate));
  EXPECT_NEAR(context.lastHitPoint.x, -1, 1e-5) << "a miss keeps the last hit";
}

TEST_F(Rays, TriplesAreTestedWhateverThePrimitiveType) {
  MeshHandle& mesh = make();
  for (const math::Vec3& p : {math::Vec3{0, 0, 10}, {0, 5, 10}, {5, 0, 10}, {5, 5, 10}})
    addVertex(context, mesh, {p.x, p.y, p.z}, -1);
  record(mesh).primitiveType = kTriangleList;
  EXPECT_TRUE(hits(mesh, {4, 4, 0}, {4, 4, 1}, RayTest::Accurate)) << "the second triple";
  record(mesh).groups[1].count = 2;
  noteChange(context, mesh.slot);
  EXPECT_FALSE(hits(mesh, {1, 1, 0}, {1, 1, 1}, RayTest::Accurate));
  record(mesh).groups[1].start = 32000;
  record(mesh).groups[1].count = 32000;
  noteChange(context, mesh.slot);
  EXPECT_FALSE(hits(mesh, {1, 1, 0}, {1, 1, 1}, RayTest::Accurate));
  record(mesh).groups[1].start = 0;
  record(mesh).usesSubsets = true;
  noteChange(context, mesh.slot);
  EXPECT_FALSE(hits(mesh, {1, 1, 0}, {1, 1, 1}, RayTest::Accurate));
}

TEST_F(Rays, MovedAndAddedVerticesAreMet) {
  MeshHandle& mesh = makeRow(0);
  std::mt19937 random(7);
  std::uniform_real_distribution<float> at(-50, -20);
  for (int i = 0; i < 300; ++i) addVertex(context, mesh, {at(random), at(random), at(random)}, -1);
  const auto hit = [&] { return hits(mesh, {}, {0, 0, 1}, RayTest::Accurate); };
  for (int i = 0; i < 40; ++i) EXPECT_FALSE(hit());  // by now there is an index
  for (const math::Vec3& p : {math::Vec3{-1, -1, 9}, {0, 2, 9}, {1, -1, 9}})
    addVertex(context, mesh, {p.x, p.y, p.z}, -1);
  for (int i = 0; i < 40; ++i) EXPECT_TRUE(hit());
  moveVertex(context, mesh, 301, 0, {0, 0, -900}, true);
  EXPECT_FALSE(hit());
}

TEST_F(Rays, FirstHitAsTheScanFindsIt) {
  struct Case {
    const char* name;
    float size, spread;
    int vertices;
    bool strip, shared;
  };
  std::mt19937 random(1);
  std::size_t hitCount = 0;
  for (const Case& row : {Case{"scattered", 5, 40, 3000, false, false},
                          {"large and crossing", 60, 40, 600, false, false},
                          {"a soup of one place", 3, 0, 900, false, false},
                          {"a strip", 4, 40, 2000, true, false},
                          {"vertices that coincide", 5, 40, 1500, false, true}}) {
    MeshRecord mesh;
    mesh.groups.resize(4);
    std::uniform_real_distribution<float> part(-1, 1);
    const auto point = [&](float extent) {
      const float x = part(random), y = part(random);
      return math::scale({x, y, part(random)}, extent);
    };
    math::Vec3 place = point(row.spread);
    for (int i = 0; i < row.vertices; ++i) {
      if (i % 3 == 0) place = row.strip ? math::add(place, point(2)) : point(row.spread);
      math::Vec3 p = math::add(place, point(row.size));
      if (row.shared) p = {std::round(p.x), std::round(p.y), std::round(p.z)};
      mesh.normalVertices.insert(mesh.normalVertices.end() - 1, {p.x, p.y, p.z});
    }
    // Groups with a gap, and one that reaches past the end.
    const auto third = static_cast<std::int16_t>(row.vertices / 3);
    mesh.groups[1].count = mesh.groups[2].start = third;
    mesh.groups[2].count = static_cast<std::int16_t>(third - 5);
    mesh.groups[3].start = static_cast<std::int16_t>(2 * third);
    mesh.groups[3].count = 32767;
    RayIndex index(mesh);
    for (int i = 0; i < 4000; ++i) {
      const math::Vec3 origin = point(60), direction = math::normalize(point(1));
      const float reach = i % 2 == 0 ? 30.0f : 20000.0f;
      const auto wanted = RayIndex::scan(mesh, origin, direction, reach);
      const auto got = index.firstHit(mesh, origin, direction, reach);
      hitCount += wanted.has_value();
      ASSERT_EQ(got.has_value(), wanted.has_value()) << row.name << " " << i;
      if (!got) continue;
      ASSERT_EQ(got->triangle, wanted->triangle) << row.name << " " << i;
      ASSERT_EQ(got->t, wanted->t) << row.name << " " << i;
      ASSERT_EQ(got->normal, wanted->normal) << row.name << " " << i;
    }
    // Along the axes, where a component of the direction is zero.
    for (const math::Vec3& axis : {math::Vec3{1, 0, 0}, {0, -1, 0}, {0, 0, 1}})
      for (int i = 0; i < 300; ++i) {
        const math::Vec3 origin = math::subtract(point(30), math::scale(axis, 50));
        const auto number = [](const auto& hit) { return hit ? static_cast<int>(hit->triangle) : -1; };
        EXPECT_EQ(number(index.firstHit(mesh, origin, axis, 200)), number(RayIndex::scan(mesh, origin, axis, 200)))
            << row.name;
      }
  }
  EXPECT_GT(hitCount, 2000u);
}

TEST_F(Rays, VerticesThatAreNoNumbersAndRaysThatAreNone) {
  MeshRecord mesh;
  mesh.groups.resize(2);
  mesh.groups[1].count = 200;
  std::mt19937 random(3);
  std::uniform_real_distribution<float> part(-10, 10);
  mesh.normalVertices.resize(201);
  for (math::NormalVertex& v : mesh.normalVertices) v = {part(random), part(random), 20 + part(random)};
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();
  RayIndex sound(mesh);
  mesh.normalVertices[50].x = kNan;
  mesh.normalVertices[60].y = kInf;
  mesh.normalVertices[70].z = 1e30f;
  RayIndex damaged(mesh);
  for (int i = 0; i < 100; ++i)
    for (RayIndex* index : {&sound, &damaged}) {
      for (const float bad : {kNan, kInf}) {
        EXPECT_FALSE(index->firstHit(mesh, {bad, 0, 0}, {0, 0, 1}, 100));
        EXPECT_FALSE(index->firstHit(mesh, {0, 0, 0}, {0, bad, 1}, 100));
      }
      EXPECT_FALSE(index->firstHit(mesh, {0, 0, 0}, {0, 0, 0}, 100));
    }
}

TEST_F(Rays, LevelThenMeshesThenLandscape) {
  struct Target : engine::HitTarget {
    bool hit = false;
    int asked = 0;
    engine::HitResult castRay(const math::Vec3&, const math::Vec3&) override {
      ++asked;
      return {.collision = hit};
    }
  } level, landscape;
  auto& targets = context.get<engine::HitTargets>();
  EXPECT_FALSE(collide(context, {}, {0, 0, 1}, RayTest::Accurate));
  targets = {&level, &landscape};
  MeshHandle& wall = makeWall(10);
  struct Case {
    bool level, mesh, landscape, hit;
    int landscapeAsked;
  };
  for (const Case& row : {Case{false, false, false, false, 1},
                          {true, false, false, true, 0},
                          {false, true, true, true, 0},
                          {false, false, true, true, 1}}) {
    level.hit = row.level;
    landscape.hit = row.landscape;
    landscape.asked = 0;
    record(wall).enabled = row.mesh;
    EXPECT_EQ(collide(context, {}, {0, 0, 1}, RayTest::Accurate), row.hit);
    EXPECT_EQ(landscape.asked, row.landscapeAsked);
  }
}

TEST_F(Rays, TheLowestSlotWinsNotTheNearest) {
  MeshHandle &far = makeWall(25), &near = makeWall(10);
  EXPECT_EQ(firstMeshHit(context, {}, {0, 0, 1}, RayTest::Box), far.slot);
  record(far).enabled = false;
  EXPECT_EQ(firstMeshHit(context, {}, {0, 0, 1}, RayTest::Box), near.slot);
  kept.clear();
  EXPECT_EQ(firstMeshHit(context, {}, {0, 0, 1}, RayTest::Box), 0) << "freed slots";
}

/// The first mesh that the ray meets, without an index.
std::int16_t scannedHit(engine::EngineContext& context, const math::Vec3& from, const math::Vec3& to, RayTest test) {
  for (std::int32_t slot = 1; slot <= meshCount(context); ++slot) {
    const MeshRecord& mesh = meshRecord(context, slot);
    if (mesh.inUse && mesh.enabled && collision(context, static_cast<std::int16_t>(slot), from, to, test))
      return static_cast<std::int16_t>(slot);
  }
  return 0;
}

TEST_F(Rays, TheFirstMeshIsTheOneThatGoingThroughAllFinds) {
  std::mt19937 random(11);
  std::uniform_real_distribution<float> part(-1, 1);
  const auto point = [&](float extent) {
    const float x = part(random), y = part(random);
    return math::scale({x, y, part(random)}, extent);
  };
  const auto pick = [&](std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(random); };
  const auto place = [&](MeshHandle& mesh) {
    setPosition(record(mesh), point(200));
    setRotation(record(mesh), point(180));
    if (pick(4) == 0) setScale(record(mesh), math::add({1.5f, 1.5f, 1.5f}, point(1)));
    rebuildMatrix(context, mesh.slot);
  };
  for (int i = 0; i < 300; ++i) {
    MeshHandle& mesh = make();
    for (int k = 0; k < 9; ++k) {
      const math::Vec3 p = point(8);
      addVertex(context, mesh, {p.x, p.y, p.z}, -1);
    }
    if (i % 5 != 0) computeBounds(context, mesh);
    if (i % 20 == 7) addChild(context, *kept[pick(kept.size() - 1)], mesh);
    place(mesh);
  }
  std::size_t hitCount = 0;
  for (int i = 0; i < 3000; ++i) {
    MeshHandle& mesh = *kept[pick(kept.size())];
    switch (pick(12)) {
      case 0:
        place(mesh);
        break;
      case 1:
        moveVertex(context, mesh, 4, 0, point(20), false);
        break;
      case 2:
        computeBounds(context, mesh);
        break;
      case 3:
        record(mesh).enabled = !record(mesh).enabled;
        break;
      case 4:
        setMatrix(context, mesh.slot,
                  math::multiply(math::scaling(0, 1, 1), math::translation(static_cast<float>(i % 50), 0, 0)));
        break;
      case 5:
        kept.erase(kept.begin() + static_cast<std::ptrdiff_t>(pick(kept.size())));
        addWall(context, make(), 0, {-5, 0, -5, 10}, {5, 0, -5, 10}, {});
        break;
      default:
        break;
    }
    const math::Vec3 from = point(300), to = i % 7 == 0 ? math::add(from, point(1e-4f)) : point(300);
    const auto test = static_cast<RayTest>(1 + i % 3);
    context.collisionPrecision = i % 2 == 0 ? 30.0f : 1000.0f;
    const std::int16_t wanted = scannedHit(context, from, to, test);
    ASSERT_EQ(firstMeshHit(context, from, to, test), wanted) << i;
    hitCount += wanted != 0;
  }
  EXPECT_GT(hitCount, 300u);
}

}  // namespace
}  // namespace ql::mesh
