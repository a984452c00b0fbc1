#include "mesh/LoadXFile.h"
#include "platform/device/DeviceError.h"
#include "platform/host/Files.h"
#include "platform/utility/SubsetMesh.h"
#include "render/Materials.h"
#include "render/RenderTest.h"
#include "render/TextureTable.h"
#include "support/SharedData.h"
#include "support/XFiles.h"

namespace ql::mesh {
namespace {

struct LoadXFileTest : test::RenderTest {
  std::shared_ptr<MeshHandle> mesh;
  void SetUp() override {
    RenderTest::SetUp();
    mesh = allocateMesh(context);
  }
  const MeshRecord& record() { return meshRecord(context, mesh->slot); }
  std::string textureOf(std::size_t group) {
    return context.get<render::TextureTable>().entries.at(record().groups[group].texture).name;
  }
};

TEST_F(LoadXFileTest, GroupsStandForMaterials) {
  std::filesystem::create_directories("models/art");
  picture("models/art/red.bmp", 4, 4, 0xFF0000);
  host::replaceFile("models/tiny.x", test::tinyX(test::XKind::Binary));
  const std::int16_t materials = context.get<render::MaterialTable>().entries.count();
  loadXFile(context, *mesh, "models\\tiny.x");
  EXPECT_TRUE(record().usesSubsets);
  EXPECT_EQ(record().vertexCount, 7);
  ASSERT_TRUE(record().subsets);
  EXPECT_EQ(record().subsets->subsetCount(), 2u);
  ASSERT_EQ(record().groupCount, 2);
  ASSERT_EQ(record().groups.size(), 3u);
  EXPECT_EQ(record().groups[1].count, 0);
  EXPECT_EQ(record().groups[1].material, materials + 1);
  EXPECT_EQ(record().groups[1].texture, 0);
  EXPECT_EQ(record().groups[2].material, materials + 2);
  EXPECT_EQ(textureOf(2), "models\\art\\red.bmp") << "not found as it is named: taken from the file's folder";
  EXPECT_TRUE(context.get<render::TextureTable>().entries.at(record().groups[2].texture).texture);
  const device::Material& red = render::materialRecord(context, record().groups[2].material);
  EXPECT_EQ(red.diffuse.r, 1);
  EXPECT_EQ(red.diffuse.a, 1) << "the file's alpha is not used";
  EXPECT_EQ(red.ambient.a, 1);
  EXPECT_EQ(red.emissive.b, 0.5F);
  EXPECT_EQ(red.emissive.a, 1);
  EXPECT_EQ(red.specular.g, 0.25F);
  EXPECT_EQ(red.power, 8);

  std::filesystem::create_directory("art");
  picture("art/red.bmp", 4, 4, 0xFF0000);
  loadXFile(context, *mesh, "models\\tiny.x");
  EXPECT_EQ(textureOf(2), "art\\red.bmp") << "a file that exists as it is named";
}

TEST_F(LoadXFileTest, AFailureLeavesTheMesh) {
  const auto save = [](const char* name, const std::string& body) {
    host::replaceFile(name, test::xFile(test::XKind::Text, std::as_bytes(std::span(body))));
  };
  save("damaged.x", "Mesh { 3; 0;0;0; }");
  save("empty.x", "Material M { 1;1;1;1;; 0; 0;0;0;; 0;0;0;; }");
  struct Row {
    const char* file;
    std::uint32_t error;
  };
  for (const Row& row :
       {Row{"none.x", 53}, Row{"damaged.x", device::kErrorInvalidData}, Row{"empty.x", device::kErrorInvalidData}}) {
    SCOPED_TRACE(row.file);
    std::uint32_t error = 0;
    try {
      loadXFile(context, *mesh, row.file);
    } catch (...) {
      error = static_cast<std::uint32_t>(engine::currentError().number);
    }
    EXPECT_EQ(error, row.error);
    EXPECT_FALSE(record().usesSubsets);
    EXPECT_EQ(record().vertexCount, 0);
  }
}

TEST_F(LoadXFileTest, RealFilesFindTheirTextures) {
  QL_NEED_SHARED_DATA();
  loadXFile(context, *mesh, (test::sharedData() / "x/dxsamples/Lobby/lobby_skybox.x").string());
  ASSERT_EQ(record().groupCount, 6);
  for (std::size_t g = 1; g <= 6; ++g)
    EXPECT_TRUE(context.get<render::TextureTable>().entries.at(record().groups[g].texture).texture) << textureOf(g);
  for (const std::filesystem::path& path : test::sharedFiles("x")) {
    if (path.extension() != ".x") continue;
    EXPECT_NO_THROW(loadXFile(context, *mesh, path.string())) << path;
  }
}

}  // namespace
}  // namespace ql::mesh
