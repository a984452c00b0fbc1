#include "mesh/LoadThreeDs.h"
#include "mesh/ThreeDs.h"
#include "platform/host/Files.h"
#include "render/Materials.h"
#include "render/RenderTest.h"
#include "render/TextureTable.h"
#include "support/SharedData.h"
#include "support/ThreeDsFiles.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>

#include <nlohmann/json.hpp>
#ifdef QL_ASSIMP
#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#endif

namespace ql::mesh {
namespace {

using nlohmann::json;
using test::chunk3ds;
using test::FileBytes;
using test::Tiny3ds;
using test::zeroEnded;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct ThreeDsTest : test::RenderTest {
  /// Loads a file made of bytes; what the mesh is then.
  const MeshRecord& load(const std::vector<std::byte>& bytes, const std::string& name = "art\\tiny.3ds") {
    host::replaceFile(std::filesystem::path("art") / "tiny.3ds", bytes);
    mesh = allocateMesh(context);
    machine.clearLog();
    std::string fileName = name;
    loadThreeDs(context, *mesh, fileName);
    return meshRecord(context, mesh->slot);
  }
  void SetUp() override {
    RenderTest::SetUp();
    std::filesystem::create_directory("art");
    picture("art/brick.bmp", 4, 4, 0x336699);
  }
  std::size_t errors() const {
    std::size_t count = 0;
    for (const std::string& line : machine.logLines()) count += line.starts_with("Error in 3Ds loader : ") ? 1u : 0u;
    return count;
  }
  std::shared_ptr<MeshHandle> mesh;
};

TEST_F(ThreeDsTest, MakesAGroupOfEveryObject) {
  const MeshRecord& record = load(Tiny3ds().bytes());
  EXPECT_EQ(errors(), 0u);
  EXPECT_EQ(record.primitiveType, kTriangleList);
  ASSERT_EQ(record.groupCount, 2);
  EXPECT_EQ(record.groups[1].start, 0);
  EXPECT_EQ(record.groups[1].count, 6);
  EXPECT_EQ(record.groups[2].start, 6);
  EXPECT_EQ(record.groups[2].count, 3);
  ASSERT_EQ(record.vertexCount, 9);
  // The second corner of the second triangle: vertex 3 of the object, at (0, 0, 4).
  const math::NormalVertex& v = record.normalVertices[4];
  EXPECT_EQ((math::Vec3{v.x, v.y, v.z}), (math::Vec3{0, 0, 4}));
  EXPECT_EQ((math::Vec3{v.nx, v.ny, v.nz}), (math::Vec3{0, 1, 0}));
  EXPECT_EQ(v.tu, 0.5F);
  EXPECT_EQ(v.tv, 0.5F);
  EXPECT_EQ(record.normalVertices[0].tv, 0.75F) << "v grows downwards here";
  EXPECT_EQ(record.normalVertices[8].tu, 0) << "the other object has no coordinates";
  EXPECT_EQ(record.normalVertices[8].tv, 1);
  EXPECT_EQ(record.colorVertices[4].diffuse, -1);

  ASSERT_GT(record.groups[1].texture, 0);
  EXPECT_EQ(context.get<render::TextureTable>().entries.at(record.groups[1].texture).fileName, "art\\BRICK.BMP");
  EXPECT_TRUE(context.get<render::TextureTable>().entries.at(record.groups[1].texture).texture);
  EXPECT_EQ(record.groups[2].texture, 0);
  EXPECT_EQ(record.groups[2].material, 0);
  const device::Material& material = render::materialRecord(context, record.groups[1].material);
  EXPECT_FLOAT_EQ(material.ambient.g, 0.4F);
  EXPECT_FLOAT_EQ(material.specular.b, 1);
  EXPECT_EQ(material.diffuse.r, 1) << "the file's diffuse colour is not used";
  EXPECT_EQ(material.emissive.a, 0);
}

TEST_F(ThreeDsTest, LogsOneLinePerChunk) {
  Tiny3ds file;
  file.map = {};
  load(file.bytes());
  EXPECT_THAT(
      machine.logLines(),
      ElementsAre("Loading 3DS mesh : art\\tiny.3ds...", "  ##  4D4D (3DS: Load3ds)", "  ##  2 (3DS Version)",
                  "  ##  3D3D (3D Editor Chunk)", "  ##  3D3E (Mesh Version)", "  ##  AFFF (Material Editor Chunk)",
                  "  ##  A000 (Material Name)", "  ##  A010 (Ambient Color)", "  ##  11 (Byte Color Chunk)",
                  "  ##  A020 (Diffuse Color)", "  ##  11 (Byte Color Chunk)", "  ##  A030 (Specular Color)",
                  "  ##  11 (Byte Color Chunk)", "  ##  4000 (Object Block)", "  ##  4100 (Triangular Mesh)",
                  "  ##  4110 (Vertices)", "  ##  4140 (Face Texture Coordinates)", "  ##  4120 (Load3ds: Mesh Add)",
                  "  ##  4130 (Face Material)", "  ##  4000 (Object Block)", "  ##  4100 (Triangular Mesh)",
                  "  ##  4110 (Vertices)", "  ##  4160 (Local Coordinate System)", "  ##  4120 (Load3ds: Mesh Add)",
                  "End of 3DS Loading."));
}

TEST_F(ThreeDsTest, ReadsWhatModellersWrite) {
  struct Row {
    const char* name;
    std::function<void(Tiny3ds&)> change;
    std::function<bool(const MeshRecord&)> expect;
  };
  const Row rows[] = {
      {"coordinates after the faces come too late", [](Tiny3ds& f) { f.coordinatesFirst = false; },
       [](const MeshRecord& r) { return r.normalVertices[4].tu == 0 && r.normalVertices[4].tv == 1; }},
      {"a material that is not there",
       [](Tiny3ds& f) {
         f.faceMaterial = chunk3ds(0x4130, {zeroEnded("brick"), FileBytes().u16(0).take()});
       },
       [](const MeshRecord& r) { return r.groups[1].texture == 0 && r.groups[1].material == 0; }},
      {"the second map", [](Tiny3ds& f) { f.map = chunk3ds(0xA33A, {chunk3ds(0xA300, {zeroEnded("brick.bmp")})}); },
       [](const MeshRecord& r) { return r.groups[1].texture == 0 && r.groups[1].material > 0; }},
      {"the last of several materials",
       [](Tiny3ds& f) {
         f.between = chunk3ds(0xAFFF, {chunk3ds(0xA000, {zeroEnded("Mud")})});
         f.faceMaterial = FileBytes()
                              .add(f.faceMaterial)
                              .add(chunk3ds(0x4130, {zeroEnded("Mud"), FileBytes().u16(0).take()}))
                              .take();
       },
       [](const MeshRecord& r) { return r.groups[1].texture == 0 && r.groups[1].material == 2; }},
      {"unknown chunks", [](Tiny3ds& f) { f.between = chunk3ds(0x1234, {FileBytes().zeros(14).take()}); },
       [](const MeshRecord& r) { return r.groupCount == 2; }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    render::resetMaterials(context);
    Tiny3ds file;
    row.change(file);
    const MeshRecord& record = load(file.bytes());
    EXPECT_EQ(errors(), 0u);
    EXPECT_EQ(record.vertexCount, 9);
    EXPECT_TRUE(row.expect(record));
  }
}

TEST_F(ThreeDsTest, KeepsWhatDamageLeaves) {
  const auto cut = [](std::vector<std::byte> file, std::size_t length) {
    file.resize(length);
    return file;
  };
  const std::vector<std::byte> good = Tiny3ds().bytes();
  struct Row {
    const char* name;
    std::function<std::vector<std::byte>()> file;
    std::int32_t vertices;
    const char* error;
  };
  const Row rows[] = {
      {"a face that names no vertex",
       [] {
         Tiny3ds file;
         file.faces = test::faces3ds({{0, 1, 9}, {0, 1, 2}});
         return file.bytes();
       },
       6, "Error in 3Ds loader : 5 vertex of 1 faces out of range"},
      {"a chunk shorter than its header",
       [] {
         Tiny3ds file;
         file.between = FileBytes().u16(0x1234).u32(0).take();
         return file.bytes();
       },
       0, "Error in 3Ds loader : 5 chunk of an impossible size"},
      {"a chunk longer than the file",
       [] {
         Tiny3ds file;
         file.between = FileBytes().u16(0x1234).u32(0xFFFFFFFF).take();
         return file.bytes();
       },
       0, "Error in 3Ds loader : 62 chunk past the end"},
      {"the last face list cut", [&] { return cut(good, good.size() - 1); }, 6,
       "Error in 3Ds loader : 62 faces past the end"},
      {"a header cut", [&] { return cut(good, 8); }, 0, "Error in 3Ds loader : 62 chunk header past the end"},
      {"a name without end", [] { return chunk3ds(0x4000, {FileBytes().text("Box").take()}); }, 0,
       "Error in 3Ds loader : 62 name past the end"},
      {"coordinates that are no numbers",
       [] {
         Tiny3ds file;
         file.positions = chunk3ds(0x4110, {test::floats3ds(3, {NAN, 0, 0, 4, INFINITY, 0, 0, 4, 0, 0, 0, 4})});
         return file.bytes();
       },
       9, nullptr},
      {"more vertices than a mesh can have",
       [] {
         Tiny3ds file;
         file.faces = test::faces3ds(std::vector<std::array<std::uint16_t, 3>>(11000, {0, 1, 2}));
         return file.bytes();
       },
       32766, "Error in 3Ds loader : 6 Overflow"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const MeshRecord& record = load(row.file());
    EXPECT_EQ(record.vertexCount, row.vertices);
    const std::vector<std::string> log = machine.logLines();
    if (row.error == nullptr) {
      EXPECT_EQ(errors(), 0u);
    } else {
      EXPECT_THAT(log, Contains(StartsWith(row.error)));
    }
    EXPECT_EQ(log.back(), "End of 3DS Loading.");
    for (const math::NormalVertex& v : record.normalVertices) EXPECT_TRUE(std::isfinite(v.x + v.y + v.z + v.nx));
  }
  load(good, "art/none.3ds");
  EXPECT_THAT(machine.logLines(), ElementsAre("Loading 3DS mesh : art/none.3ds...",
                                              "Error in 3Ds loader : 53 File not found", "End of 3DS Loading."));
}

TEST_F(ThreeDsTest, EveryPrefixLoadsWhatIsThere) {
  Tiny3ds file;
  file.map = {};
  const std::vector<std::byte> good = file.bytes();
  for (std::size_t n = 0; n < good.size(); ++n) {
    const MeshRecord& record = load({good.begin(), good.begin() + static_cast<std::ptrdiff_t>(n)});
    EXPECT_LT(record.vertexCount, 9) << n;
    EXPECT_EQ(machine.logLines().back(), "End of 3DS Loading.");
  }
}

TEST_F(ThreeDsTest, RealFilesHaveTheCountsOfTheManifest) {
  QL_NEED_SHARED_DATA();
  const json manifest = json::parse(std::ifstream(test::sharedData() / "MANIFEST.json"));
  int seen = 0;
  for (const json& entry : manifest["files"]) {
    if (entry["format"] != "3ds" || !entry["facts"].contains("meshes")) continue;
    SCOPED_TRACE(entry["file"].get<std::string>());
    ++seen;
    const json facts = entry["facts"];
    std::string name = (test::sharedData() / entry["file"].get<std::string>()).string();
    const ThreeDsFile file = parseThreeDs(host::readFile(name));
    EXPECT_FALSE(file.fault);
    const ThreeDsSummary summary = summarize(file);
    ASSERT_GE(summary.objects.size(), facts["meshes"].size()) << "the facts hold 25 at most";
    std::size_t faces = 0, positions = 0;
    for (const ThreeDsObject& object : summary.objects) {
      faces += object.faces;
      positions += object.positions.size();
    }
    EXPECT_EQ(faces, facts["total_tris"]);
    EXPECT_EQ(positions, facts["total_verts"]);
    for (std::size_t i = 0; i < facts["meshes"].size(); ++i) {
      const json& fact = facts["meshes"][i];
      EXPECT_EQ(summary.objects[i].name, fact["name"]);
      EXPECT_EQ(summary.objects[i].positions.size(), fact["verts"]);
      EXPECT_EQ(summary.objects[i].faces, fact["tris"]);
      EXPECT_EQ(summary.objects[i].texCoords, fact["uvs"]);
    }
    std::vector<std::string> materials, maps;
    for (const ThreeDsMaterial& material : summary.materials) {
      materials.push_back(material.name);
      if (!material.texture.empty()) maps.push_back(material.texture);
    }
    EXPECT_EQ(materials, facts["materials"].get<std::vector<std::string>>());
    ASSERT_EQ(maps.size(), facts["maps"].size());
    for (std::size_t i = 0; i < maps.size(); ++i) EXPECT_EQ(maps[i], facts["maps"][i][1]);

    machine.clearLog();
    mesh = allocateMesh(context);
    loadThreeDs(context, *mesh, name);
    const MeshRecord& record = meshRecord(context, mesh->slot);
    EXPECT_EQ(static_cast<std::size_t>(record.vertexCount), std::min<std::size_t>(faces, 32767 / 3) * 3);
    EXPECT_EQ(record.groupCount, std::max<std::ptrdiff_t>(std::ssize(summary.objects), 1));
    EXPECT_EQ(errors() > 0, faces > 32767 / 3) << "one file has more than a mesh can hold";
    // The other reader's boxes are those of the objects, and what was loaded stands within them.
    for (std::size_t i = 0; i < facts["meshes"].size(); ++i) {
      const json& box = facts["meshes"][i]["bbox"];
      const MeshGroup& group = record.groups[i + 1];
      const auto first = record.normalVertices.begin() + group.start;
      const auto inBox = [&](std::size_t axis, float math::Vec3::*part, float math::NormalVertex::*loaded) {
        const auto low = box[0][axis].get<float>(), high = box[1][axis].get<float>();
        const float margin = 1e-4F * std::max(1.0F, std::max(std::abs(low), std::abs(high)));
        const auto& places = summary.objects[i].positions;
        const auto [least, most] = std::ranges::minmax_element(places, {}, part);
        if (!places.empty()) {
          EXPECT_NEAR((*least).*part, low, margin) << i;
          EXPECT_NEAR((*most).*part, high, margin) << i;
        }
        for (auto v = first; v != first + group.count; ++v) {
          ASSERT_GE((*v).*loaded, low - margin);
          ASSERT_LE((*v).*loaded, high + margin);
        }
      };
      inBox(0, &math::Vec3::x, &math::NormalVertex::x);
      inBox(1, &math::Vec3::y, &math::NormalVertex::y);
      inBox(2, &math::Vec3::z, &math::NormalVertex::z);
    }
  }
  EXPECT_GE(seen, 8);
}

TEST_F(ThreeDsTest, DamagedRealFilesEndCleanly) {
  QL_NEED_SHARED_DATA();
  for (const std::filesystem::path& path : test::sharedFiles("hostile/3ds/3ds")) {
    SCOPED_TRACE(path.filename());
    std::string name = path.string();
    mesh = allocateMesh(context);
    loadThreeDs(context, *mesh, name);
    const MeshRecord& record = meshRecord(context, mesh->slot);
    for (const MeshGroup& group : record.groups) ASSERT_LE(group.start + group.count, record.vertexCount);
  }
}

#ifdef QL_ASSIMP
/// A triangle as no placing changes it: the lengths of its sides in order, and its corners' texture coordinates, from
/// the side on which the list is least.
std::vector<int> signature(const std::array<math::Vec3, 3>& p, const std::array<std::array<float, 2>, 3>& uv) {
  const auto coarse = [](float value) { return static_cast<int>(std::lround(value * 100)); };
  std::vector<int> least;
  for (std::size_t from = 0; from < 3; ++from) {
    std::vector<int> turned;
    for (std::size_t k = from; k < from + 3; ++k) {
      turned.push_back(coarse(math::length(math::subtract(p[(k + 1) % 3], p[k % 3]))));
      for (const float coordinate : uv[k % 3]) turned.push_back(coarse(coordinate));
    }
    if (least.empty() || turned < least) least = turned;
  }
  return least;
}

TEST_F(ThreeDsTest, HasTheTrianglesThatAnotherReaderFinds) {
  QL_NEED_SHARED_DATA();
  int seen = 0;
  for (const std::filesystem::path& path : test::sharedFiles("3ds")) {
    std::string ending = path.extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return std::tolower(c); });
    // One file has more triangles than a mesh, of another the other reader drops objects without a material.
    if (ending != ".3ds" || path.stem() == "apollo" || path.stem() == "test1") continue;
    SCOPED_TRACE(path.filename());
    ++seen;
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(path.string(), 0);
    ASSERT_NE(scene, nullptr) << importer.GetErrorString();
    std::multiset<std::vector<int>> theirs, ours;
    for (unsigned m = 0; m < scene->mNumMeshes; ++m) {
      const aiMesh& other = *scene->mMeshes[m];
      for (unsigned f = 0; f < other.mNumFaces; ++f) {
        std::array<math::Vec3, 3> p;
        std::array<std::array<float, 2>, 3> uv{};
        for (unsigned k = 0; k < 3; ++k) {
          const unsigned i = other.mFaces[f].mIndices[k];
          p[k] = {other.mVertices[i].x, other.mVertices[i].y, other.mVertices[i].z};
          if (other.HasTextureCoords(0)) uv[k] = {other.mTextureCoords[0][i].x, other.mTextureCoords[0][i].y};
        }
        theirs.insert(signature(p, uv));
      }
    }
    std::string name = path.string();
    mesh = allocateMesh(context);
    loadThreeDs(context, *mesh, name);
    const MeshRecord& record = meshRecord(context, mesh->slot);
    for (std::size_t at = 0; at + 2 < static_cast<std::size_t>(record.vertexCount); at += 3) {
      std::array<math::Vec3, 3> p;
      std::array<std::array<float, 2>, 3> uv{};
      for (std::size_t k = 0; k < 3; ++k) {
        const math::NormalVertex& v = record.normalVertices[at + k];
        p[k] = {v.x, v.y, v.z};
        uv[k] = {v.tu, 1 - v.tv};
      }
      ours.insert(signature(p, uv));
    }
    ASSERT_EQ(ours.size(), theirs.size());
    std::vector<std::vector<int>> onlyOurs;
    std::ranges::set_difference(ours, theirs, std::back_inserter(onlyOurs));
    // Rounding puts a few on the other side of a step.
    EXPECT_LE(onlyOurs.size(), ours.size() / 50)
        << testing::PrintToString(onlyOurs.empty() ? std::vector<int>{} : onlyOurs[0]);
  }
  EXPECT_GE(seen, 6);
}
#endif

}  // namespace
}  // namespace ql::mesh
