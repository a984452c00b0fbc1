// ql-inspect against facts that independent programs read from the same files, and its exit codes.
#include "support/RunProgram.h"
#include "support/SharedData.h"

#include <fstream>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;
using ql::test::quoted;
using ql::test::runProgram;

json manifest() { return json::parse(std::ifstream(ql::test::sharedData() / "MANIFEST.json"))["files"]; }

json inspected(const std::string& file) {
  return json::parse(runProgram(QL_INSPECT " --validate " + quoted((ql::test::sharedData() / file).string())).output);
}

TEST(Inspect, AgreesWithIndependentReadersOfLevels) {
  QL_NEED_SHARED_DATA();
  int seen = 0;
  for (const json& entry : manifest()) {
    if (!entry["file"].get<std::string>().ends_with(".bsp") || entry["format"] != "q3bsp") continue;
    SCOPED_TRACE(entry["file"].get<std::string>());
    const json facts = entry["facts"], found = inspected(entry["file"]);
    ++seen;
    EXPECT_TRUE(found["valid"].get<bool>()) << found.dump();
    EXPECT_EQ(found["version"], facts["version"]);
    EXPECT_EQ(found["lumps"], facts["lumps"]);
    EXPECT_EQ(found["clusters"], facts["vis"]["clusters"]);
    // The facts hold the most frequent classes only.
    for (const auto& [name, count] : facts["classnames"].items())
      EXPECT_EQ(found["entity_classes"].value(name, 0), count);
    const auto textures = [](const json& names) { return std::multiset<std::string>(names.begin(), names.end()); };
    EXPECT_EQ(textures(found["textures"]), textures(facts["textures"]));
    for (const auto& [type, count] : facts["face_types"].items()) EXPECT_EQ(found["face_types"].value(type, 0), count);
    for (int axis = 0; axis < 3; ++axis) {
      const auto at = static_cast<std::size_t>(axis);
      EXPECT_NEAR(found["bounds"]["mins"][at].get<double>(), facts["vertex_bbox"][0][at].get<double>(), 0.01);
      EXPECT_NEAR(found["bounds"]["maxs"][at].get<double>(), facts["vertex_bbox"][1][at].get<double>(), 0.01);
    }
  }
  EXPECT_GT(seen, 0);
}

TEST(Inspect, AgreesWithIndependentReadersOfHalfLifeFiles) {
  QL_NEED_SHARED_DATA();
  int levels = 0, packages = 0;
  for (const json& entry : manifest()) {
    const std::string file = entry["file"];
    const json facts = entry.value("facts", json::object());
    const bool isPackage = facts.value("magic", "") == "WAD3";
    if (facts.value("format", "") != "hlbsp" && !isPackage) continue;
    SCOPED_TRACE(file);
    const json found = inspected(file);
    EXPECT_TRUE(found["valid"].get<bool>()) << found.dump();
    EXPECT_EQ(found["format"], facts["format"]);
    if (isPackage) {
      ++packages;
      EXPECT_EQ(found["entries"], facts["entries"]);
      for (std::size_t i = 0; i < facts["items"].size(); ++i) {
        EXPECT_EQ(found["items"][i]["name"], facts["items"][i][0]);
        EXPECT_EQ(found["items"][i]["width"], facts["items"][i][4]);
      }
      continue;
    }
    ++levels;
    EXPECT_EQ(found["version"], facts["version"]);
    for (const auto& [lump, count] : facts["lumps"].items()) {
      if (lump == "textures") continue;  // ours counts bytes
      EXPECT_EQ(found["lumps"][lump], count) << lump;
    }
    EXPECT_EQ(found["textures"], facts["textures"]);
    for (const auto& [name, count] : facts["classnames"].items())
      EXPECT_EQ(found["entity_classes"].value(name, 0), count);
  }
  EXPECT_GE(levels, 9);
  EXPECT_GE(packages, 8);
}

TEST(Inspect, AgreesWithIndependentReadersOfArchivesAndPictures) {
  QL_NEED_SHARED_DATA();
  const std::set<std::string> pictures{"bmp", "jpg", "tga", "png", "dds"};
  int seen = 0;
  for (const json& entry : manifest()) {
    const std::string file = entry["file"], format = entry["format"], folder = file.substr(0, file.find('/'));
    const json facts = entry.value("facts", json::object());
    if (folder != format) continue;
    SCOPED_TRACE(file);
    if (format == "pak") {
      const json found = inspected(file);
      ++seen;
      EXPECT_EQ(found["files"], facts["entries"]);
      for (std::size_t i = 0; i < facts["files"].size(); ++i) {
        EXPECT_EQ(found["entries"][i]["name"], facts["files"][i][0]);
        EXPECT_EQ(found["entries"][i]["size"], facts["files"][i][1]);
      }
    } else if (pictures.contains(format) && facts.contains("size")) {
      const json found = inspected(file);
      ++seen;
      EXPECT_EQ(found["format"], format);
      EXPECT_TRUE(found["valid"].get<bool>()) << found.dump();
      EXPECT_EQ(found["width"], facts["size"][0]);
      EXPECT_EQ(found["height"], facts["size"][1]);
    }
  }
  EXPECT_GT(seen, 0);
}

