#include "platform/host/Fault.h"
#include "platform/xfile/XFile.h"
#include "support/XFiles.h"

#include <functional>
#include <optional>

#include <gtest/gtest.h>

namespace ql::xfile {
namespace {

using host::Fault;
using test::tinyX;
using test::XKind;
using test::XWriter;

constexpr XKind kKinds[] = {XKind::Text, XKind::Binary, XKind::CompressedText, XKind::CompressedBinary};

TEST(XFile, EveryKindOfFileGivesTheSameMesh) {
  for (const XKind kind : kKinds) {
    for (const std::size_t realBytes : {4u, 8u}) {
      for (const std::size_t blockSize : {32768u, 100u}) {
        SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(kind) << ", reals of " << realBytes
                                        << " bytes, blocks of " << blockSize);
        const Scene scene = parseXFile(tinyX(kind, realBytes, blockSize));
        ASSERT_EQ(scene.meshes.size(), 1u);
        EXPECT_EQ(scene.meshes[0].name, "Fold");
        EXPECT_EQ(scene.droppedFaces, 0u);

        const FlatMesh mesh = flatten(scene);
        // Two of five positions have a second normal.
        ASSERT_EQ(mesh.vertices.size(), 7u);
        EXPECT_EQ(mesh.indices, (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3, 5, 6, 4}));
        EXPECT_EQ(mesh.attributes, (std::vector<std::uint32_t>{1, 1, 0}));
        // The inner frame turns x to y and moves up by 5, the outer one doubles and moves along x by 10.
        EXPECT_EQ(mesh.vertices[1].position, (math::Vec3{10, 12, 0}));
        EXPECT_EQ(mesh.vertices[4].position, (math::Vec3{10, 10, 2}));
        EXPECT_EQ(mesh.vertices[0].normal, (math::Vec3{0, 0, -1}));
        EXPECT_EQ(mesh.vertices[5].normal, (math::Vec3{-1, 0, 0})) << "turned with the frame, still of length 1";
        EXPECT_EQ(mesh.vertices[5].position, mesh.vertices[0].position);
        EXPECT_EQ(mesh.vertices[4].tv, 0.5F);

        ASSERT_EQ(mesh.materials.size(), 2u);
        EXPECT_EQ(mesh.materials[0].name, "Plain");
        EXPECT_EQ(mesh.materials[0].texture, "");
        EXPECT_EQ(mesh.materials[1].texture, "art\\red.bmp");
        EXPECT_EQ(mesh.materials[1].power, 8);
        EXPECT_EQ(mesh.materials[1].diffuse.a, 0.5F);
        EXPECT_EQ(mesh.materials[1].emissive.b, 0.5F);
      }
    }
  }
}

std::vector<std::byte> textFile(const std::string& body) {
  return test::xFile(XKind::Text, std::as_bytes(std::span(body)));
}
const std::string kTriangle = "Mesh M { 3; 0;0;0;, 1;0;0;, 0;1;0;; 1; 3;0,1,2;; ";

// What exporters write, one habit a row. Every file has one triangle or what the row says.
struct Habit {
  const char* name;
  std::string body;
  std::size_t vertices = 3, triangles = 1, materials = 1;
};

