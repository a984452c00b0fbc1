// Files that nobody here wrote, against what independent readers say of them.
#include "platform/host/Fault.h"
#include "platform/host/Files.h"
#include "platform/xfile/XFile.h"
#include "support/SharedData.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <numeric>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#ifdef QL_ASSIMP
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#endif

namespace ql::xfile {
namespace {

using nlohmann::json;
using Point = std::array<float, 3>;

FlatMesh load(const std::filesystem::path& path) { return flatten(parseXFile(host::readFile(path.string()))); }

TEST(RealXFiles, HaveTheCountsBoundsAndTexturesOfTheManifest) {
  QL_NEED_SHARED_DATA();
  int seen = 0;
  const json manifest = json::parse(std::ifstream(test::sharedData() / "MANIFEST.json"));
  for (const json& entry : manifest["files"]) {
    const std::string file = entry["file"];
    if (entry["format"] != "x" || !file.ends_with(".x")) continue;
    SCOPED_TRACE(file);
    ++seen;
    const json facts = entry["facts"], other = facts["assimp"];
    const FlatMesh mesh = load(test::sharedData() / file);
    EXPECT_EQ(mesh.attributes.size(), other["Faces"].get<std::size_t>());
    EXPECT_EQ(mesh.materials.size(), other["Materials"].get<std::size_t>());
    Point low{}, high{};
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
      const Point p{mesh.vertices[i].position.x, mesh.vertices[i].position.y, mesh.vertices[i].position.z};
      for (std::size_t axis = 0; axis < 3; ++axis) {
        low[axis] = i == 0 ? p[axis] : std::min(low[axis], p[axis]);
        high[axis] = i == 0 ? p[axis] : std::max(high[axis], p[axis]);
      }
    }
    // The other reader mirrors z.
    const auto theirs = [&](const char* which, std::size_t axis) { return other[which][axis].get<float>(); };
    for (const std::size_t axis : {0u, 1u}) {
      EXPECT_NEAR(low[axis], theirs("Minimum point", axis), 1e-3);
      EXPECT_NEAR(high[axis], theirs("Maximum point", axis), 1e-3);
    }
    EXPECT_NEAR(low[2], -theirs("Maximum point", 2), 1e-3);
    EXPECT_NEAR(high[2], -theirs("Minimum point", 2), 1e-3);
    if (!facts.contains("textures")) continue;
    std::multiset<std::string> named, found;
    for (std::string name : facts["textures"].get<std::vector<std::string>>()) {
      for (std::size_t at = 0; (at = name.find("\\\\", at)) != std::string::npos; ++at) name.erase(at, 1);
      if (!name.empty()) named.insert(name);
    }
    for (const Material& material : mesh.materials)
      if (!material.texture.empty()) found.insert(material.texture);
    EXPECT_EQ(found, named);
  }
  EXPECT_GE(seen, 8);
}

TEST(RealXFiles, OneCubeSavedThreeWaysIsOneCube) {
  QL_NEED_SHARED_DATA();
  const auto cube = [](const char* kind) {
    return load(test::sharedData() / "x/assimp" / ("test_cube_" + std::string(kind) + ".x"));
  };
  const FlatMesh text = cube("text"), binary = cube("binary"), packed = cube("compressed");
  EXPECT_EQ(text.indices, binary.indices);
  EXPECT_EQ(binary.indices, packed.indices);
  ASSERT_EQ(text.vertices.size(), binary.vertices.size());
  for (std::size_t i = 0; i < text.vertices.size(); ++i) {
    EXPECT_EQ(binary.vertices[i].position, packed.vertices[i].position);
    EXPECT_NEAR(text.vertices[i].position.x, binary.vertices[i].position.x, 1e-5);
    EXPECT_NEAR(text.vertices[i].normal.y, binary.vertices[i].normal.y, 1e-5);
  }
}

TEST(RealXFiles, DamagedOnesEndCleanly) {
  QL_NEED_SHARED_DATA();
  int seen = 0;
  for (const std::filesystem::path& path : test::sharedFiles("hostile/x/x")) {
    SCOPED_TRACE(path.filename());
    ++seen;
    try {
      const FlatMesh mesh = load(path);
      for (const std::uint32_t index : mesh.indices) ASSERT_LT(index, mesh.vertices.size());
      for (const Vertex& v : mesh.vertices) ASSERT_TRUE(std::isfinite(v.position.x + v.normal.y + v.tu));
    } catch (const host::FileFault&) {
    }
  }
  EXPECT_GT(seen, 0);
}

#ifdef QL_ASSIMP
/// Triangles by their corners' places, normals and texture coordinates, in any order.
using Corners = std::multiset<std::vector<int>>;

int coarse(float value) { return static_cast<int>(std::lround(value * 500)); }

TEST(RealXFiles, HaveTheCornersThatAnotherReaderFinds) {
  QL_NEED_SHARED_DATA();
  for (const std::filesystem::path& path : test::sharedFiles("x")) {
    if (path.extension() != ".x") continue;
    SCOPED_TRACE(path.filename());
    Assimp::Importer importer;
    // Without a step that moves what stands in frames, its bones keep meshes where they are.
    const aiScene* scene = importer.ReadFile(
        path.string(), aiProcess_Triangulate | aiProcess_PreTransformVertices | aiProcess_MakeLeftHanded);
    ASSERT_NE(scene, nullptr) << importer.GetErrorString();
    Corners theirs, ours;
    for (unsigned m = 0; m < scene->mNumMeshes; ++m) {
      const aiMesh& mesh = *scene->mMeshes[m];
      for (unsigned f = 0; f < mesh.mNumFaces; ++f)
        for (unsigned k = 0; k < 3; ++k) {
          const unsigned i = mesh.mFaces[f].mIndices[k];
          const aiVector3D p = mesh.mVertices[i], n = mesh.mNormals[i];
          theirs.insert({coarse(p.x), coarse(p.y), coarse(p.z), coarse(n.x / 10), coarse(n.y / 10), coarse(n.z / 10)});
        }
    }
    const FlatMesh mesh = load(path);
    for (const std::uint32_t i : mesh.indices) {
      const Vertex& v = mesh.vertices[i];
      ours.insert({coarse(v.position.x), coarse(v.position.y), coarse(v.position.z), coarse(v.normal.x / 10),
                   coarse(v.normal.y / 10), coarse(v.normal.z / 10)});
    }
    ASSERT_EQ(ours.size(), theirs.size());
    std::vector<std::vector<int>> onlyOurs;
    std::set_difference(ours.begin(), ours.end(), theirs.begin(), theirs.end(), std::back_inserter(onlyOurs));
    // Rounding puts a few on the other side of a step.
    EXPECT_LE(onlyOurs.size(), ours.size() / 50)
        << testing::PrintToString(onlyOurs.empty() ? std::vector<int>{} : onlyOurs.front());
  }
}
#endif

}  // namespace
}  // namespace ql::xfile