TEST(Inspect, AgreesWithIndependentReadersOfMeshes) {
  QL_NEED_SHARED_DATA();
  int seen = 0;
  for (const json& entry : manifest()) {
    const std::string file = entry["file"], format = entry["format"];
    if ((format != "3ds" && format != "x") || !entry["facts"].contains("assimp")) continue;
    SCOPED_TRACE(file);
    const json facts = entry["facts"], found = inspected(file);
    ++seen;
    EXPECT_TRUE(found["valid"].get<bool>()) << found.dump();
    EXPECT_EQ(found["format"], format);
    EXPECT_EQ(found["triangles"], format == "x" ? facts["assimp"]["Faces"] : facts["total_tris"]);
    if (format == "x") {
      EXPECT_EQ(found["objects"].size(), facts.value("n_Mesh", found["objects"].size()));
      continue;
    }
    EXPECT_EQ(found["vertices"], facts["total_verts"]);
    for (std::size_t i = 0; i < facts["meshes"].size(); ++i) {
      const json &mesh = facts["meshes"][i], &object = found["objects"][i];
      EXPECT_EQ(object["name"], mesh["name"]);
      EXPECT_EQ(object["vertices"], mesh["verts"]);
      EXPECT_EQ(object["triangles"], mesh["tris"]);
      if (mesh.contains("materials")) {
        EXPECT_EQ(object["material"], mesh["materials"].back());
      }
      for (std::size_t axis = 0; axis < 3; ++axis) {
        EXPECT_LE(found["bounds"]["mins"][axis].get<double>(), mesh["bbox"][0][axis].get<double>() + 1e-3);
        EXPECT_GE(found["bounds"]["maxs"][axis].get<double>(), mesh["bbox"][1][axis].get<double>() - 1e-3);
      }
    }
  }
  EXPECT_GE(seen, 16);
}

TEST(Inspect, TellsWhatMeshFilesHold) {
  const json chunks = json::parse(runProgram(QL_INSPECT " " QL_TEST_DATA "/mesh-v8.qlo").output);
  const json dump = json::parse(runProgram(QL_INSPECT " " QL_TEST_DATA "/mesh-v8.qlm").output);
  EXPECT_EQ(chunks["format"], "qlof");
  EXPECT_EQ(dump["format"], "qlmesh");
  for (const json& found : {chunks, dump}) {
    EXPECT_EQ(found["name"], "Kept");
    EXPECT_EQ(found["vertices"], 7);
    EXPECT_EQ(found["triangles"], 2);
    EXPECT_EQ(found["bounds"]["maxs"], (json{2.0, 1.0, 1.0}));
    ASSERT_EQ(found["objects"].size(), 2u);
    EXPECT_EQ(found["objects"][1]["vertices"], 3);
    EXPECT_EQ(found["objects"][1]["blending"], 2);
  }
}

TEST(Inspect, ExitCodesTellWhatIsWrong) {
  const auto folder = std::filesystem::temp_directory_path() / "ql-inspect-test";
  std::filesystem::create_directories(folder);
  const auto file = [&](const char* name, const std::string& bytes) {
    std::ofstream(folder / name, std::ios::binary) << bytes;
    return quoted((folder / name).string());
  };
  struct Case {
    const char* name;
    std::string arguments;
    int code;
  };
  const Case cases[] = {
      {"no file named", "", 2},
      {"unknown option", "--frobnicate x", 2},
      {"help", "--help", 0},
      {"version", "--version", 0},
      {"missing file", quoted((folder / "none").string()), 3},
      {"a folder", quoted(folder.string()), 3},
      {"neither level nor archive nor picture", file("text", "nothing of the kind"), 4},
      {"level cut in its header", file("cut.bsp", std::string("IBSP\x2e\0\0\0", 8)), 4},
      {"archive whose directory is missing", file("cut.pak", "PACK"), 4},
      {"mesh that is none", file("none.qlo", "QLOF"), 4},
      {"X file cut", file("cut.x", "xof 0303txt 0032\nMesh { 3;"), 4},
      {"3D Studio file cut", file("cut.3ds", std::string("MM\x20\0\0\0\x10\x41", 8)), 4},
      {"DXE file cut", file("cut.dxe", "DXE\n1\n0\n"), 4},
      {"one good, one missing", quoted((folder / "none").string()) + " " + file("b.bmp", "BM"), 4},
  };
  for (const Case& c : cases) {
    const auto run = runProgram(QL_INSPECT " " + c.arguments);
    EXPECT_EQ(run.code, c.code) << c.name << ": " << run.output;
    if (c.code > 2) {
      EXPECT_FALSE(json::parse(run.output.substr(0, run.output.find('\n')))["valid"].get<bool>()) << c.name;
    }
  }
  std::filesystem::remove_all(folder);
}

}  // namespace