TEST(XFile, ReadsWhatExportersWrite) {
  const std::string matrix = "FrameTransformMatrix { 1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1;; }";
  const Habit habits[] = {
      {"a bare mesh", kTriangle + "}"},
      {"comments of both kinds", "// one { \n# two }\n" + kTriangle + "// three\n}"},
      {"names with blanks and digits", "Frame 3D Box 01 { " + kTriangle + "} }"},
      {"an identifier before the numbers",
       "Mesh { <01234567-89AB-CDEF-0123-456789ABCDEF> 3; 0;0;0;, 1;0;0;, 0;1;0;; 1; 3;0,1,2;; }"},
      {"numbers that are none", "Mesh { 3; -1.#IND00;0;0;, 1.#QNAN0;+1e-3;0;, nan;1e99;0;; 1; 3;0,1,2;; }"},
      {"a mesh named by a frame stands there only", kTriangle + "} Frame { " + matrix + " { M } }"},
      {"two frames show one mesh", kTriangle + "} Frame { { M } } Frame { { M } }", 6, 2},
      {"a face of two corners is dropped", "Mesh { 3; 0;0;0;, 1;0;0;, 0;1;0;; 2; 2;0,1;, 3;0,1,2;; }"},
      {"a corner out of range drops its face", "Mesh { 3; 0;0;0;, 1;0;0;, 0;1;0;; 2; 3;0,1,3;, 3;0,1,2;; }"},
      {"a face of five corners", "Mesh { 5; 0;0;0;,1;0;0;,2;1;0;,1;2;0;,0;2;0;; 1; 5;0,1,2,3,4;; }", 5, 3},
      {"normals that do not fit are left out", kTriangle + "MeshNormals { 1; 0;0;1;; 1; 4;0,0,0,0;; } }"},
      {"one index for all faces",
       kTriangle + "MeshMaterialList { 1; 1; 0;; Material { 1;1;1;1;; 0; 0;0;0;; 0;0;0;; } } }"},
      {"material out of range",
       kTriangle + "MeshMaterialList { 1; 1; 9;; Material { 1;1;1;1;; 0; 0;0;0;; 0;0;0;; } } }"},
      {"materials that are only counted", kTriangle + "MeshMaterialList { 4000000000; 1; 0;; } }"},
      {"a reference to nothing", kTriangle + "MeshMaterialList { 1; 1; 0;; { Nobody } } } Frame { { Nobody } }"},
      {"a skipped object with everything in it",
       "Unheard Of { 1;2;3; \"te}xt\"; Inner { { Deep } } [x] <00> } " + kTriangle + "}"},
  };
  for (const Habit& habit : habits) {
    SCOPED_TRACE(habit.name);
    const FlatMesh mesh = flatten(parseXFile(textFile(habit.body)));
    EXPECT_EQ(mesh.vertices.size(), habit.vertices);
    EXPECT_EQ(mesh.attributes.size(), habit.triangles);
    EXPECT_EQ(mesh.materials.size(), habit.materials);
    for (const std::uint32_t index : mesh.indices) EXPECT_LT(index, mesh.vertices.size());
    for (const std::uint32_t attribute : mesh.attributes) EXPECT_LT(attribute, mesh.materials.size());
    for (const Vertex& v : mesh.vertices) EXPECT_LE(math::length(v.normal), 1.001F);
    for (const Vertex& v : mesh.vertices) EXPECT_LE(std::abs(v.position.x + v.position.y + v.position.z), 10.0F);
  }
}

TEST(XFile, MeshesWithoutNormalsGetSmoothOnes) {
  const std::string flat = "4; 0;0;0;, 0;1;0;, 1;0;0;, 0;0;9;; 1; 3;0,1,2;; ";
  const FlatMesh mesh = flatten(
      parseXFile(textFile("Mesh { " + flat + "} Mesh { " + flat + "MeshNormals { 1; 1;0;0;; 1; 3;0,0,0;; } }")));
  ASSERT_EQ(mesh.vertices.size(), 8u);
  EXPECT_EQ(mesh.vertices[1].normal, (math::Vec3{0, 0, -1})) << "clockwise as seen from -z";
  EXPECT_EQ(mesh.vertices[3].normal, (math::Vec3{})) << "no triangle uses it";
  EXPECT_EQ(mesh.vertices[5].normal, (math::Vec3{1, 0, 0})) << "the other mesh keeps its own";
}

std::vector<std::byte> binaryFile(XWriter& writer) {
  const std::vector<std::byte> body = writer.take();
  return test::xFile(XKind::Binary, body);
}
std::vector<std::byte> poked(std::vector<std::byte> file, std::size_t at, std::string_view text) {
  std::copy_n(reinterpret_cast<const std::byte*>(text.data()), text.size(),
              file.begin() + static_cast<std::ptrdiff_t>(at));
  return file;
}
std::string repeated(const std::string& text, std::size_t times) {
  std::string out;
  for (std::size_t i = 0; i < times; ++i) out += text;
  return out;
}

