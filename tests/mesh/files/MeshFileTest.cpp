#include "mesh/Build.h"
#include "mesh/MeshFile.h"
#include "mesh/MeshSurface.h"
#include "mesh/Shapes.h"
#include "platform/host/Files.h"
#include "render/RenderTest.h"
#include "render/TextureTable.h"

#include <cstring>
#include <functional>

namespace ql::mesh {
namespace {

using engine::EngineError;
using host::FileFault;
using test::FileBytes;
using testing::ElementsAre;

constexpr std::int32_t kRed = static_cast<std::int32_t>(0xFFFF0000);

std::string asText(const std::vector<std::byte>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
struct MeshFileTest : test::RenderTest {
  std::shared_ptr<MeshHandle> square(const std::string& name = "Box") {
    std::shared_ptr<MeshHandle> mesh = allocateMesh(context, name);
    for (const auto& [x, y] : {std::pair{0.0F, 0.0F}, {0.0F, 1.0F}, {1.0F, 0.0F}, {1.0F, 1.0F}})
      addVertex(context, *mesh, {x, y, 0, 0, 0, -1, x, y, x, y}, kRed);
    return mesh;
  }
  MeshRecord& record(const std::shared_ptr<MeshHandle>& mesh) { return meshRecord(context, mesh->slot); }
  std::vector<std::byte> chunks(const std::shared_ptr<MeshHandle>& mesh, bool descriptions = false) {
    return chunkFileOf(context, *mesh, descriptions);
  }
  std::shared_ptr<MeshHandle> loaded(const std::vector<std::byte>& file) {
    host::replaceFile("loaded.qlo", file);
    std::shared_ptr<MeshHandle> mesh = allocateMesh(context, "Before");
    loadChunks(context, *mesh, "loaded.qlo");
    return mesh;
  }
};

TEST_F(MeshFileTest, ChunksStandWhereTheyAreDescribed) {
  const std::vector<std::byte> file = chunks(square());
  FileBytes expected;
  std::vector<std::pair<int, std::size_t>> directory{{0, 0}};  // type and position
  const auto chunk = [&](int type, const std::vector<std::byte>& payload) {
    expected.u16(static_cast<std::uint64_t>(type));
    std::vector<std::byte> before = expected.take();
    directory.emplace_back(type, before.size() + 1);
    expected.add(before).add(payload);
  };
  const auto number = [](std::int64_t value) { return FileBytes().u16(static_cast<std::uint64_t>(value)).take(); };
  expected.text("QLOF").u32(0);
  chunk(1, FileBytes().u32(8).take());
  chunk(2, {});
  chunk(25, FileBytes().text("Box").take());
  FileBytes features;
  for (const std::uint32_t bits : {0u, 0u, 0u, 0u, 0u, 0u, 0x3F800000u, 0x3F800000u, 0x3F800000u, 0u, 0u, 0u, 0u})
    features.u32(bits);
  chunk(3, features.take());
  chunk(7, FileBytes().u32(4).take());
  FileBytes vertices;
  constexpr std::uint32_t kOne = 0x3F800000, kMinusOne = 0xBF800000;
  for (const auto& [x, y] : {std::pair{0u, 0u}, {0u, kOne}, {kOne, 0u}, {kOne, kOne}})
    vertices.u32(x).u32(y).u32(0).u32(0).u32(0).u32(kMinusOne).u32(x).u32(y).u32(x).u32(y);
  chunk(6, vertices.zeros(40).take());
  chunk(5, number(1));
  chunk(4, {});
  chunk(14, number(0));
  chunk(25, number(0));
  chunk(21, number(4));
  chunk(20, number(0));
  chunk(15, {});
  chunk(16, {});
  std::vector<std::byte> body = expected.take();
  const std::size_t directoryAt = body.size() + 1;
  expected.add(body);
  ASSERT_EQ(directory.size(), 15u);
  for (std::size_t i = 0; i < directory.size(); ++i) {
    // The first entry stands for no chunk; its length is 11 - 0 - 2, since nothing was written before.
    const std::size_t next = i + 1 < directory.size() ? directory[i + 1].second - 2 : 0;
    const std::size_t length = i + 1 == directory.size() ? 0 : next - directory[i].second;
    expected.u16(static_cast<std::uint64_t>(directory[i].first)).u32(length).u32(directory[i].second);
  }
  std::vector<std::byte> whole = expected.take();
  std::memcpy(whole.data() + 4, &directoryAt, 4);
  EXPECT_EQ(asText(file), asText(whole));

  std::int32_t first = 0;
  std::memcpy(&first, chunks(square()).data() + directoryAt - 1 + 2, 4);
  EXPECT_EQ(first, 9 - static_cast<std::int32_t>(directoryAt))
      << "the second file's, after the last chunk of the first";
}

TEST_F(MeshFileTest, WritesTheChunksThatApply) {
  picture("wall.bmp", 8, 4, 0x123456);
  std::string fileName = "wall.bmp";
  std::int32_t width = -1, height = -1, key = 0;
  const std::int16_t wall = render::loadTexture(context, fileName, "Wall", width, height, key)->index;
  const std::shared_ptr<MeshHandle> mesh = square();
  addFace(context, *mesh, wall, true);
  addFace(context, *mesh, wall, false);
  MeshRecord& r = record(mesh);
  r.groups[2].lightmap = 3;
  r.groups[2].material = 2;
  r.billboard = r.sprite = true;
  r.vertexType = kColorVertices;
  const auto types = [&](bool descriptions) {
    std::vector<int> out;
    for (const ChunkEntry& entry : readDirectory(chunks(mesh, descriptions))) out.push_back(entry.type);
    return out;
  };
  EXPECT_THAT(types(false), ElementsAre(1, 2, 25, 3, 7, 11, 13, 8, 5, 4, 14, 25, 21, 20, 15, 4, 14, 25, 21, 20, 15, 4,
                                        14, 25, 21, 20, 15, 16));
  EXPECT_THAT(types(true), ElementsAre(1, 2, 25, 3, 7, 11, 13, 8, 5, 4, 14, 25, 21, 20, 15, 4, 14, 25, 19, 18, 17, 21,
                                       20, 15, 4, 14, 25, 17, 21, 20, 15, 16, 10, 9));
  // One description for two faces.
  const std::vector<std::byte> file = chunks(mesh, true);
  const std::vector<std::byte> texture =
      FileBytes().u16(8).text("wall.bmp").u16(4).text("Wall").u32(0).u32(4).u32(8).take();
  EXPECT_NE(asText(file).find(asText(FileBytes().u16(10).u16(1).u16(9).add(texture).take())), std::string::npos);
}

TEST_F(MeshFileTest, BringsBackWhatTheFormatKeeps) {
  for (const bool colored : {false, true}) {
    SCOPED_TRACE(colored);
    const std::shared_ptr<MeshHandle> mesh = square("A name, longer than others");
    MeshRecord& r = record(mesh);
    addFace(context, *mesh, 0, false);
    addVertex(context, *mesh, {5, 6, 7, 0, 1, 0, 0.5F, 0.25F, 0.5F, 0.25F}, 0x40112233);
    r.position = {1, 2, 3}, r.rotation = {4, 5, 6}, r.scale = {7, 8, 9};
    r.billboard = r.sprite = true;
    r.normalVertices[1].tu1 = 0.75F;  // a lightmap's coordinate
    r.colorVertices[1].tu1 = 0.75F;
    for (std::int16_t g = 1; g <= 2; ++g) {
      MeshGroup& group = r.groups[static_cast<std::size_t>(g)];
      group.sphereMap = g, group.blending = static_cast<std::int16_t>(g + 1);
      group.texture = static_cast<std::int16_t>(g + 2), group.material = static_cast<std::int16_t>(g + 3);
      group.lightmap = static_cast<std::int16_t>(g + 4);
    }
    if (colored) r.vertexType = kColorVertices;
    render::TextureTable& table = context.get<render::TextureTable>();
    while (table.entries.count() < 4) table.entries.grow();

    const std::shared_ptr<MeshHandle> back = loaded(chunks(mesh, true));
    const MeshRecord& b = record(back);
    EXPECT_EQ(b.name, r.name);
    EXPECT_EQ(b.position, r.position);
    EXPECT_EQ(b.rotation, r.rotation);
    EXPECT_EQ(b.scale, r.scale);
    EXPECT_TRUE(b.billboard && b.sprite && b.matrixDirty);
    EXPECT_EQ(b.vertexType, r.vertexType);
    EXPECT_EQ(b.vertexCount, 5);
    ASSERT_EQ(b.normalVertices.size(), 6u);
    ASSERT_EQ(b.colorVertices.size(), 6u);
    const std::size_t bytes = 6 * (colored ? sizeof(math::ColorVertex) : sizeof(math::NormalVertex));
    EXPECT_EQ(colored ? std::memcmp(b.colorVertices.data(), r.colorVertices.data(), bytes)
                      : std::memcmp(b.normalVertices.data(), r.normalVertices.data(), bytes),
              0);
    EXPECT_EQ(b.normalVertices[4].z, 7) << "the other list has the same places";
    EXPECT_EQ(b.colorVertices[4].z, 7);
    ASSERT_EQ(b.groupCount, 2);
    EXPECT_EQ(back->currentGroup, 2);
    for (std::size_t g = 1; g <= 2; ++g) {
      const MeshGroup &was = r.groups[g], &is = b.groups[g];
      EXPECT_THAT(
          (std::vector{is.start, is.count, is.sphereMap, is.blending, is.texture, is.material, is.lightmap}),
          ElementsAre(was.start, was.count, was.sphereMap, was.blending, was.texture, was.material, was.lightmap));
    }
    EXPECT_EQ(asText(chunks(back, true)).substr(0, 200), asText(chunks(mesh, true)).substr(0, 200));
  }
}

TEST_F(MeshFileTest, ShapesAreSavedByTheirNumbersOnly) {
  const std::function<void(MeshHandle&)> shapes[] = {[&](MeshHandle& mesh) { createSphere(context, mesh, 0, 2, 8, 8); },
                                                     [&](MeshHandle& mesh) { createTeapot(context, mesh); }};
  for (const auto& make : shapes) {
    const std::shared_ptr<MeshHandle> mesh = allocateMesh(context, "Shape");
    make(*mesh);
    context.get<LastChunk>() = {};
    const std::vector<std::byte> file = chunks(mesh);
    const std::shared_ptr<MeshHandle> back = loaded(file);
    EXPECT_FALSE(record(back).usesSubsets);
    EXPECT_EQ(record(back).vertexCount, record(mesh).vertexCount);
    EXPECT_EQ(record(back).normalVertices[8].x, 0);
    EXPECT_EQ(record(back).groups[1].count, 30) << "claimed, not there";
    EXPECT_EQ(record(back).groups[1].start, record(mesh).groups[1].start);
    EXPECT_NO_THROW(optimize(context, *back));
    computeNormals(context, *back);
  }
}

// Damage, one a row: what is changed in a good file of the square, and what loading it does.
TEST_F(MeshFileTest, DamageEndsInAnErrorOrIsNeutralised) {
  const std::vector<std::byte> good = chunks(square());
  const std::vector<ChunkEntry> directory = readDirectory(good);
  const std::size_t directoryAt = good.size() - 15 * 10;
  const auto payload = [&](int type, int skip = 0) {
    for (const ChunkEntry& entry : directory)
      if (entry.type == type && skip-- == 0) return static_cast<std::size_t>(entry.offset) - 1;
    return std::size_t{0};
  };
  const auto entryAt = [&](std::size_t index) { return directoryAt + 10 * (index + 1); };
  const auto poked = [&](std::size_t at, std::uint32_t value, std::size_t bytes = 4) {
    std::vector<std::byte> file = good;
    std::memcpy(file.data() + at, &value, bytes);
    return file;
  };
  const auto unused = [](const MeshRecord&) { return true; };
  struct Row {
    const char* name;
    std::vector<std::byte> file;
    std::int32_t error;
    std::function<bool(const MeshRecord&)> expect;
  };
  const Row rows[] = {
      {"directory past the end", poked(4, static_cast<std::uint32_t>(good.size()) + 1), 62, unused},
      {"directory before the file", poked(4, 0), 5, unused},
      {"directory at a negative place", poked(4, 0x80000000), 5, unused},
      {"name longer than the file", poked(entryAt(2) + 2, 0x7FFFFFFF), 62, unused},
      {"name of a negative length", poked(entryAt(2) + 2, 0xFFFFFFFF), 0,
       [](const MeshRecord& r) { return r.name.empty(); }},
      {"more vertices than the chunk has", poked(payload(7), 7), 0,
       [](const MeshRecord& r) {
         return r.vertexCount == 7 && r.normalVertices.size() == 8 && r.normalVertices[3].x == 1 &&
                r.normalVertices[6].x == 0;
       }},
      {"more vertices than a mesh can have", poked(payload(7), 32768), 62, unused},
      {"vertices without end", poked(payload(7), 0x7FFFFFFF), 62, unused},
      {"a negative number of vertices", poked(payload(7), 0xFFFFFFFF), 5, unused},
      {"no vertices", poked(payload(7), 0), 0,
       [](const MeshRecord& r) { return r.vertexCount == 0 && r.groups[1].count == 0; }},
      {"a place that is no number", poked(payload(6), 0x7FC00000), 0,
       [](const MeshRecord& r) { return r.normalVertices[0].x == 0; }},
      {"a negative number of faces", poked(payload(5), 0xFFFF, 2), 5, unused},
      {"more faces than there are", poked(payload(5), 3, 2), 0,
       [](const MeshRecord& r) {
         return r.groupCount == 3 && r.groups.size() == 4 && r.groups[1].count == 4 && r.groups[3].count == 0;
       }},
      {"no faces", poked(payload(5), 0, 2), 0,
       [](const MeshRecord& r) {
         return r.groupCount == 0 && r.groups.size() == 1 && r.groups[0].count == 0 && r.groups[0].start == 0;
       }},
      {"a face past the vertices", poked(payload(21), 5, 2), 0,
       [](const MeshRecord& r) { return r.groups[1].count == 0; }},
      {"a face before the vertices", poked(payload(20), 0xFFFF, 2), 0,
       [](const MeshRecord& r) { return r.groups[1].count == 0 && r.groups[1].start == 0; }},
      {"a face of a negative number", poked(payload(21), 0x8000, 2), 0,
       [](const MeshRecord& r) { return r.groups[1].count == 0; }},
      {"a face whose end wraps", poked(payload(20), 0x7FFF, 2), 0,
       [](const MeshRecord& r) { return r.groups[1].count == 0; }},
      {"an unknown chunk", poked(entryAt(6), 999, 2), 0, [](const MeshRecord& r) { return r.vertexCount == 4; }},
      {"a directory that goes back", poked(entryAt(6) + 6, 1), 0,
       [](const MeshRecord& r) { return r.vertexCount == 4 && r.groupCount == 1; }},
      {"a chunk past the directory", poked(entryAt(3) + 6, 0x7FFFFFFF), 0,
       [](const MeshRecord& r) { return r.name == "Box" && r.vertexCount == 0; }},
      {"the rest of an older file", FileBytes().add(good).zeros(500).take(), 0,
       [](const MeshRecord& r) { return r.vertexCount == 4 && r.groups[1].count == 4; }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    host::replaceFile("damaged.qlo", row.file);
    const std::shared_ptr<MeshHandle> mesh = allocateMesh(context, "Before");
    std::int32_t error = 0;
    try {
      loadChunks(context, *mesh, "damaged.qlo");
    } catch (...) {
      error = engine::currentError().number;
    }
    EXPECT_EQ(error, row.error);
    const MeshRecord& r = record(mesh);
    if (row.error != 0) {
      EXPECT_EQ(r.name, "Before") << "nothing changed";
      EXPECT_EQ(r.vertexCount, 0);
    } else {
      EXPECT_TRUE(row.expect(r));
    }
    EXPECT_EQ(r.normalVertices.size(), static_cast<std::size_t>(r.vertexCount) + 1);
    EXPECT_EQ(r.colorVertices.size(), r.normalVertices.size());
    EXPECT_EQ(r.groups.size(), static_cast<std::size_t>(r.groupCount) + 1);
  }
}

TEST_F(MeshFileTest, EveryPrefixFailsCleanly) {
  const std::vector<std::byte> good = chunks(square(), true);
  for (std::size_t n = 0; n < good.size(); ++n) {
    const std::vector<std::byte> cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(n));
    try {
      const ChunkMesh mesh = parseChunkMesh(cut);
      EXPECT_GT(n, good.size() - 200) << "the directory must have begun";
    } catch (const FileFault&) {
    }
  }
}

TEST_F(MeshFileTest, OtherFilesChangeNothing) {
  const std::shared_ptr<MeshHandle> mesh = square();
  for (const char* other : {"", "QLO", "QLMESHBox", "something else"}) {
    test::put("other", other);
    machine.clearLog();
    loadChunks(context, *mesh, "other");
    EXPECT_THAT(machine.logLines(), ElementsAre("This file isn't a good Quasarlens Format file."));
    EXPECT_EQ(record(mesh).vertexCount, 4);
  }
  machine.clearLog();
  for (const char* other : {"", "QLMES", "QLOF12345678"}) {
    test::put("other", other);
    loadDump(context, *mesh, "other");
    EXPECT_EQ(record(mesh).name, "Box");
  }
  EXPECT_THAT(machine.logLines(), ElementsAre());
  EXPECT_THROW(loadChunks(context, *mesh, "none.qlo"), FileFault);
  EXPECT_THROW(loadDump(context, *mesh, "none.qlm"), FileFault);
}

TEST_F(MeshFileTest, WritesOverAFileWithoutCuttingIt) {
  const std::shared_ptr<MeshHandle> mesh = square();
  context.get<LastChunk>() = {};
  const std::string fresh = asText(chunks(mesh));
  const std::string older(fresh.size() + 100, 'x');
  test::put("Mesh.qlo", older);
  context.get<LastChunk>() = {};
  saveChunks(context, *mesh, "MESH.QLO", false);
  EXPECT_EQ(test::contents("Mesh.qlo"), fresh + std::string(100, 'x')) << "the name as it was, in its letter case";
  loadChunks(context, *mesh, "mesh.qlo");
  EXPECT_EQ(record(mesh).groups[1].count, 4);
  EXPECT_THROW(saveChunks(context, *mesh, "no folder/mesh.qlo", false), FileFault);
  record(mesh).groups[1].texture = 99;
  EXPECT_THROW(saveChunks(context, *mesh, "Mesh.qlo", true), EngineError);
  EXPECT_EQ(test::contents("Mesh.qlo").size(), older.size()) << "a failed save leaves the file";
}

TEST_F(MeshFileTest, DumpsEveryFieldAndReadsTheNameBack) {
  const std::shared_ptr<MeshHandle> mesh = allocateMesh(context, "Dot");
  addVertex(context, *mesh, {1, 2, 3, 0, 0, 1, 0, 1, 0, 1}, kRed);
  MeshRecord& r = record(mesh);
  r.velocity = {1, 0, 0}, r.gravity = 2, r.deathTime = 100;
  r.children = {7}, r.parent = 9, r.boundsValid = true;
  saveDump(context, *mesh, "dot.qlm");
  constexpr std::uint32_t kOne = 0x3F800000, kTwo = 0x40000000, kThree = 0x40400000;
  FileBytes expected;
  expected.text("QLMESHDot").zeros(24).u32(kOne).u32(kOne).u32(kOne);
  expected.u16(0).u16(0).u32(0).u32(0).u16(0).u16(0);                     // subsets, sphere mapping; billboard, sprite
  expected.zeros(16).u16(0xFFFF).zeros(24).u32(kOne).zeros(8).u32(kTwo);  // sphere, valid, box, velocity, gravity
  expected.u16(1).u32(2).u32(0).u32(kOne).u32(kTwo).u32(kThree).zeros(8).u32(kOne);
  expected.u32(0).u32(kOne).u32(0).u32(kOne).zeros(40);
  expected.u16(1).u32(2).u32(0).u32(kOne).u32(kTwo).u32(kThree).u32(0xFFFF0000).u32(0);
  expected.u32(0).u32(kOne).u32(0).u32(kOne).zeros(36);
  expected.u32(1).u16(530).u16(1);
  expected.u16(1).u32(2).u32(0);     // groups 0 and 1
  expected.u16(0).zeros(16).u32(0);  // no vertex numbers, eight numbers, position in frames
  expected.u16(1).u32(1).u32(0).u16(0).u16(1).zeros(14).u32(0);
  expected.u16(4);
  for (int i = 0; i < 16; ++i) expected.u32(i % 5 == 0 ? kOne : 0);
  expected.u16(1).u16(1).u32(1).u32(1).u16(7).u16(9).u16(1).u16(0).u32(0x42C80000);
  EXPECT_EQ(test::contents("dot.qlm"), asText(expected.take()));

  const std::shared_ptr<MeshHandle> other = square("Two");
  loadDump(context, *other, "dot.qlm");
  EXPECT_EQ(record(other).name, "Dot");
  EXPECT_EQ(record(other).vertexCount, 4) << "nothing but the name is read";
  record(other).name = "T";
  loadDump(context, *other, "dot.qlm");
  EXPECT_EQ(record(other).name, "D") << "as many characters as the name has";
  record(other).name = std::string(1000, 'n');
  EXPECT_THROW(loadDump(context, *other, "dot.qlm"), FileFault);
}

// Files that an earlier version wrote.
TEST_F(MeshFileTest, OldFilesStayReadable) {
  const std::string data = QL_TEST_DATA_DIR;
  const std::shared_ptr<MeshHandle> mesh = allocateMesh(context);
  loadChunks(context, *mesh, data + "/mesh-v8.qlo");
  const MeshRecord& r = record(mesh);
  EXPECT_EQ(r.name, "Kept");
  EXPECT_EQ(r.position, (math::Vec3{1, -2, 3}));
  EXPECT_TRUE(r.billboard);
  EXPECT_EQ(r.vertexType, kColorVertices);
  ASSERT_EQ(r.vertexCount, 7);
  EXPECT_EQ(r.colorVertices[6].diffuse, 0x7F010203);
  ASSERT_EQ(r.groupCount, 2);
  EXPECT_EQ(r.groups[2].start, 4);
  EXPECT_EQ(r.groups[2].count, 3);
  EXPECT_EQ(r.groups[2].blending, 2);
  EXPECT_EQ(r.groups[2].texture, 1);
  record(mesh).name = "----";
  loadDump(context, *mesh, data + "/mesh-v8.qlm");
  EXPECT_EQ(r.name, "Kept");
}

/// Run with --gtest_also_run_disabled_tests to make the files of a new version.
TEST_F(MeshFileTest, DISABLED_WriteOldFiles) {
  const std::string data = QL_TEST_DATA_DIR;
  render::TextureTable& table = context.get<render::TextureTable>();
  table.entries.grow();
  table.entries.at(1).fileName = "art\\wall.bmp";
  table.entries.at(1).name = "Wall";
  table.entries.at(1).width = 64, table.entries.at(1).height = 32;
  const std::shared_ptr<MeshHandle> mesh = square("Kept");
  addFace(context, *mesh, 1, true);
  for (int i = 0; i < 3; ++i) addVertex(context, *mesh, {static_cast<float>(i), 0, 1, 0, 1, 0, 0, 0, 0, 0}, 0x7F010203);
  MeshRecord& r = record(mesh);
  setBlending(r, 2, 2);
  r.position = {1, -2, 3}, r.billboard = true, r.vertexType = kColorVertices;
  saveChunks(context, *mesh, data + "/mesh-v8.qlo", true);
  saveDump(context, *mesh, data + "/mesh-v8.qlm");
}

}  // namespace
}  // namespace ql::mesh