TEST(XFile, RefusesDamage) {
  const std::string zeros(40 << 20, '\0');
  struct Damage {
    const char* name;
    std::vector<std::byte> file;
    Fault expect;
  };
  const Damage damages[] = {
      {"nothing", {}, Fault::Truncated},
      {"another magic", poked(textFile(""), 0, "xoff"), Fault::BadIdentifier},
      {"another version", poked(textFile(""), 4, "0403"), Fault::BadVersion},
      {"an unknown kind", poked(textFile(""), 8, "cmp "), Fault::Unsupported},
      {"an unknown size of numbers", poked(textFile(""), 12, "0128"), Fault::BadSize},
      {"more vertices than bytes", textFile("Mesh { 4294967295; 0;0;0; }"), Fault::BadSize},
      {"a count beyond 32 bits", textFile("Mesh { 99999999999999999999; 0;0;0; }"), Fault::BadSize},
      {"more corners than bytes", textFile("Mesh { 1; 0;0;0;; 1; 4294967295;0; }"), Fault::BadSize},
      {"a word for a number", textFile("Mesh { three; }"), Fault::BadEncoding},
      {"a mesh without an end", textFile(kTriangle), Fault::Truncated},
      {"a text without an end", textFile("Material { 1;1;1;1;; 0; 0;0;0;; 0;0;0;; TextureFilename { \"a.bmp; } }"),
       Fault::Truncated},
      {"a name without braces", textFile("Frame Box"), Fault::BadEncoding},
      {"frames without end in each other", textFile(repeated("Frame{", 100'000)), Fault::TooLarge},
      {"objects without end in each other", textFile(repeated("Any{", 100'000)), Fault::Truncated},
      {"one mesh shown without end",
       textFile("Mesh M{400;" + repeated("0;0;0;", 400) + "0;}Frame{" + repeated("{M}", 1000) + "}"), Fault::TooLarge},
      {"one material named without end",
       textFile("Material M{1;1;1;1;0;0;0;0;0;0;0;}" + kTriangle + "MeshMaterialList{1;1;0;" + repeated("{M}", 40'000) +
                "}}"),
       Fault::TooLarge},
      {"a list past the end",
       binaryFile(XWriter(true).open("Mesh").ints({1}).raw(std::string("\7\0\xFF\xFF\xFF\xFF", 6))), Fault::Truncated},
      {"a name past the end", binaryFile(XWriter(true).raw(std::string("\1\0\xFF\xFF\xFF\x7F", 6))), Fault::Truncated},
      {"compressed, the size unbelievable", poked(tinyX(XKind::CompressedText), 16, "\xFF\xFF\xFF\x7F"),
       Fault::TooLarge},
      {"compressed, a block without its mark", poked(tinyX(XKind::CompressedText), 24, "XX"), Fault::BadEncoding},
      {"compressed, a block larger than all", poked(tinyX(XKind::CompressedText), 20, "\xFF\x7F"), Fault::BadEncoding},
      {"compressed, a block past the end", poked(tinyX(XKind::CompressedText), 22, "\xFF\xFF"), Fault::Truncated},
      {"compressed, a stream that is none", poked(tinyX(XKind::CompressedText), 26, "\xFF\xFF\xFF\xFF"),
       Fault::BadEncoding},
      {"compressed, growing without bounds", test::xFile(XKind::CompressedText, std::as_bytes(std::span(zeros))),
       Fault::TooLarge},
  };
  for (const Damage& damage : damages) {
    SCOPED_TRACE(damage.name);
    std::optional<Fault> found;
    try {
      flatten(parseXFile(damage.file));
    } catch (const host::FileFault& fault) {
      found = fault.id;
    }
    EXPECT_EQ(found, damage.expect) << (found ? static_cast<int>(*found) : -1);
  }
}

TEST(XFile, EveryPrefixFailsCleanly) {
  for (const XKind kind : kKinds) {
    const std::vector<std::byte> good = tinyX(kind, 4, 100);
    std::size_t whole = 0;
    for (std::size_t n = 0; n < good.size(); ++n) {
      const std::vector<std::byte> cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(n));
      try {
        whole += flatten(parseXFile(cut)).attributes.size() == 3 ? 1u : 0u;
      } catch (const host::FileFault&) {
      }
    }
    EXPECT_LE(whole, 1u) << "only the blank after the last brace may be missing";
  }
}

}  // namespace
}  // namespace ql::xfile
